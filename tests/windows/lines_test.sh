#!/usr/bin/env bash
# Cameras behind COM ports, serial libraries of grabbers and GenTL producers, under Wine: emulated by this system's
# program, which the program for Windows reaches by a pseudo terminal and by DLLs. What it exports is what this system
# exports.
# usage: lines_test.sh RUN WINDOWS-FOLDER PRODUCER.cti CLSER.dll [FOLDER-OF-THIS-SYSTEM'S-PROGRAMS]
set -euo pipefail
run=$1 windows=$2 producer=$3 library=$4 native=${5:-}
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
[ -n "$native" ] || { echo "SKIPPED: KX_NATIVE_PROGRAMS names no programs of this system"; exit 0; }
folder=$(mktemp -d)
cd "$folder" # on Wine's drive Z:, so that its paths can be written as they are written here
processes=()
limit=180 # seconds that anything may take
# An installation of its own: its server starts with the port.
export WINEPREFIX=$folder/prefix KX_CAMERA_INTERFACES=none KX_CAMERA_ADDRESSES= KX_DESCRIPTION_CACHE=off
export VELA_USER_DATA=$folder/user
iefeatures=("$run" --with "$windows" "$windows/iefeatures.exe")
end_wine() { wineserver -k 2>/dev/null || /usr/lib/wine/wineserver64 -k || true; }

fail() { printf 'FAILED: %s\n' "$*" >&2; exit 1; }
passed() { printf 'ok: %s\n' "$*"; }
clean_up() {
    local process
    for process in ${processes[@]+"${processes[@]}"}; do kill "$process" 2>/dev/null || true; done
    end_wine
    rm -rf "$folder"
}
trap clean_up EXIT

# start FILE COMMAND... : in the background, until there is the file
start() {
    local file=$1 end=$((SECONDS + limit))
    shift
    "$@" >>started.log 2>&1 &
    processes+=($!)
    until [ -e "$file" ]; do
        [ "$SECONDS" -lt "$end" ] || { cat started.log >&2; fail "no $file"; }
        sleep 0.1
    done
}

# expect CODE TEXT COMMAND... : the exit code, and a text in what it says
expect() {
    local wanted=$1 text=$2 code=0
    shift 2
    timeout "$limit" "$@" >out 2>err || code=$?
    [ "$code" -eq "$wanted" ] || { cat out err >&2; fail "exit code $code instead of $wanted: $*"; }
    grep -qF -- "$text" out err || { cat out err >&2; fail "\"$text\" is not told: $*"; }
}

# round_trip FILE : exported by both systems, the same; imported and verified on Windows
round_trip() {
    mkdir -p here there
    expect 0 "1 exported" "${iefeatures[@]}" export --all --to there
    expect 0 "1 exported" env $2 "$native/iefeatures" export --all --to here
    cmp "here/$1" "there/$1" || fail "the files differ"
    expect 0 "1 applied" "${iefeatures[@]}" import "there/$1" --all --verify
}

start serial.ready "$native/camera_emulator" --link "$folder/line" --serial CL1 --ready-file serial.ready
"$run" reg add 'HKLM\Software\Wine\Ports' /v COM33 /t REG_SZ /d "$folder/line" /f >/dev/null
end_wine
export KX_CAMERA_SERIAL_PORTS=COM33,COM34
expect 0 "COM33" "${iefeatures[@]}" list
[ "$(grep -c CL1 out)" -eq 1 ] || fail "one camera hangs on the ports"
round_trip EMU-1_CL1.fpk "KX_CAMERA_SERIAL_PORTS=$folder/line"
passed "a camera behind a COM port"
export KX_CAMERA_SERIAL_PORTS=

mkdir grabber 'grabber/数 据'
cp "$library" 'grabber/数 据/clseremu.dll'
export CLSEREMU_PORTS=COM33 CLSERIALPATH="$folder/none;$folder/grabber/数 据" KX_GENTL_TIMEOUT=3000
expect 0 "Emulated board, port A" "${iefeatures[@]}" list
round_trip EMU-1_CL1.fpk "KX_CAMERA_SERIAL_PORTS=$folder/line CLSERIALPATH="
expect 0 "crashed in clSerialInit (exit code 3)" env CLSEREMU_FAULTS=clSerialInit=crash "${iefeatures[@]}" list
expect 0 "hung in clSerialInit for 3000 ms and was ended." env CLSEREMU_FAULTS=clSerialInit=hang "${iefeatures[@]}" list
expect 1 "0 exported, 1 failed" env CLSEREMU_FAULTS=clSerialRead=crash@60 "${iefeatures[@]}" export --all --to there
passed "a camera behind the serial library of a grabber"
unset CLSEREMU_PORTS CLSERIALPATH KX_GENTL_TIMEOUT

start grabber.ready "$native/camera_emulator" --socket "$folder/camera" --serial GT1 --ready-file grabber.ready
start port python3 "$here/grabber_bridge.py" "$folder/camera" port
mkdir producers 'producers/数 据'
cp "$producer" 'producers/数 据/camera.CTI' # names are the same in any case there
export CAMERA_EMULATOR_GENTL=$(cat port) GENICAM_GENTL64_PATH="$folder/none;$folder/producers/数 据"
expect 0 "EMU-Grabber" "${iefeatures[@]}" list
round_trip EMU-1_GT1.fpk \
    "CAMERA_EMULATOR_GENTL=$folder/camera GENICAM_GENTL64_PATH=$native/../lib/gentl"
passed "a camera behind a GenTL producer"

export KX_GENTL_TIMEOUT=1500
expect 1 "0 exported, 1 failed" env CAMERA_EMULATOR_GENTL_FAULTS=IFOpenDevice=crash "${iefeatures[@]}" export --all --to there
expect 0 "hung in TLOpenInterface for 1500 ms and was ended." \
    env CAMERA_EMULATOR_GENTL_FAULTS=TLOpenInterface=hang "${iefeatures[@]}" list
expect 0 "crashed in TLOpen (exit code 3)" env CAMERA_EMULATOR_GENTL_FAULTS=TLOpen=crash "${iefeatures[@]}" list
passed "a producer that crashes or hangs, which is told and ends nothing"

head -c 3000 "$producer" >producers/cut.cti
cp /bin/true producers/foreign.cti
cp "$producer" producers/clserfake.dll
mkdir producers/clserfolder.dll
export GENICAM_GENTL64_PATH=$folder/producers CLSERIALPATH=$folder/producers
expect 0 "foreign.cti is no shared library." "${iefeatures[@]}" list
grep -q "cut.cti cannot be used: it cannot be loaded: " err || { cat err >&2; fail "half a library is not told"; }
grep -q "clserfake.dll cannot be used: it is no serial library of Camera Link 1.1: it lacks " err ||
    { cat err >&2; fail "a library that is none is not told"; }
! grep -q "GigE Vision cameras are looked for" out err || fail "nothing is left out any more"
passed "libraries that are none"
