#!/usr/bin/env bash
# Builds and tests everything: g++ release with all programs, Python and documents, address and undefined-behaviour
# sanitizers, clang, source checks, emulated older processors, valgrind, a short fuzz. One line per
# stage; the logs stand in build/logs. What takes longer, and programs with the optimisation that they are
# delivered with, are tested by scripts/test-long.sh.
set -euo pipefail
# shellcheck source=scripts/usage.sh
. "$(dirname "$0")/usage.sh"
take_no_arguments "$@"
cd "$(dirname "$0")/.."
. scripts/stages.sh

# The suite once more on emulated processors: a kernel that is reached there by mistake is an illegal
# instruction. The sets that each must skip, and those that it must run, are known.
# The longest test stays out: it counts with the same code everywhere.
emulate() {  # processor, sets that it lacks
  local processor=$1 output=build/logs/emulated-$1.txt program set lacks
  shift
  for program in zox_unit_tests zox_test_differential; do
    ZOX_TEST_SCALE=0.1 qemu-x86_64 -cpu "$processor" "build/test/$program" --gtest_filter='-*HasNoLimit*' >"$output"
    grep '^\[  PASSED' "$output"
  done
  for set in avx2 avx512; do
    lacks=no
    if grep -q "lacks $set" "$output"; then lacks=yes; fi
    if [[ " $* " = *" $set "* ]]; then [ $lacks = yes ]; else [ $lacks = no ]; fi ||
      { echo "the emulated $processor did not treat $set as it must" && return 1; }
  done
}

emulate_both() {
  local without_avx with_avx2
  emulate Opteron_G1 avx2 avx512 &
  without_avx=$!
  emulate Haswell avx512 &
  with_avx2=$!
  wait $without_avx
  wait $with_avx2
}

step "packages" scripts/deps.sh build tools viewer mpi python docs test check fuzz
# Whatever has a place in the tree is demanded: nothing is left out unseen.
stage "release" build_and_test whole
# Both sanitizers in one build without optimisation: a fifth of the compile time of two at -O2, and
# no access is optimised away before it is checked.
ZOX_TEST_SCALE=0.1 stage "sanitizers" build_and_test sanitize
# The random batches were all walked by the first stage.
ZOX_TEST_SCALE=0.3 stage "clang" build_and_test clang
stage "source checks" scripts/check.sh
stage "narrower processors" emulate_both
stage "valgrind" scripts/valgrind.sh build/test
# The operations alone, and the same walk each time: what a change breaks, not what luck finds. The
# renderer, whose format readers may end the process on damaged files, and longer free walks:
# scripts/fuzz.sh.
stage "fuzz" env ZOX_FUZZ_SEED=1 scripts/fuzz.sh 10 operations
summary
