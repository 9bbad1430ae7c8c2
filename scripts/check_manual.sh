#!/usr/bin/env bash
# Checks that the man pages and the completions of bash and zsh have every option that --help has, and the
# man pages no other. Needs the programs of a build.
# Usage: scripts/check_manual.sh [BUILD]    BUILD: build folder, build/release unless given
set -euo pipefail
. "$(dirname "$0")/usage.sh"
cd "$(dirname "$0")/.."

scripts/setup.sh zsh groff-base
build=${1:-build/release}

# Compares lists of options, one a line. Usage: compare WHAT PROGRAM LISTED
compare() {
    local difference
    difference=$(diff <(sort -u <<<"$options") <(sort -u <<<"$3") | grep '^[<>]' || true)
    if [ -z "$difference" ]; then
        return
    fi
    echo "manual: $1 of $2 differs from its --help ('<' is missing, '>' is not an option):" >&2
    echo "$difference" >&2
    exit 1
}

completed_by_bash() {
    bash -c 'source packaging/completions/quen.bash; _quen "$1" - "$1"; printf "%s\n" "${COMPREPLY[@]}"' _ "$1"
}

# Stand-ins for the parts of zsh's completion system that the function calls.
completed_by_zsh() {
    zsh -fc '_call_program() { shift; "$@" }; compadd() { shift; print -rl -- "$@" }
        complete() { source packaging/completions/_quen-reprocess }
        words=($1 -) CURRENT=2; complete' _ "$1"
}

checked=0
for program in "$build"/tools/reprocess/quen-reprocess "$build"/tools/replay/quen-replay; do
    if [ ! -x "$program" ]; then
        continue
    fi
    name=${program##*/}
    page=packaging/man/$name.1
    options=$("$program" --help | grep -oE -- '^  -[^ ]+' | sed 's/^ *//; s/[=[{].*//' | tr ',' '\n')
    compare "the man page" "$name" "$(sed 's/\\-/-/g' "$page" | grep -A1 '^\.TP' |
        grep -oE -- '(^|[ "])--?[a-zA-Z0-9][a-z0-9-]*' | tr -d ' "')"
    compare "bash's completion" "$name" "$(completed_by_bash "$program")"
    compare "zsh's completion" "$name" "$(completed_by_zsh "$program" | grep '^-.')"
    warnings=$(groff -man -ww -Tutf8 -z "$page" 2>&1)
    if [ -n "$warnings" ]; then
        echo "manual: $page: $warnings" >&2
        exit 1
    fi
    echo "manual: $name: $(wc -l <<<"$options") options in its man page and both completions"
    checked=$((checked + 1))
done
if [ "$checked" -eq 0 ]; then
    echo "manual: there is no program in $build; build it first" >&2
    exit 1
fi
