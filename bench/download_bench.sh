#!/usr/bin/env bash
# Speed at scale, side by side with the tools that do the same transfers and copies:
#   - the first "All Periods" run (every datafile fetched whole) against the demo service answering
#     each request DELAY_MS late, beside curl fetching the same URLs one after another and
#     curl -Z --parallel-max 8;
#   - the run after one new bar (every datafile merged) beside cp -r of the four period folders;
#   - `stats 7` with all 34 statistics beside cp -r of the files it wrote and the same split in
#     pandas;
#   and the peak memory of each of ours.
#
#   bench/download_bench.sh [COMPOSITES] [YEARS] [DELAY_MS]     (default 300, 10, 20; BUILD=build)
#
# Ours, curl -Z and cp are timed best of three, taking turns, so each meets the page cache and the
# file system in the same state; serial curl and pandas run once (they are slow). The figures move
# with the load of the machine: compare the ratios, and note the load printed with them.
set -euo pipefail
composites=${1:-300}
years=${2:-10}
delay=${3:-20}
build=${BUILD:-build}
bin="$(cd "$build/bin" && pwd)"
here="$(cd "$(dirname "$0")" && pwd)"
python=${PYTHON:-$( [ -x /usr/bin/python3 ] && echo /usr/bin/python3 || echo python3 )}
work=$(mktemp -d)
trap 'kill ${service_pid:-0} 2>/dev/null || true; rm -rf "$work"' EXIT

# shellcheck source=bench/demo_service.sh
source "$here/demo_service.sh"
start_service "$composites" "$years" "$delay"
cd "$work"

# Runs a command and appends "seconds peak-KiB" to the file $1: the time to the millisecond (a run
# after one bar takes a tenth of a second), the memory from /usr/bin/time. Each command starts with
# everything written before it on disk, and nothing is deleted between the commands of a section
# (the file system frees and discards deleted blocks as it goes): otherwise the writeback of the
# hundreds of MiB one command wrote, or freed, falls on whichever command comes next.
timed() {
  local into=$1
  shift
  sync
  local start=$EPOCHREALTIME
  /usr/bin/time -f "%M" -o "$work/t" "$@" >"$work/out" 2>&1
  local end=$EPOCHREALTIME
  awk -v s="$start" -v e="$end" -v kb="$(cat "$work/t")" 'BEGIN { printf "%.3f %d\n", e - s, kb }' \
    >>"$into"
}
best() { sort -n "$1" | head -1; }
load() { cut -d' ' -f1-3 /proc/loadavg; }

# --- First run -------------------------------------------------------------------------------
: >"$work/first.times"
: >"$work/curlz.times"
for pass in 1 2 3; do
  install "$work/first$pass"
  timed "$work/first.times" "$bin/corvanet-cli" --base-dir "$work/first$pass/" run 7
  [ "$pass" = 1 ] && cp "$work/out" "$work/first.out"
  if [ "$pass" = 1 ]; then
    # The URLs of every datafile the run fetched whole, for curl.
    for file in "$work/first1/CSVFiles/Base/"*-CompositeStats.csv; do
      name=$(basename "$file")
      printf 'url = "http://127.0.0.1:%s/ovalith/data/%s"\noutput = "%s"\n' \
        "$port" "$name" "$name"
    done >"$work/urls"
  fi
  # A new installation for each pass: every base copy missing.
  mkdir "$work/curlz$pass"
  (cd "$work/curlz$pass" && timed "$work/curlz.times" curl -s -Z --parallel-max 8 -u bench:bench \
    -K "$work/urls")
done
mkdir "$work/curl1"
: >"$work/curl.times"
(cd "$work/curl1" && timed "$work/curl.times" curl -s -u bench:bench -K "$work/urls")
rm -rf "$work/first"? "$work/curlz"? "$work/curl1"
urls=$(grep -c '^url' "$work/urls")
read -r first_s first_kb < <(best "$work/first.times")
read -r curlz_s _ < <(best "$work/curlz.times")
read -r curl_s _ < <(best "$work/curl.times")
echo "first All Periods run: $composites composites x $years years, $urls datafiles fetched" \
     "whole, every request answered ${delay} ms late (load $(load))"
grep -E 'whole|failed' "$work/first.out" | sed 's/^/  /'
awk -v o="$first_s" -v z="$curlz_s" -v s="$curl_s" -v kb="$first_kb" -v n="$urls" 'BEGIN {
  printf "  ours %.2f s | curl -Z --parallel-max 8 %.2f s | curl one after another %.2f s\n", o, z, s;
  printf "  ours / curl -Z %.2fx (target <= 1.3x), curl serial / ours %.1fx (target >= 5x)\n",
         o / z, s / o;
  printf "  %.2f ms per datafile, peak memory %.1f MiB (target < 32 MiB)\n", o * 1000 / n, kb / 1024 }'

# --- Incremental run -------------------------------------------------------------------------
install "$work/install"
"$bin/corvanet-cli" --base-dir "$work/install/" run 7 >/dev/null
"$bin/corvanet-demo-service" advance --root "$work/service" --bars 1 >/dev/null
data="$work/install/CSVFiles"
: >"$work/merge.times"
: >"$work/cp.times"
: >"$work/floor.times"
for pass in 1 2 3; do
  timed "$work/merge.times" "$bin/corvanet-cli" --base-dir "$work/install/" run 7
  [ "$pass" = 1 ] && cp "$work/out" "$work/merge.out"
  mkdir "$work/copy$pass"
  timed "$work/cp.times" cp -r "$data/Daily" "$data/Weekly" "$data/Monthly" "$data/Quarterly" \
    "$work/copy$pass/"
  mkdir "$work/floor$pass"
  timed "$work/floor.times" "$bin/atomic_replace_floor" "$data/Base" "$work/floor$pass"
done
rm -rf "$work/copy"? "$work/floor"?
read -r merge_s merge_kb < <(best "$work/merge.times")
read -r cp_s _ < <(best "$work/cp.times")
read -r floor_s _ < <(best "$work/floor.times")
mib=$(du -sm "$data/Daily" "$data/Weekly" "$data/Monthly" "$data/Quarterly" |
  awk '{s += $1} END {print s}')
echo "incremental run after one new bar: $mib MiB of datafiles (load $(load))"
grep -E 'merge|whole|failed' "$work/merge.out" | sed 's/^/  /'
awk -v r="$merge_s" -v c="$cp_s" -v f="$floor_s" -v kb="$merge_kb" -v n="$urls" 'BEGIN {
  printf "  ours %.3f s | cp -r of the four period folders %.3f s\n", r, c;
  printf "  (reading every base copy and atomically replacing a copy of it, nothing else: %.3f s)\n",
         f;
  printf "  ours / cp %.2fx (target <= 1.0x), %.2f ms per datafile, peak memory %.1f MiB\n",
         r / c, r * 1000 / n, kb / 1024 }'

# --- Statistic files -------------------------------------------------------------------------
# Each pass writes into a data folder of its own whose period folders link to the datafiles, as a
# first pass does; cp copies what the pass wrote into a folder of its own.
statistics=$(grep -o '{"[A-Za-z0-9]*", [0-9]*, &W::' "$here/../src/core/stats/statistic_catalogue.cpp" |
  cut -d'"' -f2 | sed 's/$/=1/')
# shellcheck disable=SC2086
"$bin/corvanet-cli" --base-dir "$work/install/" settings $statistics >/dev/null
: >"$work/stats.times"
: >"$work/statcp.times"
for pass in 1 2 3; do
  out="$work/install/out$pass"
  mkdir -p "$out"
  for period in Daily Weekly Monthly Quarterly; do ln -s "$data/$period" "$out/$period"; done
  "$bin/corvanet-cli" --base-dir "$work/install/" settings "PathToDataFiles=$out/" >/dev/null
  timed "$work/stats.times" "$bin/corvanet-cli" --base-dir "$work/install/" stats 7
  [ "$pass" = 1 ] && cp "$work/out" "$work/stats.out"
  mkdir "$work/statcopy$pass"
  mapfile -t written < <(find "$out" -mindepth 1 -maxdepth 1 -type d)
  timed "$work/statcp.times" cp -r "${written[@]}" "$work/statcopy$pass/"
done
files=$(find "$work/statcopy1" -type f | wc -l)
written_mib=$(du -sm "$work/statcopy1" | cut -f1)
: >"$work/pandas.times"
timed "$work/pandas.times" "$python" "$here/stat_split_pandas.py" "$work/install" \
  "$work/pandas" --statistics-only
rm -rf "$work/statcopy"* "$work/install/out2" "$work/install/out3" "$work/pandas"
read -r stats_s stats_kb < <(best "$work/stats.times")
read -r statcp_s _ < <(best "$work/statcp.times")
read -r pandas_s pandas_kb < <(best "$work/pandas.times")
echo "stats 7, all 34 statistics: $files files, $written_mib MiB written (load $(load))"
grep -E 'split|failed' "$work/stats.out" | sed 's/^/  /'
awk -v o="$stats_s" -v c="$statcp_s" -v p="$pandas_s" -v kb="$stats_kb" -v pkb="$pandas_kb" 'BEGIN {
  printf "  ours %.2f s | cp -r of its output %.2f s | pandas %.2f s\n", o, c, p;
  printf "  ours / cp %.2fx (target <= 1.2x), pandas / ours %.1fx (target >= 20x)\n", o / c, p / o;
  printf "  peak memory %.1f MiB (target < 32 MiB; pandas %.1f MiB)\n", kb / 1024, pkb / 1024 }'
