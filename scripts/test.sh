#!/usr/bin/env bash
# Builds and tests everything: g++ release with all programs, Python and documents, address and undefined-behaviour
# sanitizers, clang, source checks, emulated older processors, valgrind, a short fuzz. One line per
# stage; the logs stand in build/logs. Some twenty minutes on two cores.
set -euo pipefail
# shellcheck source=scripts/usage.sh
. "$(dirname "$0")/usage.sh"
take_no_arguments "$@"
cd "$(dirname "$0")/.."
. scripts/stages.sh

# The suite once more on an emulated processor: a kernel that is reached there by mistake is an
# illegal instruction. The sets that it must skip, and those that it must run, are known.
emulate() {  # processor, sets that it lacks
  local processor=$1 output=build/logs/emulated-$1.txt program set lacks
  shift
  for program in zox_unit_tests zox_test_differential; do
    ZOX_TEST_SCALE=0.1 qemu-x86_64 -cpu "$processor" "build/test/$program" >"$output"
    grep '^\[  PASSED' "$output"
  done
  for set in avx2 avx512; do
    lacks=no
    if grep -q "lacks $set" "$output"; then lacks=yes; fi
    if [[ " $* " = *" $set "* ]]; then [ $lacks = yes ]; else [ $lacks = no ]; fi ||
      { echo "the emulated $processor did not treat $set as it must" && return 1; }
  done
}

step "packages" scripts/deps.sh build tools viewer mpi python docs test check fuzz
# Whatever has a place in the tree is demanded: nothing is left out unseen.
stage "release" build_and_test whole build/test
# Both sanitizers in one build without optimisation: a fifth of the compile time of two at -O2, and
# no access is optimised away before it is checked.
ZOX_TEST_SCALE=0.2 stage "sanitizers" build_and_test sanitize build/sanitize
stage "clang" build_and_test clang build/clang
stage "source checks" scripts/check.sh
stage "processor without AVX" emulate Opteron_G1 avx2 avx512
stage "processor with AVX2 only" emulate Haswell avx512
stage "valgrind" scripts/valgrind.sh build/test
# The operations alone, and the same walk each time: what a change breaks, not what luck finds. The
# renderer, whose format readers may end the process on damaged files, and longer free walks:
# scripts/fuzz.sh.
stage "fuzz" env ZOX_FUZZ_SEED=1 scripts/fuzz.sh 20 operations
summary
