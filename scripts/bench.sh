#!/usr/bin/env bash
# Builds the benchmarks, runs them and prints one table.
#   scripts/bench.sh                    every case (some minutes); writes docs/performance.md and its plot
#   scripts/bench.sh --quick            the cases of the summary, under two minutes; writes nothing into docs/
#   scripts/bench.sh --quick --write    the same, written
#   scripts/bench.sh --filter general_divergent_trilinear --view oblique
#                                       the rows of some cases only; see bench_ratio --help
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/deps.sh build bench
command="scripts/bench.sh${*:+ $*}"
build=build/bench

mkdir -p "$build"
if ! { cmake --preset bench && cmake --build "$build" --target bench_ratio zox_volume -j2; } >"$build/build.log" 2>&1; then
  cat "$build/build.log" >&2
  exit 1
fi

write=(--docs docs)
run=()
case "$command" in
  'scripts/bench.sh') ;;
  'scripts/bench.sh --quick') run=(--quick) write=() ;;
  'scripts/bench.sh --quick --write') run=(--quick) ;;
  *) exec "$build/bench_ratio" "$@" ;;
esac

"$build/bench_ratio" "${run[@]}" --json "$build/results.json" >"$build/rows.txt"
compiler=$(sed -n 's/^CMAKE_CXX_COMPILER:[A-Z]*=//p' "$build/CMakeCache.txt")
python3 bench/report.py "$build/results.json" --compiler "$compiler" --library "$build/libzox_volume.so" \
  --command "$command" "${write[@]}"
