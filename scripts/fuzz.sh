#!/usr/bin/env bash
# Builds the libFuzzer targets with clang (ASan and UBSan on) and runs each on its seed corpus for
# a given time. New inputs go to a scratch corpus, not the tree; a finding stops the script with
# the crashing input saved under the build folder (add it to fuzz/corpus/<target>/ once fixed).
#   scripts/fuzz.sh [SECONDS_PER_TARGET] [TARGET ...]     (default 60; BUILD=build-fuzz)
set -euo pipefail
seconds=${1:-60}
shift || true
build=${BUILD:-build-fuzz}
root="$(cd "$(dirname "$0")/.." && pwd)"
bash "$root/scripts/install-deps.sh" fuzz
CC=clang CXX=clang++ cmake -S "$root" -B "$build" -DCORVANET_FUZZ=ON -DCORVANET_BUILD_GUI=OFF \
  -DCORVANET_BUILD_TESTS=OFF -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build "$build" -j "$(nproc 2>/dev/null || echo 2)" --target fuzz_targets
targets=("$@")
if [ ${#targets[@]} -eq 0 ]; then
  targets=($(cd "$root/fuzz/corpus" && ls))
fi
findings="$build/findings"
mkdir -p "$findings"
for target in "${targets[@]}"; do
  scratch="$build/corpus/$target"
  mkdir -p "$scratch"
  echo "== $target, $seconds s"
  # Up to 1 MiB an input: past the readers' own limits on a line, and quick to run.
  "$build/bin/$target" -max_total_time="$seconds" -max_len=1048576 -timeout=20 \
    -rss_limit_mb=2048 -print_final_stats=1 -artifact_prefix="$findings/$target-" \
    "$scratch" "$root/fuzz/corpus/$target" 2>"$build/$target.log" ||
    { tail -40 "$build/$target.log"; echo "fuzz: $target found a problem; see $findings"; exit 1; }
  grep -E "stat::number_of_executed_units|stat::peak_rss_mb" "$build/$target.log" | tr '\n' ' '
  echo
done
