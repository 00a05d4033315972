#!/usr/bin/env bash
# Runs a plan in sixteen shards as an array job of Slurm, on a controller and two nodes of its own on this
# machine, and kills a node in mid-run: slurm.sh [SOURCES]
#
# The array goes on by requeue on the other node; at the end every line of the plan is done exactly once. Takes
# about two minutes; installs slurm-wlm and munge where they are missing. All state lies in one scratch folder, and
# all that was started is ended at the end.
# shellcheck disable=SC2154,SC2034
set -u
name=slurm
# shellcheck source=tests/fleet/fleet.sh disable=SC1091
. "$(dirname -- "${BASH_SOURCE[0]}")/fleet.sh"

need_packages slurm-wlm munge
PATH=$PATH:/usr/sbin
find_program
make_scratch
daemons=()

# A free port: one that nobody answers at.
port() {
    local at
    for ((at = $1; at < $1 + 100; at++)); do
        (exec 3<>"/dev/tcp/127.0.0.1/$at") 2>/dev/null || { echo "$at" && return; }
    done
}

# start NAME COMMAND...: a daemon in the foreground, with all that it starts in a group of its own.
start() {
    local daemon=$1
    shift
    setsid "$@" >"$scratch/$daemon.out" 2>&1 </dev/null &
    disown # so that the shell does not report its end
    printf -v "${daemon}_pid" %s "$!"
    daemons+=("$!")
}

# The processes below the process $1.
below() {
    local child
    for child in $(pgrep -P "$1"); do
        below "$child"
        echo "$child"
    done
}

# What runs for the node $1 besides its daemon: first the processes that would report the end of a job, then the
# jobs' scripts and what those have started.
node_processes() {
    local script
    for script in $(pgrep -f "$scratch/$1/job[0-9]*/slurm_script"); do
        ps -o ppid= -p "$script"
        echo "$script"
        below "$script"
    done
}

no_daemon() { ! kill -0 "${daemons[@]}" 2>/dev/null; }

stop_all() {
    local status=$? node
    trap - EXIT INT TERM
    scancel --quiet --user "$(id -un)" 2>/dev/null
    for node in node1 node2; do
        # shellcheck disable=SC2046
        kill -KILL $(node_processes "$node") 2>/dev/null
    done
    [ "${#daemons[@]}" = 0 ] || kill -TERM "${daemons[@]}" 2>/dev/null
    wait_until 20 no_daemon || kill -KILL "${daemons[@]}" 2>/dev/null
    rm -rf "$scratch"
    exit "$status"
}
trap stop_all EXIT
trap 'exit 130' INT
trap 'exit 143' TERM

mkdir -m 700 "$scratch/munge"
mkdir -m 755 "$scratch/socket" "$scratch/state" "$scratch/node1" "$scratch/node2"
chmod 755 "$scratch"
(umask 077 && head -c 1024 /dev/urandom >"$scratch/munge/key")
start munged munged --foreground --force --key-file="$scratch/munge/key" --socket="$scratch/socket/munge" \
    --pid-file="$scratch/munge/pid" --log-file="$scratch/munge/log" --seed-file="$scratch/munge/seed"

export SLURM_CONF=$scratch/slurm.conf
controller=$(port 26817)
cat >"$SLURM_CONF" <<END
ClusterName=pagestack
SlurmctldHost=$(hostname -s)(127.0.0.1)
SlurmctldPort=$controller
SlurmUser=$(id -un)
SlurmdUser=$(id -un)
AuthInfo=socket=$scratch/socket/munge
StateSaveLocation=$scratch/state
SlurmdSpoolDir=$scratch/%n
SlurmctldPidFile=$scratch/slurmctld.pid
SlurmdPidFile=$scratch/%n.pid
SlurmctldLogFile=$scratch/slurmctld.log
SlurmdLogFile=$scratch/%n.log
ProctrackType=proctrack/linuxproc
TaskPlugin=task/none
JobAcctGatherType=jobacct_gather/none
SelectType=select/cons_tres
SelectTypeParameters=CR_Core
MpiDefault=none
ReturnToService=2
SlurmdTimeout=5
SlurmctldTimeout=10
InactiveLimit=0
KillWait=2
MinJobAge=300
SchedulerParameters=sched_interval=2,bf_interval=2,batch_sched_delay=1
SlurmdParameters=config_overrides
NodeName=node1 NodeHostname=$(hostname -s) NodeAddr=127.0.0.1 Port=$(port 26831) CPUs=2 RealMemory=4000 State=UNKNOWN
NodeName=node2 NodeHostname=$(hostname -s) NodeAddr=127.0.0.1 Port=$(port 26951) CPUs=2 RealMemory=4000 State=UNKNOWN
PartitionName=all Nodes=node1,node2 Default=YES MaxTime=60 State=UP
END

wait_until 10 test -S "$scratch/socket/munge" || die "munged did not start"
start slurmctld slurmctld -D -i
for node in node1 node2; do start "$node" slurmd -D -N "$node"; done
nodes_are_idle() { [ "$(sinfo -h -N -o %t 2>/dev/null | grep -c idle)" = 2 ]; }
if ! wait_until 60 nodes_are_idle; then
    tail -n 20 "$scratch"/*.log "$scratch"/*.out >&2
    die "no two idle nodes"
fi
sinfo -N -l

make_sources "${1:-320}"
# A time limit and memory for a machine that is two nodes at once.
job=$(sbatch --parsable --cpus-per-task=1 --mem=500 --time=10 "$root/packaging/fleet/pagestack.sbatch") ||
    die "sbatch failed"
begun=$SECONDS

wait_until 120 is_written 33 || die "not a third was written after two minutes: $(cat shard-*.txt)"
squeue --array --format "%.6i %.3t %.8M %R"
running=$(squeue --noheader --nodelist node1 --states RUNNING --format %K | paste -s -d ' ')
[ -n "$running" ] || die "nothing ran on node1 when it was to be killed"
# The daemon first, so that it cannot report the end of what it runs.
# shellcheck disable=SC2046
kill -KILL "$node1_pid" $(node_processes node1)
echo "after $((SECONDS - begun)) s: killed node1, which ran the shards $running; $(written) files are written"

# A requeued task waits two minutes by itself; here it need not.
all_ended() {
    local task
    for task in $(squeue --noheader --array --states PENDING --format '%i %r' | awk '$2 == "BeginTime" { print $1 }'); do
        scontrol update JobId="$task" StartTime=now && echo "after $((SECONDS - begun)) s: $task was requeued"
    done
    [ -z "$(squeue --noheader)" ]
}
wait_until 240 all_ended || die "the array did not end: $(squeue --array)"
echo "after $((SECONDS - begun)) s: the array has ended"
restarted=$(scontrol show job "$job" --oneliner | grep -c "Restarts=1")
completed=$(scontrol show job "$job" --oneliner | grep -c "JobState=COMPLETED.* ExitCode=0:0")
echo "$completed tasks completed, $restarted of them by requeue"
[ "$completed" = 16 ] || die "not all tasks completed: $(cat shard-*.txt)"
[ "$restarted" -gt 0 ] || die "no task was requeued"
judge
