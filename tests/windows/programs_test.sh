#!/usr/bin/env bash
# The programs for Windows under Wine: against emulated cameras of their own, against those of this system, and the
# other way round. What each exports is the same, byte for byte.
# usage: programs_test.sh RUN WINDOWS-FOLDER STAGE-HAND.exe [FOLDER-OF-THIS-SYSTEM'S-PROGRAMS]
set -euo pipefail
run=$1 windows=$2 hand=$3 native=${4:-}
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
changes=$here/../../scripts/demo-changes.json
folder=$(mktemp -d)
cd "$folder" # on Wine's drive Z:, so that its paths can be written as they are written here
emulators=()
# Every process of this test has addresses of its own.
network=127.$((64 + $$ / 254 % 128)).$((1 + $$ % 254))
export KX_CAMERA_INTERFACES=none KX_DESCRIPTION_CACHE=off KX_CAMERA_USB=none VELA_USER_DATA=$folder/user
limit=60 # seconds that anything may take

fail() { printf 'FAILED: %s\n' "$*" >&2; exit 1; }
passed() { printf 'ok: %s\n' "$*"; }

clean_up() {
    local pid
    for pid in ${emulators[@]+"${emulators[@]}"}; do kill "$pid" 2>/dev/null || true; done
    rm -rf "$folder"
}
trap clean_up EXIT

# Words and no function: the process that is started so is the program.
windows_emulator=("$run" --with "$windows" "$windows/camera_emulator.exe")
iefeatures=("$run" --with "$windows" "$windows/iefeatures.exe")

until_there() {
    local end=$((SECONDS + limit))
    until [ -e "$1" ]; do
        [ "$SECONDS" -lt "$end" ] || { cat "${1%.ready}.log" >&2; fail "no $1"; }
        sleep 0.1
    done
}

# emulate NAME PROGRAM... : two cameras, whose last numbers follow, with the same texts for everybody
emulate() {
    local name=$1 first=$2 second=$3
    shift 3
    "$@" --ready-file "$name.ready" \
        --address "$network.$first" --serial S1 --user-name "Left" --changes "$changes" \
        --address "$network.$second" --serial S2 --user-name "Right" --changes "$changes" >"$name.log" 2>&1 &
    emulators+=($!)
    until_there "$name.ready"
}

# Its server keeps what it was started with.
stop_wine() {
    WINEPREFIX=${WINEPREFIX:-${KX_WINDOWS_CACHE:-$HOME/.cache/import-export-features/windows}/wine} wineserver -k ||
        true
}

# expect CODE COMMAND...
expect() {
    local wanted=$1 code=0
    shift
    timeout "$limit" "$@" >out 2>err || code=$?
    [ "$code" -eq "$wanted" ] || { cat out err >&2; fail "exit code $code instead of $wanted: $*"; }
}

same_files() {
    local file count=0
    for file in "$1"/*.fpk; do
        cmp "$file" "$2/$(basename "$file")" || fail "$1 and $2 differ"
        count=$((count + 1))
    done
    [ "$count" -eq 2 ] || fail "$1 has $count files"
}

emulate windows 1 2 "${windows_emulator[@]}"
export KX_CAMERA_ADDRESSES=$network.1,$network.2

expect 0 "${iefeatures[@]}" list
grep -q "S1" out && grep -q "S2" out || fail "list does not show both cameras"
passed "list shows both cameras"

mkdir first
expect 0 "${iefeatures[@]}" export --all --to first
expect 0 "${iefeatures[@]}" export --all --to first --json
! grep -q $'\r' out || fail "--json ends lines with a carriage return"
cmp first/*S1.fpk "$here/../data/emulator_export.fpk" || fail "the file is not the one that it should be"
passed "exports the file that it should be; lines for scripts end with line feeds"

mkdir "相机 Ω"
expect 0 "${iefeatures[@]}" export --all --to "相机 Ω"
same_files first "相机 Ω"
passed "a folder of any letters"

deep=$folder/$(printf 'deep%.0s' {1..40})/$(printf 'deeper%.0s' {1..30})
mkdir -p "$deep"
expect 0 "${iefeatures[@]}" export --all --to "$deep"
same_files first "$deep"
passed "a path of $((${#deep} + 20)) letters"

expect 0 "$run" "$hand" ask change
end=$((SECONDS + limit))
until grep -q changed windows.log; do
    [ "$SECONDS" -lt "$end" ] || fail "the event changed nothing"
    sleep 0.1
done
mkdir changed again
expect 0 "${iefeatures[@]}" export --all --to changed
! cmp -s first/*S1.fpk changed/*S1.fpk || fail "the event changed nothing"
expect 0 "${iefeatures[@]}" import first --all --verify
expect 0 "${iefeatures[@]}" export --all --to again
same_files first again
passed "changed by the named event, imported, verified: every setting came back"

# A virus scanner has a file open for a moment; another program has it open for good.
held=again/$(basename first/*S1.fpk)
hold() { # FILE MILLISECONDS
    : >held.out
    "$run" "$hand" hold "$1" "$2" >held.out 2>&1 &
    holder=$!
    end=$((SECONDS + limit))
    until grep -q held held.out; do [ "$SECONDS" -lt "$end" ] || fail "nobody holds it"; sleep 0.05; done
}
hold "$held" 500
expect 0 "${iefeatures[@]}" export --serial S1 --to again
wait "$holder"
hold "$held" 20000
expect 1 "${iefeatures[@]}" export --serial S1 --to again
grep -q "$(basename "$held")" out err || fail "it is not told which file is held"
kill "$holder"
wait "$holder" || true
same_files first again
hold "$held" 20000
expect 6 "${iefeatures[@]}" import "$held" --serial S1
grep -q "$(basename "$held")" out err || fail "it is not told which file to import is held"
kill "$holder"
wait "$holder" || true
passed "a file that is held for a moment is waited for, one that stays held is named, also when it is read"

# A share as Wine has them: below a folder of the Wine installation.
shares=${WINEPREFIX:-${KX_WINDOWS_CACHE:-$HOME/.cache/import-export-features/windows}/wine}/dosdevices/unc/ie-test-$$
mkdir -p "$shares" shared
ln -s "$folder/shared" "$shares/line"
ln -s /sys/kernel "$shares/readonly" # nobody makes files there
expect 0 "${iefeatures[@]}" export --all --to "\\\\ie-test-$$\\line"
same_files first shared
expect 0 "${iefeatures[@]}" verify "\\\\ie-test-$$\\line" --all
expect 0 "${iefeatures[@]}" line init "\\\\ie-test-$$\\line\\line.toml" --all
expect 0 "${iefeatures[@]}" line check "\\\\ie-test-$$\\line\\line.toml" --metrics "\\\\ie-test-$$\\line\\line.prom"
[ -s shared/line.toml ] && [ -s shared/line.prom ] || fail "no inventory, or no metrics, on a share"
expect 6 "${iefeatures[@]}" export --all --to "\\\\ie-test-$$\\readonly"
grep -q "readonly" out err || fail "it is not told which share takes no files"
rm -r "$shares"
passed "a share is written to and read from; one that takes no files is named"

mkdir relative
expect 0 "${iefeatures[@]}" export --all --to Z:relative
same_files first relative
passed "a folder below a drive's current one"

for device in NUL CON COM1 first:stream; do
    expect 6 "${iefeatures[@]}" export --all --to "$device"
    expect 6 "${iefeatures[@]}" import "$device" --serial S1
done
passed "devices and streams of files are neither folders nor features files"

# As of a person whose name is in no 8-bit encoding.
profile="$folder/用户 Ω name"
mkdir -p "$profile"
(
    export VELA_USER_DATA=$profile/documents VELA_PROGRAM_DATA=$profile/shared KX_DESCRIPTION_CACHE=$profile/cache
    mkdir "$profile/out" "$profile/snapshots"
    expect 0 "${iefeatures[@]}" export --all --to "$profile/out" --log "$profile/log.txt"
    same_files first "$profile/out"
    expect 6 "${iefeatures[@]}" import "$profile/out" --all --snapshot "$profile/snapshots" # has a feature bag
    grep -q "beyond Latin-1" out err || fail "a path that a snapshot cannot have is not told"
    expect 0 "${iefeatures[@]}" import "$profile/out" --all
    [ -s "$profile/log.txt" ] || fail "no log in a profile of any letters"
    grep -q S1 "$profile"/documents/Audit/iefeatures.jsonl || fail "no audit log in a profile of any letters"
    [ -n "$(ls -A "$profile/cache")" ] || fail "no descriptions are kept in a profile of any letters"
)
passed "a profile's path of any letters, with blanks: log, audit log, descriptions"

"${windows_emulator[@]}" --ready-file odd.ready --address "$network.3" --serial "a:b" \
    --address "$network.4" --serial SLOW --fault delay=20 >odd.log 2>&1 &
emulators+=($!)
until_there odd.ready
export KX_CAMERA_ADDRESSES=$network.3,$network.4
mkdir odd slow
expect 1 "${iefeatures[@]}" export --serial a:b --to odd
grep -q "no file can be called" out err || fail "a colon in a name is not refused"
[ -z "$(ls -A odd)" ] || fail "a colon in a name made a file"
passed "a camera's name that Windows takes for something else is refused"

"${iefeatures[@]}" export --serial SLOW --to slow >out 2>&1 &
exporting=$!
end=$((SECONDS + limit))
until [ -n "$(ls -A slow)" ]; do
    [ "$SECONDS" -lt "$end" ] || fail "the export does not begin"
    sleep 0.05
done
kill -INT "$exporting"
code=0
wait "$exporting" || code=$?
[ "$code" -eq 130 ] || { cat out >&2; fail "exit code $code instead of 130 after Ctrl-C"; }
[ -z "$(ls -A slow)" ] || fail "Ctrl-C left $(ls -A slow)"
passed "Ctrl-C ends an export and leaves no file"

expect 0 "$run" "$hand" ask end
for pid in "${emulators[@]}"; do wait "$pid" || fail "an emulator did not end well"; done
emulators=()
passed "the emulators end by their event"

# Most users' system has its 8-bit texts in code page 936. Wine has it by the locale that its server starts in.
mkdir locale
if localedef -i zh_CN -f UTF-8 "$folder/locale/zh_CN.UTF-8" 2>/dev/null; then
    stop_wine
    { export LOCPATH=$folder/locale LC_ALL=zh_CN.UTF-8; } 2>/dev/null # this shell does not know it
    expect 0 "$run" "$hand" code-page
    grep -q '^936' out || fail "the code page is $(cat out)"
    emulate chinese 9 10 "${windows_emulator[@]}"
    export KX_CAMERA_ADDRESSES=$network.9,$network.10
    mkdir "导出"
    expect 0 "${iefeatures[@]}" export --all --to "导出"
    same_files first "导出"
    expect 0 "${iefeatures[@]}" verify "导出" --all
    expect 2 "${iefeatures[@]}" export --all --format bag --to "导出"
    grep -q "only Latin-1" out err || fail "a path that a feature bag cannot have is not told"
    expect 0 "$run" "$hand" ask end
    wait "${emulators[@]}" || fail "an emulator did not end well"
    emulators=()
    unset LOCPATH LC_ALL
    stop_wine
    passed "code page 936"
else
    echo "SKIPPED code page 936: the package locales is not installed"
fi

if [ ! -x "$native/iefeatures" ] || [ ! -x "$native/camera_emulator" ]; then
    echo "SKIPPED against this system's programs: they are not built"
    exit 0
fi
emulate windows2 5 6 "${windows_emulator[@]}"
emulate native 7 8 "$native/camera_emulator"
for pair in "5 6" "7 8"; do
    read -r one two <<<"$pair"
    export KX_CAMERA_ADDRESSES=$network.$one,$network.$two
    mkdir "by-windows-$one" "by-native-$one"
    expect 0 "${iefeatures[@]}" export --all --to "by-windows-$one"
    expect 0 "$native/iefeatures" export --all --to "by-native-$one"
    same_files "by-windows-$one" "by-native-$one"
    expect 0 "${iefeatures[@]}" verify "by-native-$one" --all
done
same_files by-windows-5 by-windows-7
passed "the same files from all four pairs of programs"
expect 0 "$run" "$hand" ask end
