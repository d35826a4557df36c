#!/usr/bin/env bash
# Puts the demo's scans into a folder: skull.mhd, the CT of a skull, and ch2better.nii.gz, a brain in 8 bits,
# where their packages are installed (scripts/deps.sh demo brain).
# Usage: demo-scans.sh FOLDER
set -euo pipefail
# shellcheck source=scripts/usage.sh
. "$(dirname "$0")/usage.sh"
help_if_asked "$@"
[[ ${1-} != -* ]] || refuse "$1"
folder=${1:?Usage: demo-scans.sh FOLDER}
mkdir -p "$folder"

# A raw volume within a compressed tar: 108 slices of 256 x 256 voxels from the feet upwards, whose rows
# run from the back to the front.
skull=/usr/share/doc/invesalius-examples/examples/Cranium.inv3
if [ -e "$skull" ]; then
  tar -xzf "$skull" -C "$folder" --wildcards --transform 's,.*/,,' '*/matrix.dat'
  mv "$folder/matrix.dat" "$folder/skull.raw"
  cat >"$folder/skull.mhd" <<'HEADER'
ObjectType = Image
NDims = 3
DimSize = 256 256 108
ElementType = MET_SHORT
ElementByteOrderMSB = False
ElementSpacing = 0.957 0.957 1.5
TransformMatrix = 1 0 0 0 -1 0 0 0 1
ElementDataFile = skull.raw
HEADER
fi
brain=/usr/share/mricron/templates/ch2better.nii.gz
[ ! -e "$brain" ] || cp "$brain" "$folder/"
