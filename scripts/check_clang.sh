#!/usr/bin/env bash
# Builds everything with clang, warnings and its thread-safety analysis as errors, into build/clang.
# g++ ignores the lock annotations, so this is where they are checked. Builds, and runs nothing:
# scripts/test.sh clang runs the tests of such a build.
set -euo pipefail
. "$(dirname "$0")/usage.sh"
cd "$(dirname "$0")/.."

# The last three are of the benchmark, which is built as well.
scripts/setup.sh clang tests libbenchmark-dev valgrind libomp-14-dev
cmake --preset clang -DQUEN_BUILD_TESTS=ON -DQUEN_BUILD_BENCH=ON >/dev/null
cmake --build --preset clang
echo "clang: everything builds without a warning"
