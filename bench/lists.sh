#!/usr/bin/env bash
# Lists the allocations, C library and system calls of one operation of a case: how often, which call,
# the calling function of this project, and the operation of the library that it serves.
# Usage: bench/lists.sh QUEN-BENCH WATCH-LIBRARY CASE
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
bench=$1 watch=$2 name=$3
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# Reads lines "<call> <file>+0x<offset>...", innermost caller first; prints them resolved.
resolve() {
    local calls=$1 operations=$2 module
    awk '{ for (i = 2; i <= NF; ++i) print $i }' "$calls" | sort -u >"$work/frames"
    sed "s|+0x[0-9a-f]*\$||" "$work/frames" | sort -u | while read -r module; do
        case $module in
            */libc.so* | */ld-linux* | */libstdc++* | *bench-watch*) continue ;;
        esac
        sed -n "s|^$module+\(0x[0-9a-f]*\)\$|\\1|p" "$work/frames" |
            addr2line -e "$module" -Cfpia | sed "s|^0x|$module 0x|"
    done >"$work/places"
    awk -v root="$root/" -v operations="$operations" '
        NR == FNR {
            line = $0
            if (line !~ /\(inlined by\)/) {
                module = $1
                address = $2
                sub(/:$/, "", address)
                sub(/^0x0+/, "0x", address)
                frame = module "+" address
            }
            sub(/^[^ ]+ 0x[0-9a-f]+: /, "", line)
            sub(/^ *\(inlined by\) /, "", line)
            at = index(line, " at " root)
            if (at > 0) {
                place = substr(line, at + 4 + length(root))
                sub(/ \(discriminator [0-9]+\)/, "", place)
                called = substr(line, 1, at - 1)
                gsub(/\(anonymous namespace\)::/, "", called)
                sub(/\(.*/, "", called)
                places[frame] = places[frame] called " " place "\n"
            }
            next
        }
        {
            inner = library = ""
            for (i = 2; i <= NF; ++i) {
                count = split(places[$i], lines, "\n")
                for (k = 1; k < count; ++k) {
                    # Containers and handles say nothing: who uses them does.
                    if (lines[k] ~ / (platform\/api|bench)\//) continue
                    if (inner == "") inner = lines[k]
                    if (library == "" && lines[k] ~ / quencode\//) library = lines[k]
                }
            }
            sub(/quencode\/quenOfflineDevice\//, "", library)
            sub(/quencode\/quenOfflineDevice\//, "", inner)
            ++seen[library "\t" $1 "\t" (library == inner ? "" : inner)]
        }
        END {
            for (one in seen) {
                split(one, part, "\t")
                printf "%-70s %6.2f x %-12s %s\n", part[1], seen[one] / operations, part[2], part[3]
            }
        }' "$work/places" "$calls" | sort
}

echo "== $name: heap allocations, one operation: how many, bytes, where"
QUEN_BENCH_LIST=$work/list LD_PRELOAD=$watch "$bench" --count "$name" >"$work/watched"
operations=$(awk -v name="$name" '$1 == "operations" && $2 == name { print $3 }' "$work/watched")
grep '^allocation ' "$work/list" | sed 's/^allocation \([0-9]*\)/\1/' >"$work/allocations"
resolve "$work/allocations" "$operations"

echo "== $name: system calls, one operation: how many, which, where"
strace -f -k -o "$work/trace" "$bench" --count "$name" >/dev/null
awk 'function flush() { if (call != "") print call frames; call = frames = "" }
     # The address in front of a return address, so that the call is named and not what follows it.
     function before(hex,    i, digit) {
         for (i = length(hex); substr(hex, i, 1) == "0"; --i) hex = substr(hex, 1, i - 1) "f" substr(hex, i + 1)
         digit = index("0123456789abcdef", substr(hex, i, 1))
         return substr(hex, 1, i - 1) substr("0123456789abcdef", digit - 1, 1) substr(hex, i + 1)
     }
     /write\(-1, "(begin|end) / { flush(); inside = /"begin /; thread = $1; next }
     /^[0-9]+ / { flush(); if (inside && $1 == thread && match($2, /^[a-z0-9_]+\(/))
                               call = substr($2, 1, RLENGTH - 1)
                  next }
     call != "" && /^ > / && match($0, /\[0x[0-9a-f]+\]/) {
         offset = before(substr($0, RSTART + 1, RLENGTH - 2))
         module = $2
         sub(/\(.*/, "", module)
         frames = frames " " module "+" offset
     }
     END { flush() }' "$work/trace" >"$work/calls"
resolve "$work/calls" "$operations"
