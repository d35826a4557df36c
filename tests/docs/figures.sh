#!/usr/bin/env bash
# The figures in docs/ are those that the script draws, and the guide stays within 300 lines.
# Usage: figures.sh SOURCE_DIRECTORY
set -euo pipefail
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
python3 "$1/docs/figures.py" "$scratch"
for figure in figure-layouts.svg figure-ray.svg; do
  cmp "$scratch/$figure" "$1/docs/$figure"
  grep -q "($figure)" "$1/docs/guide.md"
done
if [ "$(wc -l <"$1/docs/guide.md")" -gt 300 ]; then
  echo "docs/guide.md is longer than 300 lines"
  exit 1
fi
# All 32 operations have their place in its table.
count=$(awk -F'|' '/^## Which of the 32/{ inside = 1; next } /^## /{ inside = 0 } inside && $4 ~ /[0-9]/ { n += $4 } END { print n }' "$1/docs/guide.md")
if [ "$count" != 32 ]; then
  echo "the table of operations has $count of them"
  exit 1
fi
