#!/usr/bin/env bash
# Sets up, builds and counts the instructions of the device copy, of each step of the metadata and of whole
# requests, on this machine and on 64-bit Arm under emulation; prints a table. The last column is how many
# of Arm's are instructions of its vector and floating-point unit. What x86 copies with one string
# instruction is counted a byte at a time there: of the device copy those counts are left out, and large
# items in metadata show them.
# Usage: scripts/bench_arm64.sh
set -euo pipefail
. "$(dirname "$0")/usage.sh"
cd "$(dirname "$0")/.."

scripts/bench.sh build >&2
cmake --build build/bench --target quen-bench-arm64 >&2
scripts/setup.sh qemu-user
scripts/test_arm64.sh root >&2
# The headers of valgrind are the same for all processors.
mkdir -p build/arm64-headers
ln -sfn /usr/include/valgrind build/arm64-headers/valgrind
cmake --preset arm64 -B build/bench-arm64 -DQUEN_BUILD_TESTS=OFF -DQUEN_BUILD_BENCH=ON \
    -DVALGRIND_INCLUDE_DIR="$PWD/build/arm64-headers" >/dev/null
cmake --build build/bench-arm64 --target quen-bench >&2

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

echo "counting" >&2
valgrind --tool=callgrind --collect-atstart=no --callgrind-out-file="$work/callgrind" \
    build/bench/bench/quen-bench --count >"$work/here" 2>"$work/valgrind.log"
qemu-aarch64 -L build/arm64-root -plugin build/bench/bench/libquen-bench-arm64.so \
    build/bench-arm64/bench/quen-bench --count >"$work/there" 2>"$work/sections"

awk -v sections="$work/sections" -v here="$work/here" '
    FILENAME == here {
        if ($1 == "operations") operations[$2] = $3
        next
    }
    FILENAME == sections {
        if ($1 == "section") { all[++count] = $2; vector[count] = $3 }
        next
    }
    /^desc: Trigger: Client Request: / { name = $NF }
    /^totals: / {
        if (name in operations) x86[name] = $2 / operations[name]
        name = ""
        next
    }
    FILENAME ~ /there$/ && $1 == "operations" { names[++cases] = $2; runs[$2] = $3 }
    END {
        # Each case was run equally often, one after the other.
        each = count / cases
        if (cases == 0 || each != int(each)) {
            print "bench_arm64: " count " sections of " cases " cases" >"/dev/stderr"
            exit 1
        }
        printf "| %-28s | %12s | %12s | %12s |\n", "instructions", "x86", "Arm", "Arm, vector"
        print "|------------------------------|--------------|--------------|--------------|"
        for (i = 1; i <= cases; ++i) {
            name = names[i]
            sum = vectors = 0
            for (j = (i - 1) * each + 1; j <= i * each; ++j) { sum += all[j]; vectors += vector[j] }
            printf "| %-28s | %12s | %12d | %12d |\n", name,
                   name ~ /^copy/ ? "-" : sprintf("%d", x86[name]), sum / runs[name],
                   vectors / runs[name]
        }
    }' "$work/here" "$work/sections" "$work"/callgrind.* "$work/there"
