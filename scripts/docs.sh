#!/bin/sh
# Builds the guide and the reference; a name without words, a link that leads
# nowhere or any other warning of Doxygen is an error.
set -eu
. "$(dirname "$0")/lib.sh"

need_build_tools
need doxygen:doxygen dot:graphviz

# A check that cannot fail proves nothing.
finds_planted_fault() {
  folder=$(mktemp -d)
  {
    cat build/docs/docs/Doxyfile
    echo "INPUT = tests/docs/undocumented.h"
    echo "OUTPUT_DIRECTORY = $folder"
  } | doxygen - >"$folder/log" 2>&1 && status=0 || status=$?
  found=$(grep -c 'Member Silent() .* is not documented' "$folder/log" || true)
  rm -rf "$folder"
  [ "$status" -ne 0 ] && [ "$found" -eq 1 ]
}

build docs
finds_planted_fault || fail "a name without words goes unnoticed"
say "The documentation is build/docs/docs/html/index.html"
