#!/usr/bin/env bash
# Sets up, builds and measures quen-reprocess with many inputs, as whole processes; prints a table.
# Usage: scripts/bench_batch.sh [REPETITIONS [OLDER]]    OLDER: the quen-reprocess of another build,
#                                                        to compare with
set -euo pipefail
. "$(dirname "$0")/usage.sh"
cd "$(dirname "$0")/.."

scripts/setup.sh libbenchmark-dev valgrind >&2
# The build folder of scripts/bench.sh.
cmake --preset release -B build/bench -DQUEN_BUILD_TESTS=OFF -DQUEN_BUILD_BENCH=ON >/dev/null
cmake --build build/bench --target batch-costs >&2

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

built=build/bench
"$built/bench/batch/batch-costs" "$built/tools/reprocess/quen-reprocess" \
    "$built/bench/raw_to_jpeg/demo-frames" "$work" "${1:-3}" ${2:+"$2"}
