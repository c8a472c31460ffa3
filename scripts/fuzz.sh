#!/bin/sh
# Lets the fuzzers loose on the library.
#
#   fuzz.sh [SECONDS] [TARGET...]  explores for so long (20), then runs all that
#                                  was found under ASan and UBSan
#   fuzz.sh --executions N [SECONDS] [TARGET...]
#                                  in rounds, up to N executions of all targets
#   fuzz.sh --afl [SECONDS]        AFL++ over the two binary readers
#   fuzz.sh --keep                 the fewest inputs that reach all that was found
#                                  so far become the corpora of the repository
#
# FUZZ_JOBS (2) targets run at the same time. What is found stays in build/found,
# an input that makes a target fail in build/found/TARGET-*.
set -eu
. "$(dirname "$0")/lib.sh"

all=$(sed -n 's/^orvo_add_fuzz_target(\(.*\))$/\1/p' fuzz/CMakeLists.txt)
found=$project/build/found
# Without the search for rare inputs, which takes longer than the targets, and
# without names for new functions, which take seconds.
options="-dict=fuzz/orvo.dict -max_len=96 -timeout=10 -rss_limit_mb=512 \
  -entropic=0 -print_funcs=0 -print_final_stats=1"

# explore TARGET OPTIONS...: runs a target and says how often it ran.
explore() {
  target=$1
  shift
  mkdir -p "$found/$target"
  # shellcheck disable=SC2086
  "build/fuzz/fuzz/${target}_fuzz" $options -artifact_prefix="$found/$target-" "$@" \
    "$found/$target" "fuzz/corpus/$target" >"$found/$target.log" 2>&1 || {
    grep -v '^#\|^stat::' "$found/$target.log" | tail -n 20 >&2
    fail "$target failed; the whole log is build/found/$target.log"
  }
  executions=$(sed -n 's/^stat::number_of_executed_units: //p' "$found/$target.log")
  echo "$executions" >>"$found/$target.executions"
}

# detect TARGET: runs all inputs under the sanitizers.
detect() {
  "build/fuzz-asan/fuzz/$1_fuzz" -runs=0 -timeout=60 -rss_limit_mb=2048 \
    -artifact_prefix="$found/$1-" "$found/$1" "fuzz/corpus/$1" >"$found/$1.asan.log" 2>&1 || {
    tail -n 40 "$found/$1.asan.log" >&2
    fail "$1 failed under the sanitizers; the whole log is build/found/$1.asan.log"
  }
}

# count FILE...: the sum of the executions in the files.
count() { awk '{ sum += $1 } END { printf "%.0f", sum }' "$@"; }

# each COMMAND OPTIONS...: runs "fuzz.sh COMMAND TARGET OPTIONS..." for every target.
each() {
  command=$1
  shift
  # shellcheck disable=SC2086
  printf '%s\n' $targets | xargs -P "${FUZZ_JOBS:-2}" -I '{}' \
    "$project/scripts/fuzz.sh" "$command" '{}' "$@" ||
    fail "a target failed"
}

prepare() {
  need_test_tools
  need clang++:clang /usr/lib/llvm-14/lib/clang/14.0.6/lib/linux:libclang-rt-14-dev \
    xargs:findutils
  say "Building the fuzz targets"
  build fuzz
  build fuzz-asan
}

# Finds the fault that is planted in one model: within half a million inputs as a
# rule, because it shows for three characters and no input has more than eight.
find_planted() {
  # shellcheck disable=SC2086
  if build/fuzz/fuzz/planted_fuzz $options -artifact_prefix="$found/planted-" \
    -max_len=8 -runs=20000000 >"$found/planted.log" 2>&1; then
    fail "the planted fault was not found"
  fi
  grep -q 'difference between library and model' "$found/planted.log" ||
    fail "planted failed otherwise; the log is build/found/planted.log"
}

# fuzz SECONDS EXECUTIONS: rounds over all targets, one at least.
fuzz() {
  rm -f "$found"/*.executions
  find_planted
  say "Fuzzing, $1 s for each target"
  each --explore "-max_total_time=$1"
  while [ "$(count "$found"/*.executions)" -lt "$2" ]; do each --explore "-max_total_time=$1"; done
  each --detect
  for target in $targets; do
    printf '%-17s %12d executions, %5d inputs\n' "$target" \
      "$(count "$found/$target.executions")" "$(find "$found/$target" -type f | wc -l)"
  done
  say "$(count "$found"/*.executions) executions, no difference, crash or time-out"
}

# keep_corpus TARGET: replaces its corpus, but for the seeds written by hand, by
# the fewest inputs that reach as much of the library.
keep_corpus() {
  fewest=$(mktemp -d)
  "build/fuzz/fuzz/$1_fuzz" -merge=1 -use_counters=0 "$fewest" \
    "fuzz/corpus/$1" "$found/$1" >"$found/$1.log" 2>&1 ||
    fail "$1 failed; the whole log is build/found/$1.log"
  find "fuzz/corpus/$1" -type f ! -name 'seed-*' -delete
  mv "$fewest"/* "fuzz/corpus/$1"
  rmdir "$fewest"
}

# run_afl TARGET SEEDS SECONDS: explores one target with AFL++.
run_afl() {
  output=$found/afl-$1
  rm -rf "$output"
  mkdir -p "$output"
  afl-fuzz -V "$3" -m none -t 1000 -x fuzz/orvo.dict -i "$2" -o "$output" \
    -- "build/fuzz-afl/fuzz/$1_fuzz" >"$output/log" 2>&1 ||
    { tail -n 20 "$output/log" >&2; fail "AFL++ cannot run $1"; }
}

# value NAME: one of the figures of the last run.
value() { sed -n "s/^$1 *: //p" "$output/default/fuzzer_stats"; }

# fuzz_with_afl SECONDS: explores the readers of binary formats with AFL++.
fuzz_with_afl() {
  need_test_tools
  need afl-fuzz:afl++ afl-clang-fast++:afl++
  say "Building the fuzz targets for AFL++"
  build fuzz-afl
  export AFL_NO_UI=1 AFL_NO_AFFINITY=1 AFL_SKIP_CPUFREQ=1 AFL_QUIET=1 \
    AFL_I_DONT_CARE_ABOUT_MISSING_CRASHES=1
  say "Fuzzing with AFL++, $1 s for each target"
  mkdir -p "$found/afl-seeds"
  printf 'o7?' >"$found/afl-seeds/near-the-fault"
  AFL_BENCH_UNTIL_CRASH=1 run_afl planted "$found/afl-seeds" 600
  [ "$(value saved_crashes)" -gt 0 ] || fail "the planted fault was not found"
  for target in id3 uuid_stream; do
    run_afl "$target" "fuzz/corpus/$target" "$1"
    printf '%-17s %12d executions, %5d inputs\n' "$target" \
      "$(value execs_done)" "$(value corpus_count)"
    [ "$(value saved_crashes) $(value saved_hangs)" = "0 0" ] ||
      fail "$target failed; see build/found/afl-$target/default"
  done
}

targets=$all
mkdir -p "$found"
case ${1:-} in
  --explore | --detect | --keep-corpus)
    command=$(echo "${1#--}" | tr - _)
    shift
    "$command" "$@"
    ;;
  --executions)
    executions=$2
    seconds=${3:-60}
    shift 2
    [ $# -eq 0 ] || shift
    [ $# -eq 0 ] || targets=$*
    prepare
    fuzz "$seconds" "$executions"
    ;;
  --keep) each --keep-corpus ;;
  --afl) fuzz_with_afl "${2:-20}" ;;
  --*) fail "unknown option $1" ;;
  *)
    seconds=${1:-20}
    [ $# -eq 0 ] || shift
    [ $# -eq 0 ] || targets=$*
    prepare
    fuzz "$seconds" 0
    ;;
esac
