# Debian's cross compiler for 64-bit Windows, and the libraries that packaging/windows/libraries has built.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(triple x86_64-w64-mingw32)
set(CMAKE_C_COMPILER ${triple}-gcc-posix)
set(CMAKE_CXX_COMPILER ${triple}-g++-posix)
set(CMAKE_RC_COMPILER ${triple}-windres)

set(windows_cache "$ENV{KX_WINDOWS_CACHE}")
if(NOT windows_cache)
    set(windows_cache "$ENV{HOME}/.cache/import-export-features/windows")
endif()
file(GLOB windows_links "${windows_cache}/prefix/*")
set(windows_prefixes)
foreach(link ${windows_links})
    file(REAL_PATH "${link}" prefix)
    list(APPEND windows_prefixes "${prefix}")
endforeach()
set(CMAKE_FIND_ROOT_PATH /usr/${triple} ${windows_prefixes})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

set(windows_pkgconfig)
foreach(prefix ${windows_prefixes})
    string(APPEND windows_pkgconfig "${prefix}/lib/pkgconfig:")
endforeach()
set(ENV{PKG_CONFIG_LIBDIR} "${windows_pkgconfig}/usr/${triple}/lib/pkgconfig")

# Headers alone.
set(windows_headers "${windows_cache}/prefix/headers/include")
set(CLI11_DIR "${CMAKE_CURRENT_LIST_DIR}/headers" CACHE PATH "")
set(nlohmann_json_DIR "${CMAKE_CURRENT_LIST_DIR}/headers" CACHE PATH "")
# Tools that run here.
set(Qt5LinguistTools_DIR "/usr/lib/${CMAKE_HOST_SYSTEM_PROCESSOR}-linux-gnu/cmake/Qt5LinguistTools" CACHE PATH "")

# Tests run under Wine.
set(CMAKE_CROSSCOMPILING_EMULATOR "${CMAKE_CURRENT_LIST_DIR}/wine/run" --relayed --with "${CMAKE_BINARY_DIR}/bin"
    CACHE STRING "")
