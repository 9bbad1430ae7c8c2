#!/usr/bin/env bash
# Fails when a source file is not formatted as .clang-format says.
set -euo pipefail
. "$(dirname "$0")/usage.sh"
cd "$(dirname "$0")/.."

git ls-files -z -- '*.cpp' '*.h' | xargs -0 clang-format-14 --dry-run --Werror
echo "formatting: all files as .clang-format says"
