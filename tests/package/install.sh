#!/usr/bin/env bash
# Installs a build, and moves what was installed to where the other tests look at it.
# Usage: install.sh BUILD_DIRECTORY DIRECTORY
# shellcheck source=tests/package/common.sh
. "$(dirname "$0")/common.sh"
rm -rf "$2" "$2.first"
run cmake --install "$1" --prefix "$2.first"
mv "$2.first" "$2"
