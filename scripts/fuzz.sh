#!/usr/bin/env bash
# Sets up, builds the fuzz targets with clang and runs one of them, or each: a line a target, then the
# sums. Exits with 1 when an input crashes a target, hangs it or leaks; the input is kept.
# Usage: scripts/fuzz.sh [TARGET] [SECONDS]    TARGET: a source of fuzz/ without .cpp, or all (default)
#                                              SECONDS: of each target, 10 unless given
set -euo pipefail
. "$(dirname "$0")/usage.sh"
cd "$(dirname "$0")/.."

# target, longest input in bytes, whether it is handed in as a file
targets='    isp_metadata_decoder   512  memory
    isp_metadata_reader    512  memory
    metadata_converter    1024  memory
    camera_blob             64  memory
    gralloc                768  memory
    cli_set                128  memory
    cli_headerless         256  file
    cli_dng               2048  file
    cli_jpeg              2048  file
    cli_yuv                256  file'

wanted=${1:-all}
seconds=${2:-10}
if [ "$wanted" != all ] && ! grep -qE "^ *$wanted " <<<"$targets"; then
    echo "fuzz: there is no target '$wanted'; there are$(awk '{ printf " %s", $1 }' <<<"$targets")" >&2
    exit 2
fi

scripts/setup.sh clang libclang-rt-14-dev >&2
cmake --preset fuzz >/dev/null
cmake --build --preset fuzz >&2

readonly built=build/fuzz
# What is found on the way is kept beside the seeds, for the next run to begin with.
readonly found=$built/found
export ASAN_OPTIONS=${ASAN_OPTIONS:-detect_leaks=1:strict_string_checks=1}
export UBSAN_OPTIONS=${UBSAN_OPTIONS:-print_stacktrace=1}

# Runs a target. Leaves its executions, its seconds and what stopped it ("-" for nothing) in a file.
run() {
    local target=$1 longest=$2 log=$found/$1.log flags=() stopped=- begin=$SECONDS
    mkdir -p "$found/$target" "fuzz/corpus/$target"
    if [ -e "fuzz/dictionaries/$target.dict" ]; then
        flags+=("-dict=fuzz/dictionaries/$target.dict")
    fi
    # Ten seconds are a hang: an input takes a millisecond.
    if ! "$built/fuzz/$target" -max_total_time="$seconds" -max_len="$longest" -timeout=10 \
        -print_final_stats=1 -artifact_prefix="$found/$target-" "${flags[@]}" \
        "$found/$target" "fuzz/corpus/$target" </dev/null >"$log" 2>&1; then
        stopped=$(sed -n 's/.*Test unit written to //p' "$log" | tail -1)
        stopped=${stopped:-$log}
    fi
    local executions
    executions=$(sed -n 's/^stat::number_of_executed_units: //p' "$log")
    echo "${executions:-0} $((SECONDS > begin ? SECONDS - begin : 1)) $stopped" >"$found/$target.result"
}

if [ "$wanted" != all ]; then
    targets=$(grep -E "^ *$wanted " <<<"$targets")
fi
rm -f "$found"/*.result
while read -r target longest kind; do
    if [ "$(jobs -rp | wc -l)" -ge "$(nproc)" ]; then
        wait -n
    fi
    run "$target" "$longest" &
done <<<"$targets"
wait

declare -A sums=([memory]=0 [file]=0)
findings=0
printf '%-22s %14s %10s %9s\n' target executions 'a second' findings
while read -r target longest kind; do
    # A target without a result was not run to its end.
    read -r executions took stopped < <(cat "$found/$target.result" || echo "0 1 $found/$target.log")
    sums[$kind]=$((sums[$kind] + executions))
    printf '%-22s %14d %10d ' "$target" "$executions" $((executions / took))
    if [ "$stopped" = - ]; then
        printf '%9d\n' 0
    else
        findings=$((findings + 1))
        printf '%9d  %s\n' 1 "$stopped"
    fi
done <<<"$targets"
echo "executions: ${sums[memory]} in memory, ${sums[file]} of input files; findings: $findings"
[ "$findings" -eq 0 ]
