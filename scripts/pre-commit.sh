#!/usr/bin/env bash
# The checks that take a second, of what is about to be committed: format of the sources, shell scripts,
# white space, and the lists of scripts/mutate.sh where they or the library changed. To have git run it:
#   ln -s ../../scripts/pre-commit.sh "$(git rev-parse --git-path hooks)/pre-commit"
set -euo pipefail
cd "$(git rev-parse --show-toplevel)"
# shellcheck source=scripts/usage.sh
. scripts/usage.sh
take_no_arguments "$@"

staged() { git diff --cached --name-only --diff-filter=ACMR -- "$@"; }
failed=0

git diff --cached --check || failed=1
mapfile -t sources < <(staged '*.h' '*.c' '*.cpp' '*.inl')
if [ ${#sources[@]} != 0 ]; then clang-format --dry-run -Werror "${sources[@]}" || failed=1; fi
mapfile -t shell < <(staged '*.sh')
if [ ${#shell[@]} != 0 ]; then shellcheck --severity=warning "${shell[@]}" || failed=1; fi
if [ -n "$(staged src scripts/mutations scripts/mutate.sh)" ]; then
  scripts/mutate.sh --applies || failed=1
fi
exit $failed
