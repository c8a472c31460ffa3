# Shared by the scripts beside it: installing what is missing, and building
# without noise. Sourced, never run. What sets variables does so in a subshell.

callers_folder=$PWD
project=$(cd "$(dirname "$0")/.." && pwd)
cd "$project" || exit 1

say() { printf '==> %s\n' "$*"; }

fail() {
  printf '%s: %s\n' "$(basename "$0")" "$*" >&2
  exit 1
}

# absolute PATH: what the caller means by it, who may stand in another folder.
absolute() {
  case $1 in
    /*) printf '%s\n' "$1" ;;
    *) printf '%s\n' "$callers_folder/$1" ;;
  esac
}

# need WHAT:PACKAGE...: makes sure that each command or file WHAT is there and
# installs the Debian packages of those that are not.
need() (
  missing= packages=
  for entry in "$@"; do
    what=${entry%%:*}
    case $what in
      /*) [ -e "$what" ] && continue ;;
      *) command -v "$what" >/dev/null 2>&1 && continue ;;
    esac
    missing="$missing $what" packages="$packages ${entry##*:}"
  done
  [ -n "$missing" ] || return 0
  command -v apt-get >/dev/null 2>&1 ||
    fail "missing:$missing (Debian packages:$packages); please install them"
  root=
  if [ "$(id -u)" -ne 0 ]; then
    command -v sudo >/dev/null 2>&1 ||
      fail "missing:$missing; please run as root: apt-get install$packages"
    root=sudo
  fi
  say "Installing$packages"
  log=$(mktemp)
  # shellcheck disable=SC2086
  { $root apt-get update &&
    $root env DEBIAN_FRONTEND=noninteractive apt-get install -y --no-install-recommends $packages
  } >"$log" 2>&1 || {
    tail -n 5 "$log" >&2
    rm -f "$log"
    fail "could not install:$packages"
  }
  rm -f "$log"
)

need_build_tools() { need g++:g++ cmake:cmake ninja:ninja-build; }

need_test_tools() {
  need_build_tools
  need /usr/include/gtest/gtest.h:libgtest-dev /usr/include/gmock/gmock.h:libgmock-dev \
    /usr/include/rapidcheck.h:librapidcheck-dev /usr/include/fmt/format.h:libfmt-dev \
    pkg-config:pkg-config nm:binutils gdb:gdb python3:python3
}

# build PRESET [TARGET...]: configures and builds, silent unless something goes
# wrong.
build() (
  preset=$1
  shift
  log=$project/build/$preset.log
  mkdir -p "$project/build"
  { cmake --preset "$preset" && cmake --build --preset "$preset" ${1:+--target "$@"}; } \
    >"$log" 2>&1 || {
    grep -E 'error|warning|FAILED|CMake Error' -A 5 "$log" | head -n 60 >&2
    fail "building preset $preset failed; the whole log is build/$preset.log"
  }
)

# run_tests PRESET: builds and runs the tests of a preset, one line each.
run_tests() {
  say "Building the tests ($1)"
  build "$1"
  say "Running the tests ($1)"
  ctest --preset "$1"
}
