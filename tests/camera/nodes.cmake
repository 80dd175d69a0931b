find_package(nlohmann_json REQUIRED)

foreach(subject nodes_values nodes_access nodes_writes nodes_text nodes_described nodes_real_descriptions description hostile_description parsed_descriptions node_formula camera_handles read_memo batch_reader read_ahead nodes_noise)
    ie_add_test(${subject}_test LABEL camera
        SOURCES ${subject}_test.cpp EveryNodeKind.h FakePort.h
        LIBRARIES kx_api kx_core GTest::gtest_main)
endforeach()
target_link_libraries(description_test PRIVATE PkgConfig::ZLIB)
ie_add_test(description_cache_test LABEL camera
    SOURCES description_cache_test.cpp description_cache_posix_test.cpp DescriptionCacheFixture.h FakePort.h
        ../support/gtest_qt_main.cpp
    LIBRARIES kx_api kx_core Qt5::Core PkgConfig::ZLIB GTest::gtest)
target_link_libraries(node_formula_test PRIVATE PkgConfig::ARAVIS)

ie_add_test(nodes_other_engine_test LABEL camera
    SOURCES nodes_other_engine_test.cpp EveryNodeKind.h FakePort.h
    LIBRARIES kx_api kx_core camera_emulator_core PkgConfig::ARAVIS GTest::gtest_main)

ie_add_test(camera_on_emulator_test LABEL camera
    SOURCES camera_on_emulator_test.cpp ../support/AllTransports.h
    LIBRARIES KXCameraControl usb_stage GTest::gtest_main)
ie_use_every_transport(camera_on_emulator_test)

# Held against the standard's reference implementation. Needs the network once, for that; says SKIPPED where it cannot have it.
add_executable(formula_answers formula_reference/formula_answers.cpp)
target_link_libraries(formula_answers PRIVATE formula)
add_executable(nodes_dump nodes_reference/nodes_dump.cpp nodes_reference/SeededMemory.h)
target_link_libraries(nodes_dump PRIVATE kx_core camera_emulator_core nlohmann_json::nlohmann_json)
target_include_directories(nodes_dump PRIVATE "${CMAKE_SOURCE_DIR}/tests")
set_target_properties(formula_answers nodes_dump PROPERTIES RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/tests")
find_package(Python3 3.11 COMPONENTS Interpreter)
if(Python3_FOUND)
    set(reference "${CMAKE_BINARY_DIR}/tests/reference")
    add_test(NAME formula_reference_test
        COMMAND Python3::Interpreter "${CMAKE_CURRENT_SOURCE_DIR}/formula_reference/formula_reference_test.py"
            "$<TARGET_FILE:formula_answers>" "${reference}")
    add_test(NAME nodes_reference_test
        COMMAND Python3::Interpreter "${CMAKE_CURRENT_SOURCE_DIR}/nodes_reference/nodes_reference_test.py"
            "$<TARGET_FILE:nodes_dump>" "${CMAKE_SOURCE_DIR}/tests/data/every_node_kind.xml" "${reference}")
    set_tests_properties(formula_reference_test nodes_reference_test PROPERTIES LABELS camera TIMEOUT 300
        RESOURCE_LOCK reference SKIP_REGULAR_EXPRESSION "SKIPPED:")
endif()
