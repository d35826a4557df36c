#!/usr/bin/env bash
# What the built library exports, needs and leaves open.
# Usage: symbols.sh LIBRARY
set -euo pipefail
library=$1
here=$(cd "$(dirname "$0")" && pwd)
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
failed=0

same() {  # what expected-file actual-file
  if ! diff -u "$2" "$3" >"$scratch/diff"; then
    echo "$1: expected (-) and found (+) differ"
    cat "$scratch/diff"
    failed=1
  fi
}

readelf --dyn-syms --wide "$library" | sed '1,/Num:/d' >"$scratch/all"

# Exports: every operation under both names, and two data objects with their sizes.
{
  while read -r name; do printf 'FUNC GLOBAL %s\nFUNC GLOBAL __%s\n' "$name" "$name"; done <"$here/operations.txt"
  printf 'OBJECT GLOBAL zox_nthreads 4\nOBJECT GLOBAL zoxid 39\n'
} | sort >"$scratch/expected"
awk '$7 != "UND" { print $4, $5, $8, ($4 == "OBJECT" ? $3 : "") }' "$scratch/all" | sed 's/ *$//' |
  sort >"$scratch/found"
same "exported symbols" "$scratch/expected" "$scratch/found"

# Both names of an operation stand at one address.
awk '$7 != "UND" { at[$8] = $2 }
     END { for (n in at) if (("__" n) in at && at[n] != at["__" n]) print n }' "$scratch/all" |
  while read -r name; do echo "$name and __$name have different addresses"; exit 1; done || failed=1

# Open symbols: the three functions that are called, and the loader's weak hooks.
printf '%s\n' GLOBAL\ free GLOBAL\ malloc GLOBAL\ memset WEAK\ _ITM_deregisterTMCloneTable \
  WEAK\ _ITM_registerTMCloneTable WEAK\ __cxa_finalize WEAK\ __gmon_start__ | sort >"$scratch/expected"
awk '$7 == "UND" && $8 != "" { sub(/@.*/, "", $8); print $5, $8 }' "$scratch/all" | sort >"$scratch/found"
same "undefined symbols" "$scratch/expected" "$scratch/found"

readelf --dynamic --wide "$library" >"$scratch/dynamic"
printf '%s\n' libc.so.6 libm.so.6 >"$scratch/expected"
sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p' "$scratch/dynamic" | sort >"$scratch/found"
same "needed libraries" "$scratch/expected" "$scratch/found"
echo libzox_volume.so >"$scratch/expected"
sed -n 's/.*(SONAME).*\[\(.*\)\]/\1/p' "$scratch/dynamic" >"$scratch/found"
same "shared object name" "$scratch/expected" "$scratch/found"

# Bound late, so that a preloaded allocator replaces the library's own.
if grep -q SYMBOLIC "$scratch/dynamic"; then
  echo "the library binds its own symbols early (SYMBOLIC)"
  failed=1
fi
readelf --relocs --wide "$library" >"$scratch/relocations"
for name in __zox_Malloc __zox_Free; do
  if ! grep -q "R_X86_64_\(JUMP_SLO\|GLOB_DAT\).* $name " "$scratch/relocations"; then
    echo "$name is not called through the loader"
    failed=1
  fi
done
exit $failed
