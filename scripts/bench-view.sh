#!/usr/bin/env bash
# Times zox-view's pictures of a skull and of a brain, 768 x 768 pixels, beside VTK's CPU ray caster, and
# the page while somebody drags in it. Prints the tables of docs/zox-view.md.
# Usage: bench-view.sh
set -euo pipefail
# shellcheck source=scripts/usage.sh
. "$(dirname "$0")/usage.sh"
take_no_arguments "$@"
cd "$(dirname "$0")/.."
. scripts/stages.sh

build() {
  cmake --preset release -DZOX_BUILD_VIEWER=ON
  cmake --build --preset release --target zox-view
}
stage "packages" scripts/deps.sh build tools viewer demo brain view peers
stage "build" build
scans=build/view-demo
stage "scans" scripts/demo-scans.sh "$scans"
xvfb-run -a /usr/bin/python3 bench/view_speed.py build/release/zox-view "$scans"/{skull.mhd,ch2better.nii.gz}
/usr/bin/python3 bench/view_feel.py build/release/zox-view "$scans"/{skull.mhd,ch2better.nii.gz}
grep -m1 '^model name' /proc/cpuinfo | sed 's/.*: //'
