#!/bin/sh
# check.sh INCLUDE_DIR FILE COMPILER...: compiles FILE once healthy, which has to
# work, and once with -DBROKEN, which has to be rejected.
set -eu
include=$1
file=$2
shift 2

"$@" -std=c++17 -fsyntax-only -Wall -Wextra -Werror -I"$include" "$file"
if "$@" -std=c++17 -fsyntax-only -Wall -Wextra -Werror -I"$include" -DBROKEN "$file" 2>/dev/null; then
  echo "$file was accepted although it is broken." >&2
  exit 1
fi
