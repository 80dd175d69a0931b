# What every target of the tree is compiled with.
set(CMAKE_CXX_STANDARD 17)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_C_STANDARD 11)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

# What a system does its own way stands in a file for each, NAME_posix.cpp and NAME_windows.cpp.
if(WIN32)
    set(IE_SYSTEM windows)
    set(IE_NETWORK_LIBRARIES ws2_32 iphlpapi)
    set(IE_DEVICE_LIBRARIES setupapi)
    set(CMAKE_SHARED_LIBRARY_PREFIX "") # libraries are called there as they are everywhere, without "lib"
    # Libraries that are compiled against headers alone stand anywhere in a link. Import libraries are archives, which
    # the linker would look into once, where they stand.
    foreach(rule LINK_EXECUTABLE CREATE_SHARED_LIBRARY)
        string(REPLACE "<LINK_LIBRARIES>" "-Wl,--start-group <LINK_LIBRARIES> -Wl,--end-group"
            CMAKE_CXX_${rule} "${CMAKE_CXX_${rule}}")
    endforeach()
    # Windows 10, and texts of the system as it has them.
    add_compile_definitions(_WIN32_WINNT=0x0A00 WINVER=0x0A00 UNICODE _UNICODE NOMINMAX WIN32_LEAN_AND_MEAN)
else()
    set(IE_SYSTEM posix)
endif()

# Programs find their resources beside themselves, so everything that runs lies in one folder.
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/bin")
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/lib")

if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
    set(CMAKE_BUILD_TYPE RelWithDebInfo CACHE STRING "" FORCE)
endif()

find_program(CCACHE_PROGRAM ccache)
if(CCACHE_PROGRAM AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
    set(CMAKE_C_COMPILER_LAUNCHER "${CCACHE_PROGRAM}")
    set(CMAKE_CXX_COMPILER_LAUNCHER "${CCACHE_PROGRAM}")
endif()

add_compile_options(-Wall -Wextra -Wpedantic -Wshadow
    "$<$<COMPILE_LANGUAGE:CXX>:-Wnon-virtual-dtor;-Woverloaded-virtual>")
if(IE_WARNINGS_AS_ERRORS)
    add_compile_options(-Werror)
endif()

if(IE_SANITIZE)
    add_compile_options(-fsanitize=${IE_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
    add_link_options(-fsanitize=${IE_SANITIZE})
    # What instrumentation adds hides from this warning what is set: it calls the standard library's regex unset.
    add_compile_options($<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>)
endif()

# For targets that work on the bits of a wire or of numbers: no conversion that loses some goes unsaid.
function(ie_warn_conversions target)
    target_compile_options(${target} PRIVATE -Wconversion)
endfunction()
