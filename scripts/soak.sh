#!/usr/bin/env bash
# Sets up, builds and soaks: a client and an ISP of several threads that break everything that can be
# broken, request by request, and a ledger that knows from what was broken what must come of each.
# Prints one line, and progress and the faults on standard error; fails when a request is lost, told
# twice or told uninvited, a call returns what it must not or stands for a time-out that its ISP did
# not earn, or a descriptor, a mapping, a graphic buffer or a heap block is left over.
#
# Usage: scripts/soak.sh [OPTION...] [REQUESTS]
#   --default          the default build, whose contract has hazards: what they cost is told, not
#                      counted as a fault (1,000,000 requests unless given)
#   --hardened         the hardened build, which has none of them (the usual one; 10,000,000)
#   --sanitizer NAME   thread or address, in a build folder of its own (20,000)
#   --seed N           the same faults again; the seed of a run is in its line
#   --threads N        of the ISP (3)
set -euo pipefail
. "$(dirname "$0")/usage.sh"
cd "$(dirname "$0")/.."

build=hardened
sanitizer=
requests=
options=()
while [ $# -gt 0 ]; do
    case $1 in
        --default) build=default ;;
        --hardened) build=hardened ;;
        --sanitizer)
            sanitizer=$2
            shift
            ;;
        --seed | --threads)
            options+=("$1" "$2")
            shift
            ;;
        [0-9]*) requests=$1 ;;
        *)
            echo "soak: unknown option $1" >&2
            exit 2
            ;;
    esac
    shift
done

hardened=OFF
usual=1000000
if [ "$build" = hardened ]; then
    hardened=ON
    usual=10000000
fi
preset=release
case $sanitizer in
    '') ;;
    thread) preset=tsan usual=20000 ;;
    address) preset=asan usual=20000 ;;
    *)
        echo "soak: no such sanitizer: $sanitizer" >&2
        exit 2
        ;;
esac

scripts/setup.sh >&2
folder=build/soak-$build${sanitizer:+-$sanitizer}
cmake --preset "$preset" -B "$folder" -DQUEN_BUILD_TESTS=OFF -DQUEN_BUILD_SOAK=ON \
    "-DQUEN_HARDENED=$hardened" >/dev/null
cmake --build "$folder" --target quen-soak >&2

# Leaks count as failures, but for those that the default build's contract wants: the soak itself
# counts these.
leaks=1
if [ "$build" = default ]; then
    leaks=0
fi
export ASAN_OPTIONS=${ASAN_OPTIONS:-detect_leaks=$leaks:strict_string_checks=1}
export UBSAN_OPTIONS=${UBSAN_OPTIONS:-print_stacktrace=1}
"$folder/soak/quen-soak" "${options[@]}" "${requests:-$usual}"
