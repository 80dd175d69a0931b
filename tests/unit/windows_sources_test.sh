#!/usr/bin/env bash
# The sources that are for Windows alone compile there without a warning, where the cross compiler is installed.
# usage: windows_sources_test.sh SOURCE-ROOT
set -euo pipefail
root=$1
compiler=x86_64-w64-mingw32-g++-posix
command -v "$compiler" >/dev/null || { echo "SKIPPED windows_sources_test: $compiler is not installed"; exit 0; }

count=0
while read -r source; do
    # platform_calls_windows_test runs the first; the others take Qt for Windows.
    case "${source#"$root/src/"}" in
    */PlatformCalls_windows.cpp | iefeatures/* | SuiteTools/* | */jobs/* | */window/*) continue ;;
    esac
    "$compiler" -std=c++17 -c -o /dev/null -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Werror \
        -D_WIN32_WINNT=0x0A00 -DWINVER=0x0A00 -DUNICODE -D_UNICODE -DNOMINMAX -DWIN32_LEAN_AND_MEAN \
        -I"$root/src" -I"$root/src/KXCameraControl/include" -isystem /usr/include/libusb-1.0 "$source"
    count=$((count + 1))
done < <(find "$root/src" -name '*_windows.cpp' | sort)
[ "$count" -gt 0 ] || { echo "There is none."; exit 1; }
echo "$count sources"
