#!/usr/bin/env bash
# Has clang look at every source, warnings and its thread-safety analysis as errors. g++ ignores the lock
# annotations, so this is where they are checked. Makes no object files, which would take twice the time:
# scripts/test.sh clang builds everything with clang and runs the tests, scripts/fuzz.sh links with it.
set -euo pipefail
. "$(dirname "$0")/usage.sh"
cd "$(dirname "$0")/.."

# The last three are of the benchmark, which is looked at as well.
scripts/setup.sh clang tests libbenchmark-dev valgrind libomp-14-dev
cmake --preset clang -DQUEN_BUILD_TESTS=ON -DQUEN_BUILD_BENCH=ON >/dev/null
cmake --build --preset clang --target quen_recording_generated >/dev/null
mapfile -t commands < <(ninja -C build/clang -t commands | sed -n 's/^\S*ccache //; / -c /p')
if [ "${#commands[@]}" -lt 200 ]; then
    echo "clang: ninja tells ${#commands[@]} compile commands only" >&2
    exit 1
fi
printf '%s\n' "${commands[@]}" |
    (cd build/clang && xargs -d '\n' -n 1 -P "$(nproc)" sh -c 'eval "$0 -fsyntax-only"') || {
    echo "clang: it does not take these sources as they are" >&2
    exit 1
}
echo "clang: no warning in ${#commands[@]} sources"
