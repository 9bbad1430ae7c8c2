#!/usr/bin/env bash
# Checks that the library fits a phone's tree, in both of its builds: its sources compile with the headers of
# platform/api alone, without a warning, and it exports exactly what its clients may link. Needs the release
# and the hardened build.
set -euo pipefail
. "$(dirname "$0")/usage.sh"
cd "$(dirname "$0")/.."

scripts/setup.sh clang
library=quencode/quenOfflineDevice
mapfile -t sources < <(find "$library" -name '*.cpp')
for compiler in g++ clang++-14; do
    for build in -UQUEN_HARDENED -DQUEN_HARDENED; do
        for source in "${sources[@]}"; do
            "$compiler" -std=c++17 -fsyntax-only -Wall -Wextra -Wconversion -Wsign-conversion -Werror \
                "$build" -fno-exceptions -fno-rtti -I platform/api -I "$library" "$source"
        done
    done
    echo "library: all ${#sources[@]} sources compile with platform/api alone ($compiler)"
done

if grep -rnE '#\s*include\s*[<"]host/' "$library"; then
    echo "library: a header of the host platform is included" >&2
    exit 1
fi

for build in release hardened; do
    built=build/$build/$library/libquenOfflineDevice.so
    exported=$(nm -D --defined-only "$built" | awk '{print $3}' | c++filt | sed 's/@.*//' | sort -u)
    if ! diff <(printf '%s\n' "$exported") "$library/exports.txt"; then
        echo "library: exports of the $build build differ from $library/exports.txt" \
            "('<' is exported, '>' is listed)" >&2
        exit 1
    fi
done
echo "library: exports are those of exports.txt, in both builds"
