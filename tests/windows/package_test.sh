#!/usr/bin/env bash
# The zip and the installer for Windows, each in a Wine installation that has seen neither: they hold what they need, and
# nothing of the machine that they were made on.
# usage: package_test.sh SOURCE-ROOT FOLDER-OF-THE-PACKAGES
set -euo pipefail
root=$1 packages=$2
run=$root/packaging/windows/wine/run
work=$(mktemp -d)
export WINEPREFIX=$work/wine
trap 'wineserver -k 2>/dev/null || true; rm -rf "$work"' EXIT
export KX_WINDOWS_CACHE=${KX_WINDOWS_CACHE:-$HOME/.cache/import-export-features/windows}
cache=$KX_WINDOWS_CACHE person=${HOME%/}/
export HOME=$work # Wine's users have their documents there
objdump=x86_64-w64-mingw32-objdump

fail() { printf 'FAILED: %s\n' "$*" >&2; exit 1; }
passed() { printf 'ok: %s\n' "$*"; }

# Every DLL that a program of the folder names lies beside it, or is one of Windows' own.
check_libraries() {
    local file name
    for file in "$1"/*.exe "$1"/*.dll; do
        while read -r name; do
            [ ! -e "$1/$name" ] || continue
            case "${name,,}" in
            advapi32.dll | bcrypt.dll | comctl32.dll | dbghelp.dll | gdi32.dll | iphlpapi.dll | kernel32.dll | mpr.dll | msvcrt.dll | \
            netapi32.dll | ole32.dll | shell32.dll | user32.dll | userenv.dll | version.dll | winmm.dll | ws2_32.dll) ;;
            *) fail "$(basename "$file") needs $name" ;;
            esac
        done < <("$objdump" -p "$file" | sed -n 's/.*DLL Name: //p')
    done
}

check_content() {
    local folder=$1 file trace
    for file in iefeatures.exe camera_emulator.exe KXCameraControl.dll LICENSE.txt licences/LGPL-3.txt licences/qt.txt \
        docs/windows.md; do
        [ -s "$folder/$file" ] || fail "there is no $file"
    done
    check_libraries "$folder"
    for file in iefeatures camera_emulator path_entry KXCameraControl SuiteTools; do
        strings -el "$folder/$file".* | grep -qx FileDescription || fail "$file does not say what it is"
    done
    grep -qaF 'level="asInvoker"' "$folder/iefeatures.exe" || fail "iefeatures.exe has no manifest"
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

zip=$(ls "$packages"/*.zip)
installer=$(ls "$packages"/*.exe)
printf '%s: %d KB\n%s: %d KB\n' "$(basename "$zip")" $(($(stat -c %s "$zip") / 1024)) \
    "$(basename "$installer")" $(($(stat -c %s "$installer") / 1024))

unzip -q "$zip" -d "$work/zip"
unzipped=$(ls -d "$work"/zip/*)
mv "$unzipped" "$work/zip/a folder 相机"
check_content "$work/zip/a folder 相机"
check_programs "$work/zip/a folder 相机"
passed "the zip runs from the folder that it is unpacked into"

# The unattended installation, over itself, and its removal.
install() { "$run" --alone "$installer" /S "$@" "/D=C:\\ie"; }
installed=$WINEPREFIX/drive_c/ie
uninstall() { # it goes on as a copy of itself
    "$run" --alone "$installed/uninstall.exe" /S "$@"
    local end=$((SECONDS + 60))
    while [ -e "$installed/uninstall.exe" ]; do
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
[ "$(path_of)" = "$before;C:\\ie" ] || fail "PATH is $(path_of)"
echo mine >"$installed/mine.txt"
install /PATH
[ "$(path_of)" = "$before;C:\\ie" ] || fail "PATH is $(path_of) after a second installation"
[ -e "$installed/mine.txt" ] || fail "a second installation takes files away"
find "$WINEPREFIX/drive_c/users" -name '*.lnk' -path '*Import_Export_Features*' | grep -q . || fail "no start menu"
uninstall
[ "$(ls "$installed")" = mine.txt ] || { ls "$installed"; fail "the uninstaller leaves files, or takes others"; }
[ "$(path_of)" = "$before" ] || fail "PATH is $(path_of) after the removal"
! "$run" reg query 'HKCU\Software\Microsoft\Windows\CurrentVersion\Uninstall\Import_Export_Features' >/dev/null 2>&1 ||
    fail "the uninstaller leaves its entry"
passed "installs for one user without questions, over itself, and leaves nothing but what others have put there"

install /AllUsers
check_content "$installed"
"$run" reg query 'HKLM\Software\Microsoft\Windows\CurrentVersion\Uninstall\Import_Export_Features' >/dev/null 2>&1 ||
    fail "no entry for all users"
uninstall /AllUsers
[ ! -e "$installed/iefeatures.exe" ] || fail "the uninstaller leaves the programs"
passed "installs for all users"
