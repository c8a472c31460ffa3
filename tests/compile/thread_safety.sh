#!/bin/sh
# thread_safety.sh INCLUDE_DIR FILE CLANG...: compiles FILE with the thread-safety
# analysis once healthy, which has to work, and once with each of its mistakes,
# which has to be rejected.
set -eu
include=$1
file=$2
shift 2

analyse() {
  mistake=$1
  shift
  "$@" -std=c++17 -fsyntax-only -Wall -Wextra -Wthread-safety -Werror \
    -I"$include" -DMISTAKE="$mistake" "$file"
}

analyse 0 "$@"
for mistake in 1 2 3 4 5 6; do
  if analyse "$mistake" "$@" 2>/dev/null; then
    echo "$file was accepted in spite of its mistake $mistake." >&2
    exit 1
  fi
done
