#!/usr/bin/env bash
# The MetaStock converter over the price files of an "All Periods" run (traditional and equal
# weight, four periods), run from a batch file as a run does, side by side with the same batch
# where every converter call is /bin/true: the floor of starting that many processes. Prints both
# times, their ratio, what one call costs and the converter's peak memory on the largest file.
#   bench/metastock_bench.sh [COMPOSITES] [YEARS]      (default 300 and 10; BUILD=build folder)
set -euo pipefail
composites=${1:-300}
years=${2:-10}
build=${BUILD:-build}
bin="$(cd "$build/bin" && pwd)"
work=$(mktemp -d)
trap 'kill ${service_pid:-0} 2>/dev/null || true; rm -rf "$work"' EXIT

# --- Price files from a real run against the demo service -------------------------------------
"$bin/corvanet-demo-service" generate --root "$work/service" --composites "$composites" \
  --years "$years" --seed 3 >/dev/null
"$bin/corvanet-demo-service" serve --root "$work/service" --port 0 --port-file "$work/port" \
  --user bench --password bench >/dev/null 2>&1 &
service_pid=$!
for _ in $(seq 1 100); do [ -s "$work/port" ] && break; sleep 0.05; done
cli=("$bin/corvanet-cli" --base-dir "$work/install/")
"${cli[@]}" settings UserName=bench Password=bench "IPAddress=127.0.0.1:$(cat "$work/port")" \
  DownloadCompleteMessageNo=True SystemMessagesNo=True MakeMetaStockPxFiles=1 OHLCVV=1 \
  EqWtOHLCVV=1 >/dev/null
"${cli[@]}" list 7 vendor eSignal periods D,W,M,Q >/dev/null
"${cli[@]}" run 7 >/dev/null
kill "$service_pid"

# --- The two batch files -------------------------------------------------------------------------
# One line per price file, as the run's batch files call the converter: the traditional kind into
# the period's folder, the equal-weight kind into EqWtPriceFiles/<period>.
data="$work/install/CSVFiles"
metastock="$work/install/MetaStock"
: >"$work/convert.sh"
for kind in PX PxEqWt; do
  target="$metastock"
  [ "$kind" = PxEqWt ] && target="$metastock/EqWtPriceFiles"
  for period in Daily Weekly Monthly Quarterly; do
    for file in "$data/$kind/$period"/*.csv; do
      printf "PxFiles -f '%s' -r fileReplace -o '%s/%s'\n" "$file" "$target" "$period"
    done
  done
done >"$work/convert.sh"
sed 's/^PxFiles /\/bin\/true /' "$work/convert.sh" >"$work/floor.sh"
calls=$(wc -l <"$work/convert.sh")
mib=$(du -sm "$data/PX" "$data/PxEqWt" | awk '{s += $1} END {print s}')

export CORVANET_PROGRAM_DIRECTORY="$work/program/"
mkdir -p "$CORVANET_PROGRAM_DIRECTORY"
# Runs a batch file under sh with the bin folder first on the PATH, its time appended to a file.
timed_batch() {
  PATH="$bin:$PATH" /usr/bin/time -f "%e" -o "$work/t" sh -e "$1"
  cat "$work/t" >>"$2"
}

# The first pass makes every security; it is timed once. The passes after it replace the data of
# securities that exist, as every later run does: best of three, converter and floor taking turns
# so both meet the page cache and the file system in the same state.
: >"$work/first.times"
: >"$work/convert.times"
: >"$work/floor.times"
timed_batch "$work/convert.sh" "$work/first.times"
for _ in 1 2 3; do
  timed_batch "$work/convert.sh" "$work/convert.times"
  timed_batch "$work/floor.sh" "$work/floor.times"
done
first_s=$(cat "$work/first.times")
convert_s=$(sort -n "$work/convert.times" | head -1)
floor_s=$(sort -n "$work/floor.times" | head -1)
errors=$(grep -c ' Error: ' "$CORVANET_PROGRAM_DIRECTORY/MSXlog.txt" || true)

# Peak memory on the largest price file, into a folder of its own.
largest=$(ls -S "$data"/PX*/*/*.csv | awk 'NR == 1')  # awk reads on: no SIGPIPE for ls
/usr/bin/time -f "%M" -o "$work/t" "$bin/PxFiles" -f "$largest" -r fileReplace -o "$work/memory"
peak_kb=$(cat "$work/t")

echo "MetaStock conversion: $composites composites x $years years, $calls price files, $mib MiB," \
     "$errors errors"
awk -v c="$convert_s" -v f="$floor_s" -v first="$first_s" -v n="$calls" -v kb="$peak_kb" 'BEGIN {
  printf "  converter batch %.2f s (first pass, making every security: %.2f s), /bin/true batch %.2f s\n", c, first, f;
  printf "  ratio %.2fx (target <= 3x)\n", (f > 0 ? c / f : 0);
  printf "  one call %.2f ms, of which %.2f ms above starting a process\n", 1000 * c / n,
         1000 * (c - f) / n;
  printf "  peak memory on the largest price file %.1f MiB (target < 16 MiB)\n", kb / 1024 }'
