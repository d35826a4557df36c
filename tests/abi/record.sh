#!/usr/bin/env bash
# Compares the library's binary interface with the recorded one: an added argument, a moved field,
# a changed type or a missing symbol fails.
# Usage: record.sh LIBRARY            compare
#        record.sh LIBRARY --update   record anew; only for a deliberate change, named in CHANGELOG.md
set -euo pipefail
library=$1
here=$(cd "$(dirname "$0")" && pwd)
record=$here/zox_volume.abi
describe=(--no-corpus-path --no-comp-dir-path --no-show-locs --type-id-style hash)

if ! readelf --sections --wide "$library" | grep -q ' \.debug_info'; then
  echo "$library was built without debug information, nothing to compare"
  exit 77
fi
if [ "${2-}" = --update ]; then
  abidw "${describe[@]}" --out-file "$record" "$library"
  exit
fi
abidiff --harmless "$record" "$library"
