#!/usr/bin/env bash
# Runs the Windows test suites of a cross build under Wine, in a Wine prefix of their own inside the
# build folder (made once with wineboot). GTEST_FILTER narrows the tests.
set -euo pipefail
build=${1:-build-windows}
export WINEPREFIX="$(cd "$build" && pwd)/wineprefix"
export WINEDEBUG=-all
# No Mono or Gecko: nothing here uses .NET or HTML, and wineboot would offer to fetch them.
export WINEDLLOVERRIDES="mscoree,mshtml="
if [ ! -f "$WINEPREFIX/system.reg" ]; then
  wineboot -i >/dev/null 2>&1
fi
trap 'wineserver -k 2>/dev/null || true' EXIT
status=0
for suite in core_tests cli_tests; do
  exe="$build/bin/$suite.exe"
  [ -f "$exe" ] || continue
  echo "== $suite under Wine"
  wine "$exe" --gtest_brief=1 ${GTEST_FILTER:+--gtest_filter=$GTEST_FILTER} || status=1
done
exit $status
