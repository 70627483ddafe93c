#!/usr/bin/env bash
# Installs what is missing, builds everything, and runs all tests: natively in 64 and 32 bits, under
# the sanitizers, and under Wine in both bitnesses; then installs the packages under Wine.
# Usage: scripts/test.sh [PRESET...] [-- ARGUMENT...]
#   PRESET      native native32 asan tsan win32 win64, and package for the packages; all of them by
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
[ ${#presets[@]} -gt 0 ] || presets=(native native32 asan tsan win32 win64 package)
packages_preset=()
for preset in "${presets[@]}"; do
    case $preset in
        native32 | asan | win32 | tsan) ;;
        # The declarations and programs in other languages.
        native) packages_preset+=(python3 mono-mcs) ;;
        win64) packages_preset+=(fp-compiler fpc-source) ;;
        package) packages_preset+=("${packages_packing[@]}") ;;
        arm64) packages_preset+=(clang lld libstdc++-12-dev-arm64-cross libc6-dev-arm64-cross) ;;
        *) die "there is no build called $preset (native native32 asan tsan win32 win64 package arm64)" ;;
    esac
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

# Tests that wait for windows, or for the longest of them, leave processors idle: the next preset is
# built meanwhile.
ahead=
build_ahead() { # PRESET
    (renice -n 10 "$BASHPID" && build_tests "$1") >/dev/null 2>&1 &
    ahead=$!
}
await_ahead() { # PRESET
    [ -n "$ahead" ] || return 0
    if kill -0 "$ahead" 2>/dev/null; then
        say "Waiting for the build of $1"
        tail -n +1 -f --pid="$ahead" "$logs/build-$1.log" 2>/dev/null | show_progress /dev/null
    fi
    wait "$ahead" || true # the build below says why
    ahead=
}

failed=()
for ((i = 0; i < ${#presets[@]}; i++)); do
    preset=${presets[i]}
    next=${presets[i + 1]:-}
    if [ "$preset" = package ]; then
        "$root/scripts/test_package.sh" || failed+=(package)
        continue
    fi
    await_ahead "$preset"
    build_tests "$preset"
    [ -z "$next" ] || [ "$next" = package ] || build_ahead "$next"
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
