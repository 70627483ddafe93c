#!/usr/bin/env bash
# Takes the pictures of the property pages in docs/ anew: both pages at 96 and 144 dpi, and the pages
# beside the playing video.
# Usage: scripts/screenshots.sh [VIDEO]    (without one: the clip of the demo)

source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

out=$root/build/screenshots
bin=${TAVO_BIN:-$root/build/win32/bin}
mkdir -p "$out"

if [ -z "${TAVO_IN_DISPLAY:-}" ]; then
    install_packages "${packages_build[@]}" "${packages_wine[@]}" "${packages_display[@]}" imagemagick xdotool
    [ -n "${TAVO_BIN:-}" ] || build win32 TavoResample vantrel
    TAVO_IN_DISPLAY=1 exec xvfb-run -a -s "-screen 0 1800x1000x24" "$0" "$@"
fi

# prepare DPI: a Wine prefix of that resolution.
prepare() {
    export WINEPREFIX=$out/wine-$1
    "$root/scripts/wine.sh" reg add 'HKCU\Control Panel\Desktop' \
        /v LogPixels /t REG_DWORD /d "$1" /f >/dev/null 2>&1 || die "cannot set $1 dpi"
    wineserver -k || true
    wineserver -w || true
}

# wait_for_window TITLE: sets window.
wait_for_window() {
    local tries
    for tries in $(seq 60); do
        window=$(xdotool search --onlyvisible --name "$1" 2>/dev/null | tail -n 1 || true)
        [ -n "$window" ] && return
        sleep 0.5
    done
    die "the window \"$1\" does not appear"
}

# take DPI SUFFIX: both pages, and for 96 dpi the whole screen.
take() {
    local dpi=$1 suffix=$2
    say "Taking the pictures at $dpi dpi"
    prepare "$dpi"
    local width=$((1040 * dpi / 96)) height=$((480 * dpi / 96))
    "$root/scripts/wine.sh" explorer "/desktop=pages,${width}x$height" \
        "$(windows_path "$bin/vantrel.exe")" --pages "$(windows_path "$clip")" \
        --size 540x405 --fps 25 --method "Bi-Linear AUTO" >"$logs/screenshots.log" 2>&1 &
    wait_for_window "^Mira Vantrel Properties"
    sleep 4 # figures come once a second
    import -window "$window" "$out/page-resample$suffix.png"
    [ "$dpi" -ne 96 ] || import -window root -crop "${width}x$height+0+0" "$out/pages-live.png"
    xdotool mousemove --window "$window" $((100 * dpi / 96)) $((12 * dpi / 96)) click 1 key ctrl+Tab
    sleep 3
    import -window "$window" "$out/page-regulator$suffix.png"
    wineserver -k || true
    wait || true
}

choose_clip "$@"
take 96 ""
take 144 -144
for picture in page-resample page-regulator page-resample-144 page-regulator-144 pages-live; do
    convert-im6.q16 "$out/$picture.png" +repage -strip -colors 256 "PNG8:$root/docs/$picture.png"
done

say "Made"
(cd "$root" && du -h docs/page-*.png docs/pages-live.png)
