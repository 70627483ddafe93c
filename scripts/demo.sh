#!/usr/bin/env bash
# Plays a real video through the registered 32-bit filter under Wine and writes it out at two thirds
# of its size, once with nearest neighbour and once with bilinear, and a picture of the results.
# Usage: scripts/demo.sh [VIDEO]    (without one: a clip of a pedestrian street)

source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

out=$root/build/demo
bin=$root/build/win32/bin
font=/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf
mkdir -p "$out"

# video_size FILE: prints WIDTH,HEIGHT.
video_size() {
    ffprobe -v error -select_streams v:0 -show_entries stream=width,height -of csv=p=0 "$1" |
        head -n 1
}

resize() { # METHOD OUTPUT
    say "Resizing with \"$1\""
    "$root/scripts/wine.sh" "$bin/vantrel.exe" "$(windows_path "$clip")" \
        "$(windows_path "$2")" --registered --overwrite --size "${width}x$height" --method "$1" ||
        die "vantrel failed"
}

frame() { # VIDEO PICTURE
    ffmpeg -v error -y -ss "$moment" -i "$1" -frames:v 1 "$2" || die "cannot read a frame of $1"
    [ -s "$2" ] || die "$1 has no frame at $moment s"
}

# tile PICTURE LABEL CROP OUTPUT: the whole frame with a label above and a magnified part below.
tile() {
    convert-im6.q16 "$1" \( +clone -crop "$3" +repage -filter point -resize 480x360! -splice 0x8 \) \
        -background white -gravity North -append "$4.frame.png"
    convert-im6.q16 -background white -fill black -font "$font" -pointsize 20 label:"$2" \
        "$4.frame.png" -gravity North -append -bordercolor white -border 8 "$4"
    rm -f "$4.frame.png"
}

install_packages "${packages_build[@]}" "${packages_wine[@]}" ffmpeg imagemagick fonts-dejavu-core

choose_clip "$@"

build win32 TavoResample vantrel

prepare_wine

say "Registering the filter"
(cd "$bin" && "$root/scripts/wine.sh" 'C:\windows\syswow64\regsvr32.exe' /s TavoResample.ax) ||
    die "the module could not be registered"

IFS=, read -r source_width source_height _ < <(video_size "$clip") ||
    die "$clip is no video that can be read"
width=$((source_width * 2 / 3 / 2 * 2))
height=$((source_height * 2 / 3 / 2 * 2))
seconds=$(ffprobe -v error -show_entries format=duration -of csv=p=0 "$clip" || echo 0)
moment=$(awk -v s="$seconds" 'BEGIN { printf "%.2f", (s > 0 ? s / 3 : 0) }')

rm -f "$out"/{nearest,bilinear}.avi "$out"/{source,nearest,bilinear,side_by_side}.png
resize "Nearest Neighbor" "$out/nearest.avi"
resize "Bi-Linear" "$out/bilinear.avi"

say "Drawing the picture"
frame "$clip" "$out/source.png"
frame "$out/nearest.avi" "$out/nearest.png"
frame "$out/bilinear.avi" "$out/bilinear.png"
part="+$((width * 2 / 5))+$((height / 4))"
tile "$out/source.png" "Source, ${source_width} x ${source_height}" \
    "120x90+$((source_width * 2 / 5))+$((source_height / 4))" "$out/tile0.png"
tile "$out/nearest.png" "Nearest Neighbor, $width x $height" "80x60$part" "$out/tile1.png"
tile "$out/bilinear.png" "Bi-Linear, $width x $height" "80x60$part" "$out/tile2.png"
convert-im6.q16 "$out"/tile[012].png -background white -gravity South +append "$out/side_by_side.png"
rm -f "$out"/tile[012].png

say "Made"
for file in nearest.avi bilinear.avi side_by_side.png; do
    printf '  %-60s %s\n' "build/demo/$file" "$(du -h "$out/$file" | cut -f1)"
done
echo "Look at build/demo/side_by_side.png: the source and both results side by side."
