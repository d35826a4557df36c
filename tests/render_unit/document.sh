#!/usr/bin/env bash
# The program of docs/zox-render.md compiles without a warning, prints what the document says, and writes a PNG of the
# picture.
# Usage: document.sh SOURCE_DIRECTORY RENDER_LIBRARY VOLUME_LIBRARY
set -euo pipefail
root=$1
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

awk '/^```/ { inside = ($0 == "```c"); next } inside' "$root/docs/zox-render.md" >"$scratch/ball.c"
awk '/^```/ { inside = ($0 == "```text"); next } inside' "$root/docs/zox-render.md" >"$scratch/expected"
if [ ! -s "$scratch/ball.c" ] || [ ! -s "$scratch/expected" ]; then
  echo "docs/zox-render.md holds no program or not what it prints"
  exit 1
fi
cc -std=c11 -Wall -Wextra -Wpedantic -Werror -I"$root/include" "$scratch/ball.c" -o "$scratch/ball" \
  "$2" "$3" -Wl,-rpath,"$(dirname "$2")" -Wl,-rpath,"$(dirname "$3")" -lpng -lm
"$scratch/ball" "$scratch/ball.png" >"$scratch/printed"
diff -u "$scratch/expected" "$scratch/printed"
# The signature, the size and 8 bits of grey.
header=$(od -A n -t x1 -N 26 "$scratch/ball.png" | tr -d ' \n')
if [ "$header" != 89504e470d0a1a0a0000000d4948445200000140000000f00800 ]; then
  echo "the PNG is not 320 x 240 in 8-bit grey: $header"
  exit 1
fi
if [ $# -gt 3 ]; then cp "$scratch/ball.png" "$4"; fi
