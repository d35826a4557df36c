#!/usr/bin/env bash
# Drives the page in a headless Chromium, and the server with ten thousand connections.
# Usage: browser.sh BUILD [SHOTS]      BUILD holds zox-view and zox-mip; screenshots go to SHOTS
# The packages are those of scripts/deps.sh view.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
build=$(cd "$1" && pwd)
[ $# -lt 2 ] || mkdir -p "$2"
/usr/bin/python3 "$here/browser.py" "$build/zox-view" "$build/zox-mip" "${@:2}"
/usr/bin/python3 "$here/hostile_test.py" "$build/zox-view" 10000
