#!/usr/bin/env bash
# The target uninstall removes every file that was installed and nothing else.
# Usage: uninstall.sh INSTALLED BUILD_DIRECTORY      (INSTALLED is left alone)
# shellcheck source=tests/package/common.sh
. "$(dirname "$0")/common.sh"
mkdir -p "$scratch/prefix/lib"
touch "$scratch/prefix/lib/not-ours"
run cmake --install "$2" --prefix "$scratch/prefix"
files=$(find "$scratch/prefix" -type f | wc -l)
[ "$files" -gt 5 ] || complain "only $files files were installed"
run cmake --build "$2" --target uninstall
left=$(cd "$scratch/prefix" && find . -type f -o -type l)
[ "$left" = ./lib/not-ours ] || complain "after uninstalling there is: $left"
[ "$(find "$scratch/prefix" -name '*zox*')" = "" ] || complain "a folder of ours is left"
if cmake --build "$2" --target uninstall >"$log" 2>&1; then complain "uninstalling twice succeeds"; fi
