#!/usr/bin/env bash
# Builds the benchmarks, runs them and prints one table.
#   scripts/bench.sh                    every case (three minutes on a quiet machine); writes docs/performance.md, .csv, .svg and performance-bounds.md
#   scripts/bench.sh --quick            the 256-cubes of the summary; writes nothing into docs/
#   scripts/bench.sh --before COMMIT --filter general_divergent --load cold
#                                       the kernels of that commit beside these; any options of bench_ratio
#   scripts/bench.sh --peers            other libraries beside this one (installs ITK and SciPy); docs/peers.md
#   scripts/bench.sh --bounds           kernels with their loads or their arithmetic left out; options of bench_bounds
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
    --quick | --peers | --before | --pictures | --bounds) ;;
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

# The kernels of another commit as objects of their own, their tables renamed.
compare_with_commit() {  # commit, then options of bench_ratio
  local old=$PWD/build/before set object
  rm -rf "$old"
  mkdir -p "$old/tree"
  git archive "$1" | tar -x -C "$old/tree"
  shift
  { cmake -S "$old/tree" -B "$old/build" -DCMAKE_BUILD_TYPE=Release -DZOX_BUILD_TOOLS=OFF \
      -DZOX_BUILD_CHECKER=OFF && cmake --build "$old/build" --target zox_volume_objects -j2; } >"$old/log" 2>&1 ||
    { cat "$old/log" >&2; exit 1; }
  for set in base avx2 avx512; do
    object=$(find "$old/build" -name "$set.cpp.o" -o -name "operations_$set.cpp.o")
    objcopy --redefine-sym "_ZN3zox${#set}${set}11kOperationsE=before_$set" "$object" "$old/$set.o"
  done
  build bench_ratio -DZOX_BENCH_BEFORE="$old"
  "$build/bench_ratio" --sets before_base,base,before_avx2,avx2,before_avx512,avx512 "$@"
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

if [ "${1:-}" = --bounds ]; then
  build bench_bounds -DZOX_BENCH_BEFORE=
  exec "$build/bench_bounds" "${@:2}"
fi

if [ "${1:-}" = --before ]; then
  compare_with_commit "${@:2}"
  exit
fi

build 'bench_ratio bench_bounds zox_volume' -DZOX_BENCH_BEFORE=
write=(--docs docs)
run=()
case "$command" in
  'scripts/bench.sh') ;;
  'scripts/bench.sh --quick') run=(--quick) write=() ;;
  *) exec "$build/bench_ratio" "$@" ;;
esac

if [ ${#write[@]} -gt 0 ]; then
  { cat bench/performance-bounds.md.in && "$build/bench_bounds"; } >"$build/bounds.md"
  mv "$build/bounds.md" docs/performance-bounds.md
fi
"$build/bench_ratio" "${run[@]}" --json "$build/results.json" >"$build/rows.txt"
compiler=$(sed -n 's/^CMAKE_CXX_COMPILER:[A-Z]*=//p' "$build/CMakeCache.txt")
python3 bench/report.py "$build/results.json" --compiler "$compiler" --library "$build/libzox_volume.so" \
  --command "$command" "${write[@]}"
