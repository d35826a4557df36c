#!/usr/bin/env bash
# Renders a brain from three sides into build/demo/, from a fresh clone on a fresh machine.
# Usage: demo.sh [--ct]      --ct: also a head in 16 bits, through both layouts, and how far they differ
set -euo pipefail

cd "$(dirname "$0")/.."
case ${1-} in
  '' | --ct) ;;
  *)
    echo "Usage: scripts/demo.sh [--ct]" >&2
    exit 2
    ;;
esac

scripts/deps.sh build tools demo

demo=$PWD/build/demo
mkdir -p "$demo"
if ! {
  cmake --preset release && cmake --build --preset release --parallel "$(nproc)" --target zox_volume zox-mip
} >"$demo/build.log" 2>&1; then
  tail -n 30 "$demo/build.log" >&2
  exit 1
fi
zox_mip=build/release/zox-mip

pictures=()
render() { # NAME ARGUMENTS...
  local picture=$demo/$1.png
  "$zox_mip" "${@:2}" -o "$picture" --quiet
  pictures+=("$picture")
}

brain=/usr/share/mricron/templates/ch2better.nii.gz
for view in anterior left superior; do
  render "brain-$view" "$brain" --view "$view"
done

# A raw volume within a compressed tar: 108 slices of 256 x 256 voxels from the feet upwards, whose rows
# run from the back to the front.
unpack_ct() {
  tar -xzf /usr/share/doc/invesalius-examples/examples/Cranium.inv3 -C "$demo" --wildcards \
    --transform 's,.*/,,' '*/matrix.dat'
  mv "$demo/matrix.dat" "$demo/head.raw"
  cat >"$demo/head.mhd" <<'HEADER'
ObjectType = Image
NDims = 3
DimSize = 256 256 108
ElementType = MET_SHORT
ElementByteOrderMSB = False
ElementSpacing = 0.957 0.957 1.5
TransformMatrix = 1 0 0 0 -1 0 0 0 1
ElementDataFile = head.raw
HEADER
}

if [ "${1-}" = --ct ]; then
  unpack_ct
  for view in anterior left; do
    render "head-$view" "$demo/head.mhd" --view "$view"
  done
  for layout in blocked stack; do
    render "head-$layout" "$demo/head.mhd" --view 30,10 --projection orthographic --layout "$layout"
  done
fi

echo "The pictures are:"
printf '  %s\n' "${pictures[@]}"
if [ "${1-}" = --ct ]; then
  cmake --build --preset release --target zox-picture-difference >>"$demo/build.log" 2>&1
  build/release/zox-picture-difference "$demo/head-blocked.png" "$demo/head-stack.png"
fi
