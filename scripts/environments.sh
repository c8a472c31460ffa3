#!/bin/sh
# Runs the tests of the library and its programs, as test.sh has built them, in
# other environments: locales, time zones with daylight saving, a small stack.
# With --long in more of them, and in builds with a checked standard library,
# another standard library and unsigned characters.
set -eu
. "$(dirname "$0")/lib.sh"

programs=$project/build/dev/tests
log=$project/build/environments.log

# run NAME FAULTS COMMAND...: runs the tests through a command that makes the
# environment, after programs with faults that must show there and only there.
run() {
  name=$1 faults=$2
  shift 2
  for fault in $faults; do
    "$programs/programs/planted_fault" "$fault" >"$log" 2>&1 ||
      fail "the planted fault $fault shows everywhere"
    ! "$@" "$programs/programs/planted_fault" "$fault" >"$log" 2>&1 ||
      fail "the planted fault $fault does not show with $name"
  done
  # Examples print through std::cout and printf(), which follow the locale.
  case $1 in
    in_locale) left_out='^(examples_.*|demo)$' ;;
    *) left_out='^$' ;;
  esac
  say "Running the tests with $name"
  "$@" ctest --preset dev --label-regex '^programs$' --exclude-regex "$left_out" >"$log" 2>&1 || {
    grep -vE ' Passed |  Start ' "$log" | cut -c 1-200 | head -n 60 >&2
    fail "tests fail with $name; the whole log is build/environments.log"
  }
}

# in_locale LOCALE COMMAND...: runs a command whose programs of the library start
# with a locale of the C library, or in the C++ locale "grouping". The system's
# own messages stay English, as the tests know them.
in_locale() {
  locale=$1
  shift
  LOCPATH=$project/build/locales LC_ALL=$locale LANGUAGE=C ORVO_TEST_LOCALE=$locale \
    LD_PRELOAD=$programs/orvo_test_locale.so "$@"
}

# Private ones, which leave those of the system alone.
make_locales() {
  for locale in de_DE.ISO-8859-1 de_DE.UTF-8 tr_TR.ISO-8859-9 tr_TR.UTF-8; do
    [ ! -d "build/locales/$locale" ] || continue
    mkdir -p build/locales
    localedef -i "${locale%.*}" -f "${locale#*.}" "build/locales/$locale" >"$log" 2>&1 ||
      fail "localedef cannot make $locale: $(cat "$log")"
  done
}

run_short() {
  # RapidCheck reads its own numbers in this locale, and a program that may not
  # allocate cannot have it.
  run "a grouping C++ locale" groups_digits in_locale grouping \
    env GTEST_FILTER='-*Property.*:*.EndsAProcessThatCannotLoad'
  run "German on Lord Howe Island" "decimal_comma clock_change" \
    in_locale de_DE.UTF-8 env TZ=Australia/Lord_Howe
  run "Turkish in New York and a small stack" \
    "turkish_letters clock_change much_stack" \
    in_locale tr_TR.UTF-8 env TZ=America/New_York prlimit --stack=262144:262144
}

run_long() {
  run "Latin German in Berlin" "decimal_comma latin_letters clock_change" \
    in_locale de_DE.ISO-8859-1 env TZ=Europe/Berlin
  run "Latin Turkish in Dublin" "turkish_letters latin_letters clock_change" \
    in_locale tr_TR.ISO-8859-9 env TZ=Europe/Dublin
  run "memory that is never zero" never_written env MALLOC_PERTURB_=165
  run "tests in random order" "" env GTEST_SHUFFLE=1
  run "an empty environment" "" env -i PATH="$PATH"
  for preset in debugstl libcxx unsignedchar; do
    scripts/test.sh "$preset"
  done
}

case ${1:-} in
  "" | --long) ;;
  *) fail "usage: environments.sh [--long]" ;;
esac
need_test_tools
need localedef:libc-bin /usr/share/i18n/locales/tr_TR:locales \
  /usr/share/zoneinfo/Australia/Lord_Howe:tzdata
[ -x "$programs/programs/planted_fault" ] || run_tests dev
make_locales
run_short
[ "${1:-}" != --long ] || run_long
say "The tests pass in all environments"
