#!/bin/sh
# Builds the Debian packages into build/packages, out of a copy of the tree, and
# looks them over.
#
#   --with-tests      runs the tests in the build, with Debian's hardening flags
#   --install-test    also installs the packages into a minimal Debian system
#                     below build/, and builds and runs programs there
#   --update-symbols  only brings debian/liborvo1.symbols up to date
set -eu
. "$(dirname "$0")/lib.sh"

output=$project/build/packages
system=$project/build/debian-root

need_package_tools() {
  need_build_tools
  [ -n "$nocheck" ] || need_test_tools
  # dpkg-buildpackage asks for the package by its name, not for what it brings.
  need /usr/share/build-essential/list:build-essential dh:debhelper dpkg-buildpackage:dpkg-dev \
    lintian:lintian doxygen:doxygen dot:graphviz
}

# The parts of a release that name its version agree.
check_version() {
  version=$(sed -n 's/^project(orvo VERSION \([0-9.]*\).*/\1/p' CMakeLists.txt)
  [ "$(dpkg-parsechangelog -S Version)" = "$version" ] ||
    fail "debian/changelog names another version than CMakeLists.txt ($version)"
  grep -q "^## $version\b" CHANGELOG.md ||
    fail "CHANGELOG.md has no heading for version $version"
}

# The tests are left out unless asked for, because scripts/test.sh runs them, in
# more ways than one package build would.
build_packages() {
  say "Building the Debian packages"
  rm -rf "$output"
  mkdir -p "$output/orvo-$version"
  tar -cf - --exclude=./build --exclude=./.cache --exclude=./.git . |
    tar -xf - -C "$output/orvo-$version"
  cd "$output/orvo-$version"
  DEB_BUILD_OPTIONS=$nocheck DEB_BUILD_PROFILES=$nocheck \
    dpkg-buildpackage -us -uc >"$output/build.log" 2>&1 || {
    grep -E 'error|FAILED|^[+-]|\*\*\*' "$output/build.log" | head -n 60 >&2
    fail "the packages cannot be built; the whole log is build/packages/build.log"
  }
  cd "$project"
}

check_packages() {
  say "Checking the Debian packages"
  lintian --allow-root --fail-on error,warning --tag-display-limit 0 \
    "$output"/orvo_*.changes >&2 || fail "lintian finds fault with the packages"
}

# The build has compared the exported symbols with the kept list. A list from
# which the library differs by one must not pass.
check_that_changed_symbols_are_found() {
  list=debian/liborvo1.symbols
  cp "$list" "$output/same"
  { cat "$list"; echo ' (c++)"orvo::Vanished()@Base" 0.1.0'; } >"$output/vanished"
  grep -v '"orvo::UUID::UUID()@' "$list" >"$output/appeared"
  cd "$output/orvo-$version"
  for case in "same 0" "vanished 1" "appeared 2"; do
    name=${case% *} status=0
    dpkg-gensymbols -c4 -v"$version+" -pliborvo1 -Pdebian/liborvo1 \
      -I"$output/$name" -O/dev/null >"$output/symbols.log" 2>&1 || status=$?
    [ "$status" -eq "${case#* }" ] || {
      cat "$output/symbols.log" >&2
      fail "dpkg-gensymbols answers $status for the list \"$name\""
    }
    rm "$output/$name"
  done
  cd "$project"
}

# Everything of orvo's own has to stay; instantiations of the standard library's
# templates and tables for the time of construction differ between compilers.
update_symbols() {
  build release
  list=debian/liborvo1.symbols
  foreign='^_Z(TC|(GV)?(T[VTIS])?Z?N?[VK]*(St|S[absiod]|9__gnu_cxx))'
  new=$(mktemp)
  {
    echo 'liborvo.so.1 liborvo1 #MINVER#'
    echo '* Build-Depends-Package: liborvo-dev'
    echo " (optional=templinst|regex)\"$foreign\" 0.1.0"
    nm -D --defined-only build/release/liborvo.so |
      awk -v foreign="$foreign" '$2 !~ /[VWu]/ || $3 !~ foreign { print $3 }' |
      c++filt | LC_ALL=C sort -u |
      awk -v version="$version" -v list="$list" '
        BEGIN {
          while ((getline line < list) > 0) {
            since = line
            sub(/.* /, "", since)
            sub(/ [^ ]*$/, "", line)
            known[line] = since
          }
        }
        {
          entry = " (c++)\"" $0 "@Base\""
          print entry, (entry in known ? known[entry] : version)
        }'
  } >"$new"
  cat "$new" >"$list"
  rm -f "$new"
}

skip() { say "Skipped: installing the packages, because $*"; exit 0; }

# What root may not do here is no fault of the packages; anything else may be one.
explain_missing_root() {
  if grep -v '^[IW]:' build/debian-root.log |
    grep -qE 'Operation not permitted|Permission denied'; then
    skip "root may not make a system here: $(tail -n 1 build/debian-root.log)"
  fi
  tail -n 20 build/debian-root.log >&2
  fail "cannot make a system; the whole log is build/debian-root.log"
}

# A system with what a user of the library has, kept for the next time.
make_root() {
  [ "$(id -u)" -eq 0 ] || skip "only root can make a system to install them in"
  chroot / true 2>/dev/null || skip "root may not change to another system here"
  need mmdebstrap:mmdebstrap
  [ ! -e "$system/complete" ] || return 0
  say "Making a minimal Debian system in build/debian-root"
  rm -rf "$system"
  sources=
  for file in /etc/apt/sources.list /etc/apt/sources.list.d/debian.sources; do
    [ ! -s "$file" ] || sources="$sources $file"
  done
  # shellcheck disable=SC2086
  mmdebstrap --variant=minbase --include=cmake,dpkg-dev,g++,ninja-build,pkg-config \
    bookworm "$system" $sources >build/debian-root.log 2>&1 &&
    chroot "$system" sh -c 'g++ --version >/dev/null' >>build/debian-root.log 2>&1 ||
    explain_missing_root
  : >"$system/complete"
}

install_packages() {
  make_root
  say "Installing the packages in build/debian-root and using them"
  rm -rf "$system/orvo"
  mkdir "$system/orvo"
  cp "$output"/*.deb "$system/orvo"
  cp -r tests/package/consumer tests/package/installed.sh "$system/orvo"
  chroot "$system" sh /orvo/installed.sh "$version" || fail "the installed packages do not work"
}

nocheck=nocheck
case ${1:-} in
  "" | --install-test | --update-symbols) ;;
  --with-tests) nocheck='' ;;
  *) fail "usage: package.sh [--with-tests | --install-test | --update-symbols]" ;;
esac
need_package_tools
check_version
if [ "${1:-}" = --update-symbols ]; then
  update_symbols
  exit
fi
build_packages
check_packages
check_that_changed_symbols_are_found
say "The packages are in build/packages:"
(cd "$output" && ls ./*.deb)
[ "${1:-}" != --install-test ] || install_packages
