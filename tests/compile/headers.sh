#!/bin/sh
# headers.sh INCLUDE_DIR COMPILER...: compiles each public header alone, twice in
# one file, as C++17, C++20 and C++23; fmt_format.h only where fmt is installed.
set -eu
include=$1
shift

has_fmt=true
echo '#include <fmt/format.h>' | "$@" -std=c++17 -fsyntax-only -x c++ - 2>/dev/null || has_fmt=false

failed=0
for standard in c++17 c++20 c++2b; do
  for header in "$include"/orvo/*.h; do
    name=orvo/$(basename "$header")
    [ "$name" != orvo/fmt_format.h ] || "$has_fmt" || continue
    printf '#include <%s>\n#include <%s>\n' "$name" "$name" |
      "$@" -std="$standard" -fsyntax-only -Wall -Wextra -Wpedantic -Wshadow \
        -Wconversion -Wsign-conversion -Wold-style-cast -Werror -I"$include" -x c++ - ||
      { echo "$name does not stand alone as $standard." >&2; failed=1; }
  done
done
exit "$failed"
