#!/bin/sh
# hardening.sh LIBRARY COMPILER FORTIFIED: reads back from the library what keeps
# it from being turned into a tool of an attack. FORTIFIED (0 or 1): whether the
# whole build is fortified, and not only what no program can replace.
set -eu
library=$1
compiler=$2
fortified=$3
export LC_ALL=C
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# faults FILE: names each protection that the library FILE lacks.
faults() {
  readelf -dW "$1" >"$work/dynamic"
  readelf -lW "$1" >"$work/segments"
  nm -D --undefined-only "$1" >"$work/imports"
  grep -q 'BIND_NOW\|FLAGS.*NOW' "$work/dynamic" || echo 'binds lazily'
  grep -q 'GNU_RELRO' "$work/segments" || echo 'has writable relocations'
  grep -q 'GNU_STACK.* RW ' "$work/segments" || echo 'has an executable stack'
  ! grep -q 'TEXTREL' "$work/dynamic" || echo 'relocates its code'
  ! grep -q 'RPATH\|RUNPATH' "$work/dynamic" || echo 'names folders to load from'
  grep -q ' __stack_chk_fail' "$work/imports" || echo 'has unguarded stack frames'
}

found=$(faults "$library")
[ -z "$found" ] || { printf '%s %s\n' "$library" "$found" >&2; exit 1; }

# vsnprintf() is the one call of the library whose size is not proved at compile
# time, and so the only one that the C library's checks would rename.
checked=$(grep -o '__[a-z]*_chk' "$work/imports" | grep -v __stack_chk || true)
expected=
[ "$fortified" -eq 0 ] || expected=__vsnprintf_chk
[ "$checked" = "$expected" ] || {
  echo "$library calls '$checked' of the checked functions, not '$expected'." >&2
  exit 1
}

# Without any of the protections, so that each check is seen to fail.
cat >"$work/naked.cpp" <<'END'
asm(".data\n.globl object\nobject: .quad 0\n.text\n.quad object\n");
char* Fill(char* (*copy)(char*)) {
  char text[64];
  return copy(text);
}
END
"$compiler" -shared -fPIC -O1 -fno-stack-protector -Wl,-z,lazy,-z,norelro,-z,execstack,-z,notext \
  -Wl,-rpath,/nowhere "$work/naked.cpp" -o "$work/naked.so" 2>/dev/null
[ "$(faults "$work/naked.so" | wc -l)" -eq 6 ] || {
  echo "Of a library without protections only this was found:" >&2
  faults "$work/naked.so" >&2
  exit 1
}
