#!/usr/bin/env bash
# Runs a command on a virtual X display of its own.
set -euo pipefail
command -v Xvfb >/dev/null || { echo "SKIPPED $1: Xvfb is not installed"; exit 0; }
folder=$(mktemp -d)
# Without -noreset the server starts anew whenever its last client goes, and throws out who connects at that moment.
Xvfb -noreset -displayfd 3 -screen 0 1440x900x24 -nolisten tcp 3>"$folder/display" 2>"$folder/log" &
server=$!
trap 'kill "$server" 2>/dev/null || true; rm -rf "$folder"' EXIT
until [ -s "$folder/display" ]; do
    kill -0 "$server" 2>/dev/null || { cat "$folder/log" >&2; exit 1; }
    sleep 0.05
done
unset WAYLAND_DISPLAY
DISPLAY=":$(cat "$folder/display")" QT_QPA_PLATFORM=xcb "$@"
