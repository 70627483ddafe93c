#!/usr/bin/env bash
# Runs one Windows program under Wine, in the project's own prefix, with a time limit.
# Usage: scripts/wine.sh PROGRAM.exe [ARGUMENT...]
# WINEPREFIX and WINE_TIME_LIMIT (seconds) may be set by the caller.
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
export WINEPREFIX=${WINEPREFIX:-$root/build/wine}
export WINEDEBUG=${WINEDEBUG:--all}
# A crash must end the program, not wait in a debugger; nothing here needs .NET, a browser or sound.
export WINEDLLOVERRIDES="winedbg.exe=d;mscoree=d;mshtml=d;winealsa.drv=d;winepulse.drv=d;wineoss.drv=d"

# set_value KEY NAME TEXT: of Wine's own settings.
set_value() {
    timeout 60 wine reg add "HKCU\\Software\\Wine\\$1" /v "$2" /d "$3" /f >/dev/null 2>&1 9>&- || true
}

mkdir -p "$WINEPREFIX"
(
    flock 9
    if [ ! -e "$WINEPREFIX/.ready" ]; then
        timeout 300 wine wineboot --init >/dev/null 2>&1 9>&-
        # Without OpenGL for the program's bitness a renderer of Wine's crashes; in software it needs none.
        set_value 'Direct3D' renderer no3d
        # Where tests run there is no window manager, and Wine would give it two seconds to take notice of
        # each window that goes.
        for program in pages_test property_frame_test; do
            set_value "AppDefaults\\$program.exe\\X11 Driver" Managed N
        done
        timeout 60 wineserver -w 9>&- || true
        touch "$WINEPREFIX/.ready"
    fi
) 9>"$WINEPREFIX/.lock"

# A server that stays makes the next start quick. Its services must not inherit our output, or whoever
# reads it waits for them to end.
wineserver -p60 >/dev/null 2>&1 || true
timeout 60 wine cmd /c exit >/dev/null 2>&1 </dev/null || true
run=(timeout --kill-after=10 "${WINE_TIME_LIMIT:-1800}" wine "$@")
[ ! -t 1 ] || exec "${run[@]}"

# A service that starts with the program all the same inherits these files, and nobody waits for it.
output=$(mktemp) errors=$(mktemp)
trap 'rm -f "$output" "$errors"' EXIT
code=0
"${run[@]}" >"$output" 2>"$errors" || code=$?
cat "$output"
cat "$errors" >&2
exit "$code"
