foreach(subject protocol)
    ie_add_test(emulator_${subject}_test LABEL camera
        SOURCES emulator_${subject}_test.cpp GvcpClient.h
        LIBRARIES camera_emulator_core gvcp GTest::gtest_main)
endforeach()
