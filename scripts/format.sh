#!/bin/sh
# Formats every source; with --check only says which are not formatted.
set -eu
. "$(dirname "$0")/lib.sh"

need clang-format:clang-format
case ${1:-} in
  --check) options="--dry-run -Werror" ;;
  "") options=-i ;;
  *) fail "usage: format.sh [--check]" ;;
esac
# shellcheck disable=SC2086
git ls-files -z '*.h' '*.cpp' | xargs -0 clang-format $options
