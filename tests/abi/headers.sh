#!/usr/bin/env bash
# Each public header compiles alone, without a warning, as C and as C++ by both compilers.
set -euo pipefail
include=$(cd "$(dirname "$0")/../../include" && pwd)
failed=0

compile() {  # header compiler language standard
  if ! echo "#include \"$1\"" | "$2" -x "$3" -std="$4" -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror \
    -I"$include" -fsyntax-only -; then
    echo "$1 does not compile cleanly: $2 -std=$4"
    failed=1
  fi
}

for header in zox_volume.h zox_volume_layout.h zox_volume_names.h zox_volume_check.h zox_render.h; do
  for standard in c11 c17; do
    for compiler in gcc clang; do compile $header $compiler c $standard; done
  done
  for standard in c++17 c++20; do
    for compiler in g++ clang++; do compile $header $compiler c++ $standard; done
  done
done
exit $failed
