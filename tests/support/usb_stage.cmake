# Emulated USB devices under the real libusb.
pkg_check_modules(UMOCKDEV REQUIRED IMPORTED_TARGET GLOBAL umockdev-1.0)
add_library(usb_stage STATIC UsbStage.cpp UsbStage.h)
target_include_directories(usb_stage PUBLIC "${CMAKE_SOURCE_DIR}/tests")
target_link_libraries(usb_stage PUBLIC camera_emulator_core PRIVATE PkgConfig::UMOCKDEV)
# The sanitizer's library has to come before umockdev's.
set(sanitizer_preload "")
if(IE_SANITIZE MATCHES "address|thread")
    string(REGEX MATCH "address|thread" kind "${IE_SANITIZE}")
    string(REPLACE "address" "libasan.so" library "${kind}")
    string(REPLACE "thread" "libtsan.so" library "${library}")
    execute_process(COMMAND "${CMAKE_CXX_COMPILER}" -print-file-name=${library}
        OUTPUT_VARIABLE sanitizer_preload OUTPUT_STRIP_TRAILING_WHITESPACE)
    string(APPEND sanitizer_preload ":")
endif()
target_compile_definitions(usb_stage PRIVATE IE_SANITIZER_PRELOAD="${sanitizer_preload}")
