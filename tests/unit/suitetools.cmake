set(subjects calculator_limits calculator_stress encodings error_texts number_texts)
if(WIN32)
    ie_skip_tests("it starts itself by /proc" suite_settings_test)
else()
    list(APPEND subjects suite_settings)
endif()
foreach(subject ${subjects})
    ie_add_test(${subject}_test LABEL unit
        SOURCES ${subject}_test.cpp
        LIBRARIES SuiteTools GTest::gtest_main)
endforeach()
ie_add_test(session_processes_test LABEL unit
    SOURCES session_processes_test.cpp "${CMAKE_SOURCE_DIR}/src/SuiteTools/widgets/SessionProcesses.cpp"
    LIBRARIES SuiteTools GTest::gtest_main)
target_include_directories(session_processes_test PRIVATE "${CMAKE_SOURCE_DIR}/src")
if(WIN32)
    ie_skip_tests("what it compares with is a Linux library" calculator_differential_test)
    ie_skip_tests("it stands in for a function of the C library" calculator_table_test)
else()
    ie_add_test(calculator_table_test LABEL unit
        SOURCES calculator_table_test.cpp
        LIBRARIES SuiteTools GTest::gtest_main)
    ie_add_test(calculator_differential_test LABEL unit
        SOURCES calculator_differential_test.cpp
        LIBRARIES SuiteTools PkgConfig::ARAVIS GTest::gtest_main)
endif()
target_compile_definitions(error_texts_test PRIVATE
    CAMERA_HEADER="${CMAKE_SOURCE_DIR}/src/KXCameraControl/include/KXCameraControl/KXCameraControl.h")

if(TARGET suite_settings_test)
    target_compile_definitions(suite_settings_test PRIVATE EXPECTED_VERSION="${PROJECT_VERSION}")
endif()

find_package(Python3 COMPONENTS Interpreter)
if(Python3_FOUND)
    add_test(NAME formula_table_origins
        COMMAND Python3::Interpreter "${CMAKE_SOURCE_DIR}/tests/data/check_formulas.py")
    set_tests_properties(formula_table_origins PROPERTIES LABELS unit)
endif()
