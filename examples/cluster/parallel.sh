#!/usr/bin/env bash
# Reprocesses a folder of captures with GNU parallel, a shard a task, on this machine or on several. A task
# that fails or is killed runs again, and goes on with what is not there yet.
# Usage: examples/cluster/parallel.sh TASKS CAPTURES OUT [OPTIONS]
#        CAPTURES: a folder that all machines see; it must stay as it is until all tasks have ended
#        OUT: the folder of the pictures; OPTIONS: of quen-reprocess, for instance --quality 90
#        PARALLEL in the environment is read by parallel: --sshlogin HOST,HOST --wd . for other machines
#        QUEN_REPROCESS in the environment names the program where it is not in the machines' path
set -euo pipefail

if [ $# -lt 3 ] || ! [[ $1 =~ ^[1-9][0-9]*$ ]]; then
    sed -n 's/^# \(Usage:\|      \)/\1/p' "$0" >&2
    exit 2
fi
tasks=$1
captures=$2
out=$3
shift 3

seq "$tasks" | parallel --quote --retries 3 --line-buffer --tagstring "task {}/$tasks" \
    "${QUEN_REPROCESS:-quen-reprocess}" -r "$captures" -o "$out/" \
    --shard "{}/$tasks" --skip-existing "$@"
