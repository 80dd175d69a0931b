foreach(subject protocol control faults seed)
    ie_add_test(emulator_${subject}_test LABEL camera
        SOURCES emulator_${subject}_test.cpp EmulatorFixture.h GvcpClient.h
        LIBRARIES camera_emulator_core gvcp GTest::gtest_main)
endforeach()
