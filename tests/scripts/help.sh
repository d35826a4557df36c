#!/usr/bin/env bash
# Every script says with --help what it does, and refuses what it does not know, before it does anything.
# Usage: help.sh SOURCE_DIRECTORY
set -euo pipefail
failed=0
complain() {
  echo "$*"
  failed=1
}

for script in "$1"/scripts/*.sh; do
  name=${script##*/}
  # Sourced by the others.
  case $name in stages.sh | usage.sh) continue ;; esac
  help=$(timeout 10 "$script" --help </dev/null) || complain "$name --help fails"
  [ "$(wc -w <<<"$help")" -gt 10 ] || complain "$name --help says too little: $help"
  status=0
  said=$(timeout 10 "$script" --no-such-option 2>&1 </dev/null) || status=$?
  [ $status = 2 ] || complain "$name --no-such-option ends with status $status"
  [[ $said = *--no-such-option* ]] || complain "$name does not say which option it refuses: $said"
done
exit $failed
