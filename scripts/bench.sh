#!/usr/bin/env bash
# Builds the benchmarks, runs them and prints one table.
#   scripts/bench.sh                    every case (some minutes); writes docs/performance.md and its plot
#   scripts/bench.sh --quick            the cases of the summary, under two minutes; writes nothing into docs/
#   scripts/bench.sh --quick --write    the same, written
#   scripts/bench.sh --peers            other libraries beside this one (installs ITK and SciPy); docs/peers.md
#   scripts/bench.sh --pictures         whole pictures beside VTK, ITK and SciPy (installs them); docs/pictures.md
#   scripts/bench.sh --filter general_divergent_trilinear --view oblique
#                                       the rows of some cases only; see bench_ratio --help
set -euo pipefail
# shellcheck source=scripts/usage.sh
. "$(dirname "$0")/usage.sh"
help_if_asked "$@"
cd "$(dirname "$0")/.."
# Options that are not this script's own are those of bench_ratio.
for argument in "$@"; do
  case $argument in
    --quick | --write | --peers | --pictures) ;;
    --*) grep -qF "\"$argument\"" bench/bench_ratio.cpp || refuse "$argument" ;;
  esac
done
if [[ "$*" == --pictures ]]; then
  exec bench/pictures/run.sh
fi
scripts/deps.sh build bench
command="scripts/bench.sh${*:+ $*}"
build=build/bench

build() {  # targets, then options for cmake
  local targets=$1
  shift
  mkdir -p "$build"
  # shellcheck disable=SC2086  # several targets
  if ! { cmake --preset bench "$@" && cmake --build "$build" --target $targets -j2; } >"$build/build.log" 2>&1
  then
    cat "$build/build.log" >&2
    exit 1
  fi
}

compare_with_peers() {
  scripts/deps.sh tools peers
  build bench_peers -DZOX_BENCH_PEERS=ON
  {
    cat bench/peers.md.in
    "$build/bench_peers"
    /usr/bin/python3 bench/peers.py  # the one that sees the Debian package
    printf '\n%s\n' "$(grep -m1 '^model name' /proc/cpuinfo | sed 's/.*: //'), $(date -u +%F), \`$command\`"
  } >"$build/peers.md"
  mv "$build/peers.md" docs/peers.md
  grep '^|' docs/peers.md
}

if [[ $command == 'scripts/bench.sh --peers' ]]; then
  compare_with_peers
  exit
fi

build 'bench_ratio zox_volume'
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
