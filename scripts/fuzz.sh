#!/usr/bin/env bash
# Fuzzes the operations against the reference, then the renderer's options and files, for so many
# seconds each on every core, starting from the seeds in the tree. Prints nothing when all is well;
# otherwise what was found, and the input is kept in build/fuzz/found.
# ZOX_FUZZ_SEED repeats the walks, that number for the first core and the next ones for the others; without
# it every run takes others.
#   scripts/fuzz.sh SECONDS [operations|renderer]
set -euo pipefail
# shellcheck source=scripts/usage.sh
. "$(dirname "$0")/usage.sh"
help_if_asked "$@"
[[ ${1-} != -* ]] || refuse "$1"
cd "$(dirname "$0")/.."
seconds=${1:-}
only=${2:-operations renderer}
if [[ ! $seconds =~ ^[1-9][0-9]*$ ]]; then
  echo "usage: scripts/fuzz.sh SECONDS [operations|renderer]" >&2
  exit 2
fi
scripts/deps.sh build tools fuzz
mkdir -p build/fuzz/found
log=build/fuzz/log

run() {  # command...: quiet, or its whole output and the end
  "$@" >"$log" 2>&1 </dev/null || { cat "$log"; exit 1; }
}

walk() {  # target core
  # New inputs are collected aside from the seeds, and serve the next run, but not a walk to be repeated.
  local corpus=build/fuzz/corpus-$1 seed=0
  if [ -n "${ZOX_FUZZ_SEED:-}" ]; then
    corpus=build/fuzz/walk-$1-$2
    rm -rf "$corpus"
    seed=$((ZOX_FUZZ_SEED + $2))
  fi
  mkdir -p "$corpus"
  "build/fuzz/fuzz_$1" -max_total_time="$seconds" -seed="$seed" -max_len=4096 -timeout=60 -rss_limit_mb=4096 \
    -artifact_prefix="build/fuzz/found/$1-" "$corpus" "fuzz/seeds/$1" >"$log-$2" 2>&1 </dev/null
}

run cmake --preset fuzz
for name in $only; do
  run cmake --build build/fuzz --target "fuzz_$name" -j "$(nproc)"
  walks=()
  for ((core = 0; core < $(nproc); ++core)); do
    walk "$name" "$core" &
    walks+=($!)
  done
  found=
  for core in "${!walks[@]}"; do
    wait "${walks[core]}" || found=$core
  done
  if [ -n "$found" ]; then
    cp "$log-$found" "$log"
    cat "$log"
    exit 1
  fi
done
