# shellcheck shell=bash
# Sourced by the tests of the package: a scratch directory that goes away, and commands whose output is
# shown when they fail.
set -euo pipefail
# shellcheck disable=SC2034  # for those that source this
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
log=$scratch/log
export CMAKE_BUILD_PARALLEL_LEVEL=${CMAKE_BUILD_PARALLEL_LEVEL:-2}

run() { "$@" >"$log" 2>&1 || { echo "failed: $*"; cat "$log"; exit 1; }; }

complain() {
  echo "$*"
  exit 1
}
