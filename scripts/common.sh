# What the scripts share: messages, packages, builds. Sourced, not run.

set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
logs=$root/build/logs
mkdir -p "$logs"

say() { printf '\n== %s\n' "$*"; }

die() {
    printf 'error: %s\n' "$*" >&2
    exit 1
}

as_root() {
    if [ "$(id -u)" -eq 0 ]; then "$@"; else sudo "$@"; fi
}

is_installed() { dpkg-query -W -f='${Status}\n' "$1" 2>/dev/null | grep -q 'ok installed'; }

# Takes all of the packages from one release, in case a newer update of one architecture is not
# there for the other yet.
apt_install() {
    local codename
    codename=$(. /etc/os-release && echo "$VERSION_CODENAME")
    as_root env DEBIAN_FRONTEND=noninteractive \
        apt-get install -y --no-install-recommends "$@" ||
        as_root env DEBIAN_FRONTEND=noninteractive \
            apt-get install -y --no-install-recommends -t "$codename" "$@"
}

# install_packages NAME...: what is there already is left alone.
install_packages() {
    local missing=() package
    command -v dpkg-query >/dev/null || die "this needs Debian 12 (there is no dpkg here)"
    [ "$(dpkg --print-architecture)" = amd64 ] || die "this needs Debian 12 on amd64"
    for package in "$@"; do is_installed "$package" || missing+=("$package"); done
    [ ${#missing[@]} -eq 0 ] && return

    say "Installing ${#missing[@]} packages"
    [ "$(id -u)" -eq 0 ] || command -v sudo >/dev/null ||
        die "run this as root, or install sudo: these packages are missing: ${missing[*]}"
    {
        dpkg --print-foreign-architectures | grep -qx i386 || as_root dpkg --add-architecture i386
        # One broken index must not keep the others from being used.
        as_root apt-get update || true
        apt_install "${missing[@]}"
    } >"$logs/packages.log" 2>&1 ||
        die "cannot install ${missing[*]}: $(grep -m1 '^E:' "$logs/packages.log" ||
            echo 'see build/logs/packages.log')"
}

# build PRESET [TARGET...]
build() {
    local preset=$1 log=$logs/build-$1.log
    shift
    say "Building $preset"
    (cd "$root" && cmake --preset "$preset" &&
        cmake --build --preset "$preset" ${*:+--target "$@"}) >"$log" 2>&1 ||
        die "the build of $preset failed: $(grep -m1 -E 'error|Error' "$log" || echo) (build/logs/build-$preset.log)"
    tail -n 1 "$log"
}

# unpack_package NAME FOLDER: unpacks a package that need not be installed.
unpack_package() {
    local download
    download=$(mktemp -d)
    (
        chmod 755 "$download" && cd "$download" &&
            { apt-get download "$1" || { as_root apt-get update && apt-get download "$1"; }; } &&
            dpkg-deb -x "$1"_*.deb "$2"
    ) >"$logs/$1.log" 2>&1 || die "cannot fetch the package $1 (build/logs/$1.log)"
    rm -rf "$download"
}

# choose_clip [VIDEO]: sets clip to the video, or to one that comes with a package.
choose_clip() {
    local folder=$root/build/demo/clip
    if [ $# -gt 0 ]; then
        clip=$1
        [ -s "$clip" ] || die "$clip is no file, or is empty"
        return
    fi
    clip=$folder/usr/share/doc/opencv-doc/examples/data/vtest.avi
    [ -s "$clip" ] && return
    say "Fetching a clip"
    unpack_package opencv-doc "$folder"
    clip=$(find "$folder" -name 'vtest.avi*' | head -n 1)
    [ -n "$clip" ] || die "the package opencv-doc does not hold the clip vtest.avi"
}

windows_path() { printf 'Z:%s' "$(realpath -m "$1" | tr / '\\')"; }

packages_build=(cmake ninja-build g++ make binutils g++-mingw-w64-i686-posix)
packages_wine32=(wine wine32:i386 xvfb xauth
    gstreamer1.0-plugins-good:i386 gstreamer1.0-libav:i386)
