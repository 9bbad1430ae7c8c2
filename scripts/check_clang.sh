#!/usr/bin/env bash
# Builds everything with clang, warnings and its thread-safety analysis as errors, into build/clang.
# g++ ignores the lock annotations, so this is where they are checked. Builds, and runs nothing:
# scripts/test.sh clang runs the tests of such a build.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/setup.sh clang tests libbenchmark-dev valgrind # the benchmark's, which is built as well
cmake --preset clang -DQUEN_BUILD_TESTS=ON -DQUEN_BUILD_BENCH=ON >/dev/null
cmake --build --preset clang
echo "clang: everything builds without a warning"
