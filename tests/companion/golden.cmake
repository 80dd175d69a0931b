# The expected export of the emulator's own camera still follows from its description and seed.
find_package(Python3 COMPONENTS Interpreter)
if(Python3_FOUND)
    add_test(NAME emulator_export_worked_out
        COMMAND Python3::Interpreter "${CMAKE_SOURCE_DIR}/tests/data/work_out_emulator_export.py")
    set_tests_properties(emulator_export_worked_out PROPERTIES LABELS companion)
endif()
