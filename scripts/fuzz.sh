#!/usr/bin/env bash
# Builds the fuzz targets with clang's sanitizers and runs them, two at once.
# Usage: scripts/fuzz.sh SECONDS [TARGET...]
#   SECONDS     how long each target runs
#   TARGET      a folder of tests/fuzz/corpus, for instance Conversion; all of them by default
# Inputs that reach new code are kept in build/fuzz/corpus, and the next run goes on from there. Fails
# when a target breaks a promise, and says how to see it again.

source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

mapfile -t all < <(ls "$root/tests/fuzz/corpus")
seconds=${1:-}
[[ $seconds =~ ^[1-9][0-9]*$ ]] || die "say for how many seconds each target shall run: scripts/fuzz.sh 60"
shift
targets=("$@")
[ $# -gt 0 ] || targets=("${all[@]}")
for target in "${targets[@]}"; do
    [[ " ${all[*]} " == *" $target "* ]] || die "there is no target called $target (${all[*]})"
done

install_packages cmake ninja-build clang googletest
build fuzz "${targets[@]/#/fuzz_}"

programs=$root/build/fuzz/tests/fuzz
finds=$root/build/fuzz/finds
mkdir -p "$finds"

# run_target NAME: fails when libFuzzer does.
run_target() {
    local name=$1 kept=$root/build/fuzz/corpus/$1
    mkdir -p "$kept"
    # Hangs count: no input takes a second, but the machine may be busy.
    "$programs/fuzz_$name" -max_total_time="$seconds" -timeout=60 -max_len=4096 -rss_limit_mb=2048 \
        -print_final_stats=1 -artifact_prefix="$finds/$name-" \
        "$kept" "$root/tests/fuzz/corpus/$name" >"$logs/fuzz-$name.log" 2>&1
}

# await_target NAME PROCESS
await_target() {
    local name=$1 process=$2 log=$logs/fuzz-$1.log units coverage
    wait "$process" || failed+=("$name")
    units=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log")
    coverage=$(grep -o 'cov: [0-9]*' "$log" | tail -n 1 || true)
    echo "  $name: ${units:-no} inputs, ${coverage:-no coverage}"
}

say "Running ${#targets[@]} targets for $seconds s each"
failed=()
names=()
processes=()
for target in "${targets[@]}"; do
    run_target "$target" &
    names+=("$target")
    processes+=($!)
    [ ${#processes[@]} -lt 2 ] && continue
    await_target "${names[0]}" "${processes[0]}"
    names=("${names[@]:1}")
    processes=("${processes[@]:1}")
done
for i in "${!processes[@]}"; do await_target "${names[$i]}" "${processes[$i]}"; done

[ ${#failed[@]} -gt 0 ] || { say "No promise was broken"; exit 0; }
say "Broken promises"
for target in "${failed[@]}"; do
    grep -m 3 -E 'a promise is broken|runtime error|ERROR: |SUMMARY: ' "$logs/fuzz-$target.log" || true
    input=$(sed -n 's/.*Test unit written to //p' "$logs/fuzz-$target.log" | tail -n 1)
    echo "  log:   build/logs/fuzz-$target.log"
    [ -z "$input" ] || echo "  again: ${programs#"$root/"}/fuzz_$target ${input#"$root/"}"
done
die "found something in: ${failed[*]}"
