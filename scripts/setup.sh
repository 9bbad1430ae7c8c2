#!/usr/bin/env bash
# Installs what is missing on a Debian machine: always what builds the library and quen-reprocess, and on
# request more.
# Usage: scripts/setup.sh [SET|PACKAGE]...
#        SET: tests, clang, cache (repeated builds are faster), format, or all of them
#        PACKAGE: a further package that only the caller needs
set -euo pipefail
. "$(dirname "$0")/usage.sh"

declare -rA sets=(
    [tests]="libgtest-dev libgmock-dev"
    [clang]="clang-14"
    [cache]="ccache"
    [format]="clang-format-14"
)

packages=(
    g++ cmake ninja-build pkg-config
    libyuv-dev libjpeg62-turbo-dev libturbojpeg0-dev libexiv2-dev libraw-dev libcli11-dev
    libpng-dev libprotobuf-dev libtiff-dev libxxhash-dev nlohmann-json3-dev protobuf-compiler
)
for wanted in "$@"; do
    if [ "$wanted" = all ]; then
        wanted=${sets[*]}
    fi
    read -ra more <<<"${sets[$wanted]:-$wanted}"
    packages+=("${more[@]}")
done

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
    if ! command -v sudo >/dev/null; then
        echo "setup: these packages are missing, and only root can install them, for there is no sudo;" >&2
        echo "setup: run as root: apt-get update && apt-get install ${missing[*]}" >&2
        exit 1
    fi
    as_root=(sudo)
fi
echo "setup: installing ${missing[*]}"
export DEBIAN_FRONTEND=noninteractive
"${as_root[@]}" apt-get update -qq
"${as_root[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
