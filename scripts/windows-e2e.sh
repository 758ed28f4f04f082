#!/usr/bin/env bash
# The Windows build end to end under Wine, as a user gets it: in a fresh Wine prefix the installer
# runs silently into a folder holding a blank, and the installed corvanet-cli.exe sets credentials,
# builds a list, runs it against the demo service (itself a Windows program under Wine, on
# 127.0.0.1) twice, fetched whole and then merged after one new bar, with statistic files and
# MetaStock conversion through real .bat files run by Wine's cmd.exe. The Linux build does the same
# steps into a second installation against the same service data. Then:
#   - the Windows MetaStock folders are read back by the Linux build's reader
#     (corvanet-metastock-check): every security with every bar of its price file;
#   - every file both programs wrote must be the same, byte for byte (compare-installations.py
#     says what it normalises and leaves out);
#   - the uninstaller leaves the data folders, the settings and the log, and removes the rest;
#   - a silent install without /D lands in C:\Tessaly\Rondex\.
# Prints what it checked; exits 1 on any difference. Needs `make windows-package` and the Linux
# build's corvanet-cli, PxFiles, Complete and corvanet-metastock-check.
set -euo pipefail
windows_build="$(cd "${1:-build-windows}" && pwd)"
linux_build="$(cd "${2:-build}" && pwd)"
scripts="$(cd "$(dirname "$0")" && pwd)"
installer=$(ls "$windows_build"/corvanet-*-windows-x64.exe 2>/dev/null | head -n 1)
[ -n "$installer" ] || { echo "no installer in $windows_build: run make windows-package"; exit 1; }
for program in corvanet-cli PxFiles Complete.exe corvanet-metastock-check; do
  [ -x "$linux_build/bin/$program" ] || { echo "no $linux_build/bin/$program"; exit 1; }
done

work="$windows_build/e2e"
rm -rf "$work"
mkdir -p "$work/service" "$work/linux/Tessaly"
export WINEPREFIX="$work/wineprefix"
export WINEDEBUG=-all
export WINEDLLOVERRIDES="mscoree,mshtml="
unset CORVANET_BASE_DIR
status=0
fail() {
  echo "FAILED: $*"
  status=1
}
win() { winepath -w "$1"; }

service=""
stop_service() {
  if [ -n "$service" ]; then
    kill "$service" 2>/dev/null || true
    wait "$service" 2>/dev/null || true
    service=""
  fi
}
trap 'stop_service; wineserver -k 2>/dev/null || true' EXIT

echo "-- a fresh Wine prefix in $WINEPREFIX"
wineboot -i >/dev/null 2>&1
echo "   made in $SECONDS s"
drive_c="$WINEPREFIX/drive_c"

# /D takes the rest of the command line, blanks and all, unquoted, and must come last: cmd.exe
# passes it so (wine itself would quote it), and waits for the installer.
win_program='C:\Trading Desk\Rondex'
program="$drive_c/Trading Desk/Rondex"
win_base='C:\Trading Desk\'
echo "-- installer $(basename "$installer") /S /D=$win_program"
wine cmd.exe /c "$(win "$installer") /S /D=$win_program"
[ -d "$program" ] || { echo "FAILED: nothing installed into $win_program"; exit 1; }
for file in corvanet-cli.exe PxFiles.exe Complete.exe Uninstall.exe Stats.csv Docs/Intro.htm \
  'SampleData/$INDU.csv'; do
  [ -f "$program/$file" ] || fail "the installer did not put $file into $win_program"
done
for file in corvanet-demo-service.exe core_tests.exe cli_tests.exe; do
  [ ! -e "$program/$file" ] || fail "the installer put $file into $win_program"
done
shortcut=$(find "$drive_c/users" -path '*Start Menu/Programs/Corvanet/Corvanet command line.lnk')
[ -n "$shortcut" ] || fail "no Start-menu entry for the command line"
echo "-- installed: $(cd "$program" && find . -type f | wc -l) files; Start menu: ${shortcut#"$drive_c/"}"

service_bin="$windows_build/bin/corvanet-demo-service.exe"
user=demo
password='p@ss:w/rd'
wine "$service_bin" generate --root "$(win "$work/service")" --composites 8 --years 2 --seed 1 \
  >/dev/null
wine "$service_bin" serve --root "$(win "$work/service")" --host 127.0.0.1 --port 0 \
  --port-file "$(win "$work/port")" --user "$user" --password "$password" \
  >"$work/service.log" 2>&1 &
service=$!
for _ in $(seq 1 200); do [ -s "$work/port" ] && break; sleep 0.05; done
[ -s "$work/port" ] || { echo "the demo service did not start"; cat "$work/service.log"; exit 1; }
port=$(tr -d '\r\n' <"$work/port")
echo "-- demo service (corvanet-demo-service.exe under Wine) on 127.0.0.1:$port"

# The Windows program as the Start-menu entry starts it: from its own folder, no --base-dir, so
# it finds its base folder by the Windows rule (the first two levels of its folder).
linux_base="$work/linux/Tessaly/"
windows_cli() { (cd "$program" && wine "$win_program\\corvanet-cli.exe" "$@"); }
linux_cli() { (cd "$work/linux" && "$linux_build/bin/corvanet-cli" --base-dir "$linux_base" "$@"); }
both() {
  windows_cli "$@" >/dev/null || fail "corvanet-cli.exe $* exited $?"
  linux_cli "$@" >/dev/null || fail "corvanet-cli $* exited $?"
}
both settings "UserName=$user" "Password=$password" "IPAddress=127.0.0.1:$port"
both settings ImplementSpecialFunctions=1 MakeMetaStockPxFiles=1 OHLCVV=1 EqWtOHLCVV=1 \
  AutoCreateOneStatFiles=1 RunWithAllPeriods=1 Advances=1 NewHighs=1
both list 7 vendor eSignal periods D,W,M,Q
# --log: the support log of the whole run, compared too (the second run's replaces the first's, so
# the first is kept aside).
run_both() {  # round
  windows_cli --log run 7 >"$work/windows-run$1.txt" 2>&1 || fail "corvanet-cli.exe run 7 exited $?"
  linux_cli --log run 7 >"$work/linux-run$1.txt" 2>&1 || fail "corvanet-cli run 7 exited $?"
  cp "$program/LogFile.txt" "$work/windows-log$1.txt"
  cp "$linux_base/Rondex/LogFile.txt" "$work/linux-log$1.txt"
  grep -E '^(Datafiles|MetaStock conversion)' "$work/windows-run$1.txt" | sed 's/^/   /'
}
echo "-- first run of list 7 (all periods): every datafile fetched whole ($SECONDS s in)"
run_both 1
wine "$service_bin" advance --root "$(win "$work/service")" --bars 1 >/dev/null
echo "-- second run after one new bar: merged from the update files ($SECONDS s in)"
run_both 2

base="$drive_c/Trading Desk"
echo "-- the Windows MetaStock folders read back by the Linux build's reader"
for period in Daily Weekly Monthly Quarterly; do
  for kind in "PX MetaStock/$period" "PxEqWt MetaStock/EqWtPriceFiles/$period"; do
    set -- $kind
    "$linux_build/bin/corvanet-metastock-check" "$base/CSVFiles/$1/$period" "$base/$2" |
      sed "s|$base/|   |" || fail "MetaStock folder $2"
  done
done
statistic_files=$(find "$base/CSVFiles/Advances" "$base/CSVFiles/NewHighs" -type f | wc -l)
[ "$statistic_files" -gt 0 ] || fail "no statistic files"
echo "-- $statistic_files statistic files"

echo "-- the Windows installation against the Linux one, file by file"
python3 "$scripts/compare-installations.py" "$base" "$win_base" "$linux_base" "$linux_base" \
  "run 1 output" "$work/windows-run1.txt" "$work/linux-run1.txt" \
  "run 2 output" "$work/windows-run2.txt" "$work/linux-run2.txt" \
  "run 1 LogFile.txt" "$work/windows-log1.txt" "$work/linux-log1.txt" || status=1

# Wine's schtasks takes no /Create of this form and answers every /Query with nothing: the
# program then prints the command to run, and lists no task.
echo "-- schedule 7 --at 18:30 --days mon-fri"
windows_cli schedule 7 --at 18:30 --days mon-fri >"$work/schedule.txt" 2>&1 ||
  fail "corvanet-cli.exe schedule 7 exited $?"
grep -q -e 'schtasks /Create' -e 'runs at' "$work/schedule.txt" || fail "schedule 7 said neither"
sed 's/^/   /' "$work/schedule.txt"
windows_cli schedule --list | sed 's/^/   /'

echo "-- uninstaller /S: the programs go, the data stays"
stop_service
wine "$program/Uninstall.exe" /S
wineserver -w  # the uninstaller runs from a copy of itself in the temporary folder
for file in corvanet-cli.exe PxFiles.exe Complete.exe Uninstall.exe Stats.csv Docs; do
  [ ! -e "$program/$file" ] || fail "the uninstaller left $file"
done
for kept in Rondex/Rondex.ini Rondex/LogFile.txt CSVFiles/Daily Lists/Download7.csv MetaStock/Daily; do
  [ -e "$base/$kept" ] || fail "the uninstaller removed $kept"
done
[ ! -e "$shortcut" ] || fail "the uninstaller left the Start-menu entry"

echo "-- installer /S without /D: C:\\Tessaly\\Rondex\\"
wine cmd.exe /c "$(win "$installer") /S"
[ -f "$drive_c/Tessaly/Rondex/corvanet-cli.exe" ] || fail "the default folder is not C:\\Tessaly\\Rondex"

[ $status -eq 0 ] && echo "-- Windows end to end: all checks passed ($SECONDS s)"
exit $status
