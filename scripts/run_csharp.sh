#!/usr/bin/env bash
# Runs the C# example in a graph, under Wine, with a .NET for 64-bit Windows: once with a renderer of
# Wine's and once with one that takes no change while it runs. Neither Debian nor this project has such a
# .NET, so this is no part of scripts/test.sh.
# Usage: scripts/run_csharp.sh FOLDER    (of dotnet.exe, with host and shared beside it; 3.1 was tried)

source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

dotnet=$(realpath -m "${1:?usage: scripts/run_csharp.sh FOLDER}")
[ -f "$dotnet/dotnet.exe" ] || die "there is no dotnet.exe in $dotnet"
version=$(ls "$dotnet/shared/Microsoft.NETCore.App" 2>/dev/null | sort -V | tail -n 1)
[ -n "$version" ] || die "there is no shared/Microsoft.NETCore.App in $dotnet"
out=$root/build/csharp
modules=("$root/build/win64/bin/TavoResample.ax" "$root/build/win64/tests/sdk/still_renderer.ax")

if [ -z "${TAVO_IN_DISPLAY:-}" ]; then
    install_packages "${packages_build[@]}" "${packages_wine[@]}" "${packages_display[@]}" \
        g++-mingw-w64-x86-64-posix googletest mono-mcs ffmpeg
    build win64 -DTAVO_BUILD_TESTS=ON TavoResample still_renderer
    TAVO_IN_DISPLAY=1 exec xvfb-run -a "$0" "$@"
fi

# regsvr32 [/u]: both modules.
regsvr32() {
    local module
    for module in "${modules[@]}"; do
        (cd "${module%/*}" && "$root/scripts/wine.sh" regsvr32 /s "$@" "${module##*/}" >/dev/null 2>&1) ||
            die "regsvr32 $* fails with ${module##*/}"
    done
}

# play LINE...: plays, and wants lines that begin so.
play() {
    local said line
    said=$("$root/scripts/wine.sh" "$dotnet/dotnet.exe" LiveResize.exe clip.avi 128 96 25 80 60 2>&1) ||
        die "the program ends with $?: $said"
    said=$(tr -d '\r' <<<"$said" | grep -E '^([0-9]+x[0-9]+:|The renderer)')
    sed 's/^/  /' <<<"$said"
    [ "$(wc -l <<<"$said")" -eq $# ] || die "these are not $# lines"
    for line in "$@"; do
        grep -q "^$line" <<<"$said" || die "no line begins with \"$line\""
    done
}

say "Building the program"
rm -rf "$out"
mkdir -p "$out"
cd "$out"
mcs -langversion:5 -out:LiveResize.exe "$root"/sdk/csharp/*.cs
echo "{\"runtimeOptions\":{\"framework\":{\"name\":\"Microsoft.NETCore.App\",\"version\":\"$version\"}}}" \
    >LiveResize.runtimeconfig.json
ffmpeg -v error -f lavfi -i testsrc=size=160x120:rate=25:duration=8 -c:v rawvideo -pix_fmt bgr24 clip.avi

prepare_wine
regsvr32
trap 'regsvr32 /u' EXIT
say "A renderer of Wine's, with .NET $version"
play 128x96: 80x60:
say "A renderer that takes no change while it runs"
STILL_RENDERER_LOG=$(windows_path "$out/segments.txt") play 128x96: "The renderer" 80x60:
[ "$(tail -n 1 segments.txt)" -gt 10000000 ] || die "it began anew after the stop"
echo "The C# example plays, changes the size, and goes on after a stop"
