#!/bin/sh
# check.sh SOURCE_DIR: the guide and the README speak of every public header and
# every example, links between pages lead somewhere, and the picture of the
# families shows the includes as they are.
set -eu
export LC_ALL=C
here=$(cd "$(dirname "$0")" && pwd)
cd "$1"
problems=$(mktemp)
trap 'rm -f "$problems"' EXIT

complain() { echo "$*" >>"$problems"; }

guide=$(find docs -name '*.md' ! -name design.md)

for header in include/orvo/*.h; do
  name=orvo/$(basename "$header")
  # shellcheck disable=SC2086
  grep -qF "$name" $guide || complain "No page of the guide speaks of $name."
  grep -qF "\`$name\`" README.md || complain "The README does not speak of $name."
done

for example in examples/*.cpp; do
  name=$(basename "$example")
  # shellcheck disable=SC2086
  grep -qF "$name" $guide README.md || complain "Neither guide nor README uses the example $name."
done

for output in examples/output/*.txt; do
  name=$(basename "$output" .txt)
  # shellcheck disable=SC2086
  grep -qF "\\verbinclude output/$name.txt" $guide || complain "No page shows the output $name."
  grep -qF "\"$name\"" tests/examples_guide_test.cpp || complain "No test compares the output $name."
done

for page in *.md docs/*.md; do
  # shellcheck disable=SC2016
  for link in $(sed -n 's/`[^`]*`//g; s/](\([^)]*\))/\n\1\n/gp' "$page" |
      grep -E '^[A-Za-z0-9_./-]+$' | grep -E '\.(md|cpp|h|sh|txt|dot)$|/$' || true); do
    [ -e "$(dirname "$page")/$link" ] || complain "$page has a link to $link, which is not there."
  done
done

shown=$(sed -n 's/^ *\([a-z0-9_]* -> .*;\)$/\1/p' docs/families.dot | sort)
real=$(sh "$here/includes.sh" . | sort)
if [ "$shown" != "$real" ]; then
  echo "$shown" >"$problems.shown"
  echo "$real" | diff "$problems.shown" - | sed -n \
    's/^< /docs\/families.dot shows what is not there: /p; s/^> /docs\/families.dot lacks: /p' >>"$problems"
  rm -f "$problems.shown"
fi

cat "$problems" >&2
[ ! -s "$problems" ]
