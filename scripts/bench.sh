#!/bin/sh
# Measures the library beside its peers and its limits, and says which goals of
# bench/goals.txt are met; the exit status is not 0 when one is missed.
#   --json FOLDER  keeps the reports there
#   --write FILE   puts the tables of all families between the marks in FILE
# shellcheck source=scripts/lib.sh
set -eu
. "$(dirname "$0")/lib.sh"

usage="usage: bench.sh [--json FOLDER] [--write FILE] [FAMILY...]"
all=$(sed -n 's|^\([a-z_]*\)/.*|\1|p' bench/goals.txt | awk '!seen[$0]++')
reports=$project/build/bench/reports
page=
while [ $# -gt 0 ]; do
  case $1 in
    --json) reports=$(absolute "${2:?$usage}") && shift 2 ;;
    --write) page=$(absolute "${2:?$usage}") && shift 2 ;;
    -*) fail "$usage" ;;
    *) break ;;
  esac
done
[ -z "$page" ] || [ $# -eq 0 ] || fail "--write takes all families"
families=${*:-$all}
for family in $families; do
  echo "$all" | grep -qx "$family" || fail "no family $family; there are:" "$(echo "$all" | tr '\n' ' ')"
done

need_build_tools
need python3:python3 pkg-config:pkg-config readelf:binutils \
  /usr/include/benchmark/benchmark.h:libbenchmark-dev \
  /usr/include/absl/strings/str_cat.h:libabsl-dev \
  /usr/include/boost/version.hpp:libboost-dev \
  "/usr/lib/$(g++ -print-multiarch)/libboost_filesystem.so:libboost-filesystem-dev" \
  /usr/include/fmt/format.h:libfmt-dev \
  /usr/include/glib-2.0/glib.h:libglib2.0-dev \
  /usr/include/id3tag.h:libid3tag0-dev \
  /usr/include/Poco/UUID.h:libpoco-dev \
  /usr/include/spdlog/spdlog.h:libspdlog-dev \
  /usr/include/taglib/tag.h:libtag1-dev \
  /usr/include/unicode/coll.h:libicu-dev \
  /usr/include/uuid/uuid.h:uuid-dev

say "Building the benchmarks"
build bench
mkdir -p "$reports"

# measure FAMILY REPORT [OPTION...]: eleven repetitions of each benchmark, interleaved.
measure() {
  say "Measuring $1"
  program=$project/build/bench/bench/$1_bench report=$2 log=$reports/$1.log
  shift 2
  "$program" --benchmark_repetitions=11 --benchmark_min_time=0.02 \
    --benchmark_enable_random_interleaving=true "$@" \
    --benchmark_out="$report" --benchmark_out_format=json >"$log" 2>&1 || {
    tail -n 5 "$log" >&2
    fail "$program failed"
  }
}

files=
for family in $families; do
  rm -f "$reports/$family".*
  files="$files $reports/$family.json"
  if [ "$family" = compile ]; then
    say "Measuring compile"
    python3 bench/compile_time.py "$reports/compile.json" >"$reports/compile.md"
  else
    measure "$family" "$reports/$family.json"
  fi
done

# table [OPTION...]: the figures of all reports against the goals.
# shellcheck disable=SC2086
table() { python3 bench/table.py "$@" bench/goals.txt $files; }

# A busy moment must not look like a slow function: what misses its goal is
# measured once more, and the medians are those of all repetitions.
missed=$(table --missed) || [ $? -eq 1 ]
for family in $families; do
  operations=$(echo "$missed" | sed -n "s|^$family/\([^ ]*\).*|\1|p" | sort -u | paste -sd '|')
  if [ "$family" = compile ] || [ -z "$operations" ]; then continue; fi
  measure "$family" "$reports/$family.again.json" --benchmark_filter="^$family/($operations)/"
  files="$files $reports/$family.again.json"
done

# The marked part of a page: the machine, the tables, and the library as a whole.
figures() {
  echo "Taken on $(sed -n 's/^model name.*: //p' /proc/cpuinfo | head -n 1), $(nproc) processors,"
  echo "$(. /etc/os-release && echo "$PRETTY_NAME"), $(g++ --version | head -n 1)."
  table --markdown || [ $? -eq 1 ]
  echo
  cat "$reports/compile.md"
  printf '\n### The library as a whole\n\n'
  bench/library_facts.sh build/bench/liborvo.so
}

if [ -n "$page" ]; then
  figures >"$reports/figures.md"
  sed -i -e '/^<!-- figures begin/,/^<!-- figures end/{//!d}' \
    -e "/^<!-- figures begin/r $reports/figures.md" "$page"
fi
table
