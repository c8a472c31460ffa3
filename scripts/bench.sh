#!/bin/sh
# Measures the library beside its peers and its limits, and says which goals of
# bench/goals.txt are met; the exit status is not 0 when one is missed.
set -eu
. "$(dirname "$0")/lib.sh"

usage="usage: bench.sh [--json FOLDER] [--markdown FILE] [FAMILY...]"
families=$(sed -n 's|^\([a-z_]*\)/.*|\1|p' bench/goals.txt | uniq)
reports=$project/build/bench/reports
markdown=
while [ $# -gt 0 ]; do
  case $1 in
    --json) reports=${2:?$usage} && shift 2 ;;
    --markdown) markdown=${2:?$usage} && shift 2 ;;
    -*) fail "$usage" ;;
    *) break ;;
  esac
done
for family in "$@"; do
  echo "$families" | grep -qx "$family" ||
    fail "no family $family; there are:" $families
done
[ $# -gt 0 ] || set -- $families

need_build_tools
need python3:python3 pkg-config:pkg-config \
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

# measure FAMILY REPORT OPTION...: interleaves seven repetitions of each benchmark.
measure() {
  program=$project/build/bench/bench/$1_bench report=$2
  shift 2
  log=$(mktemp)
  "$program" "$@" --benchmark_repetitions=7 --benchmark_min_time=0.02 \
    --benchmark_enable_random_interleaving=true \
    --benchmark_out="$report" --benchmark_out_format=json >"$log" 2>&1 || {
    tail -n 5 "$log" >&2
    rm -f "$log"
    fail "$program failed"
  }
  rm -f "$log"
}

table() { python3 bench/table.py "$@"; }

files=
for family in "$@"; do
  say "Measuring $family"
  rm -f "$reports/$family".*json
  measure "$family" "$reports/$family.json"
  files="$files $reports/$family.json"
done
# shellcheck disable=SC2086
table bench/goals.txt $files
