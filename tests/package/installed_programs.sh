#!/usr/bin/env bash
# The installed programs start from where they lie, though the loader knows nothing of the place.
# Usage: installed_programs.sh INSTALLED VERSION
# shellcheck source=tests/package/common.sh
. "$(dirname "$0")/common.sh"
unset LD_LIBRARY_PATH LD_PRELOAD
cd "$scratch"
for program in "$1"/bin/*; do
  name=${program##*/}
  printed=$("$program" --version) || complain "$name --version fails"
  [[ $printed = *"$2"* ]] || complain "$name --version prints '$printed', not $2"
  if ldd "$program" | grep libzox | grep -v "=> $1/"; then
    complain "$name takes a library of ours from elsewhere"
  fi
done
run "$1/bin/zox-mip" --phantom --size 64x64 -o phantom.png
[ "$(head -c 4 phantom.png | tail -c 3)" = PNG ] || complain "zox-mip wrote no PNG"
# A format whose readers are loaded from where they were installed.
{
  printf '# vtk DataFile Version 3.0\nramp\nASCII\nDATASET STRUCTURED_POINTS\nDIMENSIONS 4 4 4\n'
  printf 'ORIGIN 0 0 0\nSPACING 1 1 1\nPOINT_DATA 64\nSCALARS ramp short 1\nLOOKUP_TABLE default\n'
  seq 64
} >ramp.vtk
run "$1/bin/zox-mip" ramp.vtk --size 64x64 -o ramp.png
[ "$(head -c 4 ramp.png | tail -c 3)" = PNG ] || complain "zox-mip wrote no PNG of a VTK file"
