#!/usr/bin/env bash
# Runs one Windows program under Wine, in the project's own prefix, with a time limit.
# Usage: scripts/wine.sh PROGRAM.exe [ARGUMENT...]
# WINEPREFIX and WINE_TIME_LIMIT (seconds) may be set by the caller.
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
export WINEPREFIX=${WINEPREFIX:-$root/build/wine}
export WINEARCH=win64 # a prefix for 32-bit and 64-bit programs
export WINEDEBUG=${WINEDEBUG:--all}
# A crash must end the program, not wait in a debugger; nothing here needs .NET, a browser or sound.
export WINEDLLOVERRIDES="winedbg.exe=d;mscoree=d;mshtml=d;winealsa.drv=d;winepulse.drv=d;wineoss.drv=d"

windows=$WINEPREFIX/drive_c/windows
log=$root/build/logs/wine-prefix.log
# What .ready says. Another number makes prefixes anew that were made in another way.
made_by="wine.sh 2"

die() {
    printf 'error: %s\n' "$*" >&2
    exit 1
}

# set_value KEY NAME TEXT: of Wine's own settings.
set_value() {
    timeout 60 wine reg add "HKCU\\Software\\Wine\\$1" /v "$2" /d "$3" /f >/dev/null 2>&1 9>&- || true
}

# Where only 32-bit Wine is installed, prefixes have no place for 64-bit programs, and never get one.
has_both_bitnesses() {
    grep -qx '#arch=win64' "$WINEPREFIX/system.reg" 2>/dev/null &&
        [ -e "$windows/system32/kernel32.dll" ] && [ -e "$windows/syswow64/kernel32.dll" ]
}

is_ready() {
    [ "$(cat "$WINEPREFIX/.ready" 2>/dev/null)" = "$made_by" ] && has_both_bitnesses
}

# A prefix of the caller's own, outside the build folder, is not removed.
remove_prefix() {
    case $WINEPREFIX/ in "$root"/build/?*) ;; *) return 0 ;; esac
    if [ -d "$WINEPREFIX" ]; then
        timeout 60 wineserver -k 9>&- || true
        timeout 60 wineserver -w 9>&- || true
    fi
    rm -rf --one-file-system "$WINEPREFIX"
}

make_prefix() {
    echo "Making a Wine prefix in ${WINEPREFIX#"$root"/}" >&2
    remove_prefix
    mkdir -p "$WINEPREFIX" "${log%/*}"
    timeout 600 wine wineboot --init >"$log" 2>&1 9>&- || true
    # Without OpenGL for the program's bitness a renderer of Wine's crashes; in software it needs none.
    set_value 'Direct3D' renderer no3d
    # Where tests run there is no window manager, and Wine would give it two seconds to take notice of
    # each window that goes.
    for program in pages_test property_frame_test; do
        set_value "AppDefaults\\$program.exe\\X11 Driver" Managed N
    done
    # The registry is written when the server ends.
    timeout 120 wineserver -w 9>&- || true
    has_both_bitnesses ||
        die "Wine made no prefix for both 32-bit and 64-bit programs in $WINEPREFIX: are wine32:i386 and wine64 installed? (see build/logs/wine-prefix.log)"
    echo "$made_by" >"$WINEPREFIX/.ready"
}

# Wine does not look for Debian's package fonts-wine, whose fonts are as wide as those of Windows.
copy_fonts() {
    local fonts=/usr/share/wine/fonts
    [ -e "$fonts/tahoma.ttf" ] && [ ! -e "$windows/Fonts/tahoma.ttf" ] || return 0
    mkdir -p "$windows/Fonts"
    cp "$fonts"/* "$windows/Fonts/"
}

# Where the first program of a server has no display, no other one's windows ever appear. So such a
# server does not stay, and who has a display waits for it to end.
choose_server() {
    local blind=$WINEPREFIX/.blind
    if [ -n "${DISPLAY:-}" ]; then
        [ ! -e "$blind" ] || ! timeout 60 wineserver -w 9>&- || rm -f "$blind"
        # A server that stays makes the next start quick. Its services must not inherit our output, or
        # whoever reads it waits for them to end.
        wineserver -p60 >/dev/null 2>&1 9>&- || true
    elif ! wineserver -k0 2>/dev/null 9>&-; then
        touch "$blind"
    fi
}

command -v wine >/dev/null && command -v wineserver >/dev/null ||
    die "Wine is missing: install the packages wine, wine32:i386 and wine64"
mkdir -p "$root/build"
(
    flock 9
    is_ready || make_prefix
    copy_fonts
    choose_server
) 9>"$root/build/wine.lock"

timeout 60 wine cmd /c exit >/dev/null 2>&1 </dev/null || true
run=(timeout --kill-after=10 "${WINE_TIME_LIMIT:-1800}" wine "$@")
[ ! -t 1 ] || exec "${run[@]}"

# A service that starts with the program all the same inherits these files, and nobody waits for it.
output=$(mktemp) errors=$(mktemp)
trap 'rm -f "$output" "$errors"' EXIT
code=0
"${run[@]}" >"$output" 2>"$errors" || code=$?
cat "$output"
# GStreamer complains for Wine, past whatever handle the program has: with an empty line each time.
awk '/^\(wine[^)]*\): G(Streamer|Lib)/ { held = 0; next }
     held { print ""; held = 0 }
     /^$/ { held = 1; next }
     { print }
     END { if (held) print "" }' "$errors" >&2
exit "$code"
