foreach(subject calculator_table calculator_limits calculator_stress encodings error_texts number_texts suite_settings)
    ie_add_test(${subject}_test LABEL unit
        SOURCES ${subject}_test.cpp
        LIBRARIES SuiteTools GTest::gtest_main)
endforeach()
ie_add_test(calculator_differential_test LABEL unit
    SOURCES calculator_differential_test.cpp
    LIBRARIES SuiteTools PkgConfig::ARAVIS GTest::gtest_main)
target_compile_definitions(error_texts_test PRIVATE
    CAMERA_HEADER="${CMAKE_SOURCE_DIR}/src/KXCameraControl/include/KXCameraControl/KXCameraControl.h")

target_compile_definitions(suite_settings_test PRIVATE EXPECTED_VERSION="${PROJECT_VERSION}")

find_package(Python3 COMPONENTS Interpreter)
if(Python3_FOUND)
    add_test(NAME formula_table_origins
        COMMAND Python3::Interpreter "${CMAKE_SOURCE_DIR}/tests/data/check_formulas.py")
    set_tests_properties(formula_table_origins PROPERTIES LABELS unit)
endif()
