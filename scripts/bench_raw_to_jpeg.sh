#!/usr/bin/env bash
# Sets up, builds and measures RAW to JPEG as whole processes, quen-reprocess against LibRaw followed by
# libjpeg-turbo; prints a table.
# Usage: scripts/bench_raw_to_jpeg.sh [REPETITIONS]
set -euo pipefail
. "$(dirname "$0")/usage.sh"
cd "$(dirname "$0")/.."

scripts/setup.sh libbenchmark-dev valgrind >&2
# The build folder of scripts/bench.sh.
cmake --preset release -B build/bench -DQUEN_BUILD_TESTS=OFF -DQUEN_BUILD_BENCH=ON >/dev/null
cmake --build build/bench --target raw-to-jpeg >&2

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

built=build/bench
"$built/bench/raw_to_jpeg/raw-to-jpeg" "$built/tools/reprocess/quen-reprocess" \
    "$built/bench/raw_to_jpeg/libraw-develop" "$built/bench/raw_to_jpeg/demo-frames" "$work" "${1:-7}"
