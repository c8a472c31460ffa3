#!/bin/sh
# Builds the library and runs its examples on the project's own files.
set -eu
. "$(dirname "$0")/lib.sh"

need_build_tools
say "Building the library and its examples"
build release
examples=build/release/examples

say "word_count: a thread for each file, totals under a lock"
"$examples"/word_count README.md CHANGELOG.md src/*.cpp
