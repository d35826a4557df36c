#!/usr/bin/env bash
# Tests are called by names, not by the bytes of their parameters.
# Usage: names.sh BUILD_DIRECTORY
set -euo pipefail
if ctest --test-dir "$1" --show-only | grep -- '-byte object'; then
  echo "give these tests' parameters a name, by the last argument of INSTANTIATE_TEST_SUITE_P"
  exit 1
fi
