#!/bin/sh
# check.sh SOURCE_DIR EXAMPLES: the demo shows each step and those of its lines
# that are the same everywhere, in this order; and it fails if an example does.
set -eu
source=$1
examples=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

cat >"$work/expected" <<'END'
 1  Count words, with a thread for each file and totals under a lock
    $ word_count README.md CHANGELOG.md src/lock.cpp src/path.cpp
        lines     words       bytes  file
 2  Digest files in four threads; the lines come in order all the same
    $ tree_digest src/internal build/tree_digest.log
 3  Sort as people do, 9 before 10: the same files by their size
    $ wc -c src/internal/*.h | sed '$d; s/^ *//' | natural_sort
 4  Wrap a sentence of the licence to the width of a column
    $ sed -n 12,13p LICENSE | wrap 40
    The above copyright notice and this
    permission notice shall be included in
    all copies or substantial portions of
    the Software.
 5  Read the comments of audio files
    $ (cd tests/data/id3 && id3_comment tika-testMP3id3v2.mp3 mp3agic-v23tagwithbpm.mp3)
    tika-testMP3id3v2.mp3: Test Comment
    mp3agic-v23tagwithbpm.mp3: COMMENT123456789012345678901
 6  Stamp a moment: for a file name, for a log, exact, and for people
    $ stamp | sed -n '9,12p;14p'
 7  Name the notes around middle C
    $ note_table | sed -n 59,63p
      58    A#2     Bb2     
      59    B2      B2      
      60    C3      C3      
      61    C#3     Db3     
      62    D3      D3      
 8  Convert a UUID between its three forms
    $ uuid_convert 12345678-9ABC-DEF0-0123-456789ABCDEF
    text           12345678-9abc-def0-0123-456789abcdef
    network        12 34 56 78 9a bc de f0 01 23 45 67 89 ab cd ef
    little-endian  78 56 34 12 bc 9a f0 de 01 23 45 67 89 ab cd ef
 9  Run jobs through a lock and a condition; what fails is logged
    $ job_queue 15 build/job_queue.log && tail -n 1 build/job_queue.log
    LogException(job 10 failed)
    15 jobs, 1 failed
10  Five accidents with locks, as the library reports them
    $ lock_doctor
    1. The waiter wants the stove while the cook has it
       waiter cannot acquire lock stove because  is not sharing.
    2. A guest turns off a stove that was never the guest's
       Error: guest tried to release lock stove without first acquiring it.
    3. The cook waits for the cook
       Error: This lock is already owned by this thread.
    4. The cook closes the recipe once too often
       Error: cook tried to release lock recipe more times than it was acquired.
    5. The waiter waits for a dish that never comes
       Error: no dish within a second
    5 of 5 accidents were reported.
END

"$source/scripts/demo.sh" "$examples" "$work/logs" >"$work/output" || { cat "$work/output"; exit 1; }
sed -i "s|$work/logs/|build/|g" "$work/output"
grep -Fx -f "$work/expected" "$work/output" | diff -u "$work/expected" - || {
  echo "The demo shows something else."
  exit 1
}

mkdir "$work/broken"
ln -s "$examples"/* "$work/broken"
ln -sf /bin/false "$work/broken/uuid_convert"
if "$source/scripts/demo.sh" "$work/broken" "$work/logs" >/dev/null 2>"$work/errors"; then
  echo "The demo passes over an example that fails."
  exit 1
fi
grep -q '^demo.sh: failed: uuid_convert' "$work/errors"
