# Cameras behind serial lines and frame grabbers: pseudo terminals and local sockets.
target_sources(camera_emulator_core PRIVATE
    GrabberCamera.cpp GrabberCamera.h
    SerialCamera.cpp SerialCamera.h)
