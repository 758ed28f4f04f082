#!/usr/bin/env bash
# The benchmarks, one section each, run by `make bench`. $1 is the build folder (default build).
# Never run by ctest: the figures depend on the machine and are read by a person.
set -euo pipefail
build=${1:-build}
bin="$(cd "$build/bin" && pwd)"
here="$(cd "$(dirname "$0")" && pwd)"
# Debian's python3-pandas belongs to the system interpreter, whatever else is first on the PATH.
python=${PYTHON:-$( [ -x /usr/bin/python3 ] && echo /usr/bin/python3 || echo python3 )}

# --- Statistic and price files ------------------------------------------------------------------
# All 34 statistics plus the traditional and equal-weight price files of an "All Periods" list
# (the price files one datafile after the other, as a run hands them out; the statistic files by
# the writer threads),
# against the same split in pandas and against cp -r of the files produced. Ours and cp are timed
# best of three, each pass into folders of its own (a pass right after deleting many files is
# slowed by the file system, whoever runs it); then one more pass of ours over existing files, the
# steady state of a user's runs. Pandas runs once (it is slow). COMPOSITES and YEARS scale it.
# The figures move with the state of the file system and the load of the machine: compare the
# ratios, and run it on a quiet machine.
stat_files_section() {
  local composites=${COMPOSITES:-300} years=${YEARS:-10} work
  work=$(mktemp -d)
  trap 'rm -rf "$work"' RETURN
  "$bin/stat_files_bench" generate "$work/install" "$composites" "$years"
  sync

  # Ours and cp take turns, so both meet the file system in the same state: every pass adds
  # 43,000 files, and creating files gets slower as a file system fills.
  : >"$work/ours"
  : >"$work/cp"
  local produced=""
  for pass in 1 2 3; do
    /usr/bin/time -f "%e %M" -o "$work/t" \
      "$bin/stat_files_bench" split "$work/install" "out$pass" >"$work/out"
    cat "$work/t" >>"$work/ours"
    [ -n "$produced" ] || produced=$(find "$work/install/out1" -mindepth 1 -maxdepth 1 -type d)
    mkdir "$work/copy$pass"
    # shellcheck disable=SC2086
    /usr/bin/time -f "%e" -o "$work/t" cp -r $produced "$work/copy$pass/"
    cat "$work/t" >>"$work/cp"
  done
  local ours_s ours_kb replace_s cp_s files mib
  read -r ours_s ours_kb < <(sort -n "$work/ours" | head -1)
  cp_s=$(sort -n "$work/cp" | head -1)
  sed 's/^/  ours, one pass: /' "$work/out"
  /usr/bin/time -f "%e" -o "$work/t" "$bin/stat_files_bench" split "$work/install" out3 >/dev/null
  replace_s=$(cat "$work/t")
  files=$(find "$work/copy1" -type f | wc -l)
  mib=$(du -sm "$work/copy1" | cut -f1)

  /usr/bin/time -f "%e" -o "$work/t" \
    "$python" "$here/stat_split_pandas.py" "$work/install" "$work/pandas"
  local pandas_s
  pandas_s=$(cat "$work/t")

  echo "statistic and price files: $composites composites x $years years x 4 periods," \
       "$files files, $mib MiB written"
  awk -v o="$ours_s" -v r="$replace_s" -v c="$cp_s" -v p="$pandas_s" -v kb="$ours_kb" 'BEGIN {
    printf "  ours %.2f s (over existing files %.2f s), pandas %.2f s, cp -r %.2f s\n", o, r, p, c;
    printf "  pandas / ours %.1fx, ours / cp %.2fx\n", p / o, o / c;
    printf "  peak memory %.1f MiB\n", kb / 1024 }'
}
# --- Runs at scale and list check ----------------------------------------------------------------
# DELAY (ms, default 20) is how late the demo service answers each request, a stand-in for a real
# network; SIZES the numbers of composites the scaling section tries.
download_section() {
  echo "runs against the demo service:"
  BUILD="$build" bash "$here/download_bench.sh" "${COMPOSITES:-300}" "${YEARS:-10}" \
    "${DELAY:-20}" | sed 's/^/  /'
}
scaling_section() {
  # shellcheck disable=SC2086
  BUILD="$build" bash "$here/scaling_bench.sh" "${YEARS:-10}" "${DELAY:-20}" \
    ${SIZES:-100 300 1000} | sed 's/^/  /'
}
https_section() {
  BUILD="$build" bash "$here/https_bench.sh" "${COMPOSITES:-300}" "${YEARS:-10}" "${DELAY:-20}"
}
check_lists_section() {
  echo "list check against a new master file:"
  "$bin/check_lists_bench" | sed 's/^/  /'
}

# --- MetaStock converter -------------------------------------------------------------------------
metastock_section() {
  BUILD="$build" bash "$here/metastock_bench.sh" "${COMPOSITES:-300}" "${YEARS:-10}"
}

# --- Chart page and indicator table ---------------------------------------------------------------
# Ten years of daily bars (BARS, default 2600): the `indicators` table, the chart's price and three
# indicator panes drawn after the file is read, one pane switched. Offscreen, best of ten.
chart_section() {
  echo "chart and indicators:"
  "$bin/chart_bench" "${BARS:-2600}" 2>/dev/null | sed 's/^/  /'
}

sections=${BENCH_SECTIONS:-"check_lists download https scaling stat_files metastock chart"}
for section in $sections; do
  "${section}_section"
done
