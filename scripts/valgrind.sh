#!/usr/bin/env bash
# Runs a reduced set of the random tests under valgrind's memcheck: no undefined byte reaches a
# result, no access leaves a buffer. Valgrind offers its programs AVX2 but no AVX-512, so the base and
# avx2 kernels run and the exported functions pick avx2.
# Usage: valgrind.sh [BUILD_DIRECTORY]     a tree with tests that is built already; else builds its own
set -euo pipefail
# shellcheck source=scripts/usage.sh
. "$(dirname "$0")/usage.sh"
help_if_asked "$@"
[[ ${1-} != -* ]] || refuse "$1"
cd "$(dirname "$0")/.."
scripts/deps.sh build test

directory=${1:-build/valgrind}
logs=$(mktemp -d)
trap 'rm -rf "$logs"' EXIT
# With debug information, and with the kernels optimised as they are delivered.
build() {
  cmake -S . -B "$directory" -DCMAKE_BUILD_TYPE=RelWithDebInfo -DZOX_BUILD_TESTS=ON \
    -DZOX_BUILD_TOOLS=OFF -DZOX_BUILD_CHECKER=OFF || return
  cmake --build "$directory" --parallel "${CMAKE_BUILD_PARALLEL_LEVEL:-$(nproc)}" \
    --target zox_test_differential zox_test_fault_system
}
if [ $# = 0 ] && ! build >"$logs/build" 2>&1; then
  tail -n 40 "$logs/build" >&2
  exit 1
fi

check() {  # program gtest-filter
  local program log=$logs/$1
  program=$(find "$directory" -name "$1" -type f -executable -print -quit)
  [ -n "$program" ] || { echo "valgrind.sh: $1 was not built" >&2; exit 1; }
  if ! ZOX_TEST_SCALE=${ZOX_TEST_SCALE:-0.02} valgrind --quiet --error-exitcode=99 --leak-check=full \
    --errors-for-leak-kinds=definite --max-stackframe=4000000 \
    "$program" --gtest_brief=1 --gtest_filter="$2" >"$log" 2>&1; then
    grep -v SKIPPED "$log" | tail -n 60 >&2
    exit 1
  fi
}
# Slices on protected pages are read on purpose, and every value of 16 bits is a matter of results only. Valgrind
# raises no floating-point exceptions and runs one thread at a time: what is left of these tests is RayCast.
check zox_test_differential '*-*SliceOrder*:*EveryValue*:*Exceptions*:*Threads*' &
differential=$!
check zox_test_fault_system '*' &
wait $!
wait $differential
