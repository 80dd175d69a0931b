# None yet: Transports_windows.cpp says so to whoever asks.

# What stands inside the library calls the boundary's functions directly, not through an import.
target_compile_definitions(kx_core PRIVATE KX_BUILD_LIBRARY)
