ie_add_test(companion_real_sweep_test LABEL companion TIMEOUT 1200
    SOURCES real_sweep_test.cpp Sweep.cpp Sweep.h Told.h RealSeed.cpp RealSeed.h ../support/OwnDescription.h
    LIBRARIES companion_fixture)
# What imports would do and have done: over a scripted camera library, and over the emulator.
foreach(subject camera_check register_check identity_check entry_lines feature_nature inventory line_check)
    ie_add_test(${subject}_test LABEL companion
        SOURCES ${subject}_test.cpp ../support/gtest_qt_main.cpp
        LIBRARIES iefeatures_core iefeatures_parts SuiteTools scripted_camera GTest::gmock GTest::gtest)
endforeach()
target_compile_definitions(inventory_test PRIVATE
    IE_INVENTORY_SCHEMA="${CMAKE_SOURCE_DIR}/docs/line-inventory.schema.json")
ie_add_test(check_command_test LABEL companion
    SOURCES check_command_test.cpp
    LIBRARIES companion_fixture)
ie_add_test(unchanged_import_test LABEL companion TIMEOUT 600
    SOURCES unchanged_import_test.cpp RealSeed.cpp RealSeed.h ../support/RealExport.cpp ../support/RealExport.h
    LIBRARIES companion_fixture)
