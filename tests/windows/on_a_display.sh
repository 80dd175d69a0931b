#!/usr/bin/env bash
# Runs a program for Windows under Wine on a virtual X display of its own, in a Wine installation of its own: the first
# program there decides on the display of all.
# usage: on_a_display.sh WINDOWS-FOLDER PROGRAM.exe [ARGUMENT...]
#        on_a_display.sh WINDOWS-FOLDER SCRIPT.sh [ARGUMENT...]   which finds Wine's way to start one in $RUN
set -euo pipefail
windows=$1 what=$2
shift 2
command -v Xvfb >/dev/null || { echo "SKIPPED $what: Xvfb is not installed"; exit 0; }
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
export RUN=$here/../../packaging/windows/wine/run
export WINEPREFIX=${KX_WINDOWS_CACHE:-$HOME/.cache/import-export-features/windows}/wine-display
folder=$(mktemp -d)
# Without -noreset it forgets everything when its last program ends, and who comes at that moment is lost.
Xvfb -noreset -displayfd 3 -screen 0 1440x900x24 -nolisten tcp 3>"$folder/display" 2>"$folder/log" &
server=$!
clean_up() {
    wineserver -k 2>/dev/null || true
    kill "$server" 2>/dev/null || true
    rm -rf "$folder"
}
trap clean_up EXIT
until [ -s "$folder/display" ]; do
    kill -0 "$server" 2>/dev/null || { cat "$folder/log" >&2; exit 1; }
    sleep 0.05
done
DISPLAY=:$(cat "$folder/display")
export DISPLAY
unset QT_QPA_PLATFORM
export QT_FORCE_STDERR_LOGGING=1 # or tests tell nobody
case "$what" in
*.sh) bash "$what" "$windows" "$@" ;;
*) "$RUN" --with "$windows" "$what" "$@" ;;
esac
