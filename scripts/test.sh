#!/usr/bin/env bash
# Installs what is missing, builds everything, and runs all tests: under Wine in both bitnesses, where it
# installs the packages too; natively in 64 and 32 bits, and under the sanitizers.
# Usage: scripts/test.sh [PRESET...] [-- ARGUMENT...]
#   PRESET      win32 win64 native native32 asan tsan, and package for the packages; all of them by
#               default
#               tsan: what threads share, with a sanitizer of its own
#               arm64: in an emulator, and only when asked for
#   ARGUMENT    for ctest, for instance -R module_test

source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

presets=()
while [ $# -gt 0 ] && [ "$1" != -- ]; do
    presets+=("$1")
    shift
done
[ $# -eq 0 ] || shift
in_order=(win32 win64 package native native32 asan tsan arm64)
[ ${#presets[@]} -gt 0 ] || presets=("${in_order[@]:0:7}")
packages_preset=()
for preset in "${presets[@]}"; do
    case $preset in
        native32 | asan | win32 | tsan) ;;
        # The declarations and programs in other languages.
        native) packages_preset+=(python3 mono-mcs) ;;
        win64) packages_preset+=(fp-compiler fpc-source) ;;
        package) packages_preset+=("${packages_packing[@]}") ;;
        arm64) packages_preset+=(clang lld libstdc++-12-dev-arm64-cross libc6-dev-arm64-cross) ;;
        *) die "there is no build called $preset (${in_order[*]})" ;;
    esac
done

wanted=" ${presets[*]} "
presets=()
for preset in "${in_order[@]}"; do
    case $wanted in *" $preset "*) presets+=("$preset") ;; esac
done

install_packages "${packages_build[@]}" "${packages_wine[@]}" "${packages_display[@]}" \
    g++ g++-multilib g++-mingw-w64-x86-64-posix googletest libbenchmark-dev clang-format \
    gstreamer1.0-plugins-good gstreamer1.0-libav qemu-user ffmpeg python3 imagemagick fonts-dejavu-core \
    "${packages_preset[@]}"

say "Checking the format of the sources"
(cd "$root" && find . -path ./build -prune -o \( -name '*.cpp' -o -name '*.h' \) -print0 |
    xargs -0 clang-format --dry-run -Werror) ||
    die "clang-format would change the files above"

# build_tests PRESET
build_tests() {
    local targets=()
    [ "$1" != tsan ] || targets=(threads_test)
    build "$1" -DTAVO_BUILD_TESTS=ON -DTAVO_BUILD_BENCH=ON "${targets[@]}"
}

# Tests that wait for windows, or for the longest of them, leave processors idle: all other builds are
# made meanwhile, in their order. Those under Wine come first, for their tests wait most.
built=$logs/built # the presets whose build ahead has ended, well or not
ahead=
build_ahead() { # PRESET...
    local preset
    : >"$built"
    [ $# -gt 0 ] || return 0
    set -m # a process group of its own, to be ended with all that it has begun
    (
        renice -n 10 "$BASHPID"
        for preset in "$@"; do
            (build_tests "$preset") || true # it is built again when its turn comes, which says why
            echo "$preset" >>"$built"
        done
    ) >/dev/null 2>&1 &
    ahead=$!
    set +m
    trap 'kill -- "-$ahead" 2>/dev/null || true' EXIT
}
is_building() { kill -0 "$ahead" 2>/dev/null && ! grep -qx "$1" "$built"; } # PRESET
await_ahead() {                                                             # PRESET
    if [ -z "$ahead" ] || ! is_building "$1"; then return 0; fi
    say "Waiting for the build of $1"
    while is_building "$1"; do
        grep -s '^\[' "$logs/build-$1.log" | tail -n 1 || true
        sleep 2
    done | show_progress /dev/null
}

failed=()
for ((i = 0; i < ${#presets[@]}; i++)); do
    preset=${presets[i]}
    if [ "$preset" = package ]; then
        "$root/scripts/test_package.sh" || failed+=(package)
        continue
    fi
    await_ahead "$preset"
    build_tests "$preset"
    if [ "$i" -eq 0 ]; then
        later=()
        for next in "${presets[@]:1}"; do [ "$next" = package ] || later+=("$next"); done
        build_ahead "${later[@]}"
    fi
    say "Testing $preset"
    runner=()
    case $preset in
        win*)
            runner=(xvfb-run -a)
            "${runner[@]}" "$root/scripts/wine.sh" cmd /c exit || die "Wine does not start"
            ;;
        tsan)
            # gcc 12's sanitizer finds no place for its memory where addresses are spread widely.
            if setarch -R true 2>/dev/null; then runner=(setarch -R); fi
            ;;
    esac
    (cd "$root" && "${runner[@]}" ctest --preset "$preset" "$@") || failed+=("$preset")
done

say "Result"
for preset in "${presets[@]}"; do
    [ "$preset" != package ] || continue
    echo "  $preset: build/$preset, log in build/$preset/Testing/Temporary/LastTest.log"
done
[ ${#failed[@]} -eq 0 ] || die "tests failed in: ${failed[*]}"
echo "All tests passed in: ${presets[*]}"
