#!/usr/bin/env bash
# The Pascal example: "build" makes it for 64-bit Windows, "run" plays with it and the registered module.
# Debian has no units of Free Pascal for Windows, so they are built from its sources.
# Usage: pascal_test.sh build PROJECT_FOLDER FOLDER
#        pascal_test.sh run RUNNER MODULE RENDERER FOLDER    (RUNNER starts a Windows program; RENDERER is a
#                                                             renderer that takes no change while it runs)
set -euo pipefail

die() {
    echo "$*"
    exit 1
}

windows_path() { printf 'Z:%s' "$(realpath -m "$1" | tr / '\\')"; }

# regsvr32 MODULE [/u]
regsvr32() { (cd "${1%/*}" && "$runner" 'C:\windows\system32\regsvr32.exe' /s "${@:2}" "${1##*/}"); }

# compile ARGUMENT...: what it needs of the units as well.
compile() {
    local rtl=$sources/rtl objects=$sources/packages/rtl-objpas/src
    ppcx64 -n -Twin64 -O1 -v0e -Sg "-FU$folder" "-FE$folder" \
        "-Fu$rtl/win64" "-Fu$rtl/win" "-Fu$rtl/inc" "-Fu$rtl/objpas" "-Fu$rtl/x86_64" \
        "-Fi$rtl/win64" "-Fi$rtl/win" "-Fi$rtl/inc" "-Fi$rtl/objpas" "-Fi$rtl/x86_64" \
        "-Fi$rtl/objpas/sysutils" "-Fi$rtl/objpas/classes" "-Fi$rtl/win/wininc" \
        "-Fu$objects/win" "-Fu$objects/inc" "-Fi$objects/inc" \
        "-Fu$sources/packages/winunits-base/src" "$@" >"$folder/compiler.log" 2>&1 ||
        die "$(cat "$folder/compiler.log")"
}

build() {
    root=$1 folder=$2
    sources=$(find /usr/share/fpcsrc -mindepth 1 -maxdepth 1 -type d 2>/dev/null | sort | tail -n 1 || true)
    command -v ppcx64 >/dev/null && [ -n "$sources" ] || die "install the packages fp-compiler and fpc-source"
    rm -rf "$folder"
    mkdir -p "$folder"
    compile -Us "$sources/rtl/win64/system.pp"
    compile "-Fu$root/sdk/pascal" "$root/sdk/pascal/LiveResize.pas"
}

run() {
    runner=$1 module=$2 renderer=$3 folder=$4
    local arguments said figures starts
    command -v ffmpeg >/dev/null || die "install the package ffmpeg"
    ffmpeg -v error -y -f lavfi -i "testsrc2=size=160x120:rate=10" -frames:v 50 -pix_fmt bgr24 -c:v rawvideo \
        "$folder/clip.avi"
    arguments=("$(windows_path "$folder/clip.avi")" 128 96 25 80 60)
    trap 'regsvr32 "$renderer" /u || true; regsvr32 "$module" /u || true' EXIT
    regsvr32 "$module" && regsvr32 "$renderer" || die "the modules could not be registered"
    rm -f "$folder/starts"
    STILL_RENDERER_LOG=$(windows_path "$folder/starts") "$runner" "$folder/LiveResize.exe" "${arguments[@]}" \
        >"$folder/stopped" &
    said=$("$runner" "$folder/LiveResize.exe" "${arguments[@]}" | tr -d '\r') || die "it failed: $said"
    figures='[0-9]+\.[0-9]{2} ms per frame, [0-9.]*[1-9][0-9.]* frames per second scaled, [0-9.]*[1-9][0-9.]* delivered'
    [[ $said =~ ^128x96:\ $figures$'\n'80x60:\ $figures$ ]] || die "it said: $said"

    # The other one stopped after two seconds, and went on from there.
    wait $! || die "with a stop it failed: $(cat "$folder/stopped")"
    said=$(tr -d '\r' <"$folder/stopped")
    [[ $said =~ ^128x96:\ $figures$'\n'The\ renderer\ takes\ no\ change[^$'\n']*$'\n'80x60:\ $figures$ ]] ||
        die "with a stop it said: $said"
    mapfile -t starts < <(tr -d '\r' <"$folder/starts")
    [ "${starts[0]}" = 0 ] && [ "${starts[-1]}" -gt 10000000 ] || die "segments began at ${starts[*]}"

    regsvr32 "$module" /u
    if said=$("$runner" "$folder/LiveResize.exe" "${arguments[@]}"); then die "without the module it said: $said"; fi
    [[ $said == *"is it registered?"* ]] || die "without the module it said: $said"
}

"$@"
