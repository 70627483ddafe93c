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

# brief LINE: sets status to what a line of apt's, CMake's or Ninja's says of where they are.
brief() {
    if [[ $1 =~ ^(dl|pm)status:.*:([0-9]+)[0-9.]*:(.*)$ ]]; then
        status="${BASH_REMATCH[2]} %, ${BASH_REMATCH[3]}"
        return
    fi
    case $1 in
        Hit:* | Get:* | "Reading package lists"*) status=${status:-reading the lists of packages} ;;
        "-- "*) status=configuring ;;
        \[*/*\]\ *) status="${1%% *} ${1##*[/ ]}" ;;
    esac
}

# show_progress LOG: adds its input to the log and says in short where it is: on a terminal in a line
# that is written over, else in a line now and then.
show_progress() {
    local log=$1 line part='' status='' code start=$SECONDS next=$((SECONDS + 5)) shown
    while :; do
        code=0
        IFS= read -r -t 2 line || code=$?
        part+=$line
        if [ "$code" -eq 0 ]; then
            printf '%s\n' "$part" >>"$log"
            brief "$part"
            part=
        fi
        shown="$(((SECONDS - start) / 60)) min $(((SECONDS - start) % 60)) s: ${status:-starting}"
        if [ -t 1 ]; then
            printf '\r\033[K  %.74s' "$shown"
        elif [ "$SECONDS" -ge "$next" ]; then
            printf '  %s\n' "$shown"
            next=$((SECONDS + 15))
        fi
        [ "$code" -eq 0 ] || [ "$code" -gt 128 ] || break # above 128: only the time is up
    done
    [ -z "$part" ] || printf '%s\n' "$part" >>"$log"
    [ ! -t 1 ] || printf '\r\033[K'
}

# is_installed NAME[:ARCHITECTURE]: without an architecture, that of the machine. A package of another
# one does not count: its 32-bit twin may be there alone.
is_installed() {
    local architecture=amd64
    case $1 in *:*) architecture=${1##*:} ;; esac
    dpkg-query -W -f='${Architecture} ${Status}\n' "$1" 2>/dev/null |
        grep -Eq "^($architecture|all) .* ok installed"
}

apt_get() { as_root env DEBIAN_FRONTEND=noninteractive apt-get -o APT::Status-Fd=1 "$@"; }

# Takes all of the packages from one release, in case a newer update of one architecture is not
# there for the other yet.
apt_install() {
    local codename
    codename=$(. /etc/os-release && echo "$VERSION_CODENAME")
    apt_get install -y --no-install-recommends "$@" ||
        apt_get install -y --no-install-recommends -t "$codename" "$@"
}

# install_packages NAME...: what is there already is left alone.
install_packages() {
    local missing=() package
    command -v dpkg-query >/dev/null || die "this needs Debian 12 (there is no dpkg here)"
    [ "$(dpkg --print-architecture)" = amd64 ] || die "this needs Debian 12 on amd64"
    for package in "$@"; do is_installed "$package" || missing+=("$package"); done
    [ ${#missing[@]} -eq 0 ] && return

    say "Installing ${#missing[@]} packages and what they need"
    [ "$(id -u)" -eq 0 ] || command -v sudo >/dev/null ||
        die "run this as root, or install sudo: these packages are missing: ${missing[*]}"
    : >"$logs/packages.log"
    {
        # Where an installation was broken off, the next one is refused until this is done.
        as_root env DEBIAN_FRONTEND=noninteractive dpkg --configure -a &&
            { dpkg --print-foreign-architectures | grep -qx i386 ||
                as_root dpkg --add-architecture i386; } &&
            # One broken index must not keep the others from being used.
            { apt_get update || true; } &&
            apt_install "${missing[@]}"
    } </dev/null 2>&1 | show_progress "$logs/packages.log" ||
        die "cannot install ${missing[*]}: $(grep -m1 '^E:' "$logs/packages.log" ||
            echo 'see build/logs/packages.log')"
    # A Wine that still runs knows nothing of new fonts and plug-ins.
    [ ! -d "$root/build/wine" ] || WINEPREFIX=$root/build/wine wineserver -k 2>/dev/null || true
}

# build PRESET [-DNAME=VALUE...] [TARGET...]
build() {
    local preset=$1 log=$logs/build-$1.log settings=() targets=() argument
    shift
    for argument in "$@"; do
        case $argument in
            -D*) settings+=("$argument") ;;
            *) targets+=("$argument") ;;
        esac
    done
    [ ${#targets[@]} -eq 0 ] || targets=(--target "${targets[@]}")
    say "Building $preset"
    : >"$log"
    (cd "$root" && cmake --preset "$preset" "${settings[@]}" &&
        NINJA_STATUS='[%f/%t] ' cmake --build --preset "$preset" "${targets[@]}") 2>&1 |
        show_progress "$log" ||
        die "the build of $preset failed: $(grep -m1 -E 'error|Error' "$log" || echo) (build/logs/build-$preset.log)"
    tail -n 1 "$log"
}

# prepare_wine: the first start of Wine makes its prefix, which takes a while.
prepare_wine() {
    say "Starting Wine"
    "$root/scripts/wine.sh" cmd /c exit || die "Wine does not start"
}

# unpack_package NAME FOLDER: unpacks a package that need not be installed.
unpack_package() {
    local download log=$logs/$1.log
    download=$(mktemp -d)
    mkdir -p "$2"
    : >"$log"
    (
        chmod 755 "$download" && cd "$download" &&
            { apt-get -o APT::Status-Fd=1 download "$1" ||
                { apt_get update && apt-get -o APT::Status-Fd=1 download "$1"; }; } &&
            dpkg-deb -x "$1"_*.deb "$2"
    ) 2>&1 | show_progress "$log" || {
        rm -rf "$download"
        die "cannot fetch the package $1 (build/logs/$1.log)"
    }
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

# What the 32-bit product needs to be built, and to run on real files. Both bitnesses of Wine belong
# together: a prefix that is made before one of them is there serves the other never.
packages_build=(cmake ninja-build g++-mingw-w64-i686-posix)
packages_wine=(wine wine32:i386 wine64 gstreamer1.0-plugins-good:i386 gstreamer1.0-libav:i386)
packages_display=(xvfb xauth fonts-wine)
# What the packages are made with, and looked into.
packages_packing=(g++-mingw-w64-x86-64-posix nsis zip unzip)
