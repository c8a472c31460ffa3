#!/bin/sh
# Prints what loading a library depends on, beside libraries of the same kind.
# usage: library_facts.sh LIBRARY
set -eu

stripped=$(mktemp)
trap 'rm -f "$stripped"' EXIT

# facts LIBRARY: its facts as the cells of one row.
facts() {
  code=$(size -A "$1" | awk '$1 ~ /^\.(text|rodata)$/ { sum += $2 } END { print int(sum / 1024) }')
  strip --strip-unneeded -o "$stripped" "$1"
  file=$(($(stat -c %s "$stripped") / 1024))
  relocations=$(readelf -rW "$1" | grep -c ' R_' || true)
  relative=$(readelf -rW "$1" | grep -c '_RELATIVE' || true)
  starters=$(size -A "$1" | awk '$1 == ".init_array" { print $2 / 8 }')
  exported=$(nm -D --defined-only "$1" | wc -l)
  needed=$(readelf -dW "$1" | grep -c '(NEEDED)' || true)
  echo "$file KiB | $code KiB | $((relocations - relative)) + $relative | ${starters:-0} | $exported | $needed |"
}

folder=/usr/lib/$(g++ -print-multiarch)
echo "| library | file | code and constants | relocations: by name + relative | static initialisers | exported symbols | libraries needed |"
echo "|---|--:|--:|--:|--:|--:|--:|"
echo "| liborvo | $(facts "$1")"
for name in absl_strings boost_filesystem fmt glib-2.0 PocoFoundation spdlog; do
  echo "| lib$name | $(facts "$folder/lib$name.so")"
done
