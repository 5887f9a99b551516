#!/usr/bin/env bash
# Fuzzes the readers, one after the other:   scripts/fuzz.sh SECONDS [HARNESS ...]
#
# Called by `make fuzz`. Corpora stay in build/fuzz/corpus and grow from run to run; an input that shows a fault is kept in
# build/fuzz/findings and ends its harness. One line for each says how many inputs it took and what was found.
set -euo pipefail
cd "$(dirname "$0")/.."
time=$1
shift
case $time in '' | *[!0-9]*) echo "fuzz: '$time' is no number of seconds" >&2; exit 2 ;; esac

.ci/dependencies fuzz
cmake --preset fuzz >/dev/null
cmake --build --preset fuzz
work=build/fuzz
fuzzer=$work/tests/fuzz/libfuzzer/orbeln_fuzz
scripts/fuzz_seeds.py --install build/release/install --program build/release/orbeln $work/seeds
mkdir -p $work/findings
harnesses=("$@")
[ $# -gt 0 ] || mapfile -t harnesses < <(ORBELN_FUZZ=list $fuzzer)

status=0
for name in "${harnesses[@]}"; do
  corpus=$work/corpus/$name
  log=$work/$name.log
  mkdir -p "$corpus"
  folders=("$corpus")
  for folder in "$work/seeds/$name" "$work/seeds/${name%%-*}" "tests/fuzz/regressions/$name"; do
    if [ -d "$folder" ]; then folders+=("$folder"); fi
  done
  # Long inputs find nothing that short ones do not, and are slow.
  outcome="no finding"
  ORBELN_FUZZ=$name $fuzzer "${folders[@]}" -max_total_time="$time" -timeout=20 -rss_limit_mb=2500 -max_len=20000 \
    -dict=$work/seeds/words.dict -close_fd_mask=3 -print_final_stats=1 -artifact_prefix="$work/findings/$name-" \
    >"$log" 2>&1 || {
    outcome="FOUND: $(sed -n 's/.*Test unit written to //p' "$log" | tail -n 1) (log: $log)"
    status=1
  }
  executions=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log")
  coverage=$(grep -o 'cov: [0-9]*' "$log" | tail -n 1 || true)
  printf '%-18s %10s inputs  %-12s %s\n' "$name" "${executions:-?}" "$coverage" "$outcome"
done
exit $status
