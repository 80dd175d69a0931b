#!/usr/bin/env bash
# The zip and the installer for Windows, each in a Wine installation that has seen neither: they hold what they need, and
# nothing of the machine that they were made on.
# usage: package_test.sh SOURCE-ROOT FOLDER-OF-THE-PACKAGES
set -euo pipefail
root=$1 packages=$2
run=$root/packaging/windows/wine/run
work=$(mktemp -d)
export WINEPREFIX=$work/wine
display=
trap 'wineserver -k 2>/dev/null || true; [ -z "$display" ] || kill "$display"; rm -rf "$work"' EXIT
export KX_WINDOWS_CACHE=${KX_WINDOWS_CACHE:-$HOME/.cache/import-export-features/windows}
cache=$KX_WINDOWS_CACHE person=${HOME%/}/
export HOME=$work # Wine's users have their documents there
objdump=x86_64-w64-mingw32-objdump

fail() { printf 'FAILED: %s\n' "$*" >&2; exit 1; }
passed() { printf 'ok: %s\n' "$*"; }

# Every DLL that a program of the folder names lies beside it, or is one of Windows' own.
check_libraries() {
    local file name
    for file in "$1"/*.exe "$1"/*.dll "$1"/plugins/*/*.dll; do
        while read -r name; do
            [ ! -e "$1/$name" ] || continue
            case "${name,,}" in
            advapi32.dll | bcrypt.dll | comctl32.dll | d3d11.dll | dbghelp.dll | dwmapi.dll | dxgi.dll | gdi32.dll | imm32.dll | \
            iphlpapi.dll | kernel32.dll | mpr.dll | msvcrt.dll | netapi32.dll | ole32.dll | oleaut32.dll | setupapi.dll | shell32.dll | \
            user32.dll | userenv.dll | uxtheme.dll | version.dll | winmm.dll | ws2_32.dll | wtsapi32.dll) ;;
            *) fail "$(basename "$file") needs $name" ;;
            esac
        done < <("$objdump" -p "$file" | sed -n 's/.*DLL Name: //p')
    done
}

check_content() {
    local folder=$1 file trace
    for file in Import_Export_Features.exe iefeatures.exe camera_emulator.exe KXCameraControl.dll LICENSE.txt \
        licences/LGPL-3.txt licences/qt.txt licences/Lato.txt docs/windows.md plugins/platforms/qwindows.dll \
        rcc/vela.rcc Translation/qt_zh_CN.qm FontLato/Lato-Regular.ttf log4qt/log4qt_IEFeatures.conf; do
        [ -s "$folder/$file" ] || fail "there is no $file"
    done
    check_libraries "$folder"
    for file in Import_Export_Features iefeatures camera_emulator path_entry KXCameraControl SuiteTools \
        SuiteToolsWidgets StyledCtl DevListMgr; do
        grep -qx FileDescription <(strings -el "$folder/$file".*) || fail "$file does not say what it is"
    done
    for file in Import_Export_Features iefeatures; do
        grep -qaF 'level="asInvoker"' "$folder/$file.exe" || fail "$file.exe has no manifest"
    done
    for trace in "$root" "$cache" "$person"; do
        [ "$trace" != / ] || continue
        ! grep -rlaF -- "$trace" "$folder" || fail "these name $trace"
        # the same as Windows has its texts
        ! LC_ALL=C grep -rlaP -- "$(sed 's/./\\Q&\\E\\x00/g' <<<"$trace")" "$folder" || fail "these name $trace"
    done
    [ "$(stat -c %s "$folder/libstdc++-6.dll")" -lt 4000000 ] || fail "libstdc++-6.dll is not stripped"
}

# The programs in the folder do their main job, by what lies in the folder.
check_programs() {
    local folder=$1 address=127.77.$((1 + $$ % 254)).1 emulator
    export KX_CAMERA_INTERFACES=none KX_CAMERA_ADDRESSES=$address
    rm -rf "$work/ready" "$work/out"
    mkdir "$work/out"
    (cd "$work" && exec "$run" --alone "$folder/camera_emulator.exe" --ready-file ready --address "$address") \
        >"$work/log" 2>&1 &
    emulator=$!
    local end=$((SECONDS + 60))
    until [ -e "$work/ready" ]; do
        [ "$SECONDS" -lt "$end" ] || { cat "$work/log"; fail "the emulated camera does not start"; }
        sleep 0.1
    done
    (cd "$work" && "$run" --alone "$folder/iefeatures.exe" export --all --to out) || fail "no export"
    [ "$(ls "$work/out" | wc -l)" -eq 1 ] || fail "no file was exported"
    (cd "$work" && "$run" --alone "$folder/iefeatures.exe" import out --all --verify) >"$work/log" 2>&1 || {
        cat "$work/log"
        fail "no import"
    }
    ! grep -q "audit log" "$work/log" || fail "there is no place for the audit log"
    kill -INT "$emulator"
    wait "$emulator" || true
}

# The window comes, by what lies in the folder, and goes when it is closed.
check_window() {
    local folder=$1 program end=$((SECONDS + 60)) code=0
    [ -n "$display" ] || return 0
    export VELA_USER_DATA=$work/seen VELA_LANGUAGE=ENG
    rm -rf "$work/seen"
    (cd "$work" && exec "$run" --alone "$folder/Import_Export_Features.exe") >"$work/log" 2>&1 &
    program=$!
    until xdotool search --onlyvisible --name '^Import/Export Features$' >"$work/window" 2>/dev/null; do
        [ "$SECONDS" -lt "$end" ] && kill -0 "$program" || { cat "$work/log"; fail "no window"; }
        sleep 0.2
    done
    [ -e "$work/seen/Log/Import_Export_Features.log" ] || fail "the window's program does not find what lies beside it"
    # its button, at the right end of the title bar
    eval "$(xdotool getwindowgeometry --shell "$(tail -n 1 "$work/window")")"
    xdotool mousemove $((X + WIDTH - 37)) $((Y + 33)) click 1
    wait "$program" || code=$?
    [ "$code" -eq 0 ] || fail "the window's program ends with $code"
    unset VELA_USER_DATA VELA_LANGUAGE
}

if command -v Xvfb >/dev/null && command -v xdotool >/dev/null; then
    Xvfb -noreset -displayfd 3 -screen 0 1440x900x24 -nolisten tcp 3>"$work/display" 2>/dev/null &
    display=$!
    until [ -s "$work/display" ]; do kill -0 "$display" && sleep 0.05; done
    DISPLAY=:$(cat "$work/display")
    export DISPLAY
else
    echo "SKIPPED the window: Xvfb or xdotool is not installed"
fi

zip=$(ls "$packages"/*.zip)
installer=$(ls "$packages"/*.exe)
printf '%s: %d KB\n%s: %d KB\n' "$(basename "$zip")" $(($(stat -c %s "$zip") / 1024)) \
    "$(basename "$installer")" $(($(stat -c %s "$installer") / 1024))

unzip -q "$zip" -d "$work/zip"
unzipped=$(ls -d "$work"/zip/*)
mv "$unzipped" "$work/zip/a folder 相机"
check_content "$work/zip/a folder 相机"
check_programs "$work/zip/a folder 相机"
check_window "$work/zip/a folder 相机"
passed "the zip runs from the folder that it is unpacked into"

# The unattended installation, over itself, and its removal.
install() { "$run" --alone "$installer" /S "$@" "/D=C:\\ie"; }
installed=$WINEPREFIX/drive_c/ie
entry() { "$run" reg query "$1\\Software\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\Import_Export_Features" >/dev/null 2>&1; }
uninstall() { # it goes on as a copy of itself, and its entry is the last that it takes away
    "$run" --alone "$installed/uninstall.exe" /S "$@"
    local end=$((SECONDS + 60))
    while [ -e "$installed/uninstall.exe" ] || entry HKCU || entry HKLM; do
        [ "$SECONDS" -lt "$end" ] || fail "the uninstaller does not come to its end"
        sleep 0.2
    done
}
path_of() { "$run" reg query 'HKCU\Environment' /v Path 2>/dev/null | tr -d '\r' | sed -n 's/.*REG_[A-Z_]*  *//p'; }
"$run" reg add 'HKCU\Environment' /v Path /t REG_EXPAND_SZ /d 'C:\one;%USERPROFILE%\two' /f >/dev/null
before=$(path_of)
install /PATH
check_content "$installed"
check_programs "$installed"
check_window "$installed"
[ "$(path_of)" = "$before;C:\\ie" ] || fail "PATH is $(path_of)"
echo mine >"$installed/mine.txt"
install /PATH
[ "$(path_of)" = "$before;C:\\ie" ] || fail "PATH is $(path_of) after a second installation"
[ -e "$installed/mine.txt" ] || fail "a second installation takes files away"
[ -n "$(find "$WINEPREFIX/drive_c/users" -path '*Import_Export_Features/Import_Export_Features.lnk')" ] || fail "no start menu"
user=$WINEPREFIX/drive_c/users/$(id -un)
audit=$user/Documents/VELA/Audit/iefeatures.jsonl
[ -s "$audit" ] || fail "no audit log in the user's documents"
log=$user/Documents/VELA/Log/Import_Export_Features.log
mkdir -p "$(dirname "$log")"
touch "$log" "$log.1"
descriptions=$user/AppData/Local/VELA/descriptions
[ -e "$descriptions" ] || fail "no descriptions are kept"
uninstall
[ -e "$log" ] && [ -e "$descriptions" ] || fail "the uninstaller takes what a user has, unasked"
[ "$(ls "$installed")" = mine.txt ] || { ls "$installed"; fail "the uninstaller leaves files, or takes others"; }
[ "$(path_of)" = "$before" ] || fail "PATH is $(path_of) after the removal"
passed "installs for one user without questions, over itself, and leaves nothing but what others have put there"

install
uninstall /USERDATA
[ ! -e "$log" ] && [ ! -e "$log.1" ] && [ ! -e "$descriptions" ] || fail "the uninstaller leaves logs and descriptions"
[ -s "$audit" ] || fail "the uninstaller takes the audit log"
passed "takes logs and descriptions away where it is asked to, and never the audit log"

install /AllUsers
check_content "$installed"
entry HKLM || fail "no entry for all users"
uninstall /AllUsers
[ ! -e "$installed/iefeatures.exe" ] || fail "the uninstaller leaves the programs"
passed "installs for all users"
