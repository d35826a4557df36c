#!/usr/bin/env bash
# What a fresh tree builds: Release when nothing is said, whatever its packages are there for, and a table
# that says what is left out and why; what is demanded and cannot be built ends the configuring.
# Usage: components.sh SOURCE_DIRECTORY
# shellcheck source=tests/package/common.sh
. "$(dirname "$0")/common.sh"
configure() { cmake -S "$source" -B "$scratch/build" "$@" >"$log" 2>&1; }
source=$1

configure -DCMAKE_DISABLE_FIND_PACKAGE_ITK=ON || { cat "$log"; complain "does not configure without ITK"; }
grep -q '^CMAKE_BUILD_TYPE:STRING=Release$' "$scratch/build/CMakeCache.txt" || complain "the build type is not Release"
grep -Eq 'kernel library +built' "$log" || complain "the table does not name the kernel library"
grep -Eq 'zox-mip +left out, since this is missing: .*libinsighttoolkit5-dev' "$log" ||
  { cat "$log"; complain "the table does not say why zox-mip is left out"; }

configure -DZOX_BUILD_CHECKER=OFF || complain "does not configure without the checker"
grep -Eq 'contract checker +left out by ZOX_BUILD_CHECKER=OFF' "$log" || complain "a wish is not told as one"

if configure -DCMAKE_DISABLE_FIND_PACKAGE_ITK=ON -DZOX_BUILD_TOOLS=ON; then complain "zox-mip is demanded, yet left out"; fi
grep -q 'ZOX_BUILD_TOOLS is ON, but this is missing' "$log" || complain "no word why zox-mip cannot be built"
