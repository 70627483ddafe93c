#!/usr/bin/env bash
# Measures the whole job of vantrel beside FFmpeg's: a 1080p film of a minute is decoded, scaled to
# 720p, bilinear, and written as an uncompressed AVI. Both take turns; ratios are of medians.
# Usage: scripts/bench_job.sh [--preset win32|win64] [--rounds N] [--seconds N] [--ffmpeg PROGRAM]
#                             [--against EXE] [VIDEO]
#   --preset    which build of vantrel (default win32)
#   --ffmpeg    another FFmpeg than the system's, for instance a 32-bit one: decoders are slower in 32 bits
#   --against   another vantrel.exe, with its module beside it, that takes turns too
#   VIDEO       scaled to 1080p first (default: a clip of a pedestrian street)

source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

preset=win32 rounds=5 length=60 ffmpeg=ffmpeg against= video=()
while [ $# -gt 0 ]; do
    case $1 in
        --preset) preset=${2:?} && shift ;;
        --rounds) rounds=${2:?} && shift ;;
        --seconds) length=${2:?} && shift ;;
        --ffmpeg) ffmpeg=${2:?} && shift ;;
        --against) against=${2:?} && shift ;;
        -*) die "there is no option $1" ;;
        *) video=("$1") ;;
    esac
    shift
done
command -v "$ffmpeg" >/dev/null || [ "$ffmpeg" = ffmpeg ] || die "there is no program $ffmpeg"
case $preset in win32 | win64) ;; *) die "--preset is win32 or win64, not $preset" ;; esac
[[ $rounds =~ ^[1-9][0-9]*$ && $length =~ ^[1-9][0-9]*$ ]] || die "--rounds and --seconds want a number"

out=$root/build/bench/job
source=$out/source-$length.mp4
short=$out/source-1.mp4
mkdir -p "$out"

install_packages "${packages_build[@]}" "${packages_wine[@]}" gstreamer1.0-plugins-good \
    gstreamer1.0-libav ffmpeg
build "$preset" TavoResample vantrel
choose_clip "${video[@]}"
prepare_wine

if [ ${#video[@]} -gt 0 ] || [ ! -s "$source" ]; then
    say "Making a film of $length s"
    ffmpeg -v error -y -r 25 -stream_loop -1 -i "$clip" -t "$length" -an \
        -vf scale=1920:1080:flags=bicubic -c:v libx264 -preset superfast -crf 20 -g 50 \
        -pix_fmt yuv420p "$source" || die "the film cannot be made"
fi
ffmpeg -v error -y -i "$source" -t 1 -c copy "$short" || die "$source cannot be cut"

# job CONTESTANT SOURCE: sets command to what the contestant does.
job() {
    case $1 in
        ffmpeg) command=("$ffmpeg" -v error -y -threads "$(nproc)" -i "$2" -pix_fmt yuv420p
            -vf scale=1280:720:flags=bilinear -c:v rawvideo "$out/ffmpeg.avi") ;;
        decoding) command=("$ffmpeg" -v error -y -threads "$(nproc)" -i "$2" -f null -) ;;
        vantrel) run_vantrel "$root/build/$preset/bin/vantrel.exe" "$2" vantrel.avi ;;
        against) run_vantrel "$against" "$2" against.avi ;;
    esac
}

run_vantrel() { # PROGRAM SOURCE OUTPUT
    command=("$root/scripts/wine.sh" "$1" "$(windows_path "$2")" "$(windows_path "$out/$3")"
        --size 1280x720 --method bilinear --overwrite --quiet)
}

# measure CONTESTANT SOURCE: prints the seconds that it took, and those of the processor, without
# Wine's server; 0 where perf cannot tell.
measure() {
    local command start=$EPOCHREALTIME end processor=0
    job "$1" "$2"
    if [ -n "$perf" ]; then
        perf stat -x, -e task-clock -o "$out/perf.txt" "${command[@]}" >/dev/null
        end=$EPOCHREALTIME
        processor=$(awk -F, '/task-clock/ { print $1 / 1000 }' "$out/perf.txt")
    else
        "${command[@]}" >/dev/null
        end=$EPOCHREALTIME
    fi || die "$1 failed"
    awk -v from="$start" -v to="$end" -v cpu="$processor" \
        'BEGIN { printf "%.3f %.3f\n", to - from, cpu }'
}

# median FILE COLUMN
median() {
    awk -v c="$2" '{ print $c }' "$1" | sort -n | awk '{ a[NR] = $1 } END { print a[int((NR + 1) / 2)] }'
}

perf=$(perf stat -e task-clock true >/dev/null 2>&1 && echo yes || true)
contestants=(ffmpeg vantrel decoding)
[ -z "$against" ] || contestants+=(against)
rm -f "$out"/*.times
say "Measuring, $rounds rounds"
for ((round = 1; round <= rounds; ++round)); do
    for contestant in "${contestants[@]}"; do
        # A film of a second tells what the start takes.
        read -r begun begun_cpu < <(measure "$contestant" "$short")
        read -r all all_cpu < <(measure "$contestant" "$source")
        [ -n "$all" ] || die "$contestant failed"
        awk -v a="$all" -v b="$begun" -v ac="$all_cpu" -v bc="$begun_cpu" -v n="$length" 'BEGIN {
            f = n > 1 ? n / (n - 1) : 0
            print (f ? (a - b) * f : a), (f ? (ac - bc) * f : ac) }' >>"$out/$contestant.times"
        printf '  round %d, %s: %s s, %s s of the processor\n' "$round" "$contestant" "$all" "$all_cpu"
    done
done

say "A film of $length s, start apart: medians of $rounds rounds, and how many times FFmpeg's"
printf '  %-10s %9s %6s  %9s %6s\n' '' seconds '' processor ''
for contestant in "${contestants[@]}"; do
    awk -v n="$contestant" -v s="$(median "$out/$contestant.times" 1)" \
        -v b="$(median "$out/ffmpeg.times" 1)" -v c="$(median "$out/$contestant.times" 2)" \
        -v d="$(median "$out/ffmpeg.times" 2)" 'BEGIN {
            printf "  %-10s %9.2f %6.2f  %9.2f %6.2f\n", n, s, s / b, c, (d > 0 ? c / d : 0) }'
done
if [ -n "$against" ] && cmp -s "$out/vantrel.avi" "$out/against.avi"; then
    echo "  Both programs wrote the same bytes."
fi
rm -f "$out"/*.avi
