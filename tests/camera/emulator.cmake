pkg_check_modules(LIBXML2 REQUIRED IMPORTED_TARGET libxml-2.0)
pkg_check_modules(ZLIB REQUIRED IMPORTED_TARGET zlib)

foreach(subject protocol control faults seed description genicam real_descriptions)
    ie_add_test(emulator_${subject}_test LABEL camera
        SOURCES emulator_${subject}_test.cpp EmulatorFixture.h GvcpClient.h
        LIBRARIES camera_emulator_core gvcp GTest::gtest_main)
endforeach()
target_link_libraries(emulator_description_test PRIVATE PkgConfig::LIBXML2 PkgConfig::ZLIB)
target_link_libraries(emulator_genicam_test PRIVATE PkgConfig::ARAVIS)

ie_add_test(emulator_power_test LABEL camera
    SOURCES emulator_power_test.cpp EmulatorFixture.h GvcpClient.h
    LIBRARIES KXCameraControl camera_emulator_core GTest::gtest_main)

find_package(nlohmann_json REQUIRED)
ie_add_test(emulator_program_test LABEL camera
    SOURCES emulator_program_test.cpp EmulatorFixture.h GvcpClient.h ../support/gtest_qt_main.cpp
        ../support/Processes_posix.cpp ../support/Processes.h
    LIBRARIES camera_emulator_core gvcp nlohmann_json::nlohmann_json Qt5::Core GTest::gmock GTest::gtest)
target_compile_definitions(emulator_program_test PRIVATE CAMERA_EMULATOR="$<TARGET_FILE:camera_emulator>"
    IE_EMULATOR_MAN_PAGE="${CMAKE_SOURCE_DIR}/packaging/man/camera_emulator.1")
add_dependencies(emulator_program_test camera_emulator)
