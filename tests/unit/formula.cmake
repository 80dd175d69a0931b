ie_add_test(formula_differences_test LABEL unit
    SOURCES formula_differences_test.cpp
    LIBRARIES formula GTest::gtest_main)
