#!/usr/bin/env bash
# The main job, end to end on this machine: a demo data service on a free loopback port, speaking
# HTTPS with a certificate of an authority made for the demo alone, an installation pointed at it
# and trusting that authority, an unattended run of "All Periods" with price files converted to
# MetaStock format, one new bar, and a second run that merges it.
set -euo pipefail
build=${1:-build}
scripts="$(cd "$(dirname "$0")" && pwd)"
bin="$(cd "$build/bin" && pwd)"
demo="$(pwd)/demo"
service_root="$demo/service"
install="$demo/installation/"
user="demo"
password='p@ss:w/rd'

rm -rf "$demo"
mkdir -p "$service_root" "$install"

echo "== Generating a demo data set"
"$bin/corvanet-demo-service" generate --root "$service_root" --composites 60 --years 10 --seed 1

echo "== Making a throw-away authority and the service's certificate"
tls="$demo/tls"
bash "$scripts/make-certificate.sh" "$tls"

port_file="$demo/port"
"$bin/corvanet-demo-service" serve --root "$service_root" --host 127.0.0.1 --port 0 \
  --port-file "$port_file" --user "$user" --password "$password" \
  --tls-cert "$tls/service.pem" --tls-key "$tls/service.key" 2>"$demo/service.log" &
service_pid=$!
trap 'kill $service_pid 2>/dev/null || true; wait $service_pid 2>/dev/null || true' EXIT
for _ in $(seq 1 100); do [ -s "$port_file" ] && break; sleep 0.05; done
[ -s "$port_file" ] || { echo "the demo service did not start"; cat "$demo/service.log"; exit 1; }
port=$(cat "$port_file")
echo "== Demo service listening on https://127.0.0.1:$port"

cli=("$bin/corvanet-cli" --base-dir "$install")
cd "$demo"   # RunListNum.txt lives in the start folder
"${cli[@]}" settings "UserName=$user" "Password=$password" "IPAddress=https://127.0.0.1:$port" \
  "CAFile=$tls/authority.pem" >/dev/null
# Traditional and equal-weight price files, converted to MetaStock format after each run.
"${cli[@]}" settings ImplementSpecialFunctions=1 MakeMetaStockPxFiles=1 OHLCVV=1 EqWtOHLCVV=1 \
  >/dev/null
"${cli[@]}" list 7 vendor eSignal periods D,W,M,Q >/dev/null

echo "== First run: every datafile fetched whole"
status=0
"${cli[@]}" run 7 || status=$?

"$bin/corvanet-demo-service" advance --root "$service_root" --bars 1 >/dev/null
echo
echo "== Second run after one new bar: merged from the update files"
"${cli[@]}" run 7 || status=$?

echo
echo "Datafiles:      ${install}CSVFiles/ (Daily, Weekly, Monthly, Quarterly; Base holds the fetched copies)"
echo "Price files:    ${install}CSVFiles/PX/ and ${install}CSVFiles/PxEqWt/"
echo "MetaStock:      ${install}MetaStock/ (Daily ... Quarterly; EqWtPriceFiles/ for equal weight)"
echo "Converter log:  ${install}Rondex/MSXlog.txt"
echo "Settings:       ${install}Rondex/Rondex.ini"
echo "Download lists: ${install}Lists/"
echo "Service log:    $demo/service.log"
echo "Authority:      $tls/authority.pem (the setting CAFile; the service's certificate: $tls/service.pem)"
exit $status
