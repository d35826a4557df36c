#!/usr/bin/env bash
# Renders the CT of a skull from four sides into build/demo/, from a fresh clone on a fresh machine: says what
# packages it wants, then one line a step.
# Usage: demo.sh [--yes] [--brain] [--compare]
#   --yes       install what is missing without asking
#   --brain     also a brain in 8 bits, from three sides
#   --compare   also the skull through both layouts, and how far their pictures differ
set -euo pipefail
# shellcheck source=scripts/usage.sh
. "$(dirname "$0")/usage.sh"
help_if_asked "$@"
cd "$(dirname "$0")/.."

ask=--ask brain="" compare=""
for argument in "$@"; do
  case $argument in
    --yes) ask="" ;;
    --brain) brain=brain ;;
    --compare) compare=yes ;;
    *) refuse "$argument" ;;
  esac
done

. scripts/stages.sh
demo=build/demo
zox_mip=build/release/zox-mip
mkdir -p "$demo"
pictures=()

begin=$SECONDS
# shellcheck disable=SC2086  # --ask or nothing
scripts/deps.sh $ask build tools demo $brain
printf 'ok     %-28s %4d s\n' packages $((SECONDS - begin))

build() {
  cmake --preset release -DZOX_BUILD_TOOLS=ON
  cmake --build --preset release --target zox-mip ${compare:+zox-picture-difference}
}

render() {  # NAME ARGUMENTS...
  local picture=$demo/$1.png
  step "picture $1" "$zox_mip" "${@:2}" -o "$picture" --quiet
  pictures+=("$picture")
}

step "build" build
step "unpack the skull" scripts/demo-scans.sh "$demo"
for view in anterior left superior; do
  render "skull-$view" "$demo/skull.mhd" --view "$view"
done
render skull-oblique "$demo/skull.mhd" --view 30,15
if [ -n "$brain" ]; then
  for view in anterior left superior; do
    render "brain-$view" /usr/share/mricron/templates/ch2better.nii.gz --view "$view"
  done
fi
if [ -n "$compare" ]; then
  for layout in blocked stack; do
    render "skull-$layout" "$demo/skull.mhd" --view 30,10 --projection orthographic --layout "$layout"
  done
fi

echo "The pictures are:"
printf '  %s\n' "${pictures[@]}"
if [ -n "$compare" ]; then
  build/release/zox-picture-difference "$demo/skull-blocked.png" "$demo/skull-stack.png"
fi
