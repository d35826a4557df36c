#!/usr/bin/env bash
# Lines and branches of src/ that the tests reach, all instruction sets of this machine together, and the
# choice between the sets on emulated narrower processors. Prints the table and what was missed;
# build/coverage/index.html shows it line by line.
set -euo pipefail
# shellcheck source=scripts/usage.sh
. "$(dirname "$0")/usage.sh"
take_no_arguments "$@"
cd "$(dirname "$0")/.."
scripts/deps.sh build test coverage
build=build/coverage
mkdir -p $build
log=$build/log
export ZOX_TEST_SCALE=${ZOX_TEST_SCALE:-0.3}
# Threads run the kernels side by side: their counts must not be lost.
flags="--coverage -fprofile-update=atomic"

choose_narrower_sets() {
  local processor
  for processor in Opteron_G1 Haswell; do
    qemu-x86_64 -cpu $processor $build/zox_unit_tests --gtest_brief=1 --gtest_filter='*Frame*:*Maximum*' || return
  done
}

# Unoptimised: at -O2 a branch of the source no longer is a branch of the code.
if ! {
  cmake -S . -B $build -DCMAKE_BUILD_TYPE=Debug -DZOX_BUILD_TESTS=ON \
    -DZOX_BUILD_TOOLS=OFF -DZOX_BUILD_PYTHON=OFF -DZOX_BUILD_DOCS=OFF \
    -DZOX_BUILD_CHECKER=OFF -DCMAKE_C_FLAGS="$flags" -DCMAKE_CXX_FLAGS="$flags" &&
    cmake --build $build -j2 && find $build -name '*.gcda' -delete &&
    ctest --test-dir $build -j2 --output-on-failure &&
    choose_narrower_sets
} >"$log" 2>&1; then
  tail -n 40 "$log" >&2
  exit 1
fi
gcovr --root . --filter src/ --exclude-throw-branches --json $build/counts.json $build
report=(gcovr --root . --add-tracefile "$build/counts.json")
"${report[@]}" --html-details $build/index.html
"${report[@]}" --txt
"${report[@]}" --txt --branches
