# What imports would do and have done: over a scripted camera library, and over the emulator.
ie_add_test(camera_check_test LABEL companion
    SOURCES camera_check_test.cpp ../support/gtest_qt_main.cpp
    LIBRARIES iefeatures_core SuiteTools scripted_camera GTest::gmock GTest::gtest)
ie_add_test(feature_nature_test LABEL companion
    SOURCES feature_nature_test.cpp ../support/gtest_qt_main.cpp
    LIBRARIES iefeatures_core SuiteTools scripted_camera GTest::gmock GTest::gtest)
ie_add_test(check_command_test LABEL companion
    SOURCES check_command_test.cpp
    LIBRARIES companion_fixture)
ie_add_test(unchanged_import_test LABEL companion TIMEOUT 600
    SOURCES unchanged_import_test.cpp RealSeed.cpp RealSeed.h ../support/RealExport.cpp ../support/RealExport.h
    LIBRARIES companion_fixture)
