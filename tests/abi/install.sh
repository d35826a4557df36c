#!/usr/bin/env bash
# The installed package serves a small project of its own, through CMake and through pkg-config,
# also after it has been moved.
# Usage: install.sh BUILD_DIRECTORY VERSION
set -euo pipefail
build=$1
version=$2
consumer=$(cd "$(dirname "$0")/consumer" && pwd)
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
log=$scratch/log

run() { "$@" >"$log" 2>&1 || { echo "failed: $*"; cat "$log"; exit 1; }; }

run cmake --install "$build" --prefix "$scratch/first"
mv "$scratch/first" "$scratch/moved"
library=$(find "$scratch/moved" -name libzox_volume.so)
export LD_LIBRARY_PATH=${library%/*}

run cmake -S "$consumer" -B "$scratch/consumer" -DCMAKE_PREFIX_PATH="$scratch/moved"
run cmake --build "$scratch/consumer"
run "$scratch/consumer/consumer"

PKG_CONFIG_PATH=$(dirname "$(find "$scratch/moved" -name zox_volume.pc)")
export PKG_CONFIG_PATH
if [ "$(pkg-config --modversion zox_volume)" != "$version" ]; then
  echo "pkg-config names version $(pkg-config --modversion zox_volume), not $version"
  exit 1
fi
read -r -a flags <<<"$(pkg-config --cflags --libs zox_volume)"
run gcc -std=c11 "$consumer/main.c" -o "$scratch/by-pkg-config" "${flags[@]}"
run "$scratch/by-pkg-config"
