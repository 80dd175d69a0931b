# The evaluation of formulas and registers, and the blocks that come out of it.
add_library(evaluator_fixture STATIC EvaluatorFixture.cpp EvaluatorFixture.h)
target_include_directories(evaluator_fixture PUBLIC "${CMAKE_SOURCE_DIR}/tests")
target_link_libraries(evaluator_fixture PUBLIC ie_jobs scripted_camera recording_suite_tools GTest::gtest)

foreach(subject register_address formula_value integer_value selected_feature evaluator_limits register_block)
    ie_add_test(${subject}_test LABEL jobs
        SOURCES ${subject}_test.cpp
        LIBRARIES evaluator_fixture GTest::gtest_main)
endforeach()
