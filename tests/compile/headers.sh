#!/bin/sh
# headers.sh INCLUDE_DIR COMPILER...: compiles each public header alone, twice in
# one file, as C++17, C++20 and C++23.
set -eu
include=$1
shift

failed=0
for standard in c++17 c++20 c++2b; do
  for header in "$include"/orvo/*.h; do
    name=orvo/$(basename "$header")
    printf '#include <%s>\n#include <%s>\n' "$name" "$name" |
      "$@" -std="$standard" -fsyntax-only -Wall -Wextra -Wpedantic -Wshadow \
        -Wconversion -Wsign-conversion -Wold-style-cast -Werror -I"$include" -x c++ - ||
      { echo "$name does not stand alone as $standard." >&2; failed=1; }
  done
done
exit "$failed"
