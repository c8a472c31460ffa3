#!/bin/sh
# Loads the library and counts what goes wrong: one line for each check, in a
# short form of a minute or, with --long, in one that takes about an hour.
#
#   torture.sh [--long] [--tsan] [--soak SECONDS] [CHECK...]
#
# Checks: whole_lines locks debug_books conditions signals churn load lifetime
# soak kill. Each is also run with planted faults, which it has to find.
set -eu
. "$(dirname "$0")/lib.sh"

all="whole_lines locks debug_books conditions signals churn load lifetime soak kill"
preset=torture long='' soak='' checks=''
while [ $# -gt 0 ]; do
  case $1 in
    --long) long=yes ;;
    --tsan) preset=torture-tsan ;;
    --soak) [ $# -gt 1 ] || fail "--soak needs a number of seconds"; soak=$2; shift ;;
    -*) fail "usage: torture.sh [--long] [--tsan] [--soak SECONDS] [CHECK...]" ;;
    *) checks="$checks $1" ;;
  esac
  shift
done

# form SHORT LONG: the one that was asked for.
form() { if [ -n "$long" ]; then echo "$2"; else echo "$1"; fi; }

# Seconds after which a check counts as stuck: minutes more than it needs.
patience=$(form 600 14400)

# run CHECK ARGUMENTS...: finds nothing.
run() {
  program=$programs/$1_torture
  shift
  "$program" "$@" || fail "$(basename "$program") $* found faults"
}

# find_fault CHECK ARGUMENTS...: finds something; 66 is ThreadSanitizer's word
# for it.
find_fault() {
  program=$programs/$1_torture
  shift
  status=0
  "$program" "$@" >/dev/null 2>&1 || status=$?
  case $status in
    1 | 66) faults=$((faults + 1)) ;;
    *) fail "$(basename "$program") $* did not find the planted fault (status $status)" ;;
  esac
}

check_whole_lines() {
  run whole_lines --threads=64 --messages="$(form 1000 100000)" --limit="$patience"
  find_fault whole_lines --twin=pieces
}

check_locks() {
  run locks --acquisitions="$(form 100000 10000000)" --debug="$(form 50000 1000000)" \
    --limit="$patience"
  for twin in does_nothing unlocks_too_early pretends_to_be_free \
    succeeds_at_time_out recursion_off_by_one forgets_its_owner; do
    find_fault locks --twin=$twin
  done
  find_fault locks --threads=1 --acquisitions=1000 --debug=1000
}

check_debug_books() {
  run debug_books --steps="$(form 50000 1000000)" --limit="$patience"
  find_fault debug_books --twin=forgets_its_owner
}

check_conditions() {
  run conditions --hand-overs="$(form 50000 1000000)" --rounds="$(form 1 10)" \
    --limit="$patience"
  find_fault conditions --twin=forgets_signals --hand-overs=100 --limit=2
  find_fault conditions --twin=early_clock
  find_fault conditions --twin=wall_clock
}

check_signals() {
  run signals --sleeps="$(form 200 5000)" --interruptions="$(form 100 10000)" \
    --limit="$patience"
  run conditions --ticks --hand-overs="$(form 10000 1000000)" --limit="$patience"
  run locks --ticks --threads=10 --acquisitions="$(form 50000 1000000)" \
    --debug="$(form 20000 1000000)" --limit="$patience"
  find_fault signals --twin=short_sleeps
  find_fault signals --twin=fresh_polls
}

check_churn() {
  if [ $preset = torture-tsan ]; then
    run churn --threads="$(form 10000 100000)" --any-growth --limit="$patience"
    return
  fi
  run churn --threads="$(form 10000 100000)" --limit="$patience"
  find_fault churn --twin=keeps_threads
  find_fault churn --twin=keeps_entries
}

check_load() {
  run load "$library" --cycles="$(form 100 1000)"
  find_fault load "$library" --twin=keeps_library
}

check_lifetime() {
  times=$(form 20 1000)
  folder=$(mktemp -d)
  trap 'rm -rf "$folder"' EXIT
  ended=0
  while [ $ended -lt "$times" ]; do
    "$programs/lifetime_torture" "$folder" 2>"$folder/calls" >/dev/null ||
      fail "lifetime_torture ended with status $? and wrote: $(cat "$folder/calls")"
    calls=$(tr '\n' ' ' <"$folder/calls")
    [ "$calls" = "first ok constructor ok main ok handler ok destructor ok last ok " ] ||
      fail "lifetime_torture wrote: $calls"
    ended=$((ended + 1))
  done
  rm -rf "$folder"
  trap - EXIT
  echo "lifetime: $times processes use everything from start to exit, 0 faults"
}

check_soak() {
  if [ $preset = torture-tsan ]; then
    run soak --seconds=10 --any-growth
    return
  fi
  run soak --seconds="${soak:-$(form 10 3600)}"
  find_fault soak --seconds=5 --twin=leaks_memory
  find_fault soak --seconds=5 --twin=leaks_descriptors
}

check_kill() {
  run kill --kills="$(form 100 1000)"
  find_fault kill --twin=two_pieces
  find_fault kill --twin=ends_early
}

need_build_tools
say "Building the torture programs ($preset)"
build $preset
library=$project/build/$preset/liborvo.so
programs=$project/build/$preset/torture
faults=0
# shellcheck disable=SC2086
for check in ${checks:-$all}; do
  case " $all " in
    *" $check "*) "check_$check" ;;
    *) fail "there is no check $check; there are: $all" ;;
  esac
done
say "No fault but the $faults planted ones"
