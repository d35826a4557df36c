#!/usr/bin/env bash
# What test.sh has no time for: the programs compiled as they are delivered, counts of 2^31 - 1, the project as a
# part of others and as a wheel, many threads under the thread sanitizer, a minute of random work on all cores,
# a minute of each fuzz target and a walk of its own, DICOM series of a head, zox-view's page in browsers, many
# ranks, a volume of 17 GB, coverage, the Debian packages, and a walk through README and the packages in bare
# Debian roots. Most of an hour on two cores. One line per stage; the logs stand in build/logs. Every change of a
# rule takes a quarter of an hour more: scripts/mutate.sh.
set -euo pipefail
# shellcheck source=scripts/usage.sh
. "$(dirname "$0")/usage.sh"
take_no_arguments "$@"
cd "$(dirname "$0")/.."
. scripts/stages.sh

many_threads() {
  local run=()
  cmake --preset tsan
  cmake --build build/tsan --target zox_test_differential zox_test_render zox_render_unit_tests
  # The sanitizer cannot place its shadow where the system scatters mappings widely.
  if setarch -R true; then run=(setarch -R); fi
  "${run[@]}" build/tsan/zox_test_differential --gtest_filter='*Threads*'
  "${run[@]}" build/tsan/zox_test_render --gtest_filter='*Threads*:*Cancel*:*Progress*'
  "${run[@]}" build/tsan/zox_render_unit_tests --gtest_filter='*Threads*'
}

build() {
  cmake --preset delivered
  cmake --build build/delivered
  cmake --build build/delivered --target zox_test_largest_counts
}

# The CT of a skull as series, shuffled, compressed, tilted and gapped, against the plain volume. The pictures
# are left in build/delivered/series.
series_of_a_head() {
  scripts/demo-scans.sh build/delivered/scans
  if [ ! -e build/delivered/scans/skull.raw ]; then
    echo "the package invesalius-examples is missing"
    return 77
  fi
  /usr/bin/python3 -B tests/dicom/same_picture.py build/delivered/zox-mip --raw build/delivered/scans/skull.raw --size 256,256,108 \
    --spacing 0.957,0.957,1.5 --flip-rows --keep build/delivered/series
}

fresh_walk() {
  if ! scripts/fuzz.sh 30; then
    echo "a new input in build/fuzz/found ends a fuzz target$(sed -n 's/^Base64: /, in base64: /p' build/fuzz/log | tail -n 1)"
    return 77
  fi
}

many_ranks() {
  scripts/demo-scans.sh build/delivered/scans
  tests/mpi/same_picture_on_ranks.py build/delivered/zox-mip build/delivered/zox-mip-mpi build/delivered/zox-mpi-formula \
    build/delivered/scans/skull.mhd build/delivered/scans/ch2better.nii.gz
}

# 17 thousand million bytes of voxels, of which each rank makes one part at a time: 0.6 GB.
largest_volume() {
  env OMPI_ALLOW_RUN_AS_ROOT=1 OMPI_ALLOW_RUN_AS_ROOT_CONFIRM=1 \
    mpirun --oversubscribe -n 3 build/delivered/zox-mpi-formula 4096 4096 512
}

step "packages" scripts/deps.sh build tools viewer mpi python docs test view fuzz demo brain coverage
step "build" build
stage "largest counts" build/delivered/zox_test_largest_counts --gtest_brief=1
# Three times the random batches, examples and pixels that test.sh has time for.
ZOX_TEST_SCALE=3 stage "tests, longer ones too" ctest --preset delivered --parallel "$CMAKE_BUILD_PARALLEL_LEVEL"
stage "many threads" many_threads
stage "soak" scripts/soak.sh 1
# The same walk each time: what a change breaks, not what luck finds.
stage "fuzz operations" env ZOX_FUZZ_SEED=1 scripts/fuzz.sh 60 operations
stage "fuzz renderer" env ZOX_FUZZ_SEED=1 scripts/fuzz.sh 60 renderer
# Another walk each time. What it finds is kept and told, but fails no build, which need not have caused it.
stage "fuzz anew" fresh_walk
stage "series of a head" series_of_a_head
stage "pages in a browser" tests/view/browser.sh build/delivered build/delivered/screenshots
stage "many ranks" many_ranks
stage "largest volume" largest_volume
stage "coverage" scripts/coverage.sh
stage "Debian packages" scripts/packages.sh
stage "bare Debian" scripts/fresh-root.sh
summary
