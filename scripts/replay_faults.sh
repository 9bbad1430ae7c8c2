#!/usr/bin/env bash
# Tests the tests: applies each fault to a scratch copy and reports those that no test notices. Exits
# with 1 when a fault survives or cannot be tried.
# Usage: scripts/replay_faults.sh [FAULT...]    FAULT: a patch of tests/faults, without .patch
set -euo pipefail
cd "$(dirname "$0")/.."

readonly slow_tests=Endurance # run only for faults that the others miss
readonly hang_seconds=60      # a test that runs longer counts as failed
readonly jobs=${JOBS:-2}

faults=("$@")
if [[ $# -eq 0 ]]; then
    for patch in tests/faults/*.patch; do
        faults+=("$(basename "$patch" .patch)")
    done
fi

scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
log=$scratch/log

# The working tree, uncommitted changes included.
git ls-files -z --cached --others --exclude-standard |
    while IFS= read -r -d '' file; do
        if [[ -e $file ]]; then printf '%s\0' "$file"; fi
    done | tar --null --files-from=- -cf - | tar -xf - -C "$scratch"
patches=$scratch/tests/faults
cd "$scratch"
sed -i "s/TIMEOUT [0-9]*/TIMEOUT $hang_seconds/" tests/CMakeLists.txt

build() {
    cmake --build build -j "$jobs" >"$log" 2>&1
}

run_tests() {
    local selection
    for selection in -E -R; do
        ctest --test-dir build -j "$jobs" "$selection" "$slow_tests" --stop-on-failure \
            >"$log" 2>&1 || return 1
    done
}

# Applies a patch, or with --reverse its reverse. The context must match; line numbers may differ.
apply() {
    patch -p1 --batch --fuzz=0 --no-backup-if-mismatch --reject-file=- "${@:2}" \
        <"$patches/$1.patch" >"$log" 2>&1
}

failed_test() {
    sed -n 's/.*Test *#[0-9]*: \([^ ]*\) .*\*\*\*.*/\1/p' "$log" | head -1
}

# -O1: the builds take longer than the tests.
cmake --preset release -B build -DCMAKE_BUILD_TYPE= -DCMAKE_CXX_FLAGS=-O1 >"$log"
if ! build || ! run_tests; then
    tail -n 30 "$log"
    echo "The tests fail without any fault." >&2
    exit 1
fi

caught=0
survived=0
for fault in "${faults[@]}"; do
    if ! apply "$fault" --forward --dry-run || ! apply "$fault" --forward; then
        echo "does not apply $fault"
        continue
    fi
    if ! build; then
        echo "does not build $fault"
    elif run_tests; then
        echo "SURVIVED $fault"
        survived=$((survived + 1))
    else
        echo "caught  $fault (by $(failed_test))"
        caught=$((caught + 1))
    fi
    apply "$fault" --reverse
done
echo "${#faults[@]} faults, $caught caught, $survived survived"
[[ $caught -eq ${#faults[@]} ]]
