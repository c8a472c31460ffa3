#!/bin/sh
# Builds the library and runs its examples on the project's own files.
set -eu
. "$(dirname "$0")/lib.sh"

need_build_tools
say "Building the library and its examples"
build release
PATH=$project/build/release/examples:$PATH

say "word_count FILE...: a thread for each file, totals under a lock"
word_count README.md CHANGELOG.md src/lock.cpp src/path.cpp

say "natural_sort [FILE]: file9 before file10"
ls tests/data/id3 | natural_sort

say "wrap WIDTH [INDENT] [FILE]: a text in paragraphs"
sed -n 3,5p README.md | tr '\n' ' ' | sed 's/ *$/\n/' | wrap 64 4

say "stamp [SECONDS]: a time in every form"
stamp

say "id3_comment FILE...: the comments of audio files"
id3_comment tests/data/id3/*.mp3 tests/data/id3/*.aac

say "note_table: MIDI notes and their names (around middle C)"
note_table | sed -n 59,63p

say "uuid_convert TEXT|-: an identifier in its three forms"
uuid_convert 12345678-9ABC-DEF0-0123-456789ABCDEF

say "tree_digest FOLDER: files digested by several threads, in natural order"
tree_digest src/internal build/tree_digest.log

say "job_queue N: jobs through a lock and a condition"
job_queue 25 build/job_queue.log

say "lock_doctor: five accidents with locks, and what the library says"
lock_doctor
