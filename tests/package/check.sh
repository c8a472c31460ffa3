#!/bin/sh
# check.sh SOURCE_DIR BUILD_DIR COMPILER VERSION: installs the built library into an
# empty prefix and builds and runs a consumer against it in the three ways of the
# README, then moves the prefix and tries again; CXXFLAGS go to the consumer too.
set -eu
source=$1
build=$2
compiler=$3
version=$4
consumer=$source/tests/package/consumer
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

expect_hello() {
  output=$("$@") || { echo "$* failed." >&2; exit 1; }
  [ "$output" = "hello 42" ] || { echo "$* wrote: $output" >&2; exit 1; }
}

build_consumer() {
  directory=$1
  shift
  cmake -G Ninja -S "$consumer" -B "$directory" -DCMAKE_CXX_COMPILER="$compiler" "$@" >"$work/log" 2>&1 &&
    cmake --build "$directory" >>"$work/log" 2>&1 || { cat "$work/log" >&2; exit 1; }
}

cmake --install "$build" --prefix "$work/prefix" >/dev/null
build_consumer "$work/package" -DCMAKE_PREFIX_PATH="$work/prefix"
expect_hello "$work/package/consumer"

mv "$work/prefix" "$work/moved"
PKG_CONFIG_PATH=$(dirname "$(find "$work/moved" -name orvo.pc)")
export PKG_CONFIG_PATH
# shellcheck disable=SC2046,SC2086
"$compiler" ${CXXFLAGS-} -std=c++17 "$consumer/main.cpp" -o "$work/consumer" $(pkg-config --cflags --libs orvo)
LD_LIBRARY_PATH=$(pkg-config --variable=libdir orvo) expect_hello "$work/consumer"
[ "$(pkg-config --modversion orvo)" = "$version" ] || { echo "orvo.pc names another version." >&2; exit 1; }

# installs DIRECTORY: the files that an installation of this consumer holds.
installs() {
  cmake --install "$1" --prefix "$1/prefix" >/dev/null
  mkdir -p "$1/prefix"
  find "$1/prefix" ! -type d
}

build_consumer "$work/subdirectory" -DORVO_SOURCE_DIR="$source"
expect_hello "$work/subdirectory/consumer"
installs "$work/subdirectory" | grep -q 'liborvo\.so$' || { echo "orvo is not installed." >&2; exit 1; }

build_consumer "$work/static" -DORVO_SOURCE_DIR="$source" -DBUILD_SHARED_LIBS=OFF -DORVO_INSTALL=OFF
expect_hello "$work/static/consumer"
[ -z "$(installs "$work/static")" ] || { echo "orvo is installed." >&2; exit 1; }
