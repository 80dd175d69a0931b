ie_add_test(camera_line_test LABEL unit
    SOURCES camera_line_test.cpp
    LIBRARIES camera_line SuiteTools GTest::gmock GTest::gtest_main)
