#!/usr/bin/env bash
# What test.sh has no time for: many threads under the thread sanitizer, counts of 2^31 - 1, a minute of
# random work on all cores, a minute of each fuzz target, coverage, zox-view's page in a browser, the Debian
# packages, and a walk through README and the packages in bare Debian roots. One line per stage; the logs
# stand in build/logs. About a quarter of an hour on
# two cores. Every change of a rule takes a quarter of an hour more: scripts/mutate.sh.
set -euo pipefail
# shellcheck source=scripts/usage.sh
. "$(dirname "$0")/usage.sh"
take_no_arguments "$@"
cd "$(dirname "$0")/.."
. scripts/stages.sh

many_threads() {
  local flags="-fsanitize=thread" run=()
  cmake --preset debug -B build/tsan -DZOX_BUILD_TOOLS=OFF -DZOX_BUILD_PYTHON=OFF -DZOX_BUILD_CHECKER=OFF \
    -DCMAKE_C_FLAGS="$flags" -DCMAKE_CXX_FLAGS="$flags" -DCMAKE_CXX_FLAGS_DEBUG="-O1 -g1"
  cmake --build build/tsan --target zox_test_differential
  # The sanitizer cannot place its shadow where the system scatters mappings widely.
  if setarch -R true; then run=(setarch -R); fi
  "${run[@]}" build/tsan/zox_test_differential --gtest_filter='*Threads*'
}

largest_counts() {
  cmake --preset release -B build/long -DZOX_BUILD_TESTS=ON -DZOX_BUILD_TOOLS=OFF \
    -DZOX_BUILD_PYTHON=OFF -DZOX_BUILD_CHECKER=OFF
  cmake --build build/long --target zox_test_largest_counts
  build/long/zox_test_largest_counts --gtest_brief=1
}

fresh_walk() {
  if ! scripts/fuzz.sh 30; then
    echo "a new input in build/fuzz/found ends a fuzz target$(sed -n 's/^Base64: /, in base64: /p' build/fuzz/log | tail -n 1)"
    return 77
  fi
}

pages() {
  cmake --preset release -B build/long -DZOX_BUILD_TESTS=ON -DZOX_BUILD_TOOLS=ON -DZOX_BUILD_VIEWER=ON \
    -DZOX_BUILD_PYTHON=OFF -DZOX_BUILD_CHECKER=OFF
  cmake --build build/long --target zox-view zox-mip
  tests/view/browser.sh build/long build/long/screenshots
}

many_ranks() {
  cmake --preset release -B build/long -DZOX_BUILD_TESTS=ON -DZOX_BUILD_TOOLS=ON -DZOX_BUILD_VIEWER=ON \
    -DZOX_BUILD_MPI=ON -DZOX_BUILD_PYTHON=OFF -DZOX_BUILD_CHECKER=OFF
  cmake --build build/long --target zox-mip zox-mip-mpi zox-mpi-formula
  tests/mpi/same_picture.py build/long/zox-mip build/long/zox-mip-mpi build/long/zox-mpi-formula
}

step "packages" scripts/deps.sh build tools viewer mpi test view fuzz coverage
stage "many threads" many_threads
stage "largest counts" largest_counts
stage "soak" scripts/soak.sh 1
# The same walk each time: what a change breaks, not what luck finds.
stage "fuzz operations" env ZOX_FUZZ_SEED=1 scripts/fuzz.sh 60 operations
stage "fuzz renderer" env ZOX_FUZZ_SEED=1 scripts/fuzz.sh 60 renderer
# Another walk each time. What it finds is kept and told, but fails no build, which need not have caused it.
stage "fuzz anew" fresh_walk
stage "pages in a browser" pages
stage "many ranks" many_ranks
stage "coverage" scripts/coverage.sh
stage "Debian packages" scripts/packages.sh
stage "bare Debian" scripts/fresh-root.sh
summary
