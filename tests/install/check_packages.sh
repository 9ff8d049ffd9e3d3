#!/usr/bin/env bash
# Unpacks the Debian packages that scripts/package.sh made into a scratch root (dpkg -x)
# and checks what each one holds, what it depends on, and that the unpacked programs run
# from there with no ldconfig and no LD_LIBRARY_PATH.
#   tests/install/check_packages.sh PACKAGE_DIR
set -uo pipefail
dir=$(realpath "$1")
root=$(mktemp -d)
trap 'rm -rf "$root"' EXIT
passed=0 failed=0
check() {  # check DESCRIPTION COMMAND...
  if "${@:2}" >/dev/null 2>&1; then passed=$((passed + 1)); else
    failed=$((failed + 1)); echo "FAILED: $1"; fi
}
deb() { ls "$dir"/"$1"_*.deb 2>/dev/null | head -1; }
holds() { dpkg-deb -c "$(deb "$1")" | awk '{print $6}' | grep -qE "$2"; }
depends() { dpkg-deb -f "$(deb "$1")" Depends | grep -qE "$2"; }

for p in libtsruntime1 libtsruntime-dev python3-tsruntime tsruntime-tools; do
  check "$p is built" test -n "$(deb $p)"
  [ -n "$(deb $p)" ] && dpkg -x "$(deb $p)" "$root"
done

check "the runtime holds the library" holds libtsruntime1 '/usr/lib/.*/libtsruntime\.so\.1$'
check "the runtime holds no link-time name" bash -c "! dpkg-deb -c $(deb libtsruntime1) | grep -q 'libtsruntime\.so$'"
check "the runtime holds the compression module" holds libtsruntime1 '/usr/lib/.*/libtszlib\.so$'
check "the runtime holds the user-interface module" holds libtsruntime1 '/usr/lib/.*/libtsruntime-ui\.so$'
check "the runtime depends on Qt 6 Widgets, for its user-interface module" depends libtsruntime1 'libqt6widgets6'
check "the runtime depends on ICU" depends libtsruntime1 'libicu[0-9]+'
check "the runtime depends on SQLite, for the registry store" depends libtsruntime1 'libsqlite3-0'
check "the runtime depends on libuuid, for GUIDs" depends libtsruntime1 'libuuid1'
check "the runtime depends on zlib, for its compression module" depends libtsruntime1 'zlib1g'
check "the runtime carries the ldconfig trigger" bash -c \
  "dpkg-deb --ctrl-tarfile $(deb libtsruntime1) | tar x -O ./triggers | grep -qx 'activate-noawait ldconfig'"
check "the runtime has a shlibs file" bash -c \
  "dpkg-deb --ctrl-tarfile $(deb libtsruntime1) | tar x -O ./shlibs | grep -q '^libtsruntime 1 libtsruntime1'"
check "the headers are in -dev" holds libtsruntime-dev '/usr/include/tsruntime/clsZKRunTimeLib\.h$'
check "the CMake package is in -dev" holds libtsruntime-dev '/usr/lib/.*/cmake/tsruntime/tsruntimeConfig\.cmake$'
check "the pkg-config file is in -dev" holds libtsruntime-dev '/usr/lib/.*/pkgconfig/tsruntime\.pc$'
check "the link-time name is in -dev" holds libtsruntime-dev '/usr/lib/.*/libtsruntime\.so$'
check "the Python package is in dist-packages" holds python3-tsruntime '/usr/lib/python3/dist-packages/tsruntime/__init__\.py$'
check "tsrt is in the tools" holds tsruntime-tools '/usr/bin/tsrt$'
check "the manual page tsrt(1) is in the tools" holds tsruntime-tools '/usr/share/man/man1/tsrt\.1\.gz$'
for stub in __init__.pyi constants.pyi py.typed; do
  check "the Python package carries $stub" holds python3-tsruntime "/dist-packages/tsruntime/${stub//./\\.}\$"
done
for p in libtsruntime-dev python3-tsruntime tsruntime-tools; do
  check "$p depends on this very runtime" depends $p 'libtsruntime1 \(= [0-9.]+\)'
done

source "$(dirname "$0")/check_gambas_package.sh"

# The unpacked tree is a prefix like any other: its programs find their library.
export LD_LIBRARY_PATH=
check "the unpacked tsrt runs" bash -c "[ \"\$('$root/usr/bin/tsrt' call clsZKRunTimeLib Init)\" = True ]"
check "the unpacked tsrt tells its version" bash -c "'$root/usr/bin/tsrt' --version | grep -q '^tsrt (TSRuntimeLib) '"
check "the unpacked Python package imports" /usr/bin/python3 -I -c "
import sys; sys.path.insert(0, '$root/usr/lib/python3/dist-packages')
import tsruntime
assert tsruntime.__file__.startswith('$root'), tsruntime.__file__
assert tsruntime.Dispatch('TSRuntimeLib.clsZKRunTimeLib').Init() is True"
check "man tsrt shows the unpacked manual page without a warning" bash -c \
  "[ -z \"\$(MANPATH='$root/usr/share/man' man --warnings tsrt 2>&1 >/dev/null)\" ] &&
   MANPATH='$root/usr/share/man' man tsrt 2>/dev/null | grep -q 'tsrt members CLASS'"
check "pkg-config reads the unpacked file" bash -c \
  "PKG_CONFIG_PATH=\$(dirname $root/usr/lib/*/pkgconfig/tsruntime.pc) pkg-config --modversion tsruntime | grep -qE '^[0-9]+\.[0-9]+\.[0-9]+$'"

echo "packages: $passed passed, $failed failed"
[ "$failed" -eq 0 ]
