#!/usr/bin/env bash
# Measures the kernels of the 64-bit and the 32-bit build beside other libraries and writes
# build/bench/speed.{txt,json,svg}.
# Usage: scripts/bench.sh [--docs] [ARGUMENT...]
#   --docs      also writes docs/speed.md and docs/speed.png, from a run of everything
#   ARGUMENT    for build/native/bench/compare, for instance --filter RGB24 or --rounds 31

source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

out=$root/build/bench
mkdir -p "$out"

docs=
arguments=()
for argument in "$@"; do
    if [ "$argument" = --docs ]; then docs=yes; else arguments+=("$argument"); fi
done
case " ${arguments[*]} " in
    *" --filter "* | *" --set "* | *" --no-peers "*)
        [ -z "$docs" ] || die "--docs needs a run of everything"
        ;;
esac

# write_page: docs/speed.md, from the table of this run.
write_page() {
    local processor demands
    processor=$(head -n 1 "$out/speed.txt")
    demands=$(sed -nE 's/^([0-9]+ of [0-9]+) reached$/\1/p' "$out/speed.txt")
    cat <<PAGE
# Speed

How fast the kernels are beside what one would pick instead, and beside the memory limit: to read
the source once and write the destination once.

All is measured twice. **Cold**: each call has another source and another destination, out of rings that
are larger than the last-level cache, as when a decoder on another core or a capture card delivers the
frames. **Hot**: one source and one destination, which stay in the caches. The chart is of cold pictures.
AUTO takes what the processor has, and so do the columns "64-bit" and "32-bit"; the others are held to
AVX2 or to SSSE3.

![Times faster than the fastest other library, cold](speed.png)

Measured with \`scripts/bench.sh --docs\` on one thread of a machine that calls itself
"$processor", on $(date -u +%Y-%m-%d), built with
$(c++ --version | head -n 1). **All figures are of one run**; another
machine, or another hour on a busy one, gives others. All contestants take turns on one core, a round
of about two milliseconds each, cold and hot, and the medians of the rounds are compared; the clock is the
processor time of the thread. The method is AUTO, or "Nearest Neighbor AUTO". Each library is there
with its fastest way, which the last column names, and always as the distribution's 64-bit package,
beside our 32-bit build too. Libraries take what they find on the processor, also where ours are held to a
smaller set; only zimg has to be told to take AVX-512, and is told so beside "64-bit" and "32-bit" alone.
They do not all compute the same: libyuv, OpenCV and the "fast bilinear" of swscale take two samples on
each axis, as the kernels here do; the "bilinear" of swscale and zimg take more when they reduce, which is
slower and smoother. "On bytes" is a scaler of planes, applied to rows whose width stays.

Of the goals that the kernels are held to, $demands are reached in this run; the others are marked
MISSED below.

Where only the height changes, and where pixels are only moved, all run at the memory limit: ratios near
1 are ties there, and small differences fall on either side from run to run. Where both axes change the
time goes into computing, the more so when a picture fits the caches: there a small multiple of the
memory limit is out of reach of every blend that was tried. The last column of the means is what the memory
limit itself would reach, a scaler that computes nothing.

What a frame costs at common sizes stands behind the means. I420 stands for all planar formats with
chroma of half the width and height; its three planes are counted.

\`\`\`text
$(cat "$out/speed.txt")
\`\`\`
PAGE
}

install_packages cmake ninja-build g++ make binutils g++-multilib pkgconf \
    libyuv-dev libswscale-dev libzimg-dev libopencv-dev ${docs:+librsvg2-bin fonts-dejavu-core}

build native -DTAVO_BUILD_BENCH=ON compare
build native32 -DTAVO_BUILD_BENCH=ON bench_worker

say "Measuring (some minutes)"
"$root/build/native/bench/compare" --worker32 "$root/build/native32/bench/bench_worker" \
    --json "$out/speed.json" --svg "$out/speed.svg" "${arguments[@]}" >"$out/speed.txt" ||
    die "the measurement failed"
cat "$out/speed.txt"

if [ -n "$docs" ]; then
    rsvg-convert -o "$root/docs/speed.png" "$out/speed.svg" || die "cannot draw docs/speed.png"
    write_page >"$root/docs/speed.md"
fi

say "Made"
for file in build/bench/speed.{txt,json,svg} ${docs:+docs/speed.md docs/speed.png}; do
    printf '  %-60s %s\n' "$file" "$(du -h "$root/$file" | cut -f1)"
done
