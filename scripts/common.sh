# Shared by ./run and ./test: what has to be installed, and how the tree is built. Sourced, not run.

root_dir=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)

build_packages=(
    ccache cmake dpkg-dev file g++ ninja-build pkg-config
    qtbase5-dev libqt5svg5-dev qttools5-dev qttools5-dev-tools qttranslations5-l10n fonts-lato fonts-wqy-microhei
    libutf8proc-dev libssl-dev libxml2-dev libzip-dev libusb-1.0-0-dev
    libcli11-dev nlohmann-json3-dev libtomlplusplus-dev
)
test_packages=(libaravis-dev zlib1g-dev libgtest-dev libgmock-dev libx11-dev xvfb xdotool desktop-file-utils
    python3-jsonschema python3-pip libpython3.11 libumockdev-dev umockdev libpcap0.8 aravis-tools-cli iproute2)
lint_packages=(clang-format clang-tidy cppcheck)

say() { printf '\n== %s\n' "$*"; }
fail() { printf '%s\n' "$*" >&2; exit 1; }

as_root() {
    if [ "$(id -u)" -eq 0 ]; then "$@"
    elif command -v sudo >/dev/null; then sudo "$@"
    else fail "These packages have to be installed by root: ${missing[*]}"
    fi
}

# Installs those of the named Debian packages that are not there yet.
need_packages() {
    missing=()
    local package
    for package in "$@"; do
        [ "$(dpkg-query -W -f '${Status}' "$package" 2>/dev/null)" = "install ok installed" ] || missing+=("$package")
    done
    [ ${#missing[@]} -eq 0 ] && return
    command -v apt-get >/dev/null || fail "Not a Debian system: please install the equivalents of: ${missing[*]}"
    say "Installing ${missing[*]}"
    as_root env DEBIAN_FRONTEND=noninteractive apt-get update -q
    as_root env DEBIAN_FRONTEND=noninteractive apt-get install -y -q --no-install-recommends "${missing[@]}"
}

# build PRESET [TARGET...]: configures when needed and builds with progress.
build() {
    local preset=$1
    shift
    say "Building (preset $preset)"
    (cd "$root_dir" && cmake --preset "$preset" >"$root_dir/build/configure-$preset.log" 2>&1) || {
        cat "$root_dir/build/configure-$preset.log" >&2
        fail "The build could not be configured."
    }
    (cd "$root_dir" && cmake --build --preset "$preset" ${1:+--target "$@"})
}

mkdir -p "$root_dir/build"
