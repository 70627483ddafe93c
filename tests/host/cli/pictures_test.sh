#!/usr/bin/env bash
# Other people's videos through vantrel: ordinary sizes, decoders and raw formats. Every picture is
# compared with the one that FFmpeg's bilinear scaler makes of the same file in the same format.
# Usage: pictures_test.sh RUNNER VANTREL.exe FOLDER    (RUNNER starts a Windows program)
set -euo pipefail

runner=$1 vantrel=$2 folder=$3
# What two bilinear scalers with other sample positions differ by is 35 dB and more here. A picture
# whose planes are misread has less than 15 dB.
least=30
failures=0

command -v ffmpeg >/dev/null || { echo "ffmpeg is missing"; exit 1; }
rm -rf "$folder"
mkdir -p "$folder"

windows_path() { printf 'Z:%s' "$(realpath -m "$1" | tr / '\\')"; }

# make_clip FILE WIDTHxHEIGHT PIXEL_FORMAT CODEC_OPTION...: smooth, colourful, and in motion. Planes
# are cut and not scaled to size, so that odd sizes stay odd.
make_clip() {
    local file=$1 size=$2 format=$3
    shift 3
    ffmpeg -v error -y -f lavfi -i "testsrc2=size=1920x1080:rate=10" -frames:v 3 \
        -vf "gblur=sigma=6,scale=1440:810,format=$format,crop=${size/x/:}:0:0:exact=1" "$@" "$file"
}

# plane_psnr OUTPUT SOURCE PIXEL_FORMAT WIDTHxHEIGHT: the least PSNR of all planes.
plane_psnr() {
    # The output does not say that its samples have the full range.
    local range=tv
    case $3 in yuvj*) range=pc ;; esac
    ffmpeg -hide_banner -i "$1" -i "$2" -filter_complex \
        "[1:v]scale=${4/x/:}:flags=bilinear,format=$3[b];
        [0:v]setparams=range=$range,format=$3[a];[a][b]psnr" \
        -f null - 2>&1 |
        awk '/PSNR/ {
            for (i = 1; i <= NF; i++)
                if (match($i, /^[yuvrgb]:/)) {
                    value = substr($i, 3)
                    if (value == "inf") value = 100
                    if (least == "" || value + 0 < least) least = value + 0
                }
        } END { print least }'
}

# check FILE PIXEL_FORMAT WIDTHxHEIGHT: of the output.
check() {
    local file=$1 format=$2 size=$3 psnr frames
    local output=$folder/out.avi
    rm -f "$output"
    if ! "$runner" "$vantrel" "$(windows_path "$file")" "$(windows_path "$output")" \
        --size "$size" --method Bi-Linear --quiet >"$folder/log" 2>&1; then
        echo "FAILED  $(basename "$file"): $(cat "$folder/log")"
        failures=$((failures + 1))
        return
    fi
    psnr=$(plane_psnr "$output" "$file" "$format" "$size")
    frames=$(ffprobe -v error -count_frames -select_streams v -show_entries \
        stream=nb_read_frames -of csv=p=0 "$output")
    if [ "$frames" = 3 ] && awk -v p="${psnr:-0}" -v l="$least" 'BEGIN { exit !(p >= l) }'; then
        echo "ok      $(basename "$file") to $size: $psnr dB"
    else
        echo "FAILED  $(basename "$file") to $size: ${psnr:-no} dB, $frames frames of 3"
        failures=$((failures + 1))
    fi
}

h264=(-c:v libx264 -qp 0 -preset ultrafast)
vp9=(-c:v libvpx-vp9 -lossless 1 -deadline realtime -cpu-used 8)
mjpeg=(-c:v mjpeg -q:v 2 -color_range pc)

for size in 854x480 426x240 500x270 852x480 1366x768 848x480; do
    make_clip "$folder/h264_$size.mp4" "$size" yuv420p "${h264[@]}"
    check "$folder/h264_$size.mp4" yuv420p 400x224
done
make_clip "$folder/vp9_175x99.webm" 175x99 yuv420p "${vp9[@]}"
check "$folder/vp9_175x99.webm" yuv420p 128x72
make_clip "$folder/mjpeg_540x270.avi" 540x270 yuvj420p "${mjpeg[@]}"
check "$folder/mjpeg_540x270.avi" yuvj420p 400x200

# check_raw SIZE TAG:PIXEL_FORMAT...: uncompressed AVIs; an empty tag for RGB.
check_raw() {
    local size=$1 pair tag format file
    shift
    for pair in "$@"; do
        tag=${pair%:*} format=${pair#*:}
        file=$folder/raw_${format}_${tag}_$size.avi
        make_clip "$file" "$size" "$format" -c:v rawvideo ${tag:+-vtag "$tag"}
        check "$file" "$format" 400x224
    done
}

planar=(I420:yuv420p YV12:yuv420p YVU9:yuv410p)
packed=(YUY2:yuyv422 UYVY:uyvy422)
rgb=(:bgr24 :rgb555le)
check_raw 854x480 "${planar[@]}" "${packed[@]}" "${rgb[@]}"
check_raw 426x270 "${planar[@]}" "${packed[@]}" "${rgb[@]}"
check_raw 847x479 "${planar[@]}" "${rgb[@]}"
check_raw 846x479 "${packed[@]}" # FFmpeg reads no 4:2:2 of odd width

[ "$failures" = 0 ] || { echo "$failures videos came out wrong"; exit 1; }
rm -rf "$folder"
