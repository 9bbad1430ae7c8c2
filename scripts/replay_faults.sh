#!/usr/bin/env bash
# Tests the tests: applies each fault to a scratch copy and reports those that no test notices. Exits
# with 1 when a fault survives or cannot be tried.
# Usage: scripts/replay_faults.sh [--dry-run] [FAULT...]
#   --dry-run   only reports the patches that no longer apply
#   FAULT       a patch of tests/faults, without .patch
#
# Some faults show in one build only. The name's first word decides where a fault is tried:
#   hardened-*  the hardened build
#   race-*      ThreadSanitizer
#   leak-*      AddressSanitizer, which finds leaks at a test's end
#   all others  the default build
set -euo pipefail
cd "$(dirname "$0")/.."

readonly slow_tests=Endurance # run only for faults that the others miss
readonly hang_seconds=60      # a test that runs longer counts as failed
readonly race_runs=3          # a race does not show in every run
readonly jobs=${JOBS:-2}
declare -rA options=(
    [default]="-DQUEN_HARDENED=OFF" [hardened]="-DQUEN_HARDENED=ON"
    [race]="-DQUEN_SANITIZE=thread" [leak]="-DQUEN_SANITIZE=address,undefined"
)
# The executables that matter: those of the library's requests and results.
readonly request_tests="library_hal_interface_test library_result_dispatch_test \
    road_process_test road_transcripts_test"
declare -rA targets=(
    [default]=all
    [hardened]="$request_tests hardened_request_path_test hardened_isp_metadata_decoding_test"
    [race]="library_hal_interface_test road_load_test"
    [leak]=$request_tests
)

# Applies a patch, or with --reverse its reverse. The context must match; line numbers may differ.
apply() {
    patch -p1 --batch --fuzz=0 --no-backup-if-mismatch --reject-file=- "${@:2}" \
        <"tests/faults/$1.patch" >"$log" 2>&1
}

build() {
    local names
    read -ra names <<<"${targets[$1]}"
    cmake --build "build/$1" -j "$jobs" --target "${names[@]}" >"$log" 2>&1
}

# An executable that was not built stands in the list of tests as one that fails.
run_tests() {
    local runs=1
    if [[ $1 == race ]]; then runs=$race_runs; fi
    local common=(--test-dir "build/$1" -j "$jobs" --stop-on-failure --repeat "until-fail:$runs")
    ctest "${common[@]}" -E "$slow_tests|_NOT_BUILT" >"$log" 2>&1 &&
        ctest "${common[@]}" -R "$slow_tests" -E _NOT_BUILT >"$log" 2>&1
}

# -O1: the builds take longer than the tests.
set_up() {
    cmake --preset release -B "build/$1" -DCMAKE_BUILD_TYPE= -DCMAKE_CXX_FLAGS=-O1 \
        "${options[$1]}" >"$log"
    if ! build "$1" || ! run_tests "$1"; then
        tail -n 30 "$log"
        echo "The tests of the $1 build fail without any fault." >&2
        exit 1
    fi
}

failed_test() {
    sed -n '/\*\*\*Skipped/d; s/.*Test *#[0-9]*: \([^ ]*\) .*\*\*\*.*/\1/p' "$log" | head -1
}

dry_run=false
if [[ ${1:-} == --dry-run ]]; then
    dry_run=true
    shift
fi
faults=("$@")
if [[ $# -eq 0 ]]; then
    for patch in tests/faults/*.patch; do
        faults+=("$(basename "$patch" .patch)")
    done
fi

scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
log=$scratch/log
if $dry_run; then
    applying=0
    for fault in "${faults[@]}"; do
        if apply "$fault" --forward --dry-run; then
            applying=$((applying + 1))
        else
            echo "does not apply $fault"
        fi
    done
    echo "${#faults[@]} faults, $applying apply"
    [[ $applying -eq ${#faults[@]} ]]
    exit
fi

# The working tree, uncommitted changes included.
git ls-files -z --cached --others --exclude-standard |
    while IFS= read -r -d '' file; do
        if [[ -e $file ]]; then printf '%s\0' "$file"; fi
    done | tar --null --files-from=- -cf - | tar -xf - -C "$scratch"
cd "$scratch"
export CCACHE_BASEDIR=$scratch # finds what a replay in another scratch folder has compiled
sed -i "s/TIMEOUT [0-9]*/TIMEOUT $hang_seconds/" tests/CMakeLists.txt

caught=0
survived=0
for fault in "${faults[@]}"; do
    group=${fault%%-*}
    if [[ -z ${options[$group]:-} ]]; then group=default; fi
    if [[ ! -d build/$group ]]; then set_up "$group"; fi
    if ! apply "$fault" --forward --dry-run || ! apply "$fault" --forward; then
        echo "does not apply $fault"
        continue
    fi
    if ! build "$group"; then
        echo "does not build $fault"
    elif run_tests "$group"; then
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
