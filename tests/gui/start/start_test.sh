#!/usr/bin/env bash
# Two copies of the program, each with a trace of the steps that it really makes: the first from its start to its end,
# the second up to the guard; and the first one's window, minimised, comes back for the second.
# usage: start_test.sh PROGRAM TRACE-LIBRARY WINDOW-MANAGER   (run by on_a_display.sh)
set -euo pipefail
program=$1 trace=$2 manager=$3
command -v xdotool >/dev/null || { echo "SKIPPED start_test: xdotool is not installed"; exit 0; }

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
mkdir -p -m 700 "$XDG_RUNTIME_DIR" "$VELA_PROGRAM_DATA" "$VELA_USER_DATA"

fail() { echo "FAILED: $*"; exit 1; }
within_seconds() { # seconds, command
    local end=$((SECONDS + $1))
    shift
    until "$@"; do
        [ "$SECONDS" -lt "$end" ] || return 1
        sleep 0.05
    done
}
# start NAME ARGUMENT...: a copy of the program with the trace NAME; its id goes to $id.
start() {
    local name=$1
    shift
    IE_START_TRACE="$work/$name" LD_PRELOAD="$trace" ASAN_OPTIONS="${ASAN_OPTIONS:-}:verify_asan_link_order=0" \
        "$program" "$@" >"$work/$name.out" 2>&1 &
    id=$!
    started+=("$id")
}
has_step() { [ -e "$work/$1" ] && grep -qxF -- "$2" "$work/$1"; }
is_gone() { ! kill -0 "$1" 2>/dev/null; }
visible() { xdotool search --onlyvisible --name '^导入/导出属性$' 2>/dev/null | wc -l; }
shows() { [ "$(visible)" -eq "$1" ]; }
same() { # what, expected text, file
    diff -u --label "$1, expected" --label "$1, made" - "$3" <<<"$2" || fail "$1"
}

: >"$work/manager.out"
"$manager" >"$work/manager.out" 2>&1 &
started+=("$!")
disown "$!" # its end is no news
within_seconds 20 grep -qx ready "$work/manager.out" || fail "the window manager does not run"

set_up='style fusion
resource BESIDE/rcc/vela.rcc: taken
resource BESIDE/rcc/ToolBarBtn.rcc: taken
plug-in path BESIDE/plugins
log configuration BESIDE/log4qt/log4qt_IEFeatures.conf
font BESIDE/FontLato/.: refused
font BESIDE/FontLato/..: refused
font BESIDE/FontLato/Lato-Bold.ttf: taken
font BESIDE/FontLato/Lato-BoldItalic.ttf: taken
font BESIDE/FontLato/Lato-Italic.ttf: taken
font BESIDE/FontLato/Lato-Regular.ttf: taken
native windows off
language English
language Chinese
translation BESIDE ./Translation/Import_Export_Features_zh_CN.qm: taken
translation BESIDE ./Translation/qt_zh_CN.qm: taken
translation BESIDE ./Translation/StyledCtl_zh_CN.qm: taken
translation BESIDE ./Translation/SuiteTools_zh_CN.qm: taken
translation BESIDE ./Translation/DevListMgr_zh_CN.qm: taken
crash filter
icon: from the resources'
first_start="$set_up
guard: lock taken
processes of the name counted
shows MainWidget
native event filter on
event loop"
brought_back='shows MainWidget without activation
raises MainWidget
activates MainWidget'
ending='event loop ended
native event filter off
guard: lock given back
left-over processes ended: Import_Export_Features
processes of the name counted
window gone: MainWidget'
second_start="$set_up
guard: lock held by another
asks the first copy: find 导入/导出属性
asks the first copy: show
asks the first copy: front"

start first CH
first=$id
within_seconds 30 has_step first 'event loop' || fail "the first copy does not come so far"
within_seconds 20 shows 1 || fail "the window does not appear"
same "the first copy's start" "$first_start" "$work/first"

window=$(xdotool search --onlyvisible --name '^导入/导出属性$')
xdotool windowminimize "$window"
within_seconds 20 shows 0 || fail "the window is not minimised"

start second CH
second=$id
within_seconds 30 is_gone "$second" || fail "the second copy stays"
code=0
wait "$second" || code=$?
[ "$code" -eq 0 ] || fail "the second copy's exit code is $code"
[ ! -s "$work/second.out" ] || fail "the second copy says: $(cat "$work/second.out")"
same "the second copy" "$second_start" "$work/second"
within_seconds 20 shows 1 || fail "the minimised window does not come back"
within_seconds 20 has_step first 'activates MainWidget' || fail "the window is not activated"
same "the first copy, asked" "$first_start
$brought_back" "$work/first"

eval "$(xdotool getwindowgeometry --shell "$window")"
xdotool mousemove $((X + WIDTH - 23)) $((Y + 19)) click 1 # the button at the right end of its title bar
within_seconds 20 is_gone "$first" || fail "the first copy does not end"
code=0
wait "$first" || code=$?
[ "$code" -eq 0 ] || fail "the first copy's exit code is $code"
same "the first copy, ended" "$first_start
$brought_back
$ending" "$work/first"
echo "two copies, every step in its place"
