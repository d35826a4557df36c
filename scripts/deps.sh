#!/usr/bin/env bash
# Installs the Debian 12 packages that a job needs, only those that are missing; docs/dependencies.md
# says what each is for.
# Usage: deps.sh [--ask] GROUP...
#   --ask    on a terminal, ask before anything is installed
# The groups:
set -euo pipefail
# shellcheck source=scripts/usage.sh
. "$(dirname "$0")/usage.sh"

packages_of() {
  case $1 in
    build) echo g++ cmake make ;;
    tools) echo libinsighttoolkit5-dev libgdcm-dev libfftw3-dev uuid-dev libpng-dev libtiff-dev libhdf5-dev libdeflate-dev libcli11-dev ;;
    test) echo ninja-build libgtest-dev binutils pkg-config clang abigail-tools qemu-user valgrind libc6-dbg zlib1g-dev libgdcm-tools \
      curl python3 python3-numpy python3-pydicom python3-nibabel python3-pil python3-h5py-serial strace ;;
    check) echo clang clang-format clang-tidy shellcheck ;;
    fuzz) echo clang libclang-rt-14-dev ;;
    demo) echo invesalius-examples ;;
    brain) echo mricron-data ;;
    bench) echo libbenchmark-dev libcli11-dev python3 ;;
    peers) echo python3-scipy python3-vtk9 xvfb xauth ;;
    pictures) echo libvtk9-dev libinsighttoolkit5-dev python3-scipy zlib1g-dev ;;
    coverage) echo gcovr ;;
    viewer) echo libboost-dev libturbojpeg0-dev ;;
    view) echo chromium chromium-driver firefox-esr python3-selenium python3 ;;
    mpi) echo libopenmpi-dev openmpi-bin ;;
    python)
      echo python3 python3-numpy python3-nibabel python3-pydicom python3-pytest python3-hypothesis python3-pil \
        mypy python3-build python3-setuptools python3-wheel
      ;;
    docs) echo doxygen help2man python3 ;;
    packages) echo dpkg-dev lintian fakeroot gzip ;;
    root) echo debootstrap ;;
    *)
      echo "deps.sh: no group '$1'" >&2
      return 1
      ;;
  esac
}

case ${1-} in -h | --help)
  print_usage
  sed -n 's/^    \([a-z]*\))\( echo .*\|\)$/  \1/p' "$0" | sort
  exit
  ;;
esac
ask=no
if [ "${1-}" = --ask ]; then
  ask=yes
  shift
fi
missing=()
for group in "$@"; do
  [[ $group != -* ]] || refuse "$group"
  packages=$(packages_of "$group") || exit 2
  for package in $packages; do
    [ "$(dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null)" = installed ] ||
      missing+=("$package")
  done
done
[ ${#missing[@]} = 0 ] && exit

install=(apt-get install --yes --no-install-recommends "${missing[@]}")
as_root=()
if [ "$(id -u)" != 0 ]; then
  if ! sudo -n true 2>/dev/null; then
    echo "deps.sh: packages are missing; install them as root, then start again:" >&2
    echo "  apt-get update && ${install[*]}" >&2
    exit 1
  fi
  as_root=(sudo)
fi

log=$(mktemp)
trap 'rm -f "$log"' EXIT
run() {
  if ! "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive LC_ALL=C "$@" >"$log" 2>&1 </dev/null; then
    tail -n 20 "$log" >&2
    echo "deps.sh: could not install: ${missing[*]}" >&2
    exit 1
  fi
}

run apt-get update
run "${install[@]}" --simulate
count=$(grep -c '^Inst ' "$log")
LC_ALL=C apt-get install --assume-no --no-install-recommends -o Debug::NoLocking=1 "${missing[@]}" >"$log" 2>&1 || true
fetch=$(sed -n 's/^Need to get \([^/]*B\).*/\1/p' "$log")
disk=$(sed -n 's/^After this operation, \(.*B\) of.*/\1/p' "$log")
echo "To be installed by apt-get: $count packages, ${fetch:-nothing} to fetch, ${disk:-nothing} on disk:" \
  "${missing[*]} and what they need"
if [ $ask = yes ] && [ -t 0 ]; then
  read -r -p "Go on? [Y/n] " answer
  case $answer in '' | [Yy]*) ;; *) exit 1 ;; esac
fi
run "${install[@]}"
