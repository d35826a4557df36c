#!/usr/bin/env bash
# The part of scripts/bench.sh that compares whole pictures.
#   bench/pictures/run.sh [ROUNDS]      writes docs/pictures.md and docs/pictures.csv
set -euo pipefail
cd "$(dirname "$0")/../.."
scripts/deps.sh build bench tools demo brain pictures
build=build/bench
mkdir -p "$build"
if ! {
  cmake --preset bench -DZOX_BENCH_PICTURES=ON -DZOX_BUILD_TOOLS=ON &&
    cmake --build "$build" --target bench_pictures bench_vtk_mip zox-mip -j2
} >"$build/build.log" 2>&1; then
  tail -n 30 "$build/build.log" >&2
  exit 1
fi
/usr/bin/python3 bench/pictures/pictures.py "$build" "${1:-5}" 'scripts/bench.sh --pictures' --docs docs
