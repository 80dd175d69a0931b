foreach(subject formula_differences formula_precedence)
    ie_add_test(${subject}_test LABEL unit
        SOURCES ${subject}_test.cpp
        LIBRARIES formula GTest::gtest_main)
endforeach()
