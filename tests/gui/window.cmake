# The window, with its cameras, dialogs and folders in the test's hand. Its programs lie in a folder of their own:
# the loader of translations looks beside the program.
find_package(Qt5 5.15 REQUIRED COMPONENTS LinguistTools)

set(window_tests "${CMAKE_BINARY_DIR}/tests/window")
set(window_translation "${window_tests}/Translation/Import_Export_Features_zh_CN.qm")
set(window_texts "${CMAKE_SOURCE_DIR}/src/VELA_Import_Export_Features/Translation/Import_Export_Features_zh_CN.ts")
file(MAKE_DIRECTORY "${window_tests}/Translation")
add_custom_command(OUTPUT "${window_translation}"
    COMMAND Qt5::lrelease -silent "${window_texts}" -qm "${window_translation}"
    DEPENDS "${window_texts}" VERBATIM)
add_custom_target(window_test_translation DEPENDS "${window_translation}")

# The window's code takes the device tree from its library on Windows; here it stands in the same program.
set(window ie_window)
if(WIN32)
    set(window window_on_a_tree_of_its_own)
    get_target_property(window_sources ie_window SOURCES)
    get_target_property(window_folder ie_window SOURCE_DIR)
    list(TRANSFORM window_sources PREPEND "${window_folder}/")
    add_library(${window} STATIC ${window_sources})
    set_target_properties(${window} PROPERTIES AUTOMOC ON)
    target_include_directories(${window} PUBLIC "${window_folder}")
    target_compile_definitions(${window} PUBLIC DEVLISTMGR_BUILD_LIBRARY)
    target_link_libraries(${window} PUBLIC ie_jobs camera_line StyledCtl DevListMgr_headers SuiteToolsWidgets ole32 uuid)
endif()

add_library(window_fixture STATIC
    BatchFixture.cpp BatchFixture.h MainWidgetProbe.h WindowFixture.cpp WindowFixture.h)
target_include_directories(window_fixture PUBLIC "${CMAKE_SOURCE_DIR}/tests")
target_compile_definitions(window_fixture PRIVATE
    IE_WINDOW_TRANSLATION="${window_translation}"
    IE_WINDOW_RESOURCES="${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/rcc")
# The recording library stands before the window's, so that it takes its place.
target_link_libraries(window_fixture PUBLIC
    recording_suite_tools ${window} scripted_camera Qt5::Test GTest::gtest)
add_dependencies(window_fixture window_test_translation program_resources)

set(subjects main_window_layout device_table check_logic local_config column_chooser
    batch_progress batch_jobs batch_ends window_load)
if(WIN32)
    ie_skip_tests("it is written against POSIX calls (users, permissions)" settings_trouble_test)
else()
    list(APPEND subjects settings_trouble batch_threads)
endif()
foreach(subject ${subjects})
    ie_add_test(${subject}_test LABEL gui SOURCES ${subject}_test.cpp LIBRARIES window_fixture device_tree)
    set_target_properties(${subject}_test PROPERTIES RUNTIME_OUTPUT_DIRECTORY "${window_tests}")
endforeach()

if(WIN32)
    ie_skip_tests("nothing can stand between a program and a DLL" window_calls_test)
    return()
endif()
# This one stands between the window and its libraries.
ie_add_test(window_calls_test LABEL gui
    SOURCES window_calls_test.cpp WindowCalls.cpp WindowCalls.h LIBRARIES window_fixture DevListMgr ${CMAKE_DL_LIBS})
set_target_properties(window_calls_test PROPERTIES
    ENABLE_EXPORTS ON RUNTIME_OUTPUT_DIRECTORY "${window_tests}")
target_link_options(window_calls_test PRIVATE -Wl,--no-as-needed)
