#!/usr/bin/env bash
# Installs what is missing on a Debian machine: compiler, build tools and the host platform's libraries.
# Usage: scripts/setup.sh [PACKAGE...]    PACKAGE: further packages that only the caller needs
set -euo pipefail

packages=(
    g++ clang-14 cmake ninja-build pkg-config ccache clang-format-14
    libopencv-core-dev libopencv-imgproc-dev libyuv-dev libjpeg62-turbo-dev libturbojpeg0-dev libexif-dev
    libraw-dev libcli11-dev
    libgtest-dev libgmock-dev
    "$@"
)

missing=()
for package in "${packages[@]}"; do
    dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'install ok installed' ||
        missing+=("$package")
done
if [ ${#missing[@]} -eq 0 ]; then
    exit 0
fi

if ! command -v apt-get >/dev/null; then
    echo "setup: these packages are missing and there is no apt-get to install them: ${missing[*]}" >&2
    exit 1
fi
as_root=()
if [ "$(id -u)" -ne 0 ]; then
    as_root=(sudo)
fi
echo "setup: installing ${missing[*]}"
export DEBIAN_FRONTEND=noninteractive
"${as_root[@]}" apt-get update -qq
"${as_root[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
