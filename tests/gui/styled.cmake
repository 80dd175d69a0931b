# The styled widgets, without the window that is built of them.
function(styled_test name)
    ie_add_test(styled_${name}_test LABEL gui SOURCES styled_${name}_test.cpp StyledTools.h LIBRARIES StyledCtl Qt5::Test)
    set_target_properties(styled_${name}_test PROPERTIES AUTOMOC ON)
endfunction()

styled_test(controls)
styled_test(header)
styled_test(library)
styled_test(loading)
styled_test(main_window)
styled_test(message_box)
styled_test(save_done)
styled_test(table)

# Draws every widget into pictures in the build folder, to be looked at, and checks what they must show.
ie_add_test(styled_gallery LABEL gui SOURCES gallery.cpp LIBRARIES StyledCtl Qt5::Test)
set_target_properties(styled_gallery PROPERTIES AUTOMOC ON)
target_compile_definitions(styled_gallery PRIVATE GALLERY_FOLDER="${CMAKE_BINARY_DIR}/gallery")
add_test(NAME styled_gallery_fine COMMAND styled_gallery)
set_tests_properties(styled_gallery_fine PROPERTIES LABELS gui TIMEOUT 120
    ENVIRONMENT "QT_QPA_PLATFORM=offscreen;QT_SCALE_FACTOR=2;LC_ALL=C.UTF-8;QT_FORCE_STDERR_LOGGING=1;${screenless_fonts}")

# Where a window system has a say: moving, resizing, activation.
set(subjects loading message_box)
if(WIN32)
    ie_skip_tests("moving and resizing is the system's there, by the real pointer; window_processes_test moves a window"
        styled_main_window_on_a_display)
else()
    list(APPEND subjects main_window)
endif()
foreach(subject ${subjects})
    add_test(NAME styled_${subject}_on_a_display
        COMMAND ${on_a_display} "$<TARGET_FILE:styled_${subject}_test>")
    set_tests_properties(styled_${subject}_on_a_display PROPERTIES LABELS gui TIMEOUT 120
        ${display_lock} ENVIRONMENT "LC_ALL=C.UTF-8;${IE_GUI_SANITIZERS}")
endforeach()
