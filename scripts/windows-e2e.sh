#!/usr/bin/env bash
# The Windows programs end to end under Wine (run by windows-test.sh, which sets up the prefix):
# the demo service as a Windows program on 127.0.0.1, and corvanet-cli.exe setting credentials,
# building a list, running it twice (fetched whole, then merged after one new bar) with price files
# converted to MetaStock format through real .bat files run by Wine's cmd.exe.
set -euo pipefail
build=${1:-build-windows}
bin="$(cd "$build/bin" && pwd)"
work="$(cd "$build" && pwd)/e2e"
rm -rf "$work"
mkdir -p "$work/service" "$work/Tessaly/Rondex"
win() { winepath -w "$1"; }
unset CORVANET_BASE_DIR
user=demo
password='p@ss:w/rd'

wine "$bin/corvanet-demo-service.exe" generate --root "$(win "$work/service")" --composites 8 \
  --years 2 --seed 1 >/dev/null
wine "$bin/corvanet-demo-service.exe" serve --root "$(win "$work/service")" --host 127.0.0.1 \
  --port 0 --port-file "$(win "$work/port")" --user "$user" --password "$password" \
  2>"$work/service.log" &
service=$!
trap 'kill $service 2>/dev/null || true; wait $service 2>/dev/null || true' EXIT
for _ in $(seq 1 200); do [ -s "$work/port" ] && break; sleep 0.05; done
[ -s "$work/port" ] || { echo "the demo service did not start"; cat "$work/service.log"; exit 1; }
port=$(tr -d '\r\n' <"$work/port")

# Installed as the installer lays it out, in T:\Tessaly\Rondex\ of a drive of its own, so that
# the program finds its base folder by the Windows rule (the first two levels of its folder:
# T:\Tessaly\) with no --base-dir.
cp "$bin/corvanet-cli.exe" "$bin/PxFiles.exe" "$bin/Complete.exe" "$work/Tessaly/Rondex/"
ln -sfn "$work" "$WINEPREFIX/dosdevices/t:"
cli=(wine 'T:\Tessaly\Rondex\corvanet-cli.exe')
cd "$work"
"${cli[@]}" settings "UserName=$user" "Password=$password" "IPAddress=127.0.0.1:$port" >/dev/null
"${cli[@]}" settings ImplementSpecialFunctions=1 MakeMetaStockPxFiles=1 OHLCVV=1 >/dev/null
"${cli[@]}" list 7 vendor eSignal periods D,W >/dev/null
echo "-- first run: every datafile fetched whole"
"${cli[@]}" --quiet run 7
wine "$bin/corvanet-demo-service.exe" advance --root "$(win "$work/service")" --bars 1 >/dev/null
echo "-- second run after one new bar: merged from the update files"
"${cli[@]}" --quiet run 7

base="$work/Tessaly"
daily=$(find "$base/CSVFiles/Daily" -name '*.csv' | wc -l)
metastock=$(find "$base/MetaStock" -type f | wc -l)
echo "-- $daily daily datafiles, $metastock MetaStock files under $base"
[ "$daily" -gt 0 ] && [ "$metastock" -gt 0 ]
grep -q ' bars written to ' "$base/Rondex/MSXlog.txt"
