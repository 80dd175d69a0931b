#!/usr/bin/env bash
# The program as processes, on a display: second start, languages, crash, missing files, closing.
# usage: processes_test.sh FOLDER-OF-THE-PROGRAM FOLDER-OF-ITS-LIBRARIES   (run by on_a_display.sh)
set -euo pipefail
programs=$1 libraries=$2
command -v xdotool >/dev/null || { echo "SKIPPED processes_test: xdotool is not installed"; exit 0; }

work=$(mktemp -d)
started=()
cleanup() {
    local id
    for id in "${started[@]:-}"; do [ -z "$id" ] || kill -KILL "$id" 2>/dev/null || true; done
    rm -rf "$work"
}
trap cleanup EXIT

export XDG_RUNTIME_DIR="$work/runtime" VELA_PROGRAM_DATA="$work/shared" VELA_USER_DATA="$work/user"
export KX_CAMERA_INTERFACES=none KX_CAMERA_USB=none KX_CAMERA_ADDRESSES='' KX_DESCRIPTION_CACHE=off VELA_LANGUAGE=ENG
mkdir -p "$XDG_RUNTIME_DIR" "$VELA_PROGRAM_DATA" "$VELA_USER_DATA"
chmod 700 "$XDG_RUNTIME_DIR"

english='^Import/Export Features$' chinese='^导入/导出属性$'
checks=0 failures=0
expect() { # what is expected, then a command that tells whether it is so
    local what=$1
    shift
    checks=$((checks + 1))
    "$@" || { failures=$((failures + 1)); echo "FAILED: $what"; }
}
within_seconds() { # seconds, command
    local end=$((SECONDS + $1))
    shift
    until "$@"; do
        [ "$SECONDS" -lt "$end" ] || return 1
        sleep 0.05
    done
}
windows() { xdotool search --onlyvisible --name "$1" 2>/dev/null | wc -l; }
has_windows() { [ "$(windows "$2")" -eq "$1" ]; }
all_windows() { { xdotool search --onlyvisible --name '' 2>/dev/null || true; } | wc -l; }
is_gone() { ! kill -0 "$1" 2>/dev/null; }
start() { # arguments of the program; its id goes to $program
    (umask 0 && exec "${folder:-$programs}/Import_Export_Features" "$@") >"$work/out" 2>&1 &
    program=$!
    started+=("$program")
}
exit_code() { local code=0; wait "$1" || code=$?; echo "$code"; }
exits_with() { [ "$(exit_code "$2")" -eq "$1" ]; }
close_window() { # by its button, at the right end of the title bar
    eval "$(xdotool getwindowgeometry --shell "$(xdotool search --onlyvisible --name "$1" | tail -n 1)")"
    xdotool mousemove $((X + WIDTH - 23)) $((Y + 19)) click 1
}

# A first copy, and a second one that shows the first and leaves.
start
first=$program
expect "the window appears" within_seconds 60 has_windows 1 "$english"
start
expect "a second copy ends" within_seconds 60 is_gone "$program"
expect "a second copy's exit code is 0" exits_with 0 "$program"
expect "a second copy shows no window" has_windows 1 "$english"
expect "a second copy says nothing" [ ! -s "$work/out" ]
expect "the first copy goes on" kill -0 "$first"
expect "its log is opened" [ -e "$VELA_USER_DATA/Log/Import_Export_Features.log" ]
expect "looking makes no settings file" [ ! -e "$VELA_PROGRAM_DATA/LocalConfig.ini" ]
close_window "$english"
expect "the window's button ends the program" within_seconds 60 is_gone "$first"
expect "with exit code 0" exits_with 0 "$first"

# What still runs of the program when the window closes goes along; another session's copy stays.
mkdir -m 700 "$work/other-session"
(XDG_RUNTIME_DIR="$work/other-session" start && echo "$program" >"$work/other.id")
other=$(cat "$work/other.id")
started+=("$other")
expect "another session has its own copy" within_seconds 60 has_windows 1 "$english"
start CH
first=$program
expect "and this one too" within_seconds 60 has_windows 1 "$chinese"
cp "$(command -v sleep)" "$work/Import_Export_Features"
"$work/Import_Export_Features" 300 &
left_over=$!
started+=("$left_over")
close_window "$chinese"
expect "the window closes" within_seconds 60 is_gone "$first"
expect "a process of that name is ended" within_seconds 60 is_gone "$left_over"
expect "with exit code 0 of the one that ended it" exits_with 0 "$first"
expect "the other session's copy goes on" has_windows 1 "$english"
kill "$other"
expect "until it is ended itself" within_seconds 60 has_windows 0 "$english"

# The first argument overrides the suite's language, where it is exactly one of the two words.
start CH
expect "CH is Chinese" within_seconds 60 has_windows 1 "$chinese"
first=$program
start ENG
expect "a second copy finds the Chinese window too" within_seconds 60 is_gone "$program"
expect "and does not open its own" has_windows 0 "$english"
close_window "$chinese"
expect "it closes" within_seconds 60 is_gone "$first"
VELA_LANGUAGE=CH start ENG
expect "ENG is English" within_seconds 60 has_windows 1 "$english"
kill "$program"
within_seconds 60 is_gone "$program"
VELA_LANGUAGE=CH start eng ENG
expect "eng is no language, and a second argument counts for nothing" within_seconds 60 has_windows 1 "$chinese"

# What it made so far, whatever the umask.
open_to_others() { find "$VELA_USER_DATA" "$VELA_PROGRAM_DATA" "$XDG_RUNTIME_DIR" -mindepth 1 -perm /o+w | grep .; }
expect "nothing that it made can be written by others" eval '! open_to_others'

# A crash: a report beside the dump folder, nothing on the screen.
shown_before=$(all_windows)
kill -SEGV "$program"
expect "a crashed copy ends" within_seconds 60 is_gone "$program"
expect "a crashed copy ends by the crash, not because it waited for somebody" exits_with $((128 + 11)) "$program"
expect "a crashed copy says nothing" [ ! -s "$work/out" ]
expect "a crashed copy leaves no window" [ "$(all_windows)" -lt "$shown_before" ]
report=$(find "$VELA_USER_DATA/Dump" -name '*.backtrace.txt' | head -n 1)
expect "the crash left a report" [ -n "$report" ]
expect "which others cannot write either" eval '! open_to_others'
expect "with a backtrace" grep -q 'Import_Export_Features' "${report:-/dev/null}"
start
expect "a crashed copy does not keep the next one out" within_seconds 60 has_windows 1 "$english"
kill "$program"
within_seconds 60 is_gone "$program"

# Without resources, translations, fonts and log configuration.
mkdir "$work/bare"
cp "$programs/Import_Export_Features" "$work/bare"
(folder="$work/bare" LD_LIBRARY_PATH="$libraries" start && echo "$program" >"$work/bare.id")
program=$(cat "$work/bare.id")
started+=("$program")
expect "it starts without the files beside it" within_seconds 60 has_windows 1 "$english"
kill "$program"

# From another working folder everything is still found beside the program.
within_seconds 60 is_gone "$program"
cd /
start CH
expect "files are looked for beside the program" within_seconds 60 has_windows 1 "$chinese"
kill "$program"
within_seconds 60 is_gone "$program"

# No display.
code=0
DISPLAY=:65535 "$programs/Import_Export_Features" >"$work/out" 2>&1 || code=$?
expect "no display: exit code 1" [ "$code" -eq 1 ]
expect "no display: a clear message" grep -q "needs a display and found none" "$work/out"

echo "$checks checks, $failures failures"
[ "$failures" -eq 0 ]
