#!/bin/sh
# Checks the model of the debug locks with Spin: mutual exclusion, no deadlock,
# books in order; and that the accident of a wait that nobody announces is found.
set -eu
. "$(dirname "$0")/lib.sh"

need spin:spin gcc:gcc /usr/include/stdio.h:libc6-dev

folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder"
cp "$project/tests/model/debug_lock.pml" .

# explore NAME FLAGS...: visits every state of one kind of lock, up to an error.
explore() {
  name=$1
  shift
  rm -f debug_lock.pml.trail
  spin "$@" -a debug_lock.pml >spin.log 2>&1 &&
    gcc -O2 -DSAFETY -DCOLLAPSE -o pan pan.c >gcc.log 2>&1 ||
    { cat ./*.log >&2; fail "the model of the $name cannot be built"; }
  ./pan -m1000000 >pan.log 2>&1 || true
}

# check NAME FLAGS...: finds no error.
check() {
  explore "$@"
  shift
  grep -q 'errors: 0' pan.log && ! grep -q 'error:\|out of memory' pan.log || {
    cat pan.log >&2
    [ ! -f debug_lock.pml.trail ] || spin "$@" -t -p debug_lock.pml >&2
    fail "the model of the $name does not hold"
  }
  states="$states $name $(sed -n 's/^ *\([0-9][0-9]*\) states, stored.*/\1/p' pan.log)"
}

# find_accident ASSERTION NAME FLAGS...: finds this assertion violated.
find_accident() {
  assertion=$1
  shift
  explore "$@"
  grep -qF "assertion violated $assertion" pan.log || {
    cat pan.log >&2
    fail "the model of the $name does not show the accident"
  }
}

states=
check "lock"
check "recursive lock" -DRECURSIVE
check "lock with waits" -DWAITS
check "recursive lock with waits" -DRECURSIVE -DWAITS
find_accident "(refused==(held==0))" "lock with waits that nobody announces" \
  -DWAITS -DUNANNOUNCED
say "The model of the debug locks holds in all states:$states"
