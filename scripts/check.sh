#!/usr/bin/env bash
# Checks the source as text and by analysis: format, house rules, both compilers with every warning
# an error, clang-tidy, shell scripts. Prints nothing when all is well.
set -euo pipefail
# shellcheck source=scripts/usage.sh
. "$(dirname "$0")/usage.sh"
take_no_arguments "$@"
cd "$(dirname "$0")/.."
scripts/deps.sh build check
failed=0

complain() {  # what, then a command whose every line of output is a finding
  local what=$1 lines
  shift
  lines=$("$@")
  [ -n "$lines" ] || return 0
  printf '%s:\n%s\n' "$what" "$lines"
  failed=1
}

sources() { git ls-files --cached --others --exclude-standard -- "$@"; }
code() { sources '*.h' '*.c' '*.cpp' '*.inl'; }
search() { grep -nE "$@" || true; }

unformatted() {
  code | { xargs -r -P "$(nproc)" -n 50 clang-format --dry-run -Werror 2>&1 || true; } |
    sed -n 's/^\([^:]*\):[0-9].*error:.*/\1/p' | sort -u
}

mapfile -t library < <(sources 'src/*.h' 'src/*.cpp' 'src/*.inl')

outside() {  # pattern rooms...: hits in src/ outside the rooms, directories or files
  local pattern=$1 file room
  shift
  for file in "${library[@]}"; do
    for room in "$@"; do
      case $file in "$room"*) continue 2 ;; esac
    done
    search -H "$pattern" "$file"
  done
}

# Sets include nothing of the rest, numbers sets, a subject numbers and sets and of the operations' files the
# data alone; none includes another subject.
upward_includes() {
  local room
  outside '#include "(numbers|blocked|stack|maximum|window|operations)/' src/numbers/ src/blocked/ src/stack/ \
    src/maximum/ src/window/ src/operations/ src/zox_
  grep -nE '#include "(blocked|stack|maximum|window|operations)/' src/numbers/* || true
  for room in blocked stack maximum window; do
    grep -nE '#include "(blocked|stack|maximum|window|operations)/' "src/$room"/* |
      grep -vE "#include \"($room/|operations/(list|caster_words|rules)\.h)" || true
  done
}

# Ray casters by name, all of them: in the list, in what people read, in what must be independent of it.
spelled_out_lists() {
  local file names
  sources src checker tests fuzz bench render tools |
    grep -vE '^(src/operations/list\.h|tests/reference/.*|tests/abi/(operations\.txt|zox_volume\.abi))$' |
    grep -vE '^(tests/golden/checksums\.txt|bench/(scalar_lists\.cpp|results\.py))$' |
    while read -r file; do
      names=$(grep -oiE '(blocked|general)_(divergent|parallel)_(nearest|trilinear)(_bit)?_(8u|16s)' "$file" |
        tr '[:upper:]' '[:lower:]' | sort -u | wc -l) || true
      [ "$names" -le 12 ] || echo "$file"
    done
}

library_headers() { outside '#include <' | { grep -vE '<(stdint|stddef|stdlib|string|immintrin)\.h>' || true; }; }

result_changing_flags() {
  sources '*CMakeLists.txt' '*.cmake' CMakePresets.json | while read -r file; do
    search -H 'ffast-math|Ofast|funsafe|march=native' "$file"
  done
  grep -q 'add_compile_options(-ffp-contract=off)' CMakeLists.txt || echo "CMakeLists.txt: products may be fused"
}

overlong() {
  local file
  for file in "${library[@]}"; do
    [ "$(wc -l <"$file")" -le 250 ] || echo "$file"
  done
}

script_errors() {
  sources '*.sh' .ci/run | xargs -r shellcheck --external-sources --severity=warning --format=gcc || true
}

# A promise is worth the test it names.
promises_without_test() {
  local name
  grep -oE '\b((abi|package|docs|examples|scripts)\.[a-z_]+|[A-Z][A-Za-z]+\.[A-Z][A-Za-z0-9]+)' docs/guarantees.md | grep -v '\.md$' | sort -u |
    while read -r name; do
      grep -rqE "(NAME |zox_package_test\()$name( |\$)|\(\w*${name%%.*}\w*, ${name#*.}\)" tests || echo "$name"
    done
}

# Every unit of the library by both compilers, warnings being errors here (and only here), then by
# clang-tidy. A plain conversion of an out-of-range double differs between compilers, so none may
# stand in the syntax tree: truncate() in src/sets/every.h is the processor's own instruction.
analyse() {  # unit
  local set=() flags=(-std=c++20 -ffp-contract=off -fno-exceptions -fno-rtti -Iinclude -Isrc)
  local strict=(-Wall -Wextra -Wpedantic -Wshadow -Wconversion -Werror -fsyntax-only)
  case $1 in
    *avx2*) set=(-mavx2) ;;
    *avx512*) set=(-mavx512f -mavx512vl -mavx512bw -mavx512dq) ;;
  esac
  g++ "${flags[@]}" "${set[@]}" "${strict[@]}" "$1" 2>&1 || true
  clang++ "${flags[@]}" "${set[@]}" "${strict[@]}" "$1" 2>&1 || true
  clang-tidy --quiet "$1" -- "${flags[@]}" "${set[@]}" 2>/dev/null || true
  clang++ "${flags[@]}" "${set[@]}" -fsyntax-only -Xclang -ast-dump -fno-color-diagnostics "$1" 2>/dev/null |
    awk -v unit="$1" '/FloatingToIntegral/ { found = 1 }
      END { if (found) print unit ": converts floating point to an integer by a plain cast" }'
}

analyse_all() {
  # One line a finding, however many templates and units repeat it.
  export -f analyse
  sources 'src/*.cpp' | xargs -P "$(nproc)" -n 1 bash -c 'analyse "$1"' analyse |
    grep -E 'error: |warning: |plain cast' | sed "s|^$PWD/||" | sort -u || true
}

complain "not formatted (clang-format -i)" unformatted
complain "intrinsics outside src/sets" \
  outside '(^|[^_[:alnum:]])(_mm(256|512)?_|__m(128|256|512))|mmintrin' src/sets/
complain "instruction sets told apart outside src/sets/set.h" outside '^ *#.*__(AVX|SSE)' src/sets/set.h
complain "attributes outside src/export.h" outside '__attribute__' src/export.h
complain "the C++ library in src" outside '(^|[^[:alnum:]_])std::'
complain "headers that src does not need" library_headers
complain "flags that change results" result_changing_flags
complain "includes against the direction of the rooms" upward_includes
complain "operations spelled out that src/operations/list.h lists" spelled_out_lists
complain "longer than 250 lines" overlong
complain "shell" script_errors
complain "docs/guarantees.md names tests that do not exist" promises_without_test
lost_mutations() { scripts/mutate.sh --applies || true; }

complain "changes of scripts/mutate.sh whose text is gone or stands twice" lost_mutations
complain "compilers and clang-tidy" analyse_all
exit $failed
