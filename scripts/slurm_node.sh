#!/usr/bin/env bash
# A Slurm cluster of one node on the loopback interface, to try the batch profile for real:
#   eval "$(scripts/slurm_node.sh start FOLDER)"   # sets SLURM_CONF; FOLDER keeps key, state and logs
#   scripts/slurm_node.sh stop FOLDER
# Needs Debian's slurm-wlm and munge, and root, as slurmd does. Nothing is written outside FOLDER, and nothing listens
# beyond 127.0.0.1.
set -euo pipefail

CPUS=${CPUS:-$(nproc)}
CONTROL_PORT=${CONTROL_PORT:-16817}
NODE_PORT=${NODE_PORT:-16818}

fail() { echo "slurm_node.sh: $*" >&2; exit 1; }

write_settings() {
  local memory
  memory=$(awk '/MemTotal/ {print int($2 / 1024 * 0.8)}' /proc/meminfo)
  cat >"$folder/slurm.conf" <<END
ClusterName=orbeln
SlurmctldHost=$node(127.0.0.1)
SlurmctldPort=$CONTROL_PORT
SlurmdPort=$NODE_PORT
CommunicationParameters=NoInAddrAny,NoCtldInAddrAny
AuthType=auth/munge
AuthInfo=socket=$folder/munge.socket
CryptoType=crypto/munge
SlurmUser=$(id -un)
SlurmdUser=$(id -un)
StateSaveLocation=$folder/state
SlurmdSpoolDir=$folder/spool
SlurmctldPidFile=$folder/slurmctld.pid
SlurmdPidFile=$folder/slurmd.pid
SlurmctldLogFile=$folder/slurmctld.log
SlurmdLogFile=$folder/slurmd.log
PluginDir=$(dirname "$(find /usr/lib -name auth_munge.so -print -quit)")
PlugStackConfig=$folder/plugstack.conf
ProctrackType=proctrack/linuxproc
TaskPlugin=task/none
MpiDefault=none
ReturnToService=2
SelectType=select/cons_tres
SelectTypeParameters=CR_Core
SchedulerParameters=batch_sched_delay=0,sched_min_interval=100000
AccountingStorageType=accounting_storage/none
JobAcctGatherType=jobacct_gather/none
NodeName=$node NodeAddr=127.0.0.1 CPUs=$CPUS RealMemory=$memory State=UNKNOWN
PartitionName=test Nodes=$node Default=YES MaxTime=INFINITE State=UP
END
  : >"$folder/plugstack.conf"
}

start() {
  for program in munged slurmctld slurmd sinfo; do
    command -v "$program" >/dev/null || fail "no $program: apt-get install slurm-wlm munge"
  done
  [ -e "$folder/slurm.conf" ] && fail "$folder is in use: stop it first"
  mkdir -p "$folder/state" "$folder/spool"
  chmod 755 "$folder"
  (umask 077 && head -c 1024 /dev/urandom >"$folder/munge.key")
  munged --force --key-file="$folder/munge.key" --socket="$folder/munge.socket" --pid-file="$folder/munged.pid" \
    --log-file="$folder/munged.log" --seed-file="$folder/munged.seed" >&2
  write_settings
  export SLURM_CONF=$folder/slurm.conf
  slurmctld -c -f "$SLURM_CONF" >&2 || fail "slurmctld did not start: $folder/slurmctld.log"
  slurmd -c -f "$SLURM_CONF" -N "$node" >&2 || fail "slurmd did not start: $folder/slurmd.log"
  for _ in $(seq 60); do
    case $(sinfo -h -o %t 2>/dev/null) in idle | mix | alloc) echo "export SLURM_CONF=$SLURM_CONF"; return ;; esac
    sleep 0.5
  done
  tail -n 5 "$folder"/slurm*.log >&2
  fail "the node did not come up within 30 s"
}

stop() {
  for name in slurmd slurmctld munged; do
    [ -e "$folder/$name.pid" ] || continue
    pid=$(cat "$folder/$name.pid")
    kill "$pid" 2>/dev/null || continue
    for _ in $(seq 50); do
      kill -0 "$pid" 2>/dev/null || break
      sleep 0.2
    done
  done
  rm -f "$folder/slurm.conf" "$folder/munge.key"
}

[ $# -eq 2 ] || { sed -n '2,6p' "$0" >&2; exit 2; }
node=$(uname -n)
mkdir -p "$2"
folder=$(cd "$2" && pwd)
case $1 in
  start) start ;;
  stop) stop ;;
  *) fail "start or stop" ;;
esac
