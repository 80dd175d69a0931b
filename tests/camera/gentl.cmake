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
