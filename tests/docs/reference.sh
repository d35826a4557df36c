#!/usr/bin/env bash
# Every function of the public headers has a man page of section 3 that says something about it.
# Usage: reference.sh SOURCE_DIRECTORY MAN_DIRECTORY
set -euo pipefail
failed=0
count=0
complain() {
  echo "$*"
  failed=1
}

# The page of a function may be that of its family.
page_of() {  # name
  local page=$man/$1.3
  while [ "$(head -c 4 "$page")" = ".so " ]; do page=$man/$(sed 's|^\.so man3/||' "$page"); done
  echo "$page"
}

man=$2/man3
for header in zox_volume zox_volume_layout zox_volume_check zox_render; do
  for name in $(sed -n 's/^[a-z].*[ *]\(zox_[A-Za-z0-9_]*\)(.*/\1/p' "$1/include/$header.h" | sort -u); do
    count=$((count + 1))
    [ -e "$man/$name.3" ] || { complain "$name has no man page"; continue; }
    page=$(page_of "$name")
    words=$(awk -v name="$name (" '/^\.S[SH] /{ inside = index($0, name) } inside && !/^\./{ n += NF } END { print n + 0 }' "$page")
    [ "$words" -gt 4 ] || complain "${page##*/} says nothing about $name"
  done
done
# 32 operations, and those of the other headers.
[ $count -gt 60 ] || complain "only $count functions were found"
exit $failed
