#!/usr/bin/env bash
# Changes one rule of the library at a time, in a copy, and sees whether the tests notice. The changes
# are those of scripts/mutations/*.list and every cell of the tables in src/operations/rules.h. Prints one
# line when every change is noticed but those proven to change nothing; otherwise the others, and fails.
#   scripts/mutate.sh [-j JOBS] [PATTERN]    PATTERN: only changes whose file or text match it
#   scripts/mutate.sh --applies              only says which changes no longer find their text
set -euo pipefail
# shellcheck source=scripts/usage.sh
. "$(dirname "$0")/usage.sh"
help_if_asked "$@"
cd "$(dirname "$0")/.."
root=$PWD
work=$root/build/mutate
base=$work/base

# ---- One change: the directory holds file, set, old, new and maybe reason --------------------------

read_whole() { cat "$1"; printf x; }  # command substitution drops newlines at the end: keep them, and an x

# The copy of src/ with the change. Fails unless the old text stands in the file exactly once.
apply_change() {  # directory
  local file old new text
  file=$(<"$1/file") old=$(<"$1/old") new=$(<"$1/new")
  text=$(read_whole "$file") text=${text%x}
  case $text in
    *"$old"*"$old"*) echo "the text stands there more than once" >"$1/result"; return 1 ;;
    *"$old"*) ;;
    *) echo "no longer applies" >"$1/result"; return 1 ;;
  esac
  mkdir -p "$1/tests/unit"
  cp -r src "$1/src"
  cp -r tests/unit/sets "$1/tests/unit"
  printf '%s' "${text/"$old"/"$new"}" >"$1/$file"
}

# Compiles one object as the build does but unoptimised, from the sources of another root.
compile() {  # unit source-root object
  local command
  command=$(sed -n "s|^  \"command\": \"\(.*-c $root/$1\)\",\{0,1\}$|\1|p" "$base/compile_commands.json")
  command=${command//"$root/src"/"$2/src"}
  bash -c "${command%% -o *} -O0 -w -o $3 -c $2/$1"
}

# The object that the change concerns: a header of the kernels belongs to every set, and one shows it.
compile_change() {  # directory
  local unit
  unit=$(<"$1/file")
  case $unit in
    src/*/*.h | *.inl) unit=src/operations/$(<"$1/set").cpp ;;
  esac
  compile "$unit" "$1" "$1/change.o" >"$1/log" 2>&1
  case $(<"$1/file") in
    src/sets/*) compile "tests/unit/sets/functions_$(<"$1/set").cpp" "$1" "$1/functions.o" >>"$1/log" 2>&1 ;;
  esac
}

# The changed object, and one that picks its set for the exported functions, come before the library's
# archive, which then has nothing left to give for them. The sets' own test has an object of each set.
link_test() {  # directory program folder
  local command objects="$1/change.o"
  [ "$(<"$1/file")" = src/operations/pick.cpp ] || objects="$objects $work/pick/$(<"$1/set").o"
  command=$(sed "s| -o [^ ]*| -o $1/$2 $objects|" "$base/tests/$3/CMakeFiles/$2.dir/link.txt")
  [ ! -e "$1/functions.o" ] || command=${command/"CMakeFiles/$2.dir/sets/functions_$(<"$1/set").cpp.o"/"$1/functions.o"}
  (cd "$base/tests/$3" && bash -c "$command") >>"$1/log" 2>&1
}

# A change may make a test run for ever or take all memory.
passes() {  # directory program arguments...
  local program=$1/$2
  shift 2
  (
    ulimit -v 16000000 -c 0
    GTEST_BRIEF=1 GTEST_FAIL_FAST=1 timeout -k 5 60 "$program" "$@" >"${program%/*}/log" 2>&1
  ) 2>/dev/null
}

test_change() {  # directory
  local set only
  set=$(<"$1/set")
  # Without the other sets, and the exported functions, which are those of this one.
  only=-$(printf '*%s:' base avx2 avx512 exported 'Threads.*' | sed "s/[*]$set://")
  if ! link_test "$1" zox_unit_tests unit; then echo "does not link"
  elif ! passes "$1" zox_unit_tests --gtest_filter='-*HasNoLimit*'; then echo "noticed"
  elif ! link_test "$1" zox_test_differential differential; then echo "does not link"
  elif ! ZOX_TEST_SCALE=0.2 passes "$1" zox_test_differential --gtest_filter="$only"; then echo "noticed"
  elif ! link_test "$1" zox_test_fault_system fault; then echo "does not link"
  elif ! passes "$1" zox_test_fault_system; then echo "noticed"
  elif ! passes "$1" zox_test_differential --gtest_filter="$only"; then echo "noticed"
  elif ! passes "$1" zox_unit_tests --gtest_filter="*HasNoLimit*/$set"; then echo "noticed"
  else echo "not noticed"
  fi
}

if [ "${1:-}" = --one ]; then
  directory=$2
  if apply_change "$directory"; then
    if compile_change "$directory"; then
      test_change "$directory" >"$directory/result"
    else
      echo "does not compile" >"$directory/result"
    fi
  fi
  rm -rf "$directory"/{src,tests,change.o,functions.o} "$directory"/zox_*
  exit
fi

# ---- All changes ----------------------------------------------------------------------------------

jobs=2 only_applies=no changes=$work/changes
if [ "${1:-}" = --applies ]; then
  only_applies=yes changes=$work/applies
  shift
elif [ "${1:-}" = -j ]; then
  jobs=$2
  shift 2
fi
pattern=${1:-}
case $pattern in -*) refuse "$pattern" ;; esac

# Lists into directories. A line "@ FILE [SET]" names the file of what follows; a change is its old
# lines after "- " and its new lines after "+ "; "= " gives the proof that the change changes nothing.
split_lists() {
  awk -v out="$changes" -v pattern="$pattern" '
    function finish() {
      if (old == "") return
      if ((file " " old " " new " " why) ~ pattern) {
        dir = sprintf("%s/%04d", out, ++n)
        system("mkdir -p " dir)
        printf "%s", file >(dir "/file"); printf "%s", set >(dir "/set")
        printf "%s", old >(dir "/old"); printf "%s", new >(dir "/new")
        if (why != "") { printf "%s", why >(dir "/reason"); close(dir "/reason") }
        close(dir "/file"); close(dir "/set"); close(dir "/old"); close(dir "/new")
      }
      old = new = why = ""
      complete = 0
    }
    function join_lines(a, b) { return a == "" ? b : a "\n" b }
    /^@ / { finish(); file = $2; set = NF > 2 ? $3 : "base"; next }
    /^- / { if (complete) finish(); old = join_lines(old, substr($0, 3)); next }
    /^\+/ { new = join_lines(new, substr($0, 3)); complete = 1; next }
    /^= / { why = join_lines(why, substr($0, 3)); next }
    END { finish() }' "$@"
}

# Every cell of the tables, turned into another value; table.equivalent says where that changes nothing.
table_changes() {
  awk '
    BEGIN {
      split("kTrunc kRound StepOf::kEachRay StepOf::kRay0 Tables::kGrow Tables::kFixed RowSum::k32Bits " \
            "RowSum::k64Bits 20 21 0 1 9 10 6 12 true false Sampling::kNearest Sampling::kTrilinear " \
            "Positions::kFixed Positions::kReal Voxel::k8U Voxel::k16S", pair, " ")
      for (i = 1; i in pair; i += 2) { turned[pair[i]] = pair[i + 1]; turned[pair[i + 1]] = pair[i] }
      turned["Voxel::kBit"] = "Voxel::k8U"
    }
    FNR == NR {
      if ($0 !~ /^#/ && NF > 2) { key = $1 " " $2; $1 = $2 = ""; reason[key] = substr($0, 3) }
      next
    }
    /^constexpr [A-Za-z]*Rules k[A-Za-z0-9]* *\{.*\};$/ {
      row = $3; sub(/\{.*/, "", row)
      # The order of samples matters to sets that replace tables by products.
      print "@ " FILENAME (/FetchRules/ ? " avx2" : "")
      head = $0; sub(/\{.*/, "", head)
      cells = $0; sub(/^[^{]*\{/, "", cells); sub(/\};$/, "", cells)
      count = split(cells, cell, /, */)
      for (c = 1; c <= count; ++c) {
        line = head "{"
        for (i = 1; i <= count; ++i) line = line (i > 1 ? ", " : "") (i == c ? turned[cell[i]] : cell[i])
        if (!(cell[c] in turned)) line = "no other value for " cell[c]
        print "- " $0
        print "+ " line "};"
        if ((row " " c) in reason) print "= " reason[row " " c]
      }
    }' scripts/mutations/table.equivalent src/operations/rules.h
}

# src/operations/pick.cpp with its choice made.
pick_each_set() {
  local set
  rm -rf "$work/pick"
  mkdir "$work/pick"
  cp -r src "$work/pick"
  for set in base avx2 avx512; do
    sed -e '/if (.*_supported()) return/d' -e "s/return base::/return $set::/" src/operations/pick.cpp \
      >"$work/pick/src/operations/pick.cpp"
    compile src/operations/pick.cpp "$work/pick" "$work/pick/$set.o"
  done
}

# Each change whose old text does not stand in its file exactly once.
complain_of_lost_texts() {
  local directory file old failed=0
  local -A texts
  for directory in "$changes"/*; do
    file=$(<"$directory/file") old=$(<"$directory/old")
    [ -n "${texts[$file]-}" ] || texts[$file]=$(cat "$file" 2>/dev/null) || texts[$file]="no such file"
    case ${texts[$file]} in
      *"$old"*"$old"*) ;;
      *"$old"*) continue ;;
    esac
    printf '%s: %s\n' "$file" "$old"
    failed=1
  done
  return $failed
}

mkdir -p "$work"
rm -rf "$changes"
split_lists scripts/mutations/*.list <(table_changes)
if [ $only_applies = yes ]; then
  complain_of_lost_texts
  exit
fi
[ -d "$work/changes" ] || { echo "mutate.sh: no change matches '$pattern'" >&2; exit 2; }

scripts/deps.sh build test
{
  cmake -S . -B "$base" -DCMAKE_BUILD_TYPE=Debug -DCMAKE_CXX_FLAGS_DEBUG=-O1 -DZOX_BUILD_TESTS=ON \
    -DZOX_BUILD_TOOLS=OFF -DZOX_BUILD_CHECKER=OFF &&
    cmake --build "$base" --target zox_unit_tests zox_test_differential zox_test_fault_system -j "$jobs" &&
    pick_each_set
} >"$work/log" 2>&1 </dev/null || { tail -n 40 "$work/log"; exit 1; }

printf '%s\n' "$work"/changes/* | xargs -P "$jobs" -n 1 "$root/scripts/mutate.sh" --one

noticed=0 equivalent=0 failed=0
for directory in "$work"/changes/*; do
  result=$(<"$directory/result")
  case $result in
    noticed | "does not compile")
      if [ "$result" = noticed ] && [ ! -e "$directory/reason" ]; then
        noticed=$((noticed + 1))
        continue
      fi
      [ ! -e "$directory/reason" ] || result="$result, though said to change nothing" ;;
    "not noticed")
      if [ -e "$directory/reason" ]; then
        equivalent=$((equivalent + 1))
        continue
      fi ;;
  esac
  failed=$((failed + 1))
  printf '%s (%s): %s\n  - %s\n  + %s\n' "$(<"$directory/file")" "$(<"$directory/set")" "$result" \
    "$(<"$directory/old")" "$(<"$directory/new")"
done
echo "$noticed changes noticed, $equivalent proven to change nothing, $failed to look at"
[ $failed = 0 ]
