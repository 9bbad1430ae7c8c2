#!/usr/bin/env bash
# Checks that the library fits a phone's tree: its sources compile with the headers of platform/api
# alone, and it exports exactly what its clients may link. Needs the release build.
set -euo pipefail
cd "$(dirname "$0")/.."

library=quencode/quenOfflineDevice
for compiler in g++ clang++; do
    command -v "$compiler" >/dev/null || continue
    for source in "$library"/quen*/*.cpp; do
        "$compiler" -std=c++17 -fsyntax-only -Wall -Wextra -Werror -fno-exceptions -fno-rtti \
            -I platform/api -I "$library" "$source"
    done
    echo "library: every source compiles with platform/api alone ($compiler)"
done

if grep -rnE '#\s*include\s*[<"]host/' "$library"; then
    echo "library: a header of the host platform is included" >&2
    exit 1
fi

built=build/release/$library/libquenOfflineDevice.so
exported=$(nm -D --defined-only "$built" | awk '{print $3}' | c++filt | sed 's/@.*//' | sort -u)
if ! diff <(printf '%s\n' "$exported") "$library/exports.txt"; then
    echo "library: exports differ from $library/exports.txt ('<' is exported, '>' is listed)" >&2
    exit 1
fi
echo "library: exports are those of exports.txt"
