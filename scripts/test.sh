#!/bin/sh
# Builds and runs all tests. An argument names another preset, as in
# "scripts/test.sh asan"; CMakePresets.json lists them.
set -eu
. "$(dirname "$0")/lib.sh"

need_test_tools
case ${1:-} in
  clang) need clang++:clang ;;
  debugstl) need /usr/src/googletest/CMakeLists.txt:googletest ;;
  libcxx)
    need clang++-19:clang-19 /usr/src/googletest/CMakeLists.txt:googletest \
      /usr/lib/llvm-19/include/c++/v1/format:libc++-19-dev \
      /usr/lib/llvm-19/lib/libc++abi.so:libc++abi-19-dev
    ;;
esac
run_tests "${1:-dev}"
