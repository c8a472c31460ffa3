#!/bin/sh
# Shows what the library is good for: runs its examples on the project's own
# files. "demo.sh FOLDER [LOGS]" takes the examples from a folder and builds
# nothing. The logs go to the folder LOGS, else to build.
set -eu
. "$(dirname "$0")/lib.sh"

examples=build/release/examples
if [ $# -eq 0 ]; then
  need_build_tools
  say "Building the library and its examples"
  build release
else
  examples=$(absolute "$1")
fi
logs=build
[ $# -lt 2 ] || logs=$(absolute "$2")
mkdir -p "$logs"
PATH=$(cd "$examples" && pwd):$PATH

# step TITLE COMMAND: shows a command and what it prints.
number=0
step() {
  number=$((number + 1))
  output=$(eval "$2") || fail "failed: $2"
  printf '\n%2d  %s\n\n    $ %s\n' "$number" "$1" "$2"
  printf '%s\n' "$output" | sed 's/./    &/'
}

echo "Each command below is one of the programs in $examples:"

step "Count words, with a thread for each file and totals under a lock" \
  "word_count README.md CHANGELOG.md src/lock.cpp src/path.cpp"
step "Digest files in four threads; the lines come in order all the same" \
  "tree_digest src/internal $logs/tree_digest.log"
step "Sort as people do, 9 before 10: the same files by their size" \
  "wc -c src/internal/*.h | sed '\$d; s/^ *//' | natural_sort"
step "Wrap a sentence of the licence to the width of a column" \
  "sed -n 12,13p LICENSE | wrap 40"
step "Read the comments of audio files" \
  "(cd tests/data/id3 && id3_comment tika-testMP3id3v2.mp3 mp3agic-v23tagwithbpm.mp3)"
step "Stamp a moment: for a file name, for a log, exact, and for people" \
  "stamp | sed -n '9,12p;14p'"
step "Name the notes around middle C" \
  "note_table | sed -n 59,63p"
step "Convert a UUID between its three forms" \
  "uuid_convert 12345678-9ABC-DEF0-0123-456789ABCDEF"
step "Run jobs through a lock and a condition; what fails is logged" \
  "job_queue 15 $logs/job_queue.log && tail -n 1 $logs/job_queue.log"
step "Five accidents with locks, as the library reports them" \
  "lock_doctor"
