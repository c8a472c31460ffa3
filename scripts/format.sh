#!/bin/sh
# Formats every source; with --check only says which are not formatted.
set -eu
. "$(dirname "$0")/lib.sh"

need clang-format:clang-format git:git
case ${1:-} in
  --check) options="--dry-run -Werror" ;;
  "") options=-i ;;
  *) fail "usage: format.sh [--check]" ;;
esac
sources=$(mktemp)
trap 'rm -f "$sources"' EXIT
git ls-files -z '*.h' '*.cpp' >"$sources" || fail "git cannot list the sources"
[ -s "$sources" ] || fail "git lists no sources"
# shellcheck disable=SC2086
xargs -0 clang-format $options <"$sources"
