#!/usr/bin/env bash
# The README's example compiles without a warning as C and as C++ and prints what the README says it prints;
# the README stays short.
# Usage: readme.sh BUILD_DIRECTORY
set -euo pipefail
build=$1
root=$(cd "$(dirname "$0")/../.." && pwd)
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

awk '/^```/ { inside = ($0 == "```c"); next } inside' "$root/README.md" >"$scratch/example.c"
if [ ! -s "$scratch/example.c" ]; then
  echo "README.md holds no C example"
  exit 1
fi
awk '/^```/ { inside = ($0 == "```text"); next } inside' "$root/README.md" >"$scratch/expected"
check() {  # compiler...
  "$@" -Wall -Wextra -Wpedantic -Wconversion -Werror -I"$root/include" "$scratch/example.c" \
    -o "$scratch/example" -L"$build" -lzox_volume -Wl,-rpath,"$build"
  "$scratch/example" >"$scratch/printed"
  diff -u "$scratch/expected" "$scratch/printed"
}
check gcc -std=c11
check g++ -x c++ -std=c++17
if [ "$(wc -l <"$root/README.md")" -gt 120 ]; then
  echo "README.md is longer than 120 lines"
  exit 1
fi
