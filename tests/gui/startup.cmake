find_package(Qt5 5.15 REQUIRED COMPONENTS LinguistTools)

ie_add_test(process_guards_test LABEL gui SERIAL
    SOURCES process_guards_test.cpp
    LIBRARIES ie_guards Qt5::Test)
ie_add_test(log_config_test LABEL gui
    SOURCES log_config_test.cpp
    LIBRARIES SuiteToolsWidgets Qt5::Test)
set_target_properties(process_guards_test log_config_test PROPERTIES AUTOMOC ON)
target_compile_definitions(log_config_test PRIVATE
    IE_LOG_CONFIG="${CMAKE_SOURCE_DIR}/resources/log4qt_IEFeatures.conf")

if(WIN32)
    add_executable(platform_calls_windows_test windows/platform_calls_windows_test.cpp)
    target_link_libraries(platform_calls_windows_test PRIVATE ie_guards)
    set_target_properties(platform_calls_windows_test PROPERTIES RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/tests")
    add_test(NAME platform_calls_windows_test COMMAND ${on_a_display} "$<TARGET_FILE:platform_calls_windows_test>")
    set_tests_properties(platform_calls_windows_test PROPERTIES LABELS gui RUN_SERIAL ON TIMEOUT 300)
    ie_skip_tests("what it tests is a POSIX half" platform_calls_test)
    ie_skip_tests("the sources are those of this system" translations_complete_test)
    return()
endif()

ie_add_test(platform_calls_test LABEL gui SERIAL
    SOURCES platform_calls_test.cpp
    LIBRARIES ie_guards GTest::gtest_main)
ie_add_test(translations_complete_test LABEL gui
    SOURCES translations_complete_test.cpp
    LIBRARIES Qt5::Test Qt5::Xml)
set_target_properties(translations_complete_test PROPERTIES AUTOMOC ON)
target_compile_definitions(translations_complete_test PRIVATE
    IE_SOURCES="${CMAKE_SOURCE_DIR}/src" IE_LUPDATE="$<TARGET_FILE:Qt5::lupdate>")

add_test(NAME platform_calls_windows_test
    COMMAND "${CMAKE_CURRENT_SOURCE_DIR}/on_a_display.sh" "${CMAKE_CURRENT_SOURCE_DIR}/windows/run_under_wine.sh"
        "${CMAKE_SOURCE_DIR}" "${CMAKE_BINARY_DIR}/windows")
set_tests_properties(platform_calls_windows_test PROPERTIES LABELS gui RUN_SERIAL ON TIMEOUT 300)
