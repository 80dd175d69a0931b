# What imports would do and have done: over a scripted camera library, and over the emulator.
ie_add_test(camera_check_test LABEL companion
    SOURCES camera_check_test.cpp ../support/gtest_qt_main.cpp
    LIBRARIES iefeatures_core SuiteTools scripted_camera GTest::gmock GTest::gtest)
ie_add_test(check_command_test LABEL companion
    SOURCES check_command_test.cpp
    LIBRARIES companion_fixture)
