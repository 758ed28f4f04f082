#!/usr/bin/env bash
# Checks an installed tree, as `cmake --install` or the .deb lays it out under ROOT (ROOT/usr/bin,
# ROOT/usr/libexec/corvanet, ...): every file in its place, the programs start from there, and a
# short run against the demo service converts price files with the installed helpers. Runs
# unprivileged; nothing outside ROOT and a temporary folder is touched.
set -euo pipefail
root=$(cd "${1:?usage: try-installed.sh ROOT}" && pwd)
prefix="$root/usr"
work=$(mktemp -d)
service_pid=""
cleanup() {
  [ -n "$service_pid" ] && kill "$service_pid" 2>/dev/null && wait "$service_pid" 2>/dev/null
  rm -rf "$work"
}
trap cleanup EXIT
fail() { echo "try-installed: $*" >&2; exit 1; }

for file in bin/corvanet-cli bin/corvanet-demo-service libexec/corvanet/PxFiles \
  libexec/corvanet/Complete.exe share/corvanet/Stats.csv share/corvanet/Docs \
  share/corvanet/SampleData share/man/man1/corvanet-cli.1 share/man/man1/corvanet-demo-service.1 \
  share/bash-completion/completions/corvanet-cli; do
  [ -e "$prefix/$file" ] || fail "missing $file"
done
if [ -e "$prefix/bin/corvanet" ]; then
  for file in share/applications/corvanet.desktop share/icons/hicolor/scalable/apps/corvanet.svg \
    share/man/man1/corvanet.1; do
    [ -e "$prefix/$file" ] || fail "missing $file"
  done
fi
# Nothing a user does not start lands on PATH.
[ -e "$prefix/bin/PxFiles" ] && fail "the converter is on PATH"

cli="$prefix/bin/corvanet-cli"
version=$("$cli" --version)
[ "$version" = "corvanet-cli 5.1" ] || fail "--version printed: $version"
for page in "$prefix"/share/man/man1/*.1; do
  warnings=$(LC_ALL=C.UTF-8 MANWIDTH=80 man --warnings -l "$page" 2>&1 >/dev/null)
  [ -z "$warnings" ] || fail "$page: $warnings"
done
bash -n "$prefix/share/bash-completion/completions/corvanet-cli" || fail "completion does not parse"

# A run with MetaStock conversion: the batch finds PxFiles and Complete.exe only through the
# helper folder the installed program derives from its own place.
unset CORVANET_HELPER_DIR CORVANET_BASE_DIR
export HOME="$work/home"
mkdir -p "$HOME" "$work/service"
"$prefix/bin/corvanet-demo-service" generate --root "$work/service" --composites 6 --years 1 \
  --seed 3 >/dev/null
"$prefix/bin/corvanet-demo-service" serve --root "$work/service" --host 127.0.0.1 --port 0 \
  --port-file "$work/port" --user demo --password demo >/dev/null 2>"$work/service.log" &
service_pid=$!
for _ in $(seq 1 100); do [ -s "$work/port" ] && break; sleep 0.05; done
[ -s "$work/port" ] || fail "the demo service did not start: $(cat "$work/service.log")"
cd "$work"
"$cli" -q settings UserName=demo Password=demo "IPAddress=127.0.0.1:$(cat "$work/port")" \
  DownloadCompleteMessageNo=True SystemMessagesNo=True ImplementSpecialFunctions=1 \
  MakeMetaStockPxFiles=1 OHLCVV=1
"$cli" -q list 6 vendor eSignal
status=0
"$cli" run 6 >"$work/run.txt" 2>&1 || status=$?
[ "$status" -eq 0 ] || fail "the run exited $status: $(cat "$work/run.txt")"
grep -q "Datafiles fetched whole: " "$work/run.txt" || fail "no run summary: $(cat "$work/run.txt")"
ls "$HOME"/Tessaly/MetaStock/Daily/*MASTER >/dev/null 2>&1 ||
  fail "the converter wrote no MetaStock index: $(cat "$work/run.txt")"
echo "try-installed: $prefix is whole; a run converted its price files with the installed helpers"
