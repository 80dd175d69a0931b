#!/usr/bin/env bash
# The program with a window as processes: a second start, languages, closing, a crash, missing files.
# usage: window_processes_test.sh WINDOWS-FOLDER STAGE-HAND.exe   (run by on_a_display.sh)
set -euo pipefail
command -v xdotool >/dev/null || { echo "SKIPPED window_processes_test: xdotool is not installed"; exit 0; }
windows=$1 hand=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export VELA_PROGRAM_DATA=$work/shared VELA_USER_DATA=$work/user VELA_LANGUAGE=ENG
export KX_CAMERA_INTERFACES=none KX_CAMERA_ADDRESSES='' KX_DESCRIPTION_CACHE=off
mkdir -p "$VELA_PROGRAM_DATA" "$VELA_USER_DATA/Dump"
english='Import/Export Features' chinese='导入/导出属性'
limit=60 # seconds that anything may take

fail() { printf 'FAILED: %s\n' "$*" >&2; exit 1; }
passed() { printf 'ok: %s\n' "$*"; }
window() { "$RUN" "$hand" window "$1" "$2" 2>/dev/null | tr -d '\r'; }
is() { [ "$(window look "$1")" = "$2" ]; }
within_limit() {
    local end=$((SECONDS + limit))
    until "$@"; do
        [ "$SECONDS" -lt "$end" ] || return 1
        sleep 0.1
    done
}
# place TITLE: sets X, Y, WIDTH and HEIGHT
place() { eval "$(xdotool getwindowgeometry --shell "$(xdotool search --onlyvisible --name "^$1\$" | tail -n 1)")"; }
is_right_below() { place "$1" && [ "$X" -gt "$2" ] && [ "$Y" -gt "$3" ]; }
is_gone() { ! kill -0 "$1" 2>/dev/null; }
# start FOLDER ARGUMENT... : $program is its process
start() {
    local folder=$1
    shift
    "$RUN" --with "$windows" "$folder/Import_Export_Features.exe" "$@" >"$work/out" 2>&1 &
    program=$!
}
# ends CODE PROCESS
ends() {
    local code=0
    within_limit is_gone "$2" || fail "it does not end"
    wait "$2" || code=$?
    [ "$code" -eq "$1" ] || fail "exit code $code instead of $1"
}

start "$windows"
first=$program
within_limit is "$english" shown || { cat "$work/out"; fail "no window"; }
[ -e "$VELA_USER_DATA/Log/Import_Export_Features.log" ] || fail "no log"
window minimise "$english"
within_limit is "$english" minimised || fail "it cannot be minimised"
start "$windows"
ends 0 "$program"
within_limit is "$english" shown || fail "a second start does not show the first window"
! is_gone "$first" || fail "a second start ends the first"
passed "a second start shows the first one's window and ends"

place "$english"
begin=("$X" "$Y")
xdotool mousemove $((X + 400)) $((Y + 30)) mousedown 1
for step in 1 2 3 4 5; do xdotool mousemove_relative 12 9 sleep 0.1; done
xdotool mouseup 1
within_limit is_right_below "$english" "${begin[@]}" || fail "dragged by its bar it stays at $X, $Y"
passed "its title bar moves the window"

place "$english"
popup_is() { [ "$(window popup "$english")" = "$1" ]; }
click_columns() { xdotool mousemove $((X + WIDTH - 53)) $((Y + 79)) click 1; }
popup_is none || fail "it has another window already"
for round in 1 2; do
    click_columns
    within_limit popup_is open || fail "a click on the columns' button opens nothing (round $round)"
    sleep 1 # not by itself
    popup_is open || fail "the columns' list does not stay"
    click_columns
    within_limit popup_is none || fail "a second click on the button does not close the columns' list"
    sleep 1
    popup_is none || fail "the second click opens the columns' list again"
done
click_columns
within_limit popup_is open || fail "the columns' list does not open a third time"
xdotool key Escape
within_limit popup_is none || fail "keys do not reach the columns' list"
passed "the columns' list opens and closes by its button, and closes by Escape"

mkdir "$work/other"
cp "$hand" "$work/other/Import_Export_Features.exe"
: >"$work/held"
"$RUN" "$work/other/Import_Export_Features.exe" hold "$(mktemp -p "$work")" 300000 >"$work/held" 2>&1 &
left_over=$!
within_limit grep -q held "$work/held" || fail "no process of that name"
window close "$english"
ends 0 "$first"
within_limit is_gone "$left_over" || fail "a process of that name goes on"
wait "$left_over" || true
passed "closing ends the program, with 0, and what is left of its name"

start "$windows" CH
within_limit is "$chinese" shown || fail "CH is not Chinese"
first=$program
start "$windows" ENG
ends 0 "$program"
window close "$chinese"
ends 0 "$first"
passed "the first argument chooses the language; a second start finds the Chinese window too"

start "$windows"
within_limit is "$english" shown || fail "no window"
"$RUN" "$hand" crash Import_Export_Features.exe || fail "it cannot be made to crash"
ends 5 "$program" # the last byte of 0xC0000005
[ -d "$VELA_USER_DATA/Dump/Import_Export_Features_Dump" ] || fail "the crash was not noticed"
start "$windows"
within_limit is "$english" shown || fail "a crashed copy keeps the next one out"
window close "$english"
ends 0 "$program"
passed "a crash runs the filter and keeps nobody out"

cp "$windows/Import_Export_Features.exe" "$work"
start "$work"
within_limit is "$english" shown || fail "it needs what lies beside it"
window close "$english"
ends 0 "$program"
passed "starts without resources, translations, fonts and log configuration"
