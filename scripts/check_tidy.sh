#!/usr/bin/env bash
# Runs clang-tidy over the library, the platform and the command line; .clang-tidy has the checks. Takes
# the compile commands of build/clang, and builds nothing but generated headers.
# Usage: scripts/check_tidy.sh [FILE...]    FILE: only these sources
set -euo pipefail
. "$(dirname "$0")/usage.sh"
cd "$(dirname "$0")/.."

scripts/setup.sh clang-tidy-14
cmake --preset clang >/dev/null
cmake --build --preset clang --target quen_recording_generated >/dev/null
files=("$@")
if [ $# -eq 0 ]; then
    # platform/android is built with Android's own libraries only.
    mapfile -t files < <(git ls-files 'quencode/*.cpp' 'platform/host/*.cpp' 'tools/*.cpp')
fi
# clang-tidy counts on standard error what it does not show.
findings=$(printf '%s\0' "${files[@]}" |
    xargs -0 -n 4 -P "$(nproc)" clang-tidy-14 -p build/clang --quiet 2>/dev/null) || {
    sed "s|$PWD/||" <<<"$findings" >&2
    echo "tidy: $(grep -c ' error: ' <<<"$findings") findings" >&2
    exit 1
}
echo "tidy: no findings in ${#files[@]} files"
