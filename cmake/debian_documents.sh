#!/bin/sh
# Debian's copyright file, out of LICENSE, and a changelog that names the release.
# Usage: debian_documents.sh SOURCE_DIRECTORY OUTPUT_DIRECTORY VERSION MAINTAINER
set -eu
mkdir -p "$2"
{
  cat <<HEAD
Format: https://www.debian.org/doc/packaging-manuals/copyright-format/1.0/
Upstream-Name: ZOX Volume

Files: *
Copyright: $(sed -n 's/^Copyright (c) //p' "$1/LICENSE")
License: Expat

License: Expat
HEAD
  sed '1,/^Copyright/d; /./,$!d; s/^$/./; s/^/ /' "$1/LICENSE" | sed '1{/^ \.$/d}'
} >"$2/copyright"

# The changelog's time is that of CHANGELOG.md: the same tree gives the same package.
{
  printf 'zox-volume (%s) unstable; urgency=medium\n\n' "$3"
  echo '  * What is new stands in CHANGELOG.md, which zox-volume-doc holds.'
  printf '\n -- %s  %s\n' "$4" "$(date -R -u -r "$1/CHANGELOG.md")"
} | gzip -9n >"$2/changelog.Debian.gz"
