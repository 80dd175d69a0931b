ie_add_test(feature_bag_test LABEL camera
    SOURCES feature_bag_test.cpp feature_bag_save_test.cpp feature_bag_files_test.cpp
        feature_bag_whole_file_test.cpp FakeNodes.h
    LIBRARIES kx_api kx_core GTest::gtest_main)
ie_add_test(feature_bag_on_emulator_test LABEL camera
    SOURCES feature_bag_on_emulator_test.cpp ../support/AllTransports.h
    LIBRARIES KXCameraControl usb_stage GTest::gtest_main)
ie_use_every_transport(feature_bag_on_emulator_test)
