#!/usr/bin/env bash
# Sets up, builds and measures; prints one table of costs and their limits.
# Usage: scripts/bench.sh [FLAG...]        flags of Google Benchmark, such as
#                                          --benchmark_filter=copy or --benchmark_repetitions=3
#        scripts/bench.sh build            only builds
#        scripts/bench.sh lists [CASE]     lists every allocation and system call of one request with
#                                          the function that makes it; CASE: request/raw by default
set -euo pipefail
. "$(dirname "$0")/usage.sh"
cd "$(dirname "$0")/.."

scripts/setup.sh libbenchmark-dev valgrind strace binutils >&2
# A build folder of its own: the other scripts do not need the packages of the benchmark.
cmake --preset release -B build/bench -DQUEN_BUILD_TESTS=OFF -DQUEN_BUILD_BENCH=ON >/dev/null
cmake --build build/bench --target quen-bench quen-bench-watch raw-to-jpeg batch-costs >&2
if [ "${1:-}" = build ]; then
    exit
fi

bench=$PWD/build/bench/bench/quen-bench
watch=$PWD/build/bench/bench/libquen-bench-watch.so
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

if [ "${1:-}" = lists ]; then
    bench/lists.sh "$bench" "$watch" "${2:-request/raw}"
    exit
fi

echo "counting allocations, instructions and system calls" >&2
LD_PRELOAD=$watch "$bench" --count >"$work/watched"
valgrind --tool=callgrind --collect-atstart=no --callgrind-out-file="$work/callgrind" \
    "$bench" --count >/dev/null 2>"$work/valgrind.log"
strace -f -o "$work/trace" "$bench" --count request/ >/dev/null

{
    grep -v '^operations ' "$work/watched"
    # One dump per case: its name, then the instructions of its sections.
    awk 'NR == FNR { if ($1 == "operations") operations[$2] = $3; next }
         /^desc: Trigger: Client Request: / { name = $NF }
         /^totals: / { if (name in operations) print "instructions", name, $2 / operations[name]
                       name = "" }' "$work/watched" "$work"/callgrind.*
    # Counts the calls of the thread that marked the section, without the marks.
    awk 'NR == FNR { if ($1 == "operations") { operations[$2] = $3 } next }
         match($0, /write\(-1, "(begin|end) [^"]*"/) {
             split(substr($0, RSTART, RLENGTH), mark, "\"")
             split(mark[2], word, " ")
             thread = word[1] == "begin" ? $1 : ""
             name = word[2]
             next
         }
         $1 == thread && !/ resumed>/ { ++calls[name] }
         END { for (name in operations)
                   if (name ~ /^request/) print "syscalls", name, calls[name] / operations[name] }' \
        "$work/watched" "$work/trace"
} >"$work/counts"

echo "measuring" >&2
"$bench" --counts="$work/counts" "$@"

if [ $# -eq 0 ]; then
    scripts/bench_raw_to_jpeg.sh | sed 1,2d # without its table head
    scripts/bench_batch.sh | sed 1,2d
fi
