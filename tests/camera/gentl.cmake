add_library(poor_producer MODULE gentl_producers/poor.cpp)
target_link_libraries(poor_producer PRIVATE gentl)
set_target_properties(poor_producer PROPERTIES PREFIX "" SUFFIX ".cti"
    LIBRARY_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/tests")

ie_add_test(gentl_host_test LABEL camera
    SOURCES gentl_host_test.cpp GentlStage.h
    LIBRARIES kx_ports camera_emulator_core GTest::gmock GTest::gtest_main)
ie_add_test(gentl_camera_test LABEL camera TIMEOUT 300
    SOURCES gentl_camera_test.cpp GentlStage.h
    LIBRARIES KXCameraControl camera_emulator_core GTest::gmock GTest::gtest_main)
foreach(test gentl_host_test gentl_camera_test)
    target_compile_definitions(${test} PRIVATE CAMERA_EMULATOR_GENTL="$<TARGET_FILE:camera_emulator_gentl>"
        POOR_PRODUCER="$<TARGET_FILE:poor_producer>")
    add_dependencies(${test} camera_emulator_gentl poor_producer ie_gentl_host)
endforeach()

# Held against other programs that read the standard. Needs the network once, for them; says SKIPPED where it cannot have them.
# Not with sanitizers: another program loads our producer.
if(Python3_FOUND AND NOT IE_SANITIZE)
    add_executable(gentl_answers gentl_reference/gentl_answers.cpp)
    target_link_libraries(gentl_answers PRIVATE KXCameraControl)
    set_target_properties(gentl_answers PROPERTIES RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/tests")
    add_test(NAME gentl_reference_test
        COMMAND Python3::Interpreter "${CMAKE_CURRENT_SOURCE_DIR}/gentl_reference/gentl_reference_test.py"
            "$<TARGET_FILE:camera_emulator>" "$<TARGET_FILE:camera_emulator_gentl>" "$<TARGET_FILE:gentl_answers>"
            "${CMAKE_SOURCE_DIR}/src/gentl/GenTl.h" "${reference}")
    set_tests_properties(gentl_reference_test PROPERTIES LABELS camera TIMEOUT 300 RESOURCE_LOCK reference
        SKIP_REGULAR_EXPRESSION "SKIPPED:" ENVIRONMENT
        "QT_QPA_PLATFORM=offscreen;KX_CAMERA_INTERFACES=none;KX_CAMERA_USB=none;KX_DESCRIPTION_CACHE=off;VELA_USER_DATA=${CMAKE_BINARY_DIR}/tests/user-data")
endif()
