# shellcheck shell=bash
# Sourced by the scripts that run stage after stage: one line each, the log in build/logs, an end at the
# first that fails, and a sum at the end.
mkdir -p build/logs
export CTEST_OUTPUT_ON_FAILURE=1 CMAKE_BUILD_PARALLEL_LEVEL=${CMAKE_BUILD_PARALLEL_LEVEL:-$(nproc)}
passed=0
failed=0
skipped=0

# Counts what ctest and GoogleTest report in a log; a stage without either counts as one test.
count() {  # log status
  local tests lost left
  read -r tests lost left < <(awk '
    /% tests passed, .* tests failed out of/ { lost += $4; tests += $NF }
    /Test.*\*\*\*Skipped/ { left++ }
    /^\[  PASSED  \]/ { inner += $4 }
    END { print (tests ? tests : inner) + 0, lost + 0, left + 0 }' "$1")
  if [ "$tests" = 0 ]; then tests=1; fi
  if [ "$2" != 0 ] && [ "$lost" = 0 ]; then lost=1; fi
  failed=$((failed + lost))
  skipped=$((skipped + left))
  passed=$((passed + tests - lost - left))
}

stage() {  # name command...
  local name=$1 log status=0 begin=$SECONDS
  shift
  log=build/logs/${name// /-}.log
  set +e
  (set -e; "$@") >"$log" 2>&1 </dev/null
  status=$?
  set -e
  count "$log" $status
  if [ $status != 0 ]; then
    echo "FAILED $name ($((SECONDS - begin)) s), the end of $log:"
    tail -n 40 "$log"
    summary
    exit 1
  fi
  printf 'ok     %-28s %4d s\n' "$name" $((SECONDS - begin))
}

summary() {
  local rest=""
  [ $skipped = 0 ] || rest=", $skipped skipped"
  echo "$passed passed, $failed failed$rest"
}

build_and_test() {  # preset directory cmake-options...
  local preset=$1 directory=$2
  shift 2
  cmake --preset "$preset" -B "$directory" "$@"
  cmake --build "$directory"
  ctest --test-dir "$directory" --parallel "$CMAKE_BUILD_PARALLEL_LEVEL"
}
