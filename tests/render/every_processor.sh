#!/usr/bin/env bash
# The same pictures from this processor and from emulated ones without AVX-512 and without AVX.
# Usage: every_processor.sh PROGRAM
set -euo pipefail
command -v qemu-x86_64 >/dev/null || { echo "qemu-user is not installed"; exit 77; }
here=$("$1")
[ "$(wc -l <<<"$here")" = 120 ]
for processor in Haswell Opteron_G1; do
  there=$(qemu-x86_64 -cpu "$processor" "$1" 2>/dev/null)
  diff <(echo "$here") <(echo "$there") || { echo "the pictures differ on an emulated $processor"; exit 1; }
done
