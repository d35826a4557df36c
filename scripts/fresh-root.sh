#!/usr/bin/env bash
# Does what README says in a bare Debian 12, made by debootstrap with g++, cmake, make, git and ca-certificates and
# nothing else: builds and installs the library alone and runs README's example. Then installs the packages of
# scripts/packages.sh into another bare root, builds programs by pkg-config and by find_package there, runs the
# examples and renders the phantom. Needs root and the network; without root it ends with status 77.
# Usage: fresh-root.sh [library|packages]      one half alone
set -euo pipefail
# shellcheck source=scripts/usage.sh
. "$(dirname "$0")/usage.sh"
help_if_asked "$@"
case ${1-} in '' | library | packages) ;; *) refuse "$1" ;; esac
cd "$(dirname "$0")/.."
if [ "$(id -u)" != 0 ]; then
  echo "fresh-root.sh: needs root, for debootstrap and chroot"
  exit 77
fi
scripts/deps.sh root
work=$PWD/build/fresh-root
base=$work/base.tar
mkdir -p "$work/archives"

say() { echo "== $* ($SECONDS s)"; }

make_base() {
  [ ! -e "$base" ] || return 0
  say "a bare Debian"
  rm -rf "$work/base"
  debootstrap --variant=minbase --include=g++,cmake,make,git,ca-certificates bookworm "$work/base" \
    http://deb.debian.org/debian >"$work/debootstrap.log" 2>&1 || { tail -n 20 "$work/debootstrap.log" >&2; exit 1; }
  tar -C "$work/base" -cf "$base.new" .
  mv "$base.new" "$base"
  rm -rf "$work/base"
}

# Unpacks the base and the tree as it stands, committed or not, into $root/src.
make_root() {  # name
  root=$work/$1
  rm -rf "$root"
  mkdir -p "$root"
  tar -C "$root" -xf "$base"
  mkdir "$root/src"
  git ls-files -z --cached --others --exclude-standard | xargs -0 tar -cf - --ignore-failed-read 2>/dev/null |
    tar -C "$root/src" -xf -
  cp -L /etc/resolv.conf "$root/etc/resolv.conf"
}

inside() {  # command: by a shell in the root, stopping at the first failure
  chroot "$root" env -i PATH=/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin HOME=/root LC_ALL=C.UTF-8 \
    DEBIAN_FRONTEND=noninteractive bash -euc "$1"
}

# The commands of a section of README.
commands_of() {  # heading
  awk -v heading="## $1" '/^## /{ here = $0 == heading } /^```/{ inside = here && $0 == "```sh"; next } inside' README.md
}

# README's example, and what it prints.
example_of() {  # language
  awk -v fence="\`\`\`$1" '/^```/{ inside = $0 == fence; next } inside' README.md
}

library_alone() {
  make_root library
  say "README's commands, with a compiler alone"
  if inside 'command -v pkg-config python3 doxygen' >/dev/null; then
    echo "the root is not as bare as it should be" >&2
    exit 1
  fi
  inside "cd /src; $(commands_of 'Build and install')" >"$work/library.log" 2>&1 ||
    { tail -n 20 "$work/library.log" >&2; exit 1; }
  say "README's example"
  example_of c >"$root/src/example.c"
  example_of text >"$root/src/expected.txt"
  inside 'cd /src; cc -std=c11 example.c -o example -lzox_volume; ./example >printed.txt; diff expected.txt printed.txt'
  inside 'cd /src; c++ -x c++ -std=c++17 example.c -o example -lzox_volume; ./example | diff expected.txt -'
  say "taken back"
  inside 'cd /src; cmake --build build/release --target uninstall >/dev/null; ! find /usr/local -name "*zox*" | grep .'
}

packages() {
  make_root packages
  ls build/packages/*.deb >/dev/null 2>&1 || scripts/packages.sh
  cp build/packages/*.deb "$root/var/tmp/"
  cp "$work"/archives/*.deb "$root/var/cache/apt/archives/" 2>/dev/null || true
  say "the packages"
  inside 'apt-get update -q >/dev/null; apt-get install -qy --no-install-recommends pkg-config /var/tmp/*.deb' \
    >"$work/install.log" 2>&1 || { tail -n 20 "$work/install.log" >&2; exit 1; }
  cp "$root"/var/cache/apt/archives/*.deb "$work/archives/"
  say "a C program by pkg-config, C and C++ programs by find_package"
  inside 'cd /src/tests/package/consumer
    cc -std=c11 main.c -o /tmp/main $(pkg-config --cflags --libs zox_volume); /tmp/main
    cc -std=c11 render.c -o /tmp/render $(pkg-config --cflags --libs zox_render); /tmp/render
    cmake -S . -B /tmp/consumer -DWITH_RENDER=ON >/dev/null; cmake --build /tmp/consumer >/dev/null
    for name in consumer consumer_static consumer_cpp consumer_render; do /tmp/consumer/$name; done'
  say "the examples, as they are installed"
  inside 'cd /tmp; mkdir examples; sh /usr/share/doc/zox-volume-doc/examples/run.sh /tmp/examples; ls /tmp/examples'
  say "the phantom"
  inside 'cd /tmp; zox-mip --phantom -o phantom.png; head -c 4 phantom.png | grep -q PNG'
  cp "$root/tmp/phantom.png" "$root"/tmp/examples/*.png "$work/"
  say "the phantom, by two ranks"
  inside 'cd /tmp; OMPI_ALLOW_RUN_AS_ROOT=1 OMPI_ALLOW_RUN_AS_ROOT_CONFIRM=1 \
    mpirun --oversubscribe -n 2 zox-mip-mpi --phantom -o ranks.png; cmp phantom.png ranks.png'
  say "removed"
  inside 'apt-get purge -qy "libzox*" "zox*" python3-zox-volume >/dev/null; ! find /usr/bin /usr/lib /usr/include -name "*zox*" | grep .'
}

make_base
[ "${1-}" = packages ] || library_alone
[ "${1-}" = library ] || packages
say "all is well"
