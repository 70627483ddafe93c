#!/usr/bin/env bash
# Draws docs/demo.png and the pictures of the methods in docs/guide.md anew: stills go through the real
# filter under Wine, and parts of the results are enlarged.
# Usage: scripts/guide_pictures.sh [VIDEO]    (without one: the clip of the demo)

source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

out=$root/build/guide
bin=${TAVO_BIN:-$root/build/win32/bin}
font=/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf
mkdir -p "$out"

install_packages "${packages_build[@]}" "${packages_wine[@]}" ffmpeg imagemagick fonts-dejavu-core
[ -n "${TAVO_BIN:-}" ] || build win32 TavoResample vantrel
prepare_wine
choose_clip "$@"

# scale NAME SIZE METHOD SHORT: the picture NAME.png through the filter, as NAME-SIZE-SHORT.png.
scale() {
    local result=$out/$1-$2-$4
    ffmpeg -v error -y -i "$out/$1.png" -c:v rawvideo -pix_fmt bgr24 "$out/$1.avi"
    "$root/scripts/wine.sh" "$bin/vantrel.exe" "$(windows_path "$out/$1.avi")" \
        "$(windows_path "$result.avi")" --size "$2" --method "$3" --overwrite --quiet ||
        die "vantrel failed"
    ffmpeg -v error -y -i "$result.avi" -frames:v 1 "$result.png"
}

# lines: the -draw primitives of fine lines in several directions.
lines() {
    local i
    for ((i = 2; i <= 22; i += 2)); do echo "line $i,3 $i,24"; done
    for ((i = 27; i <= 45; i += 3)); do echo "line $i,3 $i,24"; done
    for ((i = 3; i <= 24; i += 3)); do echo "line 50,$i 69,$i"; done
    for ((i = 0; i <= 66; i += 6)); do echo "line 2,51 $((i + 3)),28"; done
}

# test_card: four parts beside each other, a piece of the street, a zone plate, lines and text.
test_card() {
    local size=72x54
    convert-im6.q16 "$out/street.png" -crop "$size+330+170" +repage "$out/part0.png"
    convert-im6.q16 -size "$size" xc: \
        -fx "0.5+0.5*cos(((i-36)^2+(j-27)^2)*3.14159/72)" "$out/part1.png"
    convert-im6.q16 -size "$size" xc:white +antialias -fill none -stroke black \
        -draw "$(lines)" "$out/part2.png"
    convert-im6.q16 -size "$size" xc:white -font "$font" -fill black \
        -pointsize 13 -annotate +3+14 'TavoRes' -pointsize 10 -annotate +3+27 'Mira Vantrel' \
        -pointsize 8 -annotate +3+38 '0123456789 fps' -fill '#c02020' \
        -pointsize 7 -annotate +3+48 'small red letters' "$out/part3.png"
    convert-im6.q16 "$out"/part[0123].png +append "$out/card.png"
}

# row PICTURE LABEL: enlarged to the width of the source four times enlarged.
row() {
    printf '%s\n' '(' '(' -background white -fill black -font "$font" -pointsize 18 "label:$2" ')' \
        '(' "$1" -filter point -resize '1152x216!' ')' -background white -gravity West -append ')'
}

# draw_card SIZE NAME
draw_card() {
    local rows
    scale card "$1" "Nearest Neighbor" nearest
    scale card "$1" "Bi-Linear" bilinear
    mapfile -t rows < <(
        row "$out/card.png" "Source, 288 x 54"
        row "$out/card-$1-nearest.png" "Nearest Neighbor, ${1/x/ x }"
        row "$out/card-$1-bilinear.png" "Bi-Linear, ${1/x/ x }"
    )
    convert-im6.q16 "${rows[@]}" -background white -append -strip +dither -colors 255 \
        "PNG8:$root/docs/$2"
}

# tile PICTURE CROP LABEL
tile() {
    printf '%s\n' '(' '(' "$1" -gravity NorthWest -crop "$2" +repage -filter "$4" -resize '288x216!' ')' \
        '(' -background white -fill black -font "$font" -pointsize 14 "label:$3" ')' \
        -background white -gravity Center -append -bordercolor white -border 3 ')'
}

draw_demo() {
    local tiles part=72x54+420+183 small=48x36+280+122
    scale street 512x384 "Nearest Neighbor" nearest
    scale street 512x384 "Bi-Linear" bilinear
    convert-im6.q16 "$out/street.png" -fill none -stroke yellow -strokewidth 3 \
        -draw 'rectangle 418,181 494,239' "$out/whole.png"
    mapfile -t tiles < <(
        tile "$out/whole.png" 768x576+0+0 "The source, 768 x 576" Box
        tile "$out/street.png" "$part" "A part of it, enlarged" point
        tile "$out/street-512x384-nearest.png" "$small" "512 x 384, Nearest Neighbor" point
        tile "$out/street-512x384-bilinear.png" "$small" "512 x 384, Bi-Linear" point
    )
    convert-im6.q16 "${tiles[@]}" +append -strip +dither -colors 255 "PNG8:$root/docs/demo.png"
}

say "Drawing the pictures"
ffmpeg -v error -y -ss 26.5 -i "$clip" -frames:v 1 "$out/street.png" || die "cannot read $clip"
test_card
draw_card 576x108 guide-twice.png
draw_card 192x36 guide-two-thirds.png
draw_card 96x18 guide-third.png
draw_demo

say "Made"
(cd "$root" && du -h docs/guide-*.png docs/demo.png)
