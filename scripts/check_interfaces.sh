#!/usr/bin/env bash
# Checks the two HAL packages in interfaces/: their hashes, their build rules, and that platform/api is
# what Debian's hidl-gen makes of them, in layout, in the slots of operations, and to the compiler. Of the
# library's Android.bp it checks the form only.
set -euo pipefail
. "$(dirname "$0")/usage.sh"
cd "$(dirname "$0")/.."

scripts/setup.sh hidl-gen blueprint-tools
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

fail() {
    echo "interfaces: $*" >&2
    exit 1
}

readonly packages=(isphal:vendor.mediatek.hardware.camera.isphal
    quenpostproc:vendor.quen.hardware.camera.quenpostproc)
# Android's base interface in the project's words: hidl-gen comes without Android's.
roots=(-R -p "$PWD" -r android.hidl.base:interfaces/base)
for package in "${packages[@]}"; do
    roots+=(-r "${package#*:}:interfaces/${package%%:*}")
done

# The lists of sources and imports in a build rule.
lists_of() {
    sed -n '/\(srcs\|interfaces\): \[/,/\]/p' "$1"
}

for package in "${packages[@]}"; do
    name=${package#*:}@1.0
    folder=interfaces/${package%%:*}
    hidl-gen -L hash "${roots[@]}" "$name" | diff <(grep -v '^#' "$folder/current.txt") - ||
        fail "$folder/current.txt has other hashes than its files ('>')"
    hidl-gen -L androidbp -O none "${roots[@]}" -o "$work/rules" "$name"
    diff <(lists_of "$folder/1.0/Android.bp") <(lists_of "$work/rules/$folder/1.0/Android.bp") ||
        fail "$folder/1.0/Android.bp does not list what hidl-gen finds ('>')"
    hidl-gen -L c++-headers "${roots[@]}" -o "$work/generated" "$name"
done
hidl-gen -L c++-headers "${roots[@]}" -o "$work/generated" android.hidl.base@1.0

unformatted=$(git ls-files -z -- '*.bp' | xargs -0 bpfmt -l) || fail "an Android.bp does not parse"
[ -z "$unformatted" ] || fail "not formatted as bpfmt does: $unformatted"

flags=(-std=c++17 -Wall -Wextra -Werror)
own=(-I platform -isystem platform/api)
generated=(-isystem "$work/generated" -isystem interfaces/check/include "${own[@]}" -DQUEN_GENERATED_HEADERS)

# References to operations link the host platform's definitions in; the program calls none of them.
build_layouts() {
    g++ "${flags[@]}" -Wno-invalid-offsetof "${@:2}" interfaces/check/layouts.cpp -c -o "$work/$1.o"
    g++ "$work/$1.o" -Wl,--unresolved-symbols=ignore-all -o "$work/layouts"
    "$work/layouts" >"$work/$1.txt"
}
build_layouts generated "${generated[@]}"
build_layouts own "${own[@]}"
[ -s "$work/own.txt" ] || fail "no layouts were printed"
diff "$work/generated.txt" "$work/own.txt" ||
    fail "platform/api differs ('>') from what hidl-gen makes ('<')"

# Whoever calls the interfaces, and whoever implements them.
library=quencode/quenOfflineDevice
for source in "$library"/quenOfflineDevice/*.cpp "$library"/quenOfflineDevice/*/*.cpp \
    platform/host/isp/device/SoftwareIsp*.cpp; do
    g++ "${flags[@]}" -fsyntax-only "${generated[@]}" -I "$library" "$source" ||
        fail "$source does not compile with the headers that hidl-gen makes"
done
echo "interfaces: hashes and build rules agree, and platform/api is what hidl-gen makes of them"
