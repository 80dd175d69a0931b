# Tests that start the program's parts or the program itself as a person meets them. What lies beside the program lies
# beside the tests too.
foreach(folder rcc log4qt FontLato Translation)
    file(MAKE_DIRECTORY "${CMAKE_BINARY_DIR}/tests")
    file(CREATE_LINK "${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/${folder}" "${CMAKE_BINARY_DIR}/tests/${folder}" SYMBOLIC)
endforeach()

ie_add_test(person_test LABEL gui SERIAL
    SOURCES person_test.cpp
    LIBRARIES ie_startup DevListMgr camera_emulator_core KXCameraControl SuiteTools Qt5::Test)
set_target_properties(person_test PROPERTIES AUTOMOC ON)
target_link_options(person_test PRIVATE -Wl,--no-as-needed)
add_dependencies(person_test program_resources program_translations)
add_test(NAME person_on_a_display
    COMMAND ${on_a_display} "$<TARGET_FILE:person_test>")
set_tests_properties(person_on_a_display PROPERTIES LABELS gui RUN_SERIAL ON TIMEOUT 300
    ENVIRONMENT "KX_CAMERA_INTERFACES=none;KX_CAMERA_USB=none;LC_ALL=C.UTF-8;KX_DESCRIPTION_CACHE=off;IE_SCREENSHOTS=${CMAKE_BINARY_DIR}/screenshots;${IE_GUI_SANITIZERS}")

# Takes translations away beside itself, so in a folder of its own.
ie_add_test(translations_load_test LABEL gui SOURCES translations_load_test.cpp LIBRARIES ie_window DevListMgr KXCameraControl SuiteTools Qt5::Test)
set_target_properties(translations_load_test PROPERTIES AUTOMOC ON
    RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/tests/translations")
target_compile_definitions(translations_load_test PRIVATE
    IE_TRANSLATIONS="${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/Translation")
target_link_options(translations_load_test PRIVATE -Wl,--no-as-needed)
add_dependencies(translations_load_test program_translations)

if(WIN32)
    ie_skip_tests("window_processes_test does what it does, for Windows" processes_test)
    ie_skip_tests("tests/windows/package_test.sh looks into what is packed" package_test)
    ie_skip_tests("nothing can stand between a program and a DLL" start_test)
    return()
endif()

ie_add_test(window_soak_test LABEL gui
    SOURCES window_soak_test.cpp ../support/ComingAndGoing.h ../support/Flatness.h ../support/Held.h
    LIBRARIES ie_startup DevListMgr camera_emulator_core KXCameraControl SuiteTools Qt5::Test GTest::gtest)
target_link_options(window_soak_test PRIVATE -Wl,--no-as-needed)
add_dependencies(window_soak_test program_resources program_translations)

add_test(NAME processes_test
    COMMAND "${CMAKE_CURRENT_SOURCE_DIR}/on_a_display.sh" "${CMAKE_CURRENT_SOURCE_DIR}/processes_test.sh"
        "$<TARGET_FILE_DIR:Import_Export_Features>" "${CMAKE_LIBRARY_OUTPUT_DIRECTORY}")
set_tests_properties(processes_test PROPERTIES LABELS gui RUN_SERIAL ON TIMEOUT 300
    ENVIRONMENT "LC_ALL=C.UTF-8;KX_DESCRIPTION_CACHE=off;${IE_GUI_SANITIZERS}")

add_test(NAME package_test COMMAND "${CMAKE_CURRENT_SOURCE_DIR}/package_test.sh" "${CMAKE_BINARY_DIR}")
set_tests_properties(package_test PROPERTIES LABELS gui RUN_SERIAL ON TIMEOUT 300
    ENVIRONMENT "LC_ALL=C.UTF-8;KX_DESCRIPTION_CACHE=off;KX_CAMERA_INTERFACES=none;KX_CAMERA_USB=none;${IE_GUI_SANITIZERS}")

pkg_check_modules(X11 REQUIRED IMPORTED_TARGET x11)
add_library(start_trace MODULE start/StartTrace.cpp)
target_link_libraries(start_trace PRIVATE StyledCtl SuiteToolsWidgets ${CMAKE_DL_LIBS})
add_executable(tiny_window_manager start/tiny_window_manager.cpp)
target_link_libraries(tiny_window_manager PRIVATE PkgConfig::X11)
set_target_properties(start_trace tiny_window_manager PROPERTIES
    LIBRARY_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/tests" RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/tests")
add_test(NAME start_test
    COMMAND "${CMAKE_CURRENT_SOURCE_DIR}/on_a_display.sh" "${CMAKE_CURRENT_SOURCE_DIR}/start/start_test.sh"
        "$<TARGET_FILE:Import_Export_Features>" "$<TARGET_FILE:start_trace>" "$<TARGET_FILE:tiny_window_manager>")
set_tests_properties(start_test PROPERTIES LABELS gui RUN_SERIAL ON TIMEOUT 300
    ENVIRONMENT "LC_ALL=C.UTF-8;KX_DESCRIPTION_CACHE=off;${IE_GUI_SANITIZERS}")
