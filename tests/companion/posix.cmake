# What is a POSIX system's own: calls that fail, terminals, other users, limits, networks, emulated USB and serial lines.
foreach(subject resource_limits terminal failing_calls other_users process_posix planted_posix)
    ie_add_test(companion_${subject}_test LABEL companion SOURCES ${subject}_test.cpp LIBRARIES companion_fixture)
endforeach()
# Calls of the system that fail in front of the program.
add_library(failing_calls MODULE
    failing_calls/failing_calls.c failing_calls/failing_calls.h failing_calls/failing_memory.cpp)
# POSIX has functions behind object pointers here (dlsym).
target_compile_options(failing_calls PRIVATE -Wno-pedantic -fvisibility=default)
target_link_libraries(failing_calls PRIVATE ${CMAKE_DL_LIBS})
set_target_properties(failing_calls PROPERTIES LIBRARY_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/tests" PREFIX "")
target_compile_definitions(companion_failing_calls_test PRIVATE FAILING_CALLS="$<TARGET_FILE:failing_calls>")
add_dependencies(companion_failing_calls_test failing_calls)
ie_add_test(companion_line_night_test LABEL companion TIMEOUT 900
    SOURCES line_night_test.cpp LineCompanion.h ../support/OwnNetwork.h
    LIBRARIES companion_fixture)

add_test(NAME companion_completion
    COMMAND bash "${CMAKE_CURRENT_SOURCE_DIR}/completion_test.sh"
        "${CMAKE_SOURCE_DIR}/packaging/completion/iefeatures" "$<TARGET_FILE:iefeatures>")
set_tests_properties(companion_completion PROPERTIES LABELS companion)

# Jobs of the companion over all lines, each with another one of its requests going wrong.
ie_add_test(companion_transport_sweep_test LABEL companion TIMEOUT 1200
    SOURCES transport_sweep_test.cpp Sweep.cpp Sweep.h SweptSettings.h Told.h ../support/AllTransports.h
    LIBRARIES companion_fixture usb_stage)
ie_use_every_transport(companion_transport_sweep_test)
# The same over an emulated USB, and another host's word on the camera where arv-tool is installed.
ie_add_test(usb3_jobs_test LABEL companion
    SOURCES usb3_jobs_test.cpp ../camera/UsbFixture.h
    LIBRARIES real_export usb_stage)
target_compile_definitions(usb3_jobs_test PRIVATE IEFEATURES="$<TARGET_FILE:iefeatures>")
add_dependencies(usb3_jobs_test iefeatures)
# And behind producers of frame grabbers, bad ones among them.
ie_add_test(gentl_jobs_test LABEL companion
    SOURCES gentl_jobs_test.cpp ../camera/GentlStage.h
    LIBRARIES real_export)
target_compile_definitions(gentl_jobs_test PRIVATE
    CAMERA_EMULATOR_GENTL="$<TARGET_FILE:camera_emulator_gentl>")
add_dependencies(gentl_jobs_test camera_emulator_gentl ie_gentl_host)
ie_add_test(gentl_companion_test LABEL companion
    SOURCES gentl_companion_test.cpp ../camera/GentlStage.h ../support/gtest_qt_main.cpp
    LIBRARIES camera_emulator_core Qt5::Core GTest::gtest)
target_compile_definitions(gentl_companion_test PRIVATE IEFEATURES="$<TARGET_FILE:iefeatures>"
    CAMERA_EMULATOR_GENTL="$<TARGET_FILE:camera_emulator_gentl>")
add_dependencies(gentl_companion_test iefeatures camera_emulator_gentl ie_gentl_host)
# The same jobs over each transport, and cameras of all kinds in one batch.
foreach(name all_transports_test mixed_batch_test line_transports_test)
    ie_add_test(${name} LABEL companion TIMEOUT 300
        SOURCES ${name}.cpp ../support/AllTransports.h ../support/Cable.h
        LIBRARIES real_export usb_stage)
    target_compile_definitions(${name} PRIVATE IEFEATURES="$<TARGET_FILE:iefeatures>"
        IE_DEMO_CHANGES="${CMAKE_SOURCE_DIR}/scripts/demo-changes.json")
    ie_use_every_transport(${name})
    add_dependencies(${name} iefeatures)
endforeach()
