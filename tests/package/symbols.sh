#!/bin/sh
# symbols.sh LIBRARY LIST [--update]: compares what the library exports with a
# kept list, so that nothing is lost or added by accident.
set -eu
library=$1
list=$2

# The library's own names; instantiations of the standard library's templates
# depend on the compiler, and thunks and tables follow from the classes.
own_symbols() {
  nm -D --defined-only "$library" | cut -d ' ' -f 3 |
    grep -E '^_ZNK?[RO]?4orvo|^_Z(N?K?)(11Concatenate|13FastFormatter|ls)|^_ZTI' |
    c++filt |
    sed 's/std::__cxx11::basic_string<char, std::char_traits<char>, std::allocator<char> >/std::string/g' |
    grep -E 'orvo::|Concatenate|FastFormatter' | LC_ALL=C sort -u
}

if [ "${3:-}" = --update ]; then
  own_symbols >"$list"
  exit
fi
own_symbols | diff -u "$list" - || {
  echo "The exported symbols differ. If that is wanted: $0 $* --update" >&2
  exit 1
}
