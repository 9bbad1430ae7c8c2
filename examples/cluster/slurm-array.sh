#!/usr/bin/env bash
# Reprocesses a folder of captures as a Slurm job array, a shard a task. A task whose process is killed is
# queued again, and so is one whose node goes away; it goes on with what is not there yet.
# Usage: sbatch --array=1-TASKS examples/cluster/slurm-array.sh TASKS CAPTURES OUT [OPTIONS]
#        CAPTURES: a folder that all nodes see; it must stay as it is until all tasks have ended
#        OUT: the folder of the pictures; OPTIONS: of quen-reprocess, for instance --quality 90
#        QUEN_REPROCESS in the environment names the program where it is not in the nodes' path
#SBATCH --job-name=quen-reprocess
#SBATCH --requeue
#SBATCH --open-mode=append
#SBATCH --output=quen-reprocess-%A_%a.log
set -euo pipefail

readonly tries=3 # of a task that is killed
if [ $# -lt 3 ] || ! [[ $1 =~ ^[1-9][0-9]*$ ]] || [ -z "${SLURM_ARRAY_TASK_ID:-}" ]; then
    sed -n 's/^# \(Usage:\|      \)/\1/p' "$0" >&2
    exit 2
fi
tasks=$1
captures=$2
out=$3
shift 3

# TASKS, not the size of the array: some of the tasks may be submitted again by themselves.
shard=$SLURM_ARRAY_TASK_ID/$tasks
attempt=$((${SLURM_RESTART_COUNT:-0} + 1))
echo "task $shard on $(hostname), attempt $attempt"
status=0
"${QUEN_REPROCESS:-quen-reprocess}" -r "$captures" -o "$out/" --shard "$shard" --skip-existing "$@" || status=$?

# 1: an input cannot be reprocessed, 2: the command line is wrong; another attempt would end the same way.
# Above 128 a signal has ended the process: memory ran out, or somebody ended it.
if [ "$status" -gt 128 ] && [ "$attempt" -lt "$tries" ]; then
    echo "task $shard was ended by signal $((status - 128)), and is queued again"
    scontrol requeue "${SLURM_ARRAY_JOB_ID}_$SLURM_ARRAY_TASK_ID"
fi
exit "$status"
