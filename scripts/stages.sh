# shellcheck shell=bash
# Sourced by the scripts that run stage after stage: one line each, with the time that has gone by while it
# runs on a terminal; the log in build/logs; an end at the first that fails, and a sum at the end.
mkdir -p build/logs
export CTEST_OUTPUT_ON_FAILURE=1 CMAKE_BUILD_PARALLEL_LEVEL=${CMAKE_BUILD_PARALLEL_LEVEL:-$(nproc)}
passed=0
failed=0
skipped=()
ticker=

# Counts what ctest and GoogleTest report in a log; a stage without either counts as one test.
count() {  # log status
  local tests lost left
  read -r tests lost < <(awk '
    /% tests passed, .* tests failed out of/ { lost += $4; tests += $NF }
    /^\[  PASSED  \]/ { inner += $4 }
    END { print (tests ? tests : inner) + 0, lost + 0 }' "$1")
  mapfile -t left < <(sed -n 's/.*Test *#[0-9]*: \(.*[^ .]\) *\.*\*\*\*Skipped.*/\1/p' "$1")
  if [ "$tests" = 0 ]; then tests=1; fi
  if [ "$2" != 0 ] && [ "$lost" = 0 ]; then lost=1; fi
  failed=$((failed + lost))
  skipped+=("${left[@]}")
  passed=$((passed + tests - lost - ${#left[@]}))
}

# What is wrong, out of a log: each failed test with its own message, else the errors of a build.
failures() {  # log
  awk '
    function show(name) {
      if (shown++ < 5) printf "  %s\n%s", name, message
      message = ""
      lines = 0
      told = 1
    }
    function end_test() {
      if (test != "" && !told) show(test)
      test = message = ""
      told = lines = 0
    }
    # By ctest: a test that failed, then its output till the next test.
    /Test +#[0-9]+: / {
      end_test()
      if ($0 ~ /\*\*\*/ && $0 !~ /\*\*\*Skipped/) {
        test = $0
        sub(/.*Test +#[0-9]+: /, "", test)
        sub(/ *\.*\*\*\*.*/, "", test)
      }
      next
    }
    /% tests passed/ { end_test() }
    # By GoogleTest: the message comes before the name, which comes once more at the end.
    /^\[  FAILED  \] [^ ]*\.[^ ]/ {
      name = $4
      sub(/,$/, "", name)
      if (message != "") show(index(test, name) || test == "" ? (test != "" ? test : name) : test ": " name)
      next
    }
    /^ +Start +[0-9]+:|^\[|^Running main|^Note: |FAILED TEST|: Skipped$/ { next }
    test != "" || /: Failure$/ || lines > 0 { if ($0 != "" && lines++ < 12) message = message "    " $0 "\n" }
    END {
      end_test()
      if (shown > 5) print "  and " shown - 5 " more"
      exit !shown
    }
  ' "$1" || grep -m 5 -A 6 -iE '(^|[ :])(fatal )?error[: ]|CMake Error|undefined reference' "$1" || tail -n 30 "$1"
}

start_ticker() {  # name begin
  [ -t 1 ] || return 0
  (while true; do
    printf '\r       %-28s %4d s' "$1" $((SECONDS - $2))
    sleep 1
  done) &
  ticker=$!
}

stop_ticker() {
  [ -n "$ticker" ] || return 0
  kill "$ticker" 2>/dev/null
  wait "$ticker" 2>/dev/null
  ticker=
  printf '\r\033[K'
}
trap stop_ticker EXIT

# Runs a command into a log and prints its line; the status is kept in $status. Never called where the
# shell takes the answer (if, ||, &&): there it would go on after a command that fails within a function.
run() {  # name command...
  local name=$1 begin=$SECONDS
  shift
  log=build/logs/${name// /-}.log
  start_ticker "$name" "$begin"
  set +e
  (set -e; "$@") >"$log" 2>&1 </dev/null
  status=$?
  set -e
  stop_ticker
  case $status in
    0) printf 'ok     %-28s %4d s\n' "$name" $((SECONDS - begin)) ;;
    # What this machine cannot do, by the convention of test programs; the last line says why.
    77) echo "skip   $name: $(tail -n 1 "$log")" ;;
    *)
      echo "FAILED $name ($((SECONDS - begin)) s)"
      failures "$log"
      echo "The whole log is $log."
      ;;
  esac
}

# A step is what a stage is, but no test.
step() {  # name command...
  run "$@"
  [ "$status" = 0 ] || exit "$status"
}

stage() {  # name command...
  run "$@"
  if [ "$status" = 77 ]; then
    skipped+=("$1")
    return
  fi
  count "$log" "$status"
  if [ "$status" != 0 ]; then
    summary
    exit 1
  fi
}

summary() {
  local rest=""
  [ ${#skipped[@]} = 0 ] || rest=", ${#skipped[@]} skipped: ${skipped[*]}"
  echo "$passed passed, $failed failed$rest"
}

build_and_test() {  # preset
  cmake --preset "$1"
  cmake --build --preset "$1"
  ctest --preset "$1" --parallel "$CMAKE_BUILD_PARALLEL_LEVEL"
}
