#!/usr/bin/env bash
# Packs the program, unpacks it into an empty root and starts it there.
# usage: package_test.sh BUILD-FOLDER
set -euo pipefail
build=$1
for tool in dpkg-deb dpkg-shlibdeps file; do
    command -v "$tool" >/dev/null || { echo "SKIPPED package_test: $tool is not installed"; exit 0; }
done
work=$(mktemp -d)
program=
trap '[ -z "$program" ] || kill -KILL "$program" 2>/dev/null || true; rm -rf "$work"' EXIT
fail() { echo "FAILED: $*"; exit 1; }

(cd "$build" && cpack -G DEB -B "$work" >"$work/cpack.log" 2>&1) || { cat "$work/cpack.log"; fail "packing"; }
package=$(find "$work" -maxdepth 1 -name '*.deb')
root="$work/root"
dpkg-deb -x "$package" "$root"
grep -q libqt5widgets5 <(dpkg-deb -f "$package" Depends) || fail "the package does not name what it needs"

for file in share/applications/import-export-features.desktop share/man/man1/iefeatures.1 share/man/man1/camera_emulator.1 \
    share/bash-completion/completions/iefeatures share/doc/import-export-features/line-inventory.schema.json \
    share/doc/import-export-features/LICENSE share/doc/import-export-features/LICENSE.Lato \
    share/icons/hicolor/{16x16,24x24,32x32,48x48,64x64,128x128,256x256}/apps/import-export-features.png \
    lib/import-export-features/Translation/qt_zh_CN.qm lib/import-export-features/FontLato/Lato-Regular.ttf; do
    [ -s "$root/usr/$file" ] || fail "$file is missing"
done
if command -v desktop-file-validate >/dev/null; then
    desktop-file-validate "$root/usr/share/applications/import-export-features.desktop" || fail "the desktop file"
fi
! ldd "$root/usr/bin/Import_Export_Features" "$root/usr/bin/iefeatures" "$root/usr/bin/camera_emulator" | grep -F "$build" ||
    fail "the installed programs use the build folder"

"$root/usr/bin/iefeatures" --help >"$work/help"
grep -q export "$work/help" || fail "iefeatures does not run"
"$root/usr/bin/camera_emulator" --help >"$work/help"
grep -q -e --fault "$work/help" || fail "camera_emulator does not run"
# A page that another one sends its reader to is there in this package.
for page in "$root"/usr/share/man/man1/*.1; do
    for other in $(sed -n '/^\.SH SEE ALSO/,$s/^\.BR \([a-z_]*\) (1).*/\1/p' "$page"); do
        [ -s "$root/usr/share/man/man1/$other.1" ] || fail "$page names $other(1), which is missing"
    done
done

export XDG_RUNTIME_DIR="$work/runtime" VELA_PROGRAM_DATA="$work" VELA_USER_DATA="$work" QT_QPA_PLATFORM=offscreen
mkdir -m 700 "$XDG_RUNTIME_DIR"
"$root/usr/bin/Import_Export_Features" >"$work/out" 2>&1 &
program=$!
# The log is opened by the configuration that lies beside the program.
for _ in $(seq 200); do
    [ ! -e "$work/Log/Import_Export_Features.log" ] || break
    kill -0 "$program" || { cat "$work/out"; fail "the window's program ended"; }
    sleep 0.1
done
[ -e "$work/Log/Import_Export_Features.log" ] || fail "the program did not find what lies beside it"
kill -0 "$program" || fail "the program does not stay"
echo "packed, unpacked, started"
