#!/usr/bin/env bash
# Random work on all cores, checked against the plain reference, for as long as asked. Every round
# starts at a seed that no earlier round used; a failure prints its seed and how to see it again.
# Usage: soak.sh MINUTES
set -euo pipefail
# shellcheck source=scripts/usage.sh
. "$(dirname "$0")/usage.sh"
help_if_asked "$@"
[[ ${1-} != -* ]] || refuse "$1"
cd "$(dirname "$0")/.."
if [[ ! ${1-} =~ ^[0-9]+$ ]] || [ "$1" = 0 ]; then
  echo "Usage: soak.sh MINUTES" >&2
  exit 2
fi
scripts/deps.sh build test

directory=build/soak
logs=$(mktemp -d)
trap 'rm -rf "$logs"' EXIT
build() {
  cmake -S . -B $directory -DCMAKE_BUILD_TYPE=Release -DZOX_BUILD_TESTS=ON -DZOX_BUILD_TOOLS=OFF \
    -DZOX_BUILD_CHECKER=OFF || return
  cmake --build $directory --parallel "$(nproc)" --target zox_test_differential
}
if ! build >"$logs/build" 2>&1; then
  tail -n 40 "$logs/build" >&2
  exit 1
fi
program=$(find $directory -name zox_test_differential -type f -executable -print -quit)
[ -n "$program" ] || { echo "soak.sh: zox_test_differential was not built" >&2; exit 1; }

end=$((SECONDS + $1 * 60))
# Rounds of 1000 seeds each; the clock keeps one soak's seeds apart from the next one's.
first=$(($(date +%s) * 1000000))
work() {  # core
  local core=$1 round=0 seed
  while [ $SECONDS -lt $end ] && [ ! -e "$logs/failed" ]; do
    seed=$((first + (round * $(nproc) + core) * 1000))
    if ! ZOX_TEST_SEED=$seed ZOX_TEST_COUNT=1000 "$program" --gtest_brief=1 --gtest_filter='*-*Threads*:*SliceOrder*' \
      >"$logs/$core" 2>&1; then
      grep -v SKIPPED "$logs/$core" | tail -n 40 >&2
      echo "soak.sh: failed; again with ZOX_TEST_SEED=<the seed above> $program" >&2
      touch "$logs/failed"
      return
    fi
    round=$((round + 1))
  done
  echo "$round" >"$logs/rounds-$core"
}
for ((core = 0; core < $(nproc); core++)); do work "$core" & done
wait
[ ! -e "$logs/failed" ] || exit 1
rounds=$(cat "$logs"/rounds-* | awk '{ n += $1 } END { print n }')
echo "soak: $rounds rounds of 1000 seeds for every operation and instruction set, no difference"
