#!/usr/bin/env bash
# Checks the project against a checkout of Android's public tree, release 11: the library compiles with the
# tree's headers and links, nothing undefined, with what this machine's clang makes of the tree's sources
# (both variants; g++ does not take the tree's HidlSupport.h); the HAL packages have the same layouts on the
# tree's base; the tree's camera metadata library and the host's write the same and read each other's random
# buffers alike. Runs nothing but the last. What needs no tree is checked by check_interfaces.sh and
# check_android_headers.sh.
# Usage: scripts/check_phone_tree.sh TREE
set -euo pipefail
. "$(dirname "$0")/usage.sh"
cd "$(dirname "$0")/.."

fail() {
    echo "phone tree: $*" >&2
    exit 1
}

readonly include_folders=(
    system/core/libutils/include
    system/core/libcutils/include
    system/core/liblog/include
    system/core/libsystem/include
    system/core/libsync/include
    system/core/libbacktrace/include
    system/core/base/include
    system/libhidl/base/include
    system/libhidl/transport/include
    system/libhwbinder/include
    system/media/camera/include
    system/media/private/camera/include
    frameworks/native/libs/gralloc/types/include
)
# Only for what this machine's C library does not have.
readonly c_library=bionic/libc/include
# What the tree's own C and C++ libraries, and the headers that its compiler for AIDL makes, bring along.
readonly brought_along=(-include cstring -include memory -include optional
    -DSCHED_NORMAL=SCHED_OTHER "-D__INTRODUCED_IN(level)=")
readonly android_packages=(
    android.hidl.base@1.0
    android.hidl.manager@1.0
    android.hardware.graphics.common@1.0
    android.hardware.graphics.common@1.1
    android.hardware.graphics.common@1.2
    android.hardware.graphics.mapper@4.0
    android.hardware.graphics.allocator@4.0
)
readonly own_packages=(
    vendor.mediatek.hardware.camera.isphal@1.0
    vendor.quen.hardware.camera.quenpostproc@1.0
)
readonly metadata_source=system/media/camera/src/camera_metadata.c
# What the library links on a phone, by the sources that define it. What these need of other parts of the
# tree stays open, as in any shared library; Debian has the tree's liblog.
readonly components=(
    "utils system/core/libutils/RefBase.cpp system/core/libutils/StrongPointer.cpp"
    "cutils system/core/libcutils/native_handle.cpp system/core/libcutils/properties.cpp"
    "sync system/core/libsync/sync.c"
    "hidlbase system/libhidl/base/HidlInternal.cpp system/libhidl/base/HidlSupport.cpp system/libhidl/base/Status.cpp"
    "gralloctypes frameworks/native/libs/gralloc/types/Gralloc4.cpp"
    "camera_metadata $metadata_source"
)
# Packages whose generated sources the library links.
readonly linked_packages=(
    android.hidl.base@1.0
    android.hardware.graphics.mapper@4.0
    android.hardware.graphics.allocator@4.0
    vendor.mediatek.hardware.camera.isphal@1.0
    vendor.quen.hardware.camera.quenpostproc@1.0
)
# Names of the makers' closed libraries.
readonly makers='5NSCam|Quen3AInfoManager|QuenParameterUpdater|isp_metadata|mtkcam_testLog'
readonly makers_log='^(log_dbg_print|get_filename|g_logInfoLv)|_Z13log_dbg_print|_Z12get_filename'

[ $# -eq 1 ] || fail "which tree? Usage: scripts/check_phone_tree.sh TREE"
[ -d "$1" ] || fail "there is no tree at $1"
tree=$(realpath "$1")
for wanted in "${include_folders[@]}" $c_library hardware/interfaces/graphics/mapper/4.0 $metadata_source; do
    [ -e "$tree/$wanted" ] || fail "$1 is no checkout of Android 11: it has no $wanted"
done

scripts/setup.sh clang hidl-gen android-liblog-dev
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

roots=(-R -p "$PWD" -r "android.hidl:$tree/system/libhidl/transport"
    -r "android.hardware:$tree/hardware/interfaces"
    -r vendor.mediatek.hardware.camera.isphal:interfaces/isphal
    -r vendor.quen.hardware.camera.quenpostproc:interfaces/quenpostproc)
for package in "${android_packages[@]}" "${own_packages[@]}"; do
    hidl-gen -L c++-headers "${roots[@]}" -o "$work/generated" "$package" ||
        fail "hidl-gen makes nothing of $package"
done
# Debian's hidl-gen is of the release before: without this every source would define these for itself.
find "$work/generated" -name '*.h' -exec sed -i 's/^template<> constexpr /template<> inline constexpr /' {} +

# Of platform/api only the makers' headers stay, and the AIDL records: the tree's compiler for them is
# built from the tree.
mkdir "$work/makers"
for folder in nscam mtkcam quen aidl; do
    ln -s "$PWD/platform/api/$folder" "$work/makers/$folder"
done
headers=(-isystem "$work/generated")
for folder in "${include_folders[@]}"; do
    headers+=(-isystem "$tree/$folder")
done
headers+=(-isystem "$work/makers" -idirafter "$tree/$c_library")

cmake --preset release >/dev/null
cmake --build --preset release --target quen_host >/dev/null
host=$PWD/build/release/platform/host

# shared_library NAME SOURCE...: what the tree's sources define. A later C++ than the tree's, for C++ has no
# <stdatomic.h> before, and the tree's C library has one for C++ all the same.
shared_library() {
    local objects=() source object
    for source in "${@:2}"; do
        if [[ $source != /* ]]; then source=$tree/$source; fi
        object=$work/$1-${#objects[@]}.o
        case $source in
            *.c) gcc -D_GNU_SOURCE -fPIC -w "${headers[@]}" -c "$source" -o "$object" ;;
            *) clang++-14 -std=c++2b "${brought_along[@]}" -fPIC -w "${headers[@]}" -c "$source" -o "$object" ;;
        esac || fail "$source does not compile with this machine's compiler"
        objects+=("$object")
    done
    g++ -shared "${objects[@]}" -o "$work/lib$1.so" || fail "lib$1.so does not link"
    libraries+=("$work/lib$1.so")
}

libraries=()
for component in "${components[@]}"; do
    read -ra words <<<"$component"
    shared_library "${words[0]}" "${words[@]:1}"
done
for package in "${linked_packages[@]}"; do
    hidl-gen -L c++-sources "${roots[@]}" -o "$work/sources/$package" "$package" ||
        fail "hidl-gen makes no sources of $package"
    mapfile -t sources < <(find "$work/sources/$package" -name '*.cpp')
    shared_library "$package" "${sources[@]}"
done
# The makers' libraries: names alone, those of them that the host platform has.
nm -D --defined-only "$host/libquen_host.so" | awk '{ print $3 }' | grep -E "$makers|$makers_log" |
    sed 's/.*/.globl &\n&:/; $a .type g_logInfoLv, @object\n.size g_logInfoLv, 64' >"$work/makers.s"
gcc -shared -nostdlib "$work/makers.s" -o "$work/libmakers.so"
logs=$(dirname "$(find /usr/lib -name liblog.so -path '*/android/*' -print -quit)")

library=quencode/quenOfflineDevice
mapfile -t sources < <(find "$library" -name '*.cpp')
flags=(-std=c++17 -Wall -Wextra -Werror)
for variant in -UQUEN_HARDENED -DQUEN_HARDENED; do
    objects=()
    for source in "${sources[@]}"; do
        objects+=("$work/${#objects[@]}.o")
        clang++-14 "${flags[@]}" $variant -fno-exceptions -fno-rtti -fvisibility=hidden -fPIC \
            "${brought_along[@]}" -I "$library" "${headers[@]}" -c "$source" -o "${objects[-1]}" ||
            fail "$source does not compile ($variant)"
    done
    clang++-14 -shared -Wl,--no-undefined "${objects[@]}" "${libraries[@]}" "$work/libmakers.so" \
        -L "$logs" -llog -o "$work/library.so" || fail "the library does not link ($variant)"
done

print_layouts() {
    clang++-14 "${flags[@]}" -Wno-invalid-offsetof "${@:2}" -c interfaces/check/layouts.cpp -o "$work/$1.o"
    clang++-14 "$work/$1.o" -Wl,--unresolved-symbols=ignore-all -o "$work/layouts"
    "$work/layouts" >"$work/$1.txt"
}
print_layouts tree "${headers[@]}" -DQUEN_GENERATED_HEADERS
print_layouts own -isystem platform/api
diff "$work/tree.txt" "$work/own.txt" || fail "platform/api has other layouts ('>') than the tree ('<')"

exchange=interfaces/check/metadata_exchange.cpp
g++ "${flags[@]}" -I platform/api "$exchange" "$host/libquen_host.so" -Wl,-rpath,"$host" -o "$work/host"
gcc -D_GNU_SOURCE "${headers[@]}" -c "$tree/$metadata_source" -o "$work/camera_metadata.o"
g++ "${flags[@]}" "${headers[@]}" "$exchange" "$work/camera_metadata.o" -L "$logs" -llog \
    -Wl,-rpath,"$logs" -o "$work/tree"
for writer in tree host; do
    "$work/$writer" write 1 10000 >"$work/$writer.bin"
    for reader in tree host; do
        "$work/$reader" read <"$work/$writer.bin" >"$work/$writer-$reader.txt"
    done
    [ "$(tail -n 1 "$work/$writer-host.txt")" = "10000 buffers" ] || fail "$writer wrote too little"
    cmp "$work/$writer-tree.txt" "$work/$writer-host.txt" ||
        fail "the tree and the host read the metadata that $writer wrote differently"
done
# Not the bytes: what lies between the items is as it was in the tree's buffers, and zero in the host's.
cmp "$work/tree-tree.txt" "$work/host-host.txt" || fail "the tree and the host write other metadata"
echo "phone tree: the library compiles and links with it, layouts agree, 10000 metadata buffers go both ways alike"
