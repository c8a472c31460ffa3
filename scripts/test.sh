#!/bin/sh
# Builds and runs all tests. An argument names another preset, as in
# "scripts/test.sh asan"; CMakePresets.json lists them.
set -eu
. "$(dirname "$0")/lib.sh"

need_test_tools
run_tests "${1:-dev}"
