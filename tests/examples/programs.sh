#!/usr/bin/env bash
# The examples in C and C++ build as a project of their own, break no duty, and draw what they mean to.
# Usage: programs.sh EXAMPLES INSTALLED
# shellcheck source=tests/package/common.sh
. "$(dirname "$0")/../package/common.sh"
run cmake -S "$1" -B "$scratch/build" -DCMAKE_PREFIX_PATH="$2" \
  -DCMAKE_C_FLAGS="-Wall -Wextra -Wpedantic -Werror" -DCMAKE_CXX_FLAGS="-Wall -Wextra -Wpedantic -Wconversion -Werror"
run cmake --build "$scratch/build"
checker=$(find "$2" -name libzox_volume_check.so)
cd "$scratch/build"
for example in "blocked_picture knot.pgm 256 10 30" "uneven_stack rings.pgm 240 35 65"; do
  read -r program picture width least most <<<"$example"
  said=$(LD_PRELOAD=$checker "./$program" "$picture" 2>&1) || complain "$program fails: $said"
  [ "$said" = "" ] || complain "$program breaks a duty: $said"
  [ "$(head -n 2 "$picture" | tail -n 1)" = "$width $width" ] || complain "$picture is not $width pixels wide and high"
  # The share of pixels that are not black, in percent, and that some are nearly white.
  tail -c $((width * width)) "$picture" | od -An -v -tu1 -w1 | awk -v least="$least" -v most="$most" '
    { lit += $1 > 0; bright += $1 > 200 }
    END { if (lit < NR * least / 100 || lit > NR * most / 100 || bright < NR / 200) {
      printf "%d of %d pixels are lit, %d bright\n", lit, NR, bright; exit 1 } }' || complain "$picture is not what it should be"
  if "./$program" /no/such/folder/x.pgm 2>"$log"; then complain "$program says nothing of a file it cannot write"; fi
  if "./$program" 2>"$log"; then complain "$program runs without a picture's name"; fi
done
