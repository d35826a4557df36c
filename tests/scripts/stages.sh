#!/usr/bin/env bash
# A failing stage names the failed test and its message first and ends where its first command fails, a
# skipped test is named in the sum, and a step is no test.
# Usage: stages.sh SOURCE_DIRECTORY
set -euo pipefail
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
cd "$scratch"
cat >ctest.log <<'LOG'
1/4 Test #1: tool.Output.Good .................   Passed    0.02 sec
2/4 Test #2: tool.Output.DrawsABar ............***Skipped   0.02 sec
[  SKIPPED ] Output.DrawsABar (0 ms)
    Start 3: tool.Files/BadInput.Refuses/cut_file
3/4 Test #3: tool.Files/BadInput.Refuses/cut_file ...***Failed    0.02 sec
Running main() from gtest_main.cc
[ RUN      ] Files/BadInput.Refuses/cut_file
bad_input_test.cpp:30: Failure
Expected: refused
[  FAILED  ] Files/BadInput.Refuses/cut_file, where GetParam() = 24-byte object <01-02> (0 ms)
[  FAILED  ] 1 test, listed below:
 1 FAILED TEST
4/4 Test #4: abi.symbols ......................***Failed    0.02 sec
zox_Extra is exported

50% tests passed, 2 tests failed out of 4
LOG
cat >expected <<'EXPECTED'
ok     packages                        0 s
ok     one                             0 s
skip   root: needs root
FAILED two (0 s)
  tool.Files/BadInput.Refuses/cut_file
    bad_input_test.cpp:30: Failure
    Expected: refused
  abi.symbols
    zox_Extra is exported
The whole log is build/logs/two.log.
2 passed, 2 failed, 2 skipped: root tool.Output.DrawsABar
EXPECTED
cat >run.sh <<RUN
set -euo pipefail
. $1/scripts/stages.sh
step packages true
stage one true
stage root sh -c 'echo needs root; exit 77'
stage two sh -c 'cat ctest.log; exit 8'
stage three true
RUN
if bash run.sh >printed; then
  echo "a failed stage does not end the script"
  exit 1
fi
sed -i 's/([0-9]* s)/(0 s)/; s/ [0-9]* s$/ 0 s/' printed
diff -u expected printed

# A build that fails is the end of its stage: tests of an older build say nothing.
cat >build.sh <<RUN
set -euo pipefail
. $1/scripts/stages.sh
build_then_test() {
  false
  touch tested
}
stage build build_then_test
RUN
if bash build.sh >printed || [ -e tested ]; then
  echo "a stage goes on after a command that failed"
  exit 1
fi
