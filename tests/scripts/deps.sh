#!/usr/bin/env bash
# deps.sh says what it is about to install and how large it is; without root it prints the command to type.
# The system's programs are stood in for, so that nothing is installed.
# Usage: deps.sh SOURCE_DIRECTORY
set -euo pipefail
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
complain() {
  echo "$*"
  exit 1
}
program() {  # name: the script on stdin stands in for it
  { echo '#!/bin/bash'; cat; } >"$scratch/$1"
  chmod +x "$scratch/$1"
}

program dpkg-query <<<'exit 1'
program sudo <<<'exit 1'
program id <<<'echo 1000'
program apt-get <<<'echo "the stand-in was called" >&2; exit 1'
status=0
said=$(PATH=$scratch:$PATH "$1/scripts/deps.sh" build 2>&1) || status=$?
[ $status = 1 ] || complain "without root it ends with status $status"
[[ $said = *"apt-get update && apt-get install --yes --no-install-recommends g++ cmake make"* ]] ||
  complain "without root it prints: $said"

program id <<<'echo 0'
program apt-get <<'APT'
case "$*" in
  *--simulate*) printf 'Inst one\nInst two\n' ;;
  *--assume-no*) printf 'Need to get 95.2 MB/96 MB of archives.\nAfter this operation, 371 MB of additional disk space will be used.\n' ;;
esac
echo "$*" >>"${0%/*}/calls"
APT
said=$(PATH=$scratch:$PATH "$1/scripts/deps.sh" build 2>&1 </dev/null) || complain "as root it fails: $said"
[[ $said = *"2 packages, 95.2 MB to fetch, 371 MB on disk: g++ cmake make"* ]] || complain "as root it prints: $said"
[ "$(tail -n 1 "$scratch/calls")" = "install --yes --no-install-recommends g++ cmake make" ] ||
  complain "it called: $(cat "$scratch/calls")"

program dpkg-query <<<'echo -n installed'
said=$(PATH=$scratch:$PATH "$1/scripts/deps.sh" build 2>&1) || complain "it fails with nothing to do"
[ "$said" = "" ] || complain "with nothing to do it prints: $said"
