#!/usr/bin/env bash
# How the cost of a run grows with the number of composites: the first "All Periods" run and the
# run after one new bar, for each size given, against the demo service answering each request
# DELAY_MS late. Prints the time per datafile and the peak memory (which should not grow) of each,
# then a straight line fitted through each kind of run's times: its cost per datafile, the fixed
# cost every run pays whatever its size (starting the program, the round trips to the service
# before its first datafile and after its last, the steps before and after the walk), and how far
# any size lies off the line.
#
#   bench/scaling_bench.sh [YEARS] [DELAY_MS] [SIZES...]   (default 10, 20, 100 300 1000; BUILD=build)
set -euo pipefail
years=${1:-10}
delay=${2:-20}
shift $(($# < 2 ? $# : 2))
sizes=("$@")
[ ${#sizes[@]} -gt 0 ] || sizes=(100 300 1000)
build=${BUILD:-build}
bin="$(cd "$build/bin" && pwd)"
work=$(mktemp -d)
trap 'kill ${service_pid:-0} 2>/dev/null || true; rm -rf "$work"' EXIT
# shellcheck source=bench/demo_service.sh
source "$(cd "$(dirname "$0")" && pwd)/demo_service.sh"

# Runs a command and writes "seconds peak-KiB" to the file $1: the time to the millisecond (a run
# after one bar takes a tenth of a second at 100 composites), the memory from /usr/bin/time.
timed() {
  local into=$1
  shift
  sync  # what the run before wrote is on disk, not written back during this one
  local start=$EPOCHREALTIME
  /usr/bin/time -f "%M" -o "$work/kb" "$@"
  local end=$EPOCHREALTIME
  awk -v s="$start" -v e="$end" -v kb="$(cat "$work/kb")" 'BEGIN { printf "%.3f %d\n", e - s, kb }' \
    >"$into"
}

: >"$work/points"
echo "time per datafile, $years years, every request answered ${delay} ms late:"
printf '  %10s %10s %14s %14s %12s %12s  %s\n' composites datafiles "first ms/file" \
  "merge ms/file" "first MiB" "merge MiB" load
for composites in "${sizes[@]}"; do
  rm -rf "$work/install"
  start_service "$composites" "$years" "$delay"
  cli=("$bin/corvanet-cli" --base-dir "$work/install/")
  (cd "$work" && install "$work/install")
  timed "$work/first" "${cli[@]}" run 7 >"$work/out"
  datafiles=$(grep -o 'fetched whole: [0-9]*' "$work/out" | grep -o '[0-9]*$')
  "$bin/corvanet-demo-service" advance --root "$work/service" --bars 1 >/dev/null
  # The best of two runs after the new bar: the second merges the same rows again.
  : >"$work/merge"
  for _ in 1 2; do
    timed "$work/t" "${cli[@]}" run 7 >/dev/null
    cat "$work/t" >>"$work/merge"
  done
  read -r first_s first_kb <"$work/first"
  read -r merge_s merge_kb < <(sort -n "$work/merge" | head -1)
  awk -v c="$composites" -v n="$datafiles" -v f="$first_s" -v m="$merge_s" -v fk="$first_kb" \
    -v mk="$merge_kb" -v l="$(cut -d' ' -f1 /proc/loadavg)" 'BEGIN {
    printf "  %10d %10d %14.2f %14.2f %12.1f %12.1f  %s\n", c, n, f * 1000 / n, m * 1000 / n,
           fk / 1024, mk / 1024, l }'
  echo "$datafiles $first_s $merge_s" >>"$work/points"
  kill "$service_pid"
  wait "$service_pid" 2>/dev/null || true
done
# Least squares through (datafiles, seconds) for each kind of run.
awk '{ n[NR] = $1; t["first", NR] = $2; t["merge", NR] = $3 }
END {
  split("first merge", kinds, " ");
  for (k = 1; k <= 2; k++) {
    kind = kinds[k]; sn = st = snn = snt = 0;
    for (i = 1; i <= NR; i++) {
      sn += n[i]; st += t[kind, i]; snn += n[i] * n[i]; snt += n[i] * t[kind, i];
    }
    slope = (NR * snt - sn * st) / (NR * snn - sn * sn);
    fixed = (st - slope * sn) / NR;
    worst = 0;
    for (i = 1; i <= NR; i++) {
      off = (t[kind, i] - (fixed + slope * n[i])) / t[kind, i] * 100;
      if (off < 0) off = -off;
      if (off > worst) worst = off;
    }
    printf "  %s run: %.3f ms per datafile + %.0f ms per run; every size within %.0f%% of that line\n",
           kind, slope * 1000, fixed * 1000, worst;
  }
}' "$work/points"
