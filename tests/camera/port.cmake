foreach(subject emulator)
    ie_add_test(gvcp_port_${subject}_test LABEL camera
        SOURCES gvcp_port_${subject}_test.cpp GvcpClient.h
        LIBRARIES kx_ports camera_emulator_core GTest::gtest_main)
endforeach()
