#!/usr/bin/env bash
# Checks the source as text and by analysis: format, house rules, both compilers with every warning
# an error, clang-tidy, shell scripts. Prints nothing when all is well.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/deps.sh build check
failed=0

complain() {  # what, then lines on standard input; nothing when there are no lines
  local lines
  lines=$(cat)
  [ -z "$lines" ] && return
  printf '%s:\n%s\n' "$1" "$lines"
  failed=1
}

sources() { git ls-files --cached --others --exclude-standard -- "$@"; }
code() { sources '*.h' '*.c' '*.cpp' '*.inl'; }
search() { grep -nE "$@" || true; }

# Format.
while read -r file; do
  clang-format --dry-run -Werror "$file" 2>/dev/null || echo "$file"
done < <(code) | complain "not formatted (clang-format -i)"

# Every thing in its room: what must be exact or unusual has one place where it may stand.
mapfile -t library < <(sources 'src/*.h' 'src/*.cpp' 'src/*.inl')
outside() {  # pattern, then allowed path patterns: hits elsewhere in src/
  local pattern=$1 file
  shift
  for file in "${library[@]}"; do
    for allowed in "$@"; do
      # shellcheck disable=SC2254  # a pattern, deliberately
      case $file in $allowed) continue 2 ;; esac
    done
    search -H "$pattern" "$file"
  done
}
outside 'static_cast<u?int(8|16|32)?(_t)?>\([^()]*(double|position|scaled|\* *0x1p)' src/core/fixed_point.h src/core/lanes.h |
  complain "conversion from double to integer outside src/core/fixed_point.h"
outside '(^|[^_[:alnum:]])_mm(256|512)?_|immintrin|emmintrin' 'src/core/*' |
  complain "intrinsics outside src/core"
outside '__attribute__|\[\[gnu::' src/export.h | complain "attributes outside src/export.h"
outside 'std::|#include <(c[a-z]+|[a-z]+)>' | grep -vE '<(stdint|stddef|stdlib|string|immintrin|emmintrin)' |
  complain "the C++ library in src"
search -Hn 'ffast-math|Ofast|funsafe' CMakeLists.txt CMakePresets.json $(sources '*CMakeLists.txt' '*.cmake') |
  grep -v '^scripts/' | complain "flags that change results"
search -LF 'ffp-contract=off' CMakeLists.txt | complain "no -ffp-contract=off in"

# Size: what outgrows its file is split.
for file in "${library[@]}"; do
  lines=$(wc -l <"$file")
  [ "$lines" -le 250 ] || echo "$file: $lines lines"
done | complain "longer than 250 lines"

# Shell scripts parse.
while read -r script; do bash -n "$script" 2>&1; done < <(sources 'scripts/*.sh' 'tests/*.sh' .ci/run) |
  complain "shell"

# Warnings are errors here, and here only.
include=(-Iinclude -Isrc)
flags=(-std=c++20 -ffp-contract=off -fno-exceptions -fno-rtti -Wall -Wextra -Wpedantic -Wshadow -Wvla
  -Wconversion -Werror -fsyntax-only)
mapfile -t units < <(sources 'src/*.cpp')
for unit in "${units[@]}"; do
  set=()
  case $unit in
    *avx2*) set=(-mavx2) ;;
    *avx512*) set=(-mavx512f -mavx512vl -mavx512bw -mavx512dq) ;;
  esac
  for compiler in g++ clang++; do
    $compiler "${flags[@]}" "${set[@]}" "${include[@]}" "$unit" 2>&1 || true
  done
  clang-tidy --quiet "$unit" -- -std=c++20 -ffp-contract=off "${set[@]}" "${include[@]}" 2>/dev/null || true
done | complain "compilers and clang-tidy"

exit $failed
