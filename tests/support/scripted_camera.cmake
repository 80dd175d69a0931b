# The camera library, replaced by one that answers from scripts; and the one record of calls, log lines and signals.
add_library(scripted_camera STATIC
    Recorder.cpp
    Recorder.h
    ScriptedCall.cpp
    ScriptedCamera.h
    ScriptedCamera_Api.cpp
    ScriptedDevice.cpp
    ScriptedHandles.cpp
    ScriptedHandles.h)
target_include_directories(scripted_camera PUBLIC "${CMAKE_CURRENT_SOURCE_DIR}")
target_link_libraries(scripted_camera PUBLIC Qt5::Core KXCameraControl_headers)

ie_add_test(scripted_camera_test LABEL unit
    SOURCES scripted_camera_test.cpp
    LIBRARIES scripted_camera GTest::gtest_main)
