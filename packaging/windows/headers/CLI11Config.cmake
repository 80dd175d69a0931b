# The command line parser's headers, as packaging/windows/libraries has linked them.
if(NOT TARGET CLI11::CLI11)
    add_library(CLI11::CLI11 INTERFACE IMPORTED)
    target_include_directories(CLI11::CLI11 SYSTEM INTERFACE "${windows_headers}")
endif()
