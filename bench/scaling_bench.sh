#!/usr/bin/env bash
# How the cost of a run grows with the number of composites: the first "All Periods" run and the
# run after one new bar, for each size given, against the demo service answering each request
# DELAY_MS late. Prints the time per datafile (which should stay flat) and the peak memory (which
# should not grow) of each.
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

echo "time per datafile, $years years, every request answered ${delay} ms late:"
printf '  %10s %10s %14s %14s %12s %12s  %s\n' composites datafiles "first ms/file" \
  "merge ms/file" "first MiB" "merge MiB" load
for composites in "${sizes[@]}"; do
  rm -rf "$work/install"
  start_service "$composites" "$years" "$delay"
  cli=("$bin/corvanet-cli" --base-dir "$work/install/")
  (cd "$work" && install "$work/install")
  /usr/bin/time -f "%e %M" -o "$work/first" "${cli[@]}" run 7 >"$work/out"
  datafiles=$(grep -o 'fetched whole: [0-9]*' "$work/out" | grep -o '[0-9]*$')
  "$bin/corvanet-demo-service" advance --root "$work/service" --bars 1 >/dev/null
  # The best of two runs after the new bar: the second merges the same rows again.
  : >"$work/merge"
  for _ in 1 2; do
    /usr/bin/time -f "%e %M" -o "$work/t" "${cli[@]}" run 7 >/dev/null
    cat "$work/t" >>"$work/merge"
  done
  read -r first_s first_kb <"$work/first"
  read -r merge_s merge_kb < <(sort -n "$work/merge" | head -1)
  awk -v c="$composites" -v n="$datafiles" -v f="$first_s" -v m="$merge_s" -v fk="$first_kb" \
    -v mk="$merge_kb" -v l="$(cut -d' ' -f1 /proc/loadavg)" 'BEGIN {
    printf "  %10d %10d %14.2f %14.2f %12.1f %12.1f  %s\n", c, n, f * 1000 / n, m * 1000 / n,
           fk / 1024, mk / 1024, l }'
  kill "$service_pid"
  wait "$service_pid" 2>/dev/null || true
done
