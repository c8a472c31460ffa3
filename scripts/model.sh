#!/bin/sh
# Checks the model of the debug locks with Spin: mutual exclusion, no deadlock,
# books in order.
set -eu
. "$(dirname "$0")/lib.sh"

need spin:spin gcc:gcc

folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder"
cp "$project/tests/model/debug_lock.pml" .

# check NAME [FLAG]: explores every state of one kind of lock.
check() {
  # shellcheck disable=SC2086
  spin ${2-} -a debug_lock.pml >spin.log 2>&1 &&
    gcc -O2 -DSAFETY -DCOLLAPSE -o pan pan.c >gcc.log 2>&1 ||
    { cat ./*.log >&2; fail "the model of the $1 cannot be built"; }
  ./pan -m1000000 >pan.log 2>&1 || true
  grep -q 'errors: 0' pan.log && ! grep -q 'error:\|out of memory' pan.log || {
    cat pan.log >&2
    [ ! -f debug_lock.pml.trail ] || spin ${2-} -t -p debug_lock.pml >&2
    fail "the model of the $1 does not hold"
  }
  states="$states $1 $(sed -n 's/^ *\([0-9][0-9]*\) states, stored.*/\1/p' pan.log)"
}

states=
check "lock"
check "recursive lock" -DRECURSIVE
say "The model of the debug locks holds in all states:$states"
