#!/usr/bin/env bash
# Cross-compiles the Windows half of the platform's calls with its test and runs it under Wine, where both are
# installed. usage: run_under_wine.sh SOURCE-ROOT BUILD-FOLDER   (run by on_a_display.sh)
set -euo pipefail
root=$1 build=$2
compiler=x86_64-w64-mingw32-g++-posix
wine=/usr/lib/wine/wine64
for tool in "$compiler" "$wine"; do
    command -v "$tool" >/dev/null || { echo "SKIPPED platform_calls_windows_test: $tool is not installed"; exit 0; }
done

mkdir -p "$build"
program="$build/platform_calls_windows_test.exe"
sources="$root/src/VELA_Import_Export_Features"
"$compiler" -std=c++17 -O1 -Wall -Wextra -Werror -static -I"$sources" \
    "$root/tests/gui/windows/platform_calls_windows_test.cpp" "$sources/startup/PlatformCalls_windows.cpp" \
    -o "$program" -ldbghelp

# The prefix is kept: making one takes longer than the test.
export WINEPREFIX="$build/wine" WINEARCH=win64 WINEDEBUG=-all
export WINEDLLOVERRIDES='mscoree,mshtml=;winemenubuilder.exe='
trap 'wineserver -k 2>/dev/null || /usr/lib/wine/wineserver64 -k 2>/dev/null || true' EXIT
[ -e "$WINEPREFIX/system.reg" ] || "$wine" wineboot -i >/dev/null 2>&1
"$wine" "$program"
