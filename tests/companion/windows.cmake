# Programs and cases that Windows, or Wine, has nothing for; each says so.
ie_skip_tests("it is about pseudo terminals" companion_terminal_test)
ie_skip_tests("a library in front of the C library lets calls fail" companion_failing_calls_test)
ie_skip_tests("it becomes another user of a POSIX system, with its permissions" companion_other_users_test)
ie_skip_tests("a shell sets its limits on memory and files" companion_resource_limits_test)
ie_skip_tests("it makes a network of its own" companion_line_night_test)
ie_skip_tests("its signals and permissions have no counterpart there" companion_process_posix_test)
ie_skip_tests("what it plants are pipes and links, of which Windows' folders have none or Wine makes none"
    companion_planted_posix_test)
ie_skip_tests("it completes words in bash" companion_completion)
ie_skip_tests("its cameras are pseudo terminals, local sockets and a stand-in of libusb; windows_lines_test has the lines"
    companion_transport_sweep_test usb3_jobs_test gentl_jobs_test gentl_companion_test all_transports_test
    mixed_batch_test line_transports_test)

ie_skip_cases(companion_audit_log_test "a folder of the user's own is always known there"
    Audit.HasNoPlaceWithoutAHomeFolder)
foreach(case audit_log_test:Audit.OnAFullDiskFailsNoImport snapshot_test:SnapshotTest.OnAFullDiskKeepsTheCameraAsItIs
        export_failures_test:ExportFailures.LeaveNoPartOfAFileThatCouldNotBeWrittenWhole
        log_sink_test:Logging.IsMissedWhenTheFileCannotBeWritten)
    string(REPLACE ":" ";" words ${case})
    list(POP_FRONT words program name)
    ie_skip_cases(companion_${program} "there is no limit on the size of files" ${name})
endforeach()
foreach(case diff_command_test:DiffOfFiles.IsNoAnswerWhenTheDifferencesAreLost
        list_watch_test:WatchProgram.EndsWhenNobodyReadsItsLines
        process_test:ProgramTest.NoticesThatItsResultsCannotBeWritten)
    string(REPLACE ":" ";" words ${case})
    list(POP_FRONT words program name)
    ie_skip_cases(companion_${program} "there is no device that is always full" ${name})
endforeach()
ie_skip_cases(companion_process_test "the system's 8-bit encoding, which files are written in, is not UTF-8 there"
    ProgramTest.WritesUtf8WithoutALocale)
ie_skip_cases(companion_snapshot_test "the system's 8-bit encoding, which the bag's name is in, has no such letters"
    SnapshotTest.OfAModelBeyondLatin1IsFoundAgain)
ie_skip_cases(companion_hostile_names_test "the system's 8-bit encoding, which bags' names are in, has no such letters"
    HostileNames.ALineOfThemHasReports)
ie_skip_cases(companion_process_test "Wine's C library calls the end of a pipe's reader an invalid argument"
    ProgramTest.FinishesItsJobsQuietlyWhenTheReaderOfItsResultsIsGone)
ie_skip_cases(companion_snapshot_test "no file's name has a backslash there" SnapshotTest.NeverGoesIntoAnotherOnesFolder)

# The objects that the programs have printed, which Python looks at here and not under Wine.
if(Python3_FOUND)
    add_test(NAME companion_json_lines
        COMMAND bash "${CMAKE_CURRENT_SOURCE_DIR}/json_lines_test.sh" "${CMAKE_CURRENT_SOURCE_DIR}/check_json_lines.py"
            "${CMAKE_SOURCE_DIR}/docs/iefeatures.schema.json" "${CMAKE_BINARY_DIR}/tests/json-lines")
    get_property(programs DIRECTORY PROPERTY TESTS)
    list(FILTER programs INCLUDE REGEX "_test$")
    list(FILTER programs EXCLUDE REGEX ":")
    set_tests_properties(companion_json_lines PROPERTIES LABELS companion DEPENDS "${programs}"
        SKIP_REGULAR_EXPRESSION "^SKIPPED")
else()
    ie_skip_tests("there is no Python" companion_json_lines)
endif()
