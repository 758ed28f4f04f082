#!/usr/bin/env bash
# An incremental "All Periods" run over a large data set, side by side with copying the same four
# destination folders with cp. Prints both times, their ratio and the run's peak memory.
set -euo pipefail
build=${1:-build}
composites=${COMPOSITES:-300}
years=${YEARS:-10}
bin="$(cd "$build/bin" && pwd)"
work=$(mktemp -d)
trap 'kill ${service_pid:-0} 2>/dev/null || true; rm -rf "$work"' EXIT

"$bin/corvanet-demo-service" generate --root "$work/service" --composites "$composites" \
  --years "$years" --seed 3 >/dev/null
"$bin/corvanet-demo-service" serve --root "$work/service" --port 0 --port-file "$work/port" \
  --user bench --password bench >/dev/null 2>&1 &
service_pid=$!
for _ in $(seq 1 100); do [ -s "$work/port" ] && break; sleep 0.05; done
port=$(cat "$work/port")

cli=("$bin/corvanet-cli" --base-dir "$work/install/")
cd "$work"
"${cli[@]}" settings UserName=bench Password=bench "IPAddress=127.0.0.1:$port" \
  DownloadCompleteMessageNo=True SystemMessagesNo=True >/dev/null
"${cli[@]}" list 7 vendor eSignal periods D,W,M,Q >/dev/null
"${cli[@]}" run 7 >/dev/null          # first run: every base copy fetched whole
"$bin/corvanet-demo-service" advance --root "$work/service" --bars 1 >/dev/null

data="$work/install/CSVFiles"
# Best of three for both, taking turns, so both meet the page cache and the file system in the same
# state. A run after the first merges the same rows again: the same reads and writes.
: >"$work/run.times"
: >"$work/cp.times"
: >"$work/floor.times"
mkdir -p "$work/floor"
for pass in 1 2 3; do
  /usr/bin/time -f "%e %M" -o "$work/t" "${cli[@]}" run 7 >"$work/run.out"
  cat "$work/t" >>"$work/run.times"
  mkdir -p "$work/copy$pass"
  /usr/bin/time -f "%e %M" -o "$work/t" \
    cp -r "$data/Daily" "$data/Weekly" "$data/Monthly" "$data/Quarterly" "$work/copy$pass/"
  cat "$work/t" >>"$work/cp.times"
  /usr/bin/time -f "%e %M" -o "$work/t" "$bin/atomic_replace_floor" "$data/Base" "$work/floor" \
    >/dev/null
  cat "$work/t" >>"$work/floor.times"
done
read -r run_s run_kb < <(sort -n "$work/run.times" | head -1)
read -r cp_s _ < <(sort -n "$work/cp.times" | head -1)
read -r floor_s _ < <(sort -n "$work/floor.times" | head -1)
files=$(find "$data/Daily" "$data/Weekly" "$data/Monthly" "$data/Quarterly" -type f | wc -l)
bytes=$(du -sb "$data/Daily" "$data/Weekly" "$data/Monthly" "$data/Quarterly" | awk '{s+=$1} END {print s}')
echo "incremental All Periods run: $composites composites x $years years, $files datafiles, $((bytes / 1048576)) MiB"
grep -E 'merge|whole|failed' "$work/run.out" | sed 's/^/  /'
awk -v r="$run_s" -v c="$cp_s" -v f="$floor_s" -v kb="$run_kb" 'BEGIN {
  printf "  run %.2f s, cp %.2f s, ratio %.2fx (target <= 2x)\n", r, c, (c > 0 ? r / c : 0);
  printf "  reading and atomically replacing the same files alone: %.2f s (%.2fx cp)\n", f,
         (c > 0 ? f / c : 0);
  printf "  peak memory of the run %.1f MiB (target < 64 MiB)\n", kb / 1024 }'
