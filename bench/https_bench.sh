#!/usr/bin/env bash
# The first "All Periods" run (every datafile fetched whole) over HTTPS beside the same run over
# plain HTTP, against the demo service serving one data set both ways, each request answered
# DELAY_MS late. Kept connections should make the TLS handshakes a cost per connection, not per
# file: the ratio is meant to stay within 1.3.
#
#   bench/https_bench.sh [COMPOSITES] [YEARS] [DELAY_MS]     (default 300, 10, 20; BUILD=build)
#
# Best of three, the two taking turns, each pass into a new installation.
set -euo pipefail
composites=${1:-300}
years=${2:-10}
delay=${3:-20}
build=${BUILD:-build}
bin="$(cd "$build/bin" && pwd)"
here="$(cd "$(dirname "$0")" && pwd)"
work=$(mktemp -d)
trap 'kill ${plain_pid:-0} ${service_pid:-0} 2>/dev/null || true; rm -rf "$work"' EXIT

# shellcheck source=bench/demo_service.sh
source "$here/demo_service.sh"
make_certificate "$work/tls"
start_service "$composites" "$years" "$delay"
plain_pid=$service_pid
plain_port=$port
serve_service "$delay" --tls-cert "$work/tls/service.pem" --tls-key "$work/tls/service.key"
tls_port=$port

run_once() {  # run_once DIR SCHEME PORT CAFILE TIMES
  port=$3
  install "$1" "$2" "$4"
  sync
  local start=$EPOCHREALTIME
  "$bin/corvanet-cli" --base-dir "$1/" run 7 >"$1.out" 2>&1 || { cat "$1.out"; exit 1; }
  awk -v s="$start" -v e="$EPOCHREALTIME" 'BEGIN { printf "%.3f\n", e - s }' >>"$5"
}
: >"$work/http.times"
: >"$work/https.times"
for pass in 1 2 3; do
  run_once "$work/http$pass" "" "$plain_port" "" "$work/http.times"
  run_once "$work/https$pass" "https://" "$tls_port" "$work/tls/authority.pem" "$work/https.times"
  rm -rf "$work/http$pass" "$work/https$pass"
done
http_s=$(sort -n "$work/http.times" | head -1)
https_s=$(sort -n "$work/https.times" | head -1)
echo "first All Periods run, $composites composites x $years years, requests ${delay} ms late" \
     "(load $(cut -d' ' -f1-3 /proc/loadavg)):"
awk -v h="$http_s" -v s="$https_s" 'BEGIN {
  printf "  http %.2f s, https %.2f s, https / http %.2fx (target 1.3x at most)\n", h, s, s / h }'
