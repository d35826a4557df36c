#!/usr/bin/env bash
# Opens the CT of a skull in the browser: builds zox-view, unpacks the scan into build/view-demo/ and serves
# that folder until Ctrl-C.
# Usage: view-demo.sh [--yes] [--no-browser]
#   --yes          install what is missing without asking
#   --no-browser   only print the address
set -euo pipefail
# shellcheck source=scripts/usage.sh
. "$(dirname "$0")/usage.sh"
help_if_asked "$@"
cd "$(dirname "$0")/.."

ask=--ask browser=yes
for argument in "$@"; do
  case $argument in
    --yes) ask="" ;;
    --no-browser) browser="" ;;
    *) refuse "$argument" ;;
  esac
done

. scripts/stages.sh
scans=build/view-demo
mkdir -p "$scans"
# shellcheck disable=SC2086  # --ask or nothing
scripts/deps.sh $ask build tools viewer demo brain

build() {
  cmake --preset release -DZOX_BUILD_VIEWER=ON
  cmake --build --preset release --target zox-view
}
stage "build" build
stage "scans" scripts/demo-scans.sh "$scans"

# The address is the first line; the link shows the skull from the left and above.
coproc SERVER { exec build/release/zox-view "$scans"; }
server=$SERVER_PID
trap 'kill "$server" 2>/dev/null || true' EXIT
read -r address <&"${SERVER[0]}"
link="$address#file=skull.mhd&azimuth=35&elevation=15&window=1400,1400"
echo "$link"
if [ "$browser" ] && [ -n "${DISPLAY-}${WAYLAND_DISPLAY-}" ] && command -v xdg-open >/dev/null; then
  xdg-open "$link" >/dev/null 2>&1 &
fi
echo "Ctrl-C ends it."
wait "$server"
