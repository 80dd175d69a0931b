# Cameras behind serial lines and frame grabbers: pseudo terminals and local sockets.
target_sources(camera_emulator_core PRIVATE
    GrabberCamera.cpp GrabberCamera.h
    SerialCamera.cpp SerialCamera.h)

# A GenTL producer for cameras of the program above. Thin: the cameras live in their own process.
add_library(camera_emulator_gentl MODULE
    producer/Cameras.cpp producer/Cameras.h
    producer/Events.cpp
    producer/Faults.cpp producer/Faults.h
    producer/Infos.cpp producer/Infos.h
    producer/Modules.cpp
    producer/Ports.cpp
    producer/State.cpp producer/State.h
    producer/Streams.cpp)
set_target_properties(camera_emulator_gentl PROPERTIES PREFIX "" SUFFIX ".cti"
    LIBRARY_OUTPUT_DIRECTORY "${CMAKE_LIBRARY_OUTPUT_DIRECTORY}/gentl")
target_link_libraries(camera_emulator_gentl PRIVATE gentl gencp Threads::Threads ${CMAKE_DL_LIBS})
