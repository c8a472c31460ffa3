#!/bin/sh
# Runs tests, as test.sh has built them, under valgrind's memcheck: no invalid
# access, no use of what was never written, no leak. Without arguments the quick
# tests, with --long all of them, else those that are named, as in
# "memcheck.sh uuid id3".
set -eu
. "$(dirname "$0")/lib.sh"

programs=$project/build/dev/tests
logs=$project/build/memcheck

# memcheck NAME PROGRAM ARGUMENT: as well as the programs that this one runs.
# Replaced allocation functions stay in their place.
memcheck() {
  valgrind --error-exitcode=99 --leak-check=full --suppressions="$project/tests/memcheck.supp" \
    --soname-synonyms=somalloc=nouserintercepts \
    --trace-children=yes --trace-children-skip='/bin/*,/usr/*' \
    --log-file="$logs/$1.%p.log" "$programs/$2" "$3" >"$logs/$1.out" 2>&1
}

# Processes that end by abort(), as death tests want it, have no time to free
# anything.
clean() {
  awk '
    / lost in loss record / { ++leaks }
    /Process terminating with default action of signal 6 / { aborted = 1 }
    /ERROR SUMMARY:/ { errors = $4 }
    END { exit errors > (aborted ? leaks : 0) }' "$1"
}

# check TEST: runs one test and shows what memcheck reports.
check() {
  rm -f "$logs/$1".*
  status=0
  memcheck "$1" "$1_test" --gtest_brief=1 || status=$?
  for log in "$logs/$1".*.log; do
    clean "$log" || { grep -A 20 ' at 0x' "$log" | head -n 60 >&2; status=99; }
  done
  [ "$status" -eq 0 ] || {
    grep -v '^Running main' "$logs/$1.out" | cut -c 1-200 | head -n 40 >&2
    fail "$1 does not pass memcheck; the logs are build/memcheck/$1.*"
  }
}

# A check that cannot fail proves nothing.
find_planted_faults() {
  for fault in never_written behind_the_end leak; do
    status=0
    memcheck planted_fault programs/planted_fault "$fault" || status=$?
    [ "$status" -eq 99 ] ||
      fail "memcheck does not find the planted fault $fault (status $status)"
  done
}

# All but one that counts frames, of which memcheck has its own.
all_tests() {
  for program in "$programs"/*_test; do
    name=$(basename "$program" _test)
    case $name in
      stacktrace_frames) ;;
      *) echo "$name" ;;
    esac
  done
}

# Without those that take more than a few seconds.
quick_tests() {
  all_tests | grep -v -e '^allocation_failure$' -e '^broken_' -e '^debug_lock_torture$' \
    -e '^examples_' -e '^exhaustive$' -e '^numeric_string$' -e '^path$' \
    -e '^properties$' -e '^strings$' -e '^thread_safe_ostream$'
}

case ${1:-} in
  "" | --long) ;;
  -*) fail "usage: memcheck.sh [--long | TEST...]" ;;
esac
need_test_tools
need valgrind:valgrind
[ -x "$programs/programs/planted_fault" ] || run_tests dev
mkdir -p "$logs"
case ${1:-} in
  "") tests=$(quick_tests) ;;
  --long) tests=$(all_tests) ;;
  *)
    for test in "$@"; do check "$test"; done
    exit
    ;;
esac
find_planted_faults
say "Running $(echo "$tests" | wc -l) tests under memcheck"
echo "$tests" | xargs -n 1 -P "$(nproc)" "$project/scripts/memcheck.sh"
