#!/usr/bin/env bash
# The Pascal example, built for 64-bit Windows and run with the registered module. Debian has no units of
# Free Pascal for Windows, so they are built from its sources.
# Usage: pascal_test.sh RUNNER PROJECT_FOLDER MODULE FOLDER    (RUNNER starts a Windows program)
set -euo pipefail

runner=$1 root=$2 module=$3 folder=$4

die() {
    echo "$*"
    exit 1
}

windows_path() { printf 'Z:%s' "$(realpath -m "$1" | tr / '\\')"; }

regsvr32() { (cd "${module%/*}" && "$runner" 'C:\windows\system32\regsvr32.exe' /s "$@" "${module##*/}"); }

sources=$(find /usr/share/fpcsrc -mindepth 1 -maxdepth 1 -type d 2>/dev/null | sort | tail -n 1)
command -v ppcx64 >/dev/null && [ -n "$sources" ] || die "install the packages fp-compiler and fpc-source"
command -v ffmpeg >/dev/null || die "install the package ffmpeg"
rm -rf "$folder"
mkdir -p "$folder"

rtl=$sources/rtl
compile() {
    local log=$folder/compiler.log
    ppcx64 -n -Twin64 -O1 -v0e -Sg "-FU$folder" "-FE$folder" \
        "-Fu$rtl/win64" "-Fu$rtl/win" "-Fu$rtl/inc" "-Fu$rtl/objpas" "-Fu$rtl/x86_64" \
        "-Fi$rtl/win64" "-Fi$rtl/win" "-Fi$rtl/inc" "-Fi$rtl/objpas" "-Fi$rtl/x86_64" \
        "-Fi$rtl/objpas/sysutils" "-Fi$rtl/objpas/classes" "-Fi$rtl/win/wininc" \
        "-Fu$sources/packages/winunits-base/src" \
        "-Fu$sources/packages/rtl-objpas/src/win" "-Fu$sources/packages/rtl-objpas/src/inc" \
        "-Fi$sources/packages/rtl-objpas/src/inc" "$@" >"$log" 2>&1 || die "$(cat "$log")"
}
compile -Us "$rtl/win64/system.pp"
compile "-Fu$root/sdk/pascal" "$root/sdk/pascal/LiveResize.pas"

ffmpeg -v error -y -f lavfi -i "testsrc2=size=160x120:rate=10" -frames:v 50 -pix_fmt bgr24 -c:v rawvideo \
    "$folder/clip.avi"
arguments=("$(windows_path "$folder/clip.avi")" 128 96 25 80 60)
regsvr32 || die "the module could not be registered"
trap "regsvr32 /u || true" EXIT
said=$("$runner" "$folder/LiveResize.exe" "${arguments[@]}" | tr -d '\r') || die "it failed: $said"
figures='[0-9]+\.[0-9]{2} ms per frame, [0-9.]*[1-9][0-9.]* frames per second scaled, [0-9.]*[1-9][0-9.]* delivered'
[[ $said =~ ^128x96:\ $figures$'\n'80x60:\ $figures$ ]] || die "it said: $said"

regsvr32 /u
if said=$("$runner" "$folder/LiveResize.exe" "${arguments[@]}"); then die "without the module it said: $said"; fi
[[ $said == *"is it registered?"* ]] || die "without the module it said: $said"
