#!/usr/bin/env bash
# The README's C example compiles without a warning and prints what the README says it prints.
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
gcc -std=c11 -Wall -Wextra -Wpedantic -Wconversion -Werror -I"$root/include" "$scratch/example.c" \
  -o "$scratch/example" -L"$build" -lzox_volume -Wl,-rpath,"$build"
"$scratch/example" >"$scratch/printed"
awk '/^```/ { inside = ($0 == "```text"); next } inside' "$root/README.md" >"$scratch/expected"
diff -u "$scratch/expected" "$scratch/printed"
