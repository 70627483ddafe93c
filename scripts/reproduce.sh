#!/usr/bin/env bash
# Makes the packages of the last commit twice, in two folders that nothing else has touched, and compares
# them byte by byte. Takes some minutes: everything is compiled twice.
# Usage: scripts/reproduce.sh

source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

work=$root/build/reproduce
# Two names of different length, one with a space.
clones=("$work/a" "$work/another folder/of the sources")

# A commit that is made meanwhile belongs to neither.
commit=$(git -C "$root" rev-parse HEAD)
# A cache of compiled files would compile nothing the second time.
export CCACHE_DISABLE=1
unset CMAKE_CXX_COMPILER_LAUNCHER SOURCE_DATE_EPOCH

# package CLONE
package() {
    local clone=$1 log=$logs/reproduce.log
    git clone -q "$root" "$clone"
    git -C "$clone" checkout -q "$commit"
    "$clone/scripts/package.sh" >"$log" 2>&1 || die "scripts/package.sh failed: $(tail -n 1 "$log")"
}

rm -rf "$work"
mkdir -p "$work"
say "Building for the first time"
package "${clones[0]}"
say "Building again, in another folder, time zone and language, with another umask"
(
    umask 077
    export TZ=Asia/Tokyo LC_ALL=C
    package "${clones[1]}"
)

say "Result"
for clone in "${clones[@]}"; do
    (cd "$clone/build" && sha256sum package/TavoResample-* win{32,64}/bin/*) >"$work/sums.${#clone}"
done
diff "$work"/sums.* || die "the same sources gave different files"
cat "$work/sums.${#clones[0]}"
echo "Both builds gave these files, byte by byte"
