#!/usr/bin/env bash
# Runs every fuzz target in BUILD for SECONDS each, JOBS at a time, on generated seeds, and
# prints the executions per target. Any finding is kept under BUILD/findings/<target>/ and
# makes the run fail; save a fixed one under fuzz/regressions/<target>/ so `make test`
# replays it.
set -uo pipefail
BUILD=$1
SECONDS_EACH=${2:-600}
JOBS=${3:-2}
here=$(cd "$(dirname "$0")" && pwd)

rm -rf "$BUILD/seeds"
"$here/make-seeds.sh" "$BUILD/seeds" || exit 1

run_one() {
    local target=$1 build=$2 seconds=$3 here=$4
    local name=${target#fuzz_}
    local corpus="$build/corpus/$name" findings="$build/findings/$name"
    mkdir -p "$corpus" "$findings"
    "$build/$target" "$corpus" "$build/seeds/$name" "$here/regressions/$name" \
        -max_total_time="$seconds" -print_final_stats=1 -artifact_prefix="$findings/" \
        -rss_limit_mb=2048 >"$build/$name.log" 2>&1
    local status=$?
    local runs
    runs=$(grep -m1 'stat::number_of_executed_units' "$build/$name.log" | awk '{print $2}')
    printf '%-16s %12s executions  %s\n' "$name" "${runs:-?}" \
        "$([ $status -eq 0 ] && echo "no findings" || echo "FINDING (exit $status): see $build/$name.log")"
    return $status
}
export -f run_one

ls "$BUILD" | grep '^fuzz_' | grep -v '\.' |
    xargs -P "$JOBS" -I{} bash -c 'run_one "$@"' _ {} "$BUILD" "$SECONDS_EACH" "$here"
