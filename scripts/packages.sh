#!/usr/bin/env bash
# Makes the Debian packages into build/packages/ and lets lintian look at them. Prints their names, and what
# lintian finds beyond that which docs/packages.md explains.
set -euo pipefail
# shellcheck source=scripts/usage.sh
. "$(dirname "$0")/usage.sh"
take_no_arguments "$@"
cd "$(dirname "$0")/.."
scripts/deps.sh build tools viewer mpi python docs packages

build=build/debian packages=build/packages
log=$build/build.log
mkdir -p "$build"
rm -rf "$packages"
mkdir -p "$packages"
if ! {
  cmake --preset debian && cmake --build "$build" --parallel "$(nproc)" &&
    (cd "$packages" && cpack -G DEB --config ../debian/CPackConfig.cmake)
} >"$log" 2>&1; then
  tail -n 40 "$log" >&2
  exit 1
fi
rm -rf "$packages/_CPack_Packages"
ls "$packages"

# Each is explained in docs/packages.md.
explained=$(sed -n 's/^| `\([a-z-]*\)` |.*/\1/p' docs/packages.md | paste -sd ,)
lintian --allow-root --fail-on error,warning --suppress-tags "$explained" "$packages"/*.deb
