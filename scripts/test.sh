#!/usr/bin/env bash
# Sets up, builds and runs the tests.
# Usage: scripts/test.sh [PRESET]    PRESET: release (default), hardened, debug, asan, tsan or clang
set -euo pipefail
. "$(dirname "$0")/usage.sh"
cd "$(dirname "$0")/.."

preset=${1:-release}
further=(tests)
if [ "$preset" = clang ]; then
    further+=(clang)
fi
scripts/setup.sh "${further[@]}"
cmake --preset "$preset" -DQUEN_BUILD_TESTS=ON >/dev/null
cmake --build --preset "$preset"

# Leaks count as failures.
export ASAN_OPTIONS=${ASAN_OPTIONS:-detect_leaks=1:strict_string_checks=1}
export UBSAN_OPTIONS=${UBSAN_OPTIONS:-print_stacktrace=1}
ctest --preset "$preset"
