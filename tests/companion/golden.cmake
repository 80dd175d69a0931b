# The expected export of the emulator's own camera still follows from its description and seed.
find_package(Python3 COMPONENTS Interpreter)
if(Python3_FOUND)
    add_test(NAME emulator_export_worked_out
        COMMAND Python3::Interpreter "${CMAKE_SOURCE_DIR}/tests/data/work_out_emulator_export.py")
    set_tests_properties(emulator_export_worked_out PROPERTIES LABELS companion)
endif()

# Exports over the libraries as they are, from emulated cameras in the same process.
add_library(real_export STATIC ../support/RealExport.cpp ../support/RealExport.h ../support/gtest_qt_main.cpp)
target_include_directories(real_export PUBLIC "${CMAKE_SOURCE_DIR}/tests")
target_link_libraries(real_export
    PUBLIC ie_jobs KXCameraControl SuiteTools camera_emulator_core gvcp GTest::gtest)
ie_add_test(emulator_export_test LABEL companion
    SOURCES emulator_export_test.cpp
    LIBRARIES real_export)
target_compile_definitions(emulator_export_test PRIVATE IEFEATURES="$<TARGET_FILE:iefeatures>")
add_dependencies(emulator_export_test iefeatures)
ie_add_test(real_descriptions_export_test LABEL camera
    SOURCES real_descriptions_export_test.cpp RealSeed.cpp RealSeed.h RegisterRule.cpp RegisterRule.h
        WhyLeftOut.cpp WhyLeftOut.h
    LIBRARIES real_export)
ie_add_test(read_ahead_jobs_test LABEL camera TIMEOUT 900
    SOURCES read_ahead_jobs_test.cpp RealSeed.cpp RealSeed.h
    LIBRARIES real_export)
ie_add_test(round_trip_test LABEL companion TIMEOUT 300
    SOURCES round_trip_test.cpp
    LIBRARIES real_export)
target_compile_definitions(round_trip_test PRIVATE
    IE_FILE_FORMAT="${CMAKE_SOURCE_DIR}/docs/file-format.md"
    IE_DEMO_CHANGES="${CMAKE_SOURCE_DIR}/scripts/demo-changes.json")
ie_add_test(import_cost_test LABEL companion
    SOURCES import_cost_test.cpp
    LIBRARIES real_export)
