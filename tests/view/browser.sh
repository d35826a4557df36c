#!/usr/bin/env bash
# Drives the page in Chromium and in Firefox, without a screen, and the server with ten thousand connections.
# Usage: browser.sh BUILD [SHOTS]      BUILD holds zox-view and zox-mip; screenshots go to SHOTS
# The packages are those of scripts/deps.sh view test.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
build=$(cd "$1" && pwd)
[ $# -lt 2 ] || mkdir -p "$2"
for test in hands page firefox; do
  /usr/bin/python3 "$here/${test}_test.py" "$build/zox-view" "$build/zox-mip" "${@:2}"
done
/usr/bin/python3 "$here/hostile_test.py" "$build/zox-view" 10000
