#!/usr/bin/env bash
# Fuzzes the operations against the reference, then the renderer's options and files, for so many
# seconds each, starting from the seeds in the tree. Prints nothing when all is well; otherwise what
# was found, and the input is kept in build/fuzz/found.
# ZOX_FUZZ_SEED repeats a walk; without it every run takes another.
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

run cmake --preset fuzz
for name in $only; do
  run cmake --build build/fuzz --target "fuzz_$name" -j "$(nproc)"
  # New inputs are collected aside from the seeds, and serve the next run, but not a walk to be repeated.
  corpus=build/fuzz/corpus-$name
  if [ -n "${ZOX_FUZZ_SEED:-}" ]; then
    corpus=build/fuzz/walk-$name
    rm -rf "$corpus"
  fi
  mkdir -p "$corpus"
  run "build/fuzz/fuzz_$name" -max_total_time="$seconds" -seed="${ZOX_FUZZ_SEED:-0}" -max_len=4096 -timeout=60 \
    -rss_limit_mb=4096 \
    -artifact_prefix="build/fuzz/found/$name-" "$corpus" "fuzz/seeds/$name"
done
