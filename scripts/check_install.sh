#!/usr/bin/env bash
# Installs the release build into an empty prefix, moves that elsewhere and works from there: quen-reprocess,
# its man pages and completions, every installed header, and the examples built outside the source tree with
# CMake and with pkg-config, of which one records a session that quen-replay plays. Then makes the Debian
# package, installs it, runs the demo, and removes it.
# Usage: scripts/check_install.sh [root]    root: installs the package into a fresh minimal Debian instead
#        of on this machine; downloads about 100 MB
set -euo pipefail
. "$(dirname "$0")/usage.sh"
cd "$(dirname "$0")/.."

fail() {
    echo "install: $*" >&2
    exit 1
}

as_root=()
if [ "$(id -u)" -ne 0 ]; then
    as_root=(sudo)
fi
package=quen-offline-device
work=$(mktemp -d)
installed=
clean_up() {
    if [ -n "$installed" ]; then
        "${as_root[@]}" dpkg -P "$package" >/dev/null
    fi
    "${as_root[@]}" rm -rf "$work"
}
trap clean_up EXIT

# Runs the demo with a program, and looks for what the libraries write that are loaded at their first use.
# Usage: check_demo PROGRAM
check_demo() {
    (cd / && env -i "$1" demo -o "$work/demo.jpg" >"$work/demo.txt" 2>&1) ||
        fail "the demo of $1: $(cat "$work/demo.txt")"
    grep -q Exif "$work/demo.jpg" || fail "the demo of $1 has no EXIF: libquen_exif.so was not loaded"
    head -c $((64 * 48 * 2)) /dev/zero >"$work/frame.raw"
    env -i "$1" "$work/frame.raw" --size 64x48 --bayer rggb -o "$work/frame.png" >/dev/null ||
        fail "$1 makes no PNG: libquen_rgb_files.so was not loaded"
    echo "install: $1: $(grep -oE 'PSNR [0-9.]+ dB' "$work/demo.txt")"
}

scripts/setup.sh dpkg-dev file
cmake --preset release >/dev/null
cmake --build --preset release

cmake --install build/release --prefix "$work/first" >/dev/null
mv "$work/first" "$work/prefix"
prefix=$work/prefix
check_demo "$prefix/bin/quen-reprocess"
scripts/check_manual.sh
env -i "$prefix/bin/quen-replay" --help >/dev/null || fail "quen-replay does not run"
[ -s "$prefix/share/man/man1/quen-reprocess.1" ] || fail "there is no man page"

# The example, by either way, makes the same JPEG.
cp -r examples "$work/examples"
cmake -G Ninja -S "$work/examples/reprocess" -B "$work/examples/reprocess/build" -DCMAKE_PREFIX_PATH="$prefix" >/dev/null
cmake --build "$work/examples/reprocess/build" >/dev/null
"$work/examples/reprocess/build/reprocess-example" "$work/cmake.jpg"
export PKG_CONFIG_PATH=$prefix/lib/pkgconfig
read -ra flags < <(pkg-config --cflags --libs quenOfflineDevice)
g++ -Wall -Wextra -Werror "$work/examples/reprocess/main.cpp" "${flags[@]}" -Wl,-rpath,"$prefix/lib" -o "$work/by-pkg-config"
"$work/by-pkg-config" "$work/pkg-config.jpg"
cmp "$work/cmake.jpg" "$work/pkg-config.jpg" || fail "the two builds of the example differ in their JPEGs"
"$prefix/bin/quen-reprocess" "$work/cmake.jpg" -o "$work/again.jpg" >/dev/null

# A client that records, by either way: what it writes is played by the installed quen-replay.
cmake -G Ninja -S "$work/examples/record" -B "$work/record" -DCMAKE_PREFIX_PATH="$prefix" >/dev/null
cmake --build "$work/record" >/dev/null
read -ra recorder_flags < <(pkg-config --cflags --libs quenRecorder)
g++ -Wall -Wextra -Werror "$work/examples/record/main.cpp" "${recorder_flags[@]}" -Wl,-rpath,"$prefix/lib" \
    -o "$work/record/by-pkg-config"
for client in record-example by-pkg-config; do
    "$work/record/$client" "$work/$client.rec" >/dev/null
    replayed=$(env -i "$prefix/bin/quen-replay" "$work/$client.rec") || fail "the recording of $client: $replayed"
    grep -qE '^[1-9][0-9]+ crossings, 0 differences$' <<<"$replayed" || fail "the recording of $client: $replayed"
done
echo "install: a client's recording, played: $(tail -n 1 <<<"$replayed")"

(cd "$prefix/include/quenOfflineDevice" && find . -name '*.h' -path './api/*' -printf '%P\n' | sed 's|^api/||' &&
    find . -name '*.h' -not -path './api/*' -printf '%P\n') | sed 's/.*/#include <&>/' >"$work/headers.cpp"
g++ -Wall -Wextra -Werror -fsyntax-only "$work/headers.cpp" "${flags[@]}"
echo "install: all $(wc -l <"$work/headers.cpp") installed headers compile with what is installed"

# The package.
rm -rf build/release/package
cpack --config build/release/CPackConfig.cmake >"$work/cpack.txt" 2>&1 || fail "$(cat "$work/cpack.txt")"
debs=(build/release/package/*.deb)
deb=${debs[0]}
content=$(dpkg-deb -c "$deb" | awk '{ print $6 }')
while read -r file; do
    file=${file#"$prefix/"}
    file=${file/zsh\/site-functions/zsh\/vendor-completions} # where zsh looks in /usr
    grep -qxF "./usr/$file" <<<"$content" || fail "$deb lacks $file"
done < <(find "$prefix" -type f)
depends=$(dpkg-deb -f "$deb" Depends)
for library in libc6 libexiv2 libjpeg62-turbo libpng16 libprotobuf-lite32 libraw libstdc++6 libtiff libturbojpeg libyuv; do
    grep -qF "$library" <<<"$depends" || fail "$deb does not depend on $library: $depends"
done
echo "install: $(basename "$deb"), $(du -h "$deb" | cut -f1), depends on $depends"

if [ "${1:-}" = root ]; then
    scripts/setup.sh mmdebstrap
    cp "$deb" "$work/$package.deb"
    # Quoted for the shell of the hooks, which runs outside the root: "$1" there is the root.
    "${as_root[@]}" mmdebstrap --variant=minbase --quiet --mode=root \
        --customize-hook="copy-in '$work/$package.deb' /" \
        --customize-hook="chroot \"\$1\" apt-get install -y -qq --no-install-recommends /$package.deb" \
        --customize-hook="chroot \"\$1\" env -i /usr/bin/quen-reprocess demo -o /demo.jpg" \
        --customize-hook="copy-out /demo.jpg '$work'" \
        bookworm /dev/null >"$work/root.txt" 2>&1 || fail "in a fresh root: $(tail -n 20 "$work/root.txt")"
    grep -q Exif "$work/demo.jpg" || fail "the demo in the fresh root has no EXIF"
    echo "install: in a fresh Debian: $(grep -oE 'PSNR [0-9.]+ dB' "$work/root.txt")"
    exit
fi
if dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'install ok installed'; then
    fail "$package is installed on this machine; remove it first: dpkg -P $package"
fi
installed=yes
"${as_root[@]}" dpkg -i "$deb" >/dev/null
check_demo /usr/bin/quen-reprocess
