#!/bin/sh
# Runs the tests over a library that counts, and fails unless every line and
# every branch of src/ and of the headers was reached. Branches that only
# exceptions take do not count; tests/coverage/exclusions.txt names the others,
# with reasons.
set -eu
. "$(dirname "$0")/lib.sh"

list=tests/coverage/exclusions.txt

# Lines of source, blanks around them aside, as one pattern.
exclusions() {
  grep -v -e '^#' -e '^$' $list | sed 's/[][\.*^$+?(){}|]/\\&/g' |
    paste -s -d '|' - | sed 's/.*/\\s*(&)\\s*$/'
}

# An exclusion whose line is gone would hide whatever gets the same text.
check_exclusions() {
  sed -e 's/^[ ]*//' src/*.cpp src/internal/*.h include/orvo/*.h >build/sources.txt
  grep -v -e '^#' -e '^$' $list | while read -r line; do
    grep -qxF -e "$line" build/sources.txt || fail "no source has this line of $list: $line"
  done
}

# count PREFIX REPORT FOLDER...: fails if something in PREFIXsrc/ or
# PREFIXinclude/ was not reached.
count() {
  prefix=$1 report=$2
  shift 2
  mkdir -p "$report"
  # The torture is not run: it takes minutes here and reaches nothing else. The
  # line is counted as that of the callers into which it is always inlined.
  gcovr -j 2 --filter "${prefix}src/" --filter "${prefix}include/" \
    --exclude-directories '.*torture.*' \
    --exclude-lines-by-pattern '  const int size = std::clamp\(depth, 0, kDeepest\) \+ 1;' \
    --gcov-executable "$project/tests/coverage/gcov.sh" \
    --exclude-throw-branches --exclude-unreachable-branches \
    --exclude-branches-by-pattern "$(exclusions)" \
    --json "$report/counts.json" --html-details "$report/index.html" \
    --print-summary --fail-under-line 100 --fail-under-branch 100 "$@"
}

self_test() {
  planted=build/coverage-planted
  rm -rf $planted
  mkdir -p $planted
  (cd $planted && g++ --coverage "$project/tests/coverage/planted/src/greeting.cpp" \
    -o greeting && ./greeting)
  if count tests/coverage/planted/ $planted/report $planted >$planted/log 2>&1; then
    fail "a line that was never reached went unnoticed; see $planted/log"
  fi
  grep -qxF -e 'lines: 75.0% (3 out of 4)' $planted/log ||
    fail "the counts of a small program are wrong; see $planted/log"
  grep -qxF -e 'branches: 50.0% (1 out of 2)' $planted/log ||
    fail "the counts of a small program are wrong; see $planted/log"
}

need_test_tools
need gcovr:gcovr
mkdir -p build
check_exclusions
say "Checking that a line without a test is noticed"
self_test
# The counts add up over runs; these are to be those of this one.
find build/coverage build/coverage-noassert -name '*.gcda' -delete 2>/dev/null || true
run_tests coverage
run_tests coverage-noassert
say "Counting"
report=build/coverage/report
count "" "$report" build/coverage build/coverage-noassert || {
  python3 tests/coverage/misses.py "$report/counts.json" >&2
  fail "something was not reached; see $report/index.html"
}
