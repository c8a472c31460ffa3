#!/bin/sh
# installed.sh VERSION: as root of a minimal Debian system, beside the packages
# and the consumer, installs the packages, builds programs against them as a user
# would, and removes the packages one after the other.
set -eu
version=$1
cd "$(dirname "$0")"
PATH=/usr/sbin:/usr/bin:/sbin:/bin LC_ALL=C.UTF-8 DEBIAN_FRONTEND=noninteractive
export PATH LC_ALL DEBIAN_FRONTEND
unset TMPDIR CMAKE_CXX_COMPILER_LAUNCHER DEB_BUILD_OPTIONS DEB_BUILD_PROFILES

fail() {
  echo "$*" >&2
  exit 1
}

# quietly COMMAND...: shows the output of a command that fails, and ends.
quietly() {
  "$@" >log 2>&1 || {
    cat log >&2
    fail "$* failed."
  }
}

# expect TEXT COMMAND...: ends unless the command succeeds and writes this text.
expect() {
  expected=$1
  shift
  output=$("$@" 2>log) || {
    cat log >&2
    fail "$* failed and wrote: $output"
  }
  [ "$output" = "$expected" ] || fail "$* wrote: $output"
}

build_with_cmake() {
  quietly cmake -G Ninja -S "$1" -B "$2"
  quietly cmake --build "$2"
}

# What a run that failed may have left behind.
purge() { quietly dpkg --purge liborvo-doc orvo-examples liborvo-dev liborvo1; }

purge
quietly apt-get install -y ./liborvo1_*.deb ./liborvo-dev_*.deb \
  ./liborvo-doc_*.deb ./orvo-examples_*.deb
[ -s /usr/share/doc/liborvo-dev/html/index.html ] || fail "liborvo-doc has no start page."

# gdb looks for the script by the full name of the library.
script=/usr/share/gdb/auto-load$(realpath /usr/lib/*/liborvo.so)-gdb.py
[ -s "$script" ] || fail "There is no $script."

build_with_cmake consumer by-cmake
expect "hello 42" by-cmake/consumer

expect "$version" pkg-config --modversion orvo
# The folders that every compiler searches need no naming.
# shellcheck disable=SC2046
expect "-pthread -lorvo" echo $(pkg-config --cflags --libs orvo)
# shellcheck disable=SC2046
quietly g++ -std=c++17 consumer/main.cpp -o by-pkg-config $(pkg-config --cflags --libs orvo)
expect "hello 42" ./by-pkg-config

# A package of the consumer's would depend on what it was built with.
mkdir -p debian
printf 'Source: consumer\n\nPackage: consumer\nArchitecture: any\n' >debian/control
expect "liborvo1 (>= $version)" \
  sh -c "dpkg-shlibdeps -O by-pkg-config | sed -n 's/.*\(liborvo1 [^,]*\).*/\1/p'"

build_with_cmake /usr/share/doc/orvo-examples/examples examples
expect "file9
file10" sh -c "printf 'file10\nfile9\n' | examples/natural_sort"
expect "text           12345678-9abc-def0-0123-456789abcdef
network        12 34 56 78 9a bc de f0 01 23 45 67 89 ab cd ef
little-endian  78 56 34 12 bc 9a f0 de 01 23 45 67 89 ab cd ef" \
  examples/uuid_convert 12345678-9ABC-DEF0-0123-456789ABCDEF

# A program that was built runs with the library alone.
quietly apt-get purge -y liborvo-doc orvo-examples liborvo-dev
[ ! -e /usr/include/orvo ] || fail "liborvo-dev left /usr/include/orvo behind."
expect "hello 42" ./by-pkg-config

quietly apt-get purge -y liborvo1
left=$(find /etc /usr /var -name '*orvo*' ! -path '/var/log/*' ! -path '/var/cache/*')
[ -z "$left" ] || fail "The packages left behind: $left"
! ./by-pkg-config >log 2>&1 || fail "The consumer runs without the library."
