#!/bin/sh
# Runs clang-tidy over everything, or over the targets of the build that are
# named: "tidy.sh orvo examples/all" takes minutes, all of it most of an hour.
set -eu
. "$(dirname "$0")/lib.sh"

need_test_tools
need clang++:clang clang-tidy:clang-tidy
build tidy "$@"
