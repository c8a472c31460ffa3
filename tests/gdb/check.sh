#!/bin/sh
# check.sh SOURCE_DIR BUILD_DIR: what gdb shows of the debuggee's values and
# locks, in the running program and in a core file.
set -eu
source=$1
build=$2
debuggee=$build/tests/programs/debuggee
script=$source/gdb/orvo-gdb.py
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
# Keeps core files small.
export MALLOC_ARENA_MAX=1
# shellcheck disable=SC3045
ulimit -s 512

# debug OPTIONS...: what gdb prints behind the line "---".
debug() {
  LC_ALL=C.UTF-8 gdb -nx -batch -iex 'set confirm off' -iex 'set debuginfod enabled off' "$@" 2>&1 </dev/null |
    tee "$work/log" | sed '1,/^---$/d; /^warning: /d; /^Saved corefile/d'
}

# expect NAME: compares a file of that name with the standard input.
expect() {
  diff -u - "$work/$1" || {
    cat "$work/log"
    echo "gdb shows something else of the $1."
    exit 1
  }
}

# place NAME: the line of the debuggee that ends in this comment.
place() {
  echo "tests/programs/debuggee.cpp:$(grep -n "// $1\$" "$source/tests/programs/debuggee.cpp" | cut -d: -f1)"
}

command -v gdb >/dev/null || { echo "gdb is missing."; exit 77; }
debug -ex starti -ex 'echo ---\n' -ex 'info orvo-locks' -x "$script" \
  -ex 'info orvo-locks' -ex kill -ex 'info orvo-locks' --args /bin/true |
  sed 's/ (process [0-9]*)//' >"$work/errors"
grep -q '^Program stopped' "$work/log" || {
  cat "$work/log"
  echo "gdb cannot run programs here."
  exit 77
}

# A comparison that must fail, or else none means anything.
if echo 'no error' | (expect errors) >/dev/null; then
  echo "A difference is not found."
  exit 1
fi

expect errors <<'END'
Undefined info command: "orvo-locks".  Try "help info".
The program does not use liborvo.
[Inferior 1 killed]
There is no process and no core file to look at.
END

# The script is the one that gdb finds beside the installed library.
cmake --install "$build" --prefix "$work/prefix" >/dev/null
library=$(find "$work/prefix" -name 'liborvo.so.1')
LD_LIBRARY_PATH=${library%/*} debug \
  -iex "set auto-load scripts-directory $work/prefix/share/gdb/auto-load" \
  -iex "set auto-load safe-path $work/prefix" \
  -ex 'set print pretty on' -ex 'break Look' -ex run -ex 'echo ---\n' \
  -ex 'print *&values' --args "$debuggee" values >"$work/values"
expect values <<'END'
$1 = {
  instant = 1795285587.547708870 s (2026-11-21T18:26:27.547708870Z),
  before_1970 = -1.500000000 s (1969-12-31T23:59:58.500000000Z),
  earliest = -9223372036.854775808 s (1677-09-21T00:12:43.145224192Z),
  uuid = 12345678-9abc-def0-0123-456789abcdef,
  file = "file10\n.\"x\"" = {"file", 10, "\n.\"x\""},
  nothing = "",
  latin = "naïve caf\xe9" = {"naïve caf\xe9"},
  middle_c = 60 (C3),
  highest = 255 (D#19),
  nowhere = no reference,
  plain = "plain", free,
  recursive = "recursive", held by thread 1 "main", depth 2,
  any = "recursive", held by thread 1 "main", depth 2,
  moved = no lock, moved from,
  target = "moved", free,
  free = "free", free,
  held = "held", held by thread 1 "main", depth 1 = {
    last announced by thread 1 "main" = Inspect --> kitchen.cpp:11
  },
  tree = "tree", held by thread 1 "main", depth 2 = {
    last announced by thread 1 "main" = Climb --> no-such-directory/deep/down/in/it/tree.cpp:12
  },
  watched = "watched", held by thread 1 "main", depth 1,
  unrecorded = "unrecorded", held by thread 1 "main", depth 1, not in its books
}
END

# The selected thread is the one that has arrived last.
debug -x "$source/tests/gdb/hang.gdb" -x "$script" -ex 'thread 7' -ex 'echo ---\n' \
  -ex 'info orvo-locks' -ex 'info orvo-locks 3' -ex 'info orvo-locks cook' \
  -ex 'info orvo-locks 5' -ex 'info orvo-locks nobody' -ex 'echo \n' \
  -ex 'info orvo-locks all' \
  -ex "gcore $work/core" --args "$debuggee" hang >"$work/hang"
expect hang <<END
Thread 7 "apprentice"
  waits for "recipe", held by thread 1 "main", depth 2
    at $(place apprentice)
Thread 3 "guest"
  holds "cellar", depth 1, taken by a thread that has ended
  has released "door" for a condition
    at $(place guest)
Thread 4 "cook"
  holds "stove", depth 1, last announced from Cook --> kitchen.cpp:41
  waits for "counter", held by thread 5 (unnamed), depth 1
    at $(place cook)
Deadlock: thread 4 "cook" and thread 5 (unnamed) wait for each other.
Thread 5 (unnamed)
  holds "counter", depth 1, last announced from Serve --> kitchen.cpp:51
  waits for "stove", held by thread 4 "cook", depth 1
    at $(place waiter)
Deadlock: thread 5 (unnamed) and thread 4 "cook" wait for each other.
No thread has the number or the name nobody.

Thread 1 "main"
  holds "recipe", depth 2, last announced from Read --> kitchen.cpp:21
Thread 3 "guest"
  holds "cellar", depth 1, taken by a thread that has ended
  has released "door" for a condition
    at $(place guest)
Thread 4 "cook"
  holds "stove", depth 1, last announced from Cook --> kitchen.cpp:41
  waits for "counter", held by thread 5 (unnamed), depth 1
    at $(place cook)
Thread 5 (unnamed)
  holds "counter", depth 1, last announced from Serve --> kitchen.cpp:51
  waits for "stove", held by thread 4 "cook", depth 1
    at $(place waiter)
Thread 6 "hermit"
  holds "cell", depth 1
  waits for "cell", held by thread 6 "hermit", depth 1
    at $(place hermit)
Thread 7 "apprentice"
  waits for "recipe", held by thread 1 "main", depth 2
    at $(place apprentice)
Deadlock: thread 4 "cook" and thread 5 (unnamed) wait for each other.
Deadlock: thread 6 "hermit" waits for itself.
END

# In a core file the threads have other numbers, and where the C library is not
# that of this machine, gdb has no handles of them.
libraries=/nowhere
# shellcheck disable=SC2016
[ "$(uname -m)" = x86_64 ] || libraries='$sdir:$pdir'
debug -iex "set libthread-db-search-path $libraries" -x "$script" -ex 'echo ---\n' -ex 'info orvo-locks cook' \
  "$debuggee" "$work/core" | sed 's/hread [0-9]/hread N/g' >"$work/core_file"
expect core_file <<END
Thread N "cook"
  holds "stove", depth 1, last announced from Cook --> kitchen.cpp:41
  waits for "counter", held by thread N (unnamed), depth 1
    at $(place cook)
Deadlock: thread N "cook" and thread N (unnamed) wait for each other.
END

# Without the library's debug information.
mkdir "$work/stripped"
strip -o "$work/stripped/liborvo.so.1" "$build/liborvo.so.1"
LD_LIBRARY_PATH=$work/stripped debug -x "$script" -ex 'break Look' -ex run \
  -ex 'echo ---\n' -ex 'info orvo-locks' \
  -ex 'print values.plain' --args "$debuggee" values >"$work/stripped_library"
expect stripped_library <<'END'
The debug information of liborvo is missing: install the package liborvo1-dbgsym or build the library with -g.
$1 = <incomplete type>
END
