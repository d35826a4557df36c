#!/usr/bin/env bash
# find_package serves projects of others: the shared and the static library, and the rendering library.
# Usage: consume_cmake.sh INSTALLED [render]
# shellcheck source=tests/package/common.sh
. "$(dirname "$0")/common.sh"
run cmake -S "$here/consumer" -B "$scratch/consumer" -DCMAKE_PREFIX_PATH="$1" -DWITH_RENDER="${2:-OFF}"
run cmake --build "$scratch/consumer"
programs=(consumer consumer_static consumer_cpp ${2:+consumer_render})
for program in "${programs[@]}"; do run "$scratch/consumer/$program"; done
if readelf -d "$scratch/consumer/consumer_static" | grep -q libzox; then
  complain "the program linked with the static library still needs the shared one"
fi
