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
# It also decides which tests are built and run first; the others follow when these notice nothing.
set -euo pipefail
. "$(dirname "$0")/usage.sh"
cd "$(dirname "$0")/.."

readonly hang_seconds=180 # a test program that runs longer counts as failed
readonly race_runs=3     # a race does not show in every run
readonly jobs=${JOBS:-2}
declare -rA options=(
    [default]="-DQUEN_HARDENED=OFF" [hardened]="-DQUEN_HARDENED=ON"
    [race]="-DQUEN_SANITIZE=thread" [leak]="-DQUEN_SANITIZE=address,undefined"
)
# The test programs of each build, by their names without "_test".
programs() { find "tests/$1" -name '*_test.cpp' -printf "$1_%f " | sed 's/_test\.cpp//g'; }
readonly slow_programs="request_path_load request_path_endurance request_path_cli_commands" # for what all the others miss
readonly request_programs="library_hal_interface library_lock_scope library_result_dispatch \
    request_path_process request_path_transcripts"
declare -rA all_programs=(
    [default]="$(programs library) $(programs request_path) $(programs recordings)"
    [hardened]="$request_programs hardened_request_path hardened_isp_metadata_decoding"
    [race]="library_hal_interface request_path_load"
    [leak]=$request_programs
)
# The tests of what a fault's name begins with.
declare -rA first_programs=(
    [allocator]=library_allocator_helper
    [cli]="request_path_cli_commands request_path_cli_batch request_path_cli_inputs \
        request_path_cli_report request_path_cli_outputs"
    [convert]=library_buffer_conversion
    [decode]=library_isp_metadata
    [device]=library_device_buffer
    [encode]=library_isp_metadata
    [feature]=library_tuning
    [hardened]="hardened_request_path hardened_isp_metadata_decoding"
    [host]=$(programs host)
    [imported]="library_device_buffer library_jpeg_size"
    [jpeg]=library_jpeg_size
    [lifecycle]=library_lifecycle
    [log]=library_lifecycle
    [mapper]=library_mapper_helper
    [metadata]="library_request_metadata library_tuning"
    [pipeline]=request_path_cli_batch
    [process]="request_path_process request_path_transcripts"
    [reconfigure]=library_reconfigure
    [recorder]="recordings_replay request_path_cli_commands"
    [records]=request_path_transcripts
    [registry]="library_hal_interface library_lock_scope"
    [replay]="recordings_replay request_path_cli_commands"
    [result]="library_result_dispatch request_path_transcripts"
    [streams]=library_stream_configuration
    [tuning]=library_tuning
    [usage]=library_allocator_helper
)

declare -rA first_of_build=([default]=host) # at set-up: beside all_programs

# Applies a patch, or with --reverse its reverse. The context must match; line numbers may differ.
apply() {
    patch -p1 --batch --fuzz=0 --no-backup-if-mismatch --reject-file=- "${@:2}" \
        <"tests/faults/$1.patch" >"$log" 2>&1
}

# run_program BUILD PROGRAM: when it fails, `failed` is its first failed test, or what ended early.
run_program() {
    local runs=1
    if [[ $1 == race ]]; then runs=$race_runs; fi
    if { timeout "$hang_seconds" "build/$1/tests/$2_test" --gtest_fail_fast \
        --gtest_repeat="$runs"; } >"$log" 2>&1; then
        return 0
    fi
    failed=$(sed -n 's/^\[  FAILED  \] \([A-Za-z0-9_./]*\).*/\1/p; q' <(grep FAILED "$log"))
    failed=$2${failed:+.$failed}
    return 1
}

# try BUILD PROGRAM...: builds the programs and runs them up to the first that fails. Sets `outcome`.
try() {
    outcome=survived
    local targets=("${@:2}")
    if ! cmake --build "build/$1" -j "$jobs" --target "${targets[@]/%/_test}" >"$log" 2>&1; then
        outcome=unbuilt
        return
    fi
    local program
    for program in "${@:2}"; do
        if ! run_program "$1" "$program"; then
            outcome=caught
            return
        fi
    done
}

# try_all BUILD FAULT: the fault's likely tests, then the others, then the slow ones.
try_all() {
    local program first others=() slow=()
    read -ra first <<<"${first_programs[${2%%-*}]:-}"
    for program in ${all_programs[$1]}; do
        if [[ " $slow_programs " == *" $program "* ]]; then
            slow+=("$program")
        elif [[ " ${first[*]} " != *" $program "* ]]; then
            others+=("$program")
        fi
    done
    outcome=survived
    local -n stage
    for stage in first others slow; do
        if [[ $outcome == survived && ${#stage[@]} -gt 0 ]]; then try "$1" "${stage[@]}"; fi
    done
}

# -O1: the builds take longer than the tests. Nobody lists the tests here.
set_up() {
    local linker=()
    if command -v ld.lld >/dev/null; then linker=(-DCMAKE_EXE_LINKER_FLAGS=-fuse-ld=lld); fi
    cmake --preset release -B "build/$1" -DCMAKE_BUILD_TYPE= -DCMAKE_CXX_FLAGS=-O1 \
        -DCMAKE_GTEST_DISCOVER_TESTS_DISCOVERY_MODE=PRE_TEST "${linker[@]}" "${options[$1]}" >"$log"
    try_all "$1" "${first_of_build[$1]:-none}"
    if [[ $outcome != survived ]]; then
        tail -n 30 "$log"
        echo "The tests of the $1 build fail without any fault." >&2
        exit 1
    fi
}

dry_run=false
if [[ ${1:-} == --dry-run ]]; then
    dry_run=true
    shift
fi
if $dry_run; then scripts/setup.sh patch; else scripts/setup.sh tests patch; fi

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
    try_all "$group" "$fault"
    case $outcome in
        unbuilt) echo "does not build $fault" ;;
        survived)
            echo "SURVIVED $fault"
            survived=$((survived + 1))
            ;;
        caught)
            echo "caught  $fault (by $failed)"
            caught=$((caught + 1))
            ;;
    esac
    apply "$fault" --reverse
done
echo "${#faults[@]} faults, $caught caught, $survived survived"
[[ $caught -eq ${#faults[@]} ]]
