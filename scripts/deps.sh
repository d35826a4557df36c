#!/usr/bin/env bash
# Installs the Debian 12 packages that a job needs, only those that are missing; docs/dependencies.md
# says what each is for.
# Usage: deps.sh GROUP...      groups: build tools test check fuzz demo bench peers coverage
set -euo pipefail

packages_of() {
  case $1 in
    build) echo g++ cmake make ;;
    tools) echo libinsighttoolkit5-dev libfftw3-dev uuid-dev libpng-dev libdeflate-dev libcli11-dev ;;
    test) echo libgtest-dev binutils pkg-config clang abigail-tools qemu-user valgrind libc6-dbg ;;
    check) echo clang clang-format clang-tidy shellcheck ;;
    fuzz) echo clang libclang-rt-14-dev ;;
    demo) echo mricron-data invesalius-examples ;;
    bench) echo libbenchmark-dev libcli11-dev python3 ;;
    peers) echo python3-scipy ;;
    coverage) echo gcovr ;;
    *)
      echo "deps.sh: no group '$1'" >&2
      return 1
      ;;
  esac
}

missing=()
for group in "$@"; do
  packages=$(packages_of "$group")
  for package in $packages; do
    [ "$(dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null)" = installed ] ||
      missing+=("$package")
  done
done
[ ${#missing[@]} = 0 ] && exit

as_root=()
if [ "$(id -u)" != 0 ]; then
  command -v sudo >/dev/null || { echo "deps.sh: install as root: ${missing[*]}" >&2; exit 1; }
  as_root=(sudo)
fi
log=$(mktemp)
trap 'rm -f "$log"' EXIT
if ! {
  "${as_root[@]}" apt-get update &&
    "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install --yes --no-install-recommends \
      "${missing[@]}"
} >"$log" 2>&1 </dev/null; then
  tail -n 20 "$log" >&2
  echo "deps.sh: could not install: ${missing[*]}" >&2
  exit 1
fi
