#!/bin/sh
# includes.sh SOURCE_DIR: which public header rests on which, a line for each
# pair in the form of docs/families.dot.
set -eu
cd "$1"

awk '
  # Adds the public headers that a file includes, be it through src/internal/.
  function collect(file, found,    i) {
    for (i = 1; i <= count[file]; ++i) {
      if (included[file, i] ~ /^internal\//) {
        collect("src/" included[file, i], found)
      } else {
        found[included[file, i]]
      }
    }
  }
  # The name of a header, or nothing for those that nearly all include.
  function name(header) {
    gsub(/^orvo\/|\.h$/, "", header)
    return header ~ /^(export|errors|thread_annotations)$/ ? "" : header
  }
  /^#include "[a-z0-9_\/]+\.h"/ {
    split($0, part, "\"")
    included[FILENAME, ++count[FILENAME]] = part[2]
  }
  END {
    for (i = 1; i < ARGC; ++i) {
      if (ARGV[i] !~ /^include\// || ARGV[i] == "include/orvo/orvo.h") continue
      own = ARGV[i]
      sub(/^include\//, "", own)
      split("", direct)
      split("", all)
      collect(ARGV[i], direct)
      collect("src/" name(own) ".cpp", all)
      for (header in direct) if (name(header)) print name(own) " -> " name(header) ";"
      for (header in all) {
        if (!(header in direct) && header != own && name(header)) {
          print name(own) " -> " name(header) " [style = dashed];"
        }
      }
    }
  }' include/orvo/*.h src/*.cpp src/internal/*.h | LC_ALL=C sort
