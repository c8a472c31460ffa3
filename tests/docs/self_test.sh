#!/bin/sh
# self_test.sh SOURCE_DIR: check.sh finds each fault that is planted in a copy of
# the documentation, and nothing in the copy itself.
set -eu
here=$(cd "$(dirname "$0")" && pwd)
cd "$1"
copy=$(mktemp -d)
trap 'rm -rf "$copy"' EXIT

fresh_copy() {
  rm -rf "${copy:?}"/*
  mkdir "$copy/tests"
  cp -R ./*.md docs examples include src "$copy"
  cp tests/examples_guide_test.cpp "$copy/tests"
}

# expect_complaint TEXT: the copy has a fault; check.sh says this of it.
expect_complaint() {
  if complaints=$(sh "$here/check.sh" "$copy" 2>&1); then
    echo "check.sh does not find: $1" >&2
    exit 1
  fi
  [ "$complaints" = "$1" ] || { echo "check.sh says \"$complaints\" instead of: $1" >&2; exit 1; }
}

fresh_copy
sh "$here/check.sh" "$copy"

fresh_copy
sed -i 's|orvo/midi.h|orvo/|' "$copy/docs/midi.md"
expect_complaint "No page of the guide speaks of orvo/midi.h."

fresh_copy
# shellcheck disable=SC2016
sed -i 's|`orvo/uuid.h`||' "$copy/README.md"
expect_complaint "The README does not speak of orvo/uuid.h."

fresh_copy
echo 'int main() {}' >"$copy/examples/planted.cpp"
expect_complaint "Neither guide nor README uses the example planted.cpp."

fresh_copy
sed -i 's|"time_texts"||' "$copy/tests/examples_guide_test.cpp"
expect_complaint "No test compares the output time_texts."

fresh_copy
echo 'See [there](planted.md).' >>"$copy/docs/time.md"
expect_complaint "docs/time.md has a link to planted.md, which is not there."

fresh_copy
echo '#include "orvo/path.h"' >>"$copy/src/midi.cpp"
expect_complaint "docs/families.dot lacks: midi -> path [style = dashed];"

fresh_copy
sed -i '/^  scope_lock -> lock;/d' "$copy/docs/families.dot"
expect_complaint "docs/families.dot lacks: scope_lock -> lock;"

fresh_copy
sed -i 's|^  scope_lock -> lock;|&\n  midi -> id3;|' "$copy/docs/families.dot"
expect_complaint "docs/families.dot shows what is not there: midi -> id3;"
