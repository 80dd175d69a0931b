foreach(subject nodes_real_descriptions)
    ie_add_test(${subject}_test LABEL camera
        SOURCES ${subject}_test.cpp FakePort.h
        LIBRARIES kx_api kx_core GTest::gtest_main)
endforeach()
