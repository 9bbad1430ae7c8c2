#!/usr/bin/env bash
# Builds everything for 64-bit Arm, runs all tests and the demo under emulation, and compares the demo's
# picture with this machine's. Debian's arm64 packages go into build/arm64-root: the machine's own stay
# as they are. Takes far longer than scripts/test.sh.
# Usage: scripts/test_arm64.sh [build|root]    build: goes no further than building
#                                              root: only fills build/arm64-root
set -euo pipefail
. "$(dirname "$0")/usage.sh"
cd "$(dirname "$0")/.."

root=$PWD/build/arm64-root
readonly packages=(
    libc6-dev libstdc++-12-dev
    libyuv-dev libjpeg62-turbo-dev libturbojpeg0-dev libexiv2-dev libraw-dev libcli11-dev
    libpng-dev libprotobuf-dev libtiff-dev libxxhash-dev nlohmann-json3-dev
    libgtest-dev libgmock-dev libbenchmark-dev
)

# Fills the folder with the packages and all that they depend on, as apt would install them on an Arm
# machine that has none.
fill_root() {
    local apt=$root.apt
    rm -rf "$root" "$root.new" "$apt"
    mkdir -p "$apt"/{lists/partial,cache/archives/partial,state}
    : >"$apt/status"
    cat >"$apt/apt.conf" <<END
APT::Architecture "arm64";
APT::Architectures { "arm64"; };
APT::Install-Recommends "false";
Dir::State "$apt/state";
Dir::State::lists "$apt/lists";
Dir::State::status "$apt/status";
Dir::Cache "$apt/cache";
APT::Sandbox::User "$(id -un)";
END
    if ! APT_CONFIG=$apt/apt.conf apt-get update -qq >"$apt/log" 2>&1 ||
        ! APT_CONFIG=$apt/apt.conf apt-get install -y -qq --download-only "${packages[@]}" \
            >>"$apt/log" 2>&1; then
        cat "$apt/log" >&2
        echo "arm64: Debian's arm64 packages cannot be had" >&2
        exit 1
    fi
    local archive
    for archive in "$apt"/cache/archives/*.deb; do
        dpkg-deb -x "$archive" "$root.new"
    done
    local link
    find "$root.new" -type l -lname '/*' | while IFS= read -r link; do
        ln -sfr "$root.new$(readlink "$link")" "$link"
    done
    echo "${packages[*]}" >"$root.new/packages"
    mv "$root.new" "$root"
    rm -rf "$apt"
}

# Runs a command; its words are shown when it fails.
quietly() {
    local output
    output=$("$@" 2>&1) || {
        echo "$output" >&2
        echo "arm64: this fails: $*" >&2
        exit 1
    }
    printf '%s\n' "$output"
}

# The demo's PSNR against its scene, in dB, as the program tells it.
demo_psnr() {
    quietly "$@" demo -o "$root.jpg" | sed -n 's/^PSNR \([0-9.]*\) dB.*/\1/p'
}

scripts/setup.sh tests g++-aarch64-linux-gnu qemu-user-static
[ "$(cat "$root/packages" 2>/dev/null)" = "${packages[*]}" ] || fill_root
if [ "${1:-}" = root ]; then
    exit
fi

cmake --preset arm64 -DQUEN_BUILD_TESTS=ON >/dev/null
quietly cmake --build --preset arm64 >/dev/null
if [ "${1:-}" = build ]; then
    echo "arm64: everything builds"
    exit
fi
tests=$(quietly ctest --preset arm64 | sed -n 's/.*% tests passed, .* out of \(.*\)/\1/p')

# Luma is the same on both machines but for single samples. Chroma differs: libyuv's conversion to 4:2:0
# for Arm rounds more coarsely (0.77 steps RMS off on flat colours, for x86 0.47).
cmake --preset release >/dev/null
quietly cmake --build --preset release --target quen-reprocess >/dev/null
arm=$(demo_psnr qemu-aarch64-static -L "$root" build/arm64/tools/reprocess/quen-reprocess)
here=$(demo_psnr build/release/tools/reprocess/quen-reprocess)
awk -v arm="$arm" -v here="$here" 'BEGIN { exit !(arm != "" && here != "" &&
                                                  arm - here <= 0.2 && here - arm <= 0.2) }' || {
    echo "arm64: the demo's picture has ${arm:-no} dB, here ${here:-no} dB: more than 0.2 apart" >&2
    exit 1
}
echo "arm64: all $tests tests pass under emulation; the demo's picture has $arm dB, here $here dB"
