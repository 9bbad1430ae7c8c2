#!/usr/bin/env bash
# Sets up, builds and develops a rendered 12-megapixel RAW capture to a JPEG through the library.
# Usage: scripts/demo.sh [OUTPUT.jpg]
set -euo pipefail
. "$(dirname "$0")/usage.sh"
cd "$(dirname "$0")/.."

scripts/setup.sh
cmake --preset release -DQUEN_BUILD_TESTS=OFF >/dev/null
cmake --build --preset release --target quen-reprocess

output=${1:-out/demo.jpg}
mkdir -p "$(dirname "$output")"
build/release/tools/reprocess/quen-reprocess demo -o "$output"
echo "The picture lies at $output"
