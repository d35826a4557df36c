#!/usr/bin/env bash
# The installed programs start from where they lie, though the loader knows nothing of the place.
# Usage: programs.sh INSTALLED VERSION
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
