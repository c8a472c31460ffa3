#!/bin/sh
# Runs clang-tidy over the library, the examples and the tests.
set -eu
. "$(dirname "$0")/lib.sh"

need_test_tools
need clang++:clang clang-tidy:clang-tidy
build tidy
