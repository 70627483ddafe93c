#!/usr/bin/env bash
# Runs for long what scripts/test.sh runs for seconds: the fuzzers, and the tests that repeat, under
# Wine in both bitnesses and natively. Goes round until the time is up, and prints what was measured.
# Usage: scripts/soak.sh [MINUTES [TIMES]]
#   MINUTES   60 by default; a quarter is the fuzzers', and a round that has begun is finished
#   TIMES     how many times longer tests repeat than in scripts/test.sh; 10 by default, and never so
#             many that one of them takes half an hour

source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

minutes=${1:-60}
times=${2:-10}
for number in "$minutes" "$times"; do
    [[ $number =~ ^[1-9][0-9]*$ ]] || die "$number is no whole number from 1"
done
presets=(win32 win64 native)
# Those that obey TAVO_ROUNDS; picture_test is where there would be none.
tests='stress|cycles|safety|live_test|random|threads|pages_test|fail|fuzz|replay|picture_test'
results=$logs/soak.txt

# figures LOG: what tests and fuzzers say they counted, and what failed.
figures() {
    awk '{ sub(/^[0-9]+: /, "") }
         /^\[ RUN / { test = $4 }
         /^\[  FAILED  \] .* ms\)$/ { print "    " test " FAILED" }
         test != "" && /^  +[0-9]+ [a-z]/ { sub(/^ +/, ""); print "    " test ": " $0 }
         /^  [A-Za-z]+: .* inputs/ { print "  " $0 }
         /^[\t ]+[0-9]+ - .*\((Failed|Timeout|Not Run|Exception|SEGFAULT)/ { print "    " $0 }' "$1"
}

# note NAME CODE SECONDS LOG
note() {
    local verdict=passed
    if [ "$2" -ne 0 ]; then
        verdict=FAILED
        failed=$((failed + 1))
    fi
    {
        echo "$1: $verdict in $3 s, log in ${4#"$root"/}"
        figures "$4"
    } | tee -a "$results"
}

# run NAME LOG COMMAND...
run() {
    local name=$1 log=$logs/$2 start=$SECONDS code=0
    shift 2
    (cd "$root" && "$@") >"$log" 2>&1 || code=$?
    note "$name" "$code" $((SECONDS - start)) "$log"
}

run_fuzzers() {
    local targets=("$root"/tests/fuzz/corpus/*) quarter=$((minutes * 15))
    # Two run at once, each for as long as it is told.
    run "fuzzers" soak-fuzz.log "$root/scripts/fuzz.sh" $((quarter * 2 / ${#targets[@]}))
}

# run_tests PRESET ROUND
run_tests() {
    local runner=()
    case $1 in win*) runner=(xvfb-run -a) ;; esac
    run "$1, round $2" "soak-$1-$2.log" \
        env TAVO_ROUNDS="$times" "${runner[@]}" ctest --preset "$1" --verbose -R "$tests"
}

install_packages "${packages_build[@]}" "${packages_wine[@]}" "${packages_display[@]}" \
    g++ g++-mingw-w64-x86-64-posix googletest
for preset in "${presets[@]}"; do build "$preset" -DTAVO_BUILD_TESTS=ON; done
prepare_wine

say "Repeating $times times as often, for $minutes minutes"
: >"$results"
failed=0
round=1
end=$((SECONDS + minutes * 60))
run_fuzzers
while :; do
    for preset in "${presets[@]}"; do run_tests "$preset" "$round"; done
    [ "$SECONDS" -lt "$end" ] || break
    round=$((round + 1))
done

say "Result"
cat "$results"
[ "$failed" -eq 0 ] || die "$failed of these runs failed"
echo "No fault in $round rounds; this is also in ${results#"$root"/}"
