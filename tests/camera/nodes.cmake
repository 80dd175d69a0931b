foreach(subject nodes_values nodes_access nodes_writes nodes_described nodes_real_descriptions description node_formula camera_handles read_memo nodes_noise)
    ie_add_test(${subject}_test LABEL camera
        SOURCES ${subject}_test.cpp EveryNodeKind.h FakePort.h
        LIBRARIES kx_api kx_core GTest::gtest_main)
endforeach()
target_link_libraries(description_test PRIVATE PkgConfig::ZLIB)
target_link_libraries(node_formula_test PRIVATE PkgConfig::ARAVIS)

ie_add_test(nodes_other_engine_test LABEL camera
    SOURCES nodes_other_engine_test.cpp EveryNodeKind.h FakePort.h
    LIBRARIES kx_api kx_core camera_emulator_core PkgConfig::ARAVIS GTest::gtest_main)

ie_add_test(camera_on_emulator_test LABEL camera
    SOURCES camera_on_emulator_test.cpp
    LIBRARIES KXCameraControl camera_emulator_core GTest::gtest_main)
