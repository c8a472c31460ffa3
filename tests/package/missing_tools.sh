#!/bin/sh
# missing_tools.sh SOURCE_DIR: on a machine without tools and without apt the
# README's commands stop with one line that names what is missing.
set -eu
source=$1
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

mkdir "$work/bin"
for tool in sh dirname basename id; do
  ln -s "$(command -v "$tool")" "$work/bin/$tool"
done

for script in demo.sh test.sh; do
  if PATH=$work/bin sh "$source/scripts/$script" >"$work/output" 2>"$work/errors"; then
    echo "$script succeeded without tools." >&2
    exit 1
  fi
  expected="$script: missing: g++ cmake ninja (Debian packages: g++ cmake ninja-build); please install them"
  [ ! -s "$work/output" ] && [ "$(cat "$work/errors")" = "$expected" ] || {
    echo "$script said:" >&2
    cat "$work/output" "$work/errors" >&2
    exit 1
  }
done
