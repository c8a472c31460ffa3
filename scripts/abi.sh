#!/bin/sh
# abi.sh [--update]: compares the binary interface of the library, built in each
# way that must not change it, with the kept snapshot; any difference fails, and
# so do two planted ones that stay unnoticed. --update rewrites the snapshot.
set -eu
. "$(dirname "$0")/lib.sh"
need_build_tools
need abidw:abigail-tools nm:binutils

snapshot=$project/abi/liborvo.so.1.abi
suppressions=$project/abi/own.suppr
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# build_library SOURCE NAME STANDARD CONFIGURATION ASSERTIONS
#
# Types are described where the file of their own name is compiled, so that the
# library's are and the standard library's are not.
build_library() {
  cmake -G Ninja -S "$1" -B "$work/$2" -DCMAKE_CXX_COMPILER=g++ -DCMAKE_CXX_STANDARD="$3" \
    -DCMAKE_BUILD_TYPE="$4" -DORVO_ASSERTIONS="$5" -DORVO_BUILD_TESTS=OFF \
    -DORVO_BUILD_BENCHMARKS=OFF -DORVO_BUILD_EXAMPLES=OFF \
    -DCMAKE_CXX_FLAGS="-g -femit-struct-debug-baseonly -ffile-prefix-map=$1/=" >"$work/log" 2>&1 &&
    cmake --build "$work/$2" --target orvo >>"$work/log" 2>&1 ||
    { tail -n 30 "$work/log" >&2; fail "building the library as $2 failed"; }
}

# describe NAME: writes the interface of a built library to NAME.abi. Whether a
# function was declared inline binds nobody, and depends on the optimisation.
describe() {
  abidw --suppressions "$suppressions" --exported-interfaces-only --drop-undefined-syms \
    --no-corpus-path --no-comp-dir-path --no-show-locs --no-elf-needed --no-parameter-names \
    --type-id-style hash "$work/$1/liborvo.so.1" >"$work/described" ||
    fail "abidw cannot describe $1"
  sed "s|path='[^']*/src/|path='src/|; s/ declared-inline='yes'//" "$work/described" >"$work/$1.abi"
}

# differs ABI: whether an interface differs from the snapshot in any way, which
# differs.txt then tells. 4 and 8 are abidiff's words for changes.
differs() {
  status=0
  abidiff --harmless --no-show-locs "$snapshot" "$1" >"$work/differs.txt" 2>&1 || status=$?
  case $status in
    0) return 1 ;;
    4 | 8 | 12) ;;
    *)
      cat "$work/differs.txt" >&2
      fail "abidiff cannot compare $(basename "$1") (status $status)"
      ;;
  esac
}

# plant NAME FILE EXPRESSION: a copy of the sources with one change, which has to
# be found.
plant() {
  mkdir "$work/$1.source"
  tar --exclude=./build --exclude=./.git -cf - . | tar -xf - -C "$work/$1.source"
  sed -i "$3" "$work/$1.source/$2"
  ! cmp -s "$2" "$work/$1.source/$2" || fail "the planted difference '$1' changed nothing"
  build_library "$work/$1.source" "$1" 17 Debug ON
  describe "$1"
  differs "$work/$1.abi" || fail "the planted difference '$1' was not found"
}

if [ "${1:-}" = --update ]; then
  build_library "$project" reference 17 Release ON
  describe reference
  cp "$work/reference.abi" "$snapshot"
  exit
fi

failed=0
for variant in 17:Release:ON 17:Release:OFF 17:Debug:ON 20:Release:ON 23:Release:ON 23:Debug:OFF; do
  IFS=: read -r standard configuration assertions <<END
$variant
END
  name=c++$standard-$configuration-assertions-$assertions
  say "Comparing the interface ($name)"
  build_library "$project" "$name" "$standard" "$configuration" "$assertions"
  describe "$name"
  if differs "$work/$name.abi"; then
    cat "$work/differs.txt" >&2
    failed=1
  fi
  sh tests/package/symbols.sh "$work/$name/liborvo.so.1" tests/package/symbols.txt || failed=1
done
[ "$failed" -eq 0 ] || fail "the interface changed; if that is wanted: scripts/abi.sh --update"

say "Looking for planted differences"
plant inserted-virtual include/orvo/lock.h \
  's/^  virtual void unlock();$/  virtual void Inserted() {}\n&/'
plant changed-member include/orvo/numeric_string.h 's/^  int value_;$/  unsigned value_;/'
