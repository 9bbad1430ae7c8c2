#!/usr/bin/env bash
# Runs examples/cluster on this machine alone: sixteen 12-megapixel captures in four tasks, one of which is
# killed by SIGKILL while it works. Every picture must be there, made once, and be the one that a single
# process makes. Takes some minutes with Slurm, which waits before it starts a task again.
# Usage: scripts/check_cluster.sh [parallel|slurm]...    both unless given; slurm wants root
set -euo pipefail
. "$(dirname "$0")/usage.sh"
cd "$(dirname "$0")/.."

readonly tasks=4 captures=16 killed=2 # the number of the task
QUEN_REPROCESS=$PWD/build/release/tools/reprocess/quen-reprocess
export QUEN_REPROCESS
readonly options=(--size 4000x3000 --bayer rggb --bits 16 --jobs 1 --quality 90)
schedulers=("$@")
if [ $# -eq 0 ]; then
    schedulers=(parallel slurm)
fi

fail() {
    echo "cluster: $*" >&2
    exit 1
}

work=$(mktemp -d)
daemons=()
clean_up() {
    if [ ${#daemons[@]} -ne 0 ]; then
        kill "${daemons[@]}" 2>/dev/null || true
        wait "${daemons[@]}" 2>/dev/null || true
    fi
    rm -rf "$work"
}
trap clean_up EXIT

# A controller and a node of four processors, whatever this machine has.
start_slurm() {
    local node
    node=$(hostname -s)
    mkdir -p "$work"/control/{state,spool}
    cat >"$work/control/slurm.conf" <<END
ClusterName=one
SlurmctldHost=$node(127.0.0.1)
SlurmUser=root
StateSaveLocation=$work/control/state
SlurmdSpoolDir=$work/control/spool
SlurmctldPidFile=$work/control/slurmctld.pid
SlurmdPidFile=$work/control/slurmd.pid
ProctrackType=proctrack/linuxproc
TaskPlugin=task/none
SelectType=select/cons_tres
SelectTypeParameters=CR_CPU
SlurmdParameters=config_overrides
NodeName=$node NodeAddr=127.0.0.1 CPUs=$tasks
PartitionName=all Nodes=$node Default=YES
END
    export SLURM_CONF=$work/control/slurm.conf
    if ! munge -n >/dev/null 2>&1; then
        install -d -o munge -g munge /run/munge
        runuser -u munge -- munged --foreground >"$work/munged.log" 2>&1 &
        daemons+=($!)
    fi
    slurmctld -D >"$work/slurmctld.log" 2>&1 &
    daemons+=($!)
    slurmd -D >"$work/slurmd.log" 2>&1 &
    daemons+=($!)
    for ((i = 0; i < 30; ++i)); do
        if [ "$(sinfo -h -o %T 2>/dev/null)" = idle ]; then
            return
        fi
        sleep 1
    done
    fail "Slurm does not start: $(tail -n 5 "$work"/*.log)"
}

run_parallel() {
    examples/cluster/parallel.sh "$tasks" "$work/captures" "$1" "${options[@]}" >"$1.log" 2>&1
}

run_slurm() {
    local job
    job=$(sbatch --parsable --array="1-$tasks" --output="$1-%a.log" examples/cluster/slurm-array.sh \
        "$tasks" "$work/captures" "$1" "${options[@]}")
    while [ -n "$(squeue -h -j "$job" 2>/dev/null)" ]; do
        sleep 2
    done
    cat "$1"-*.log >"$1.log"
}

# Ends the process of one task when that has made a picture and has others to make.
# Usage: kill_task OUT
kill_task() {
    local pid
    until [ "$(find "$1" -name '*.jpg' 2>/dev/null | wc -l)" -ge "$tasks" ]; do
        sleep 0.1
    done
    pid=$(pgrep -f -- "^$QUEN_REPROCESS -r $work/captures -o $1/ --shard $killed/$tasks ")
    kill -KILL "$pid"
    echo "cluster: killed process $pid of task $killed/$tasks at $(find "$1" -name '*.jpg' | wc -l) pictures"
}

# Each file with its time and its place on the disk, which a file made anew has not.
files_of() { find "$1" -type f -printf '%p %T@ %i\n' | sort; }

scripts/setup.sh parallel procps
cmake --preset release >/dev/null
cmake --build --preset release --target quen-reprocess >/dev/null
mkdir "$work/captures"
for ((i = 0; i < captures; ++i)); do
    head -c $((4000 * 3000 * 2)) /dev/urandom >"$work/captures/shot$i.raw"
done
"$QUEN_REPROCESS" -r "$work/captures" -o "$work/alone/" "${options[@]}" >/dev/null

for scheduler in "${schedulers[@]}"; do
    if [ "$scheduler" = slurm ]; then
        scripts/setup.sh slurm-wlm munge
        start_slurm
    fi
    out=$work/$scheduler
    kill_task "$out" &
    killer=$!
    "run_$scheduler" "$out" || fail "$scheduler: $(tail -n 20 "$out.log")"
    wait "$killer" || fail "$scheduler: the task to be killed was done already"
    diff -r "$work/alone" "$out" || fail "$scheduler: the pictures are not those of a single process"
    twice=$(grep -oE -- "-> $out/[^ ]+\.jpg" "$out.log" | sort | uniq -d)
    [ -z "$twice" ] || fail "$scheduler: made twice: $twice"
    echo "cluster: $scheduler: $(find "$out" -name '*.jpg' | wc -l) of $captures pictures, each made once"
    before=$(files_of "$out")
    "run_$scheduler" "$out" || fail "$scheduler, run again: $(tail -n 20 "$out.log")"
    [ "$(files_of "$out")" = "$before" ] || fail "$scheduler: run again, it made what was there"
    echo "cluster: $scheduler: run again, it leaves all as they are"
done
