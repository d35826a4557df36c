#!/usr/bin/env bash
# pkg-config serves programs of others.
# Usage: consume_pkg_config.sh INSTALLED VERSION [render]
# shellcheck source=tests/package/common.sh
. "$(dirname "$0")/common.sh"
PKG_CONFIG_PATH=$(dirname "$(find "$1" -name zox_volume.pc)")
LD_LIBRARY_PATH=$(dirname "$(find "$1" -name libzox_volume.so)")
export PKG_CONFIG_PATH LD_LIBRARY_PATH

build_and_run() {  # package source
  local found flags
  found=$(pkg-config --modversion "$1")
  [ "$found" = "$version" ] || complain "pkg-config names version $found of $1, not $version"
  read -r -a flags <<<"$(pkg-config --cflags --libs "$1")"
  run gcc -std=c11 "$here/consumer/$2" -o "$scratch/$1" "${flags[@]}"
  run "$scratch/$1"
}

version=$2
build_and_run zox_volume main.c
[ "${3-}" = "" ] || build_and_run zox_render render.c
