#!/bin/sh
# Flips and removes the conditional jumps of the library, one at a time, and
# checks that the tests notice. An argument names a number of mutants to draw;
# without it all of them take about an hour. ORVO_MUTATION_SOURCE names a single
# source, such as src/midi.cpp.
set -eu
. "$(dirname "$0")/lib.sh"

# Of the four mutants of a tiny library exactly the two must survive that stand
# in the function whose answers nobody looks at.
self_test() {
  planted=build/mutation-planted
  { cmake -G Ninja -S tests/mutation/planted -B $planted && cmake --build $planted
  } >$planted.log 2>&1 || fail "cannot build the planted library; see $planted.log"
  if python3 tests/mutation/mutate.py $planted/liborvo.so.1.0 $planted \
    --root tests/mutation/planted >$planted.log; then
    fail "mutants of a function without a test went unnoticed; see $planted.log"
  fi
  killed=$(grep -c '^2 of 4 mutants killed' $planted.log || true)
  survived=$(grep -c '^survived: .*: if (number > 0)' $planted.log || true)
  [ "$killed $survived" = "1 2" ] ||
    fail "the wrong mutants survived; see $planted.log"
}

need_test_tools
need objdump:binutils python3:python3
mkdir -p build
say "Checking that a mutant survives where nobody looks, and only there"
self_test
say "Building the tests (dev) and the library with one jump per condition (mutation)"
build dev
build mutation
say "Trying the mutants"
python3 tests/mutation/mutate.py build/mutation/liborvo.so.1 build/dev \
  ${1:+--sample "$1"} ${ORVO_MUTATION_SOURCE:+--source "$ORVO_MUTATION_SOURCE"}
