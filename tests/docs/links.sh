#!/usr/bin/env bash
# Every file that a document points at is there.
# Usage: links.sh SOURCE_DIRECTORY
set -euo pipefail
cd "$1"
failed=0
for page in *.md docs/*.md; do
  while read -r target; do
    case $target in http* | mailto:* | '') continue ;; esac
    if [ ! -e "$(dirname "$page")/$target" ]; then
      echo "$page points at $target, which is not there"
      failed=1
    fi
  done < <(sed '/^```/,/^```/d' "$page" | grep -oE '\]\([^)# ]+' | sed 's/^](//')
done
exit $failed
