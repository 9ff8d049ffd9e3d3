#!/usr/bin/env bash
# Checks the Debian packages that scripts/package.sh made, first as files (what each holds
# and depends on), then as their users meet them: installed with apt-get into a scratch
# root, used there, removed and purged, with no warning at any step and nothing left
# behind. The scratch root is an overlay over this machine, which has the packages'
# dependencies (scripts/install-deps.sh), so nothing is downloaded; writes stay in the
# overlay and vanish with it. Runs as root (through sudo when started by another user).
#   tests/install/check_packages.sh PACKAGE_DIR
set -uo pipefail
dir=$(realpath "$1")
readme=$(realpath "$(dirname "$0")/../../README.md")
[ "$(id -u)" -eq 0 ] || exec sudo bash "$0" "$@"   # it mounts a scratch root and chroots
source "$(dirname "$0")/../../scripts/scratch-mounts.sh"
scratch=$(mktemp -d)
layers=$scratch/layers root=$scratch/root
trap 'unmount_all; remove_scratch "$scratch"' EXIT

passed=0 failed=0
check() {  # check DESCRIPTION COMMAND...
  if "${@:2}" >"$scratch/out" 2>&1; then passed=$((passed + 1)); else
    failed=$((failed + 1)); echo "FAILED: $1"; sed 's/^/  /' "$scratch/out" | tail -20; fi
}
deb() { ls "$dir"/"$1"_*.deb 2>/dev/null | head -1; }
holds() { dpkg-deb -c "$(deb "$1")" | awk '{print $6}' | grep -qE "$2"; }
depends() { dpkg-deb -f "$(deb "$1")" Depends | grep -qE "$2"; }
control() { dpkg-deb --ctrl-tarfile "$(deb "$1")" | tar x -O "./$2"; }
in_root() {  # in_root COMMAND: a root shell in the scratch root, as after a fresh login
  chroot "$root" /usr/bin/env -i HOME=/root LANG=C.UTF-8 DEBIAN_FRONTEND=noninteractive \
    PATH=/usr/sbin:/usr/bin:/sbin:/bin bash -c "$1"
}
quiet() {  # quiet COMMAND: runs in the root and fails on any warning or error it prints
  in_root "$1" >"$scratch/apt.log" 2>&1; local rc=$?
  cat "$scratch/apt.log"
  [ $rc -eq 0 ] && ! grep -qiE '^(W|E):|warning|error' "$scratch/apt.log"
}

packages=(libtsruntime1 libtsruntime-dev python3-tsruntime tsruntime-tools)
# The Gambas component is built where Gambas is installed (scripts/install-deps.sh).
gambas=$(command -v gbc3 >/dev/null && command -v gbx3 >/dev/null && echo yes)
source "$(dirname "$0")/check_gambas_package.sh"
[ -n "$gambas" ] && packages+=(gambas3-tsruntime)
with_code=(libtsruntime1 python3-tsruntime tsruntime-tools)
for p in "${packages[@]}"; do
  check "$p is built" test -n "$(deb $p)"
  check "$p carries its copyright file" holds $p "^\./usr/share/doc/$p/copyright$"
done
for p in "${with_code[@]}"; do
  check "$p-dbgsym is built" test -n "$(deb $p-dbgsym)"
  check "$p-dbgsym holds debug information by build id" holds $p-dbgsym '^\./usr/lib/debug/\.build-id/../.+\.debug$'
  check "$p-dbgsym depends on this very $p" depends $p-dbgsym "^$p \(= [0-9.]+\)$"
  check "$p-dbgsym reaches the copyright file" bash -c \
    "dpkg-deb -c $(deb $p-dbgsym) | grep -q '\./usr/share/doc/$p-dbgsym -> $p$'"
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
check "the pkg-config files are in -dev" bash -c "dpkg-deb -c $(deb libtsruntime-dev) |
  grep -c '/usr/lib/.*/pkgconfig/tsruntime\(-c\)\?\.pc$' | grep -qx 2"
check "the link-time name is in -dev" holds libtsruntime-dev '/usr/lib/.*/libtsruntime\.so$'
check "the Python package is in dist-packages" holds python3-tsruntime '/usr/lib/python3/dist-packages/tsruntime/__init__\.py$'
check "the Python package holds no byte code: postinst compiles it" bash -c \
  "! dpkg-deb -c $(deb python3-tsruntime) | grep -q '__pycache__\|\.pyc$'"
check "tsrt is in the tools" holds tsruntime-tools '/usr/bin/tsrt$'
check "the manual page tsrt(1) is in the tools" holds tsruntime-tools '/usr/share/man/man1/tsrt\.1\.gz$'
for stub in __init__.pyi constants.pyi py.typed; do
  check "the Python package carries $stub" holds python3-tsruntime "/dist-packages/tsruntime/${stub//./\\.}\$"
done
for p in libtsruntime-dev python3-tsruntime tsruntime-tools; do
  check "$p depends on this very runtime" depends $p 'libtsruntime1 \(= [0-9.]+\)'
done
check "the library ships stripped" bash -c "dpkg-deb --fsys-tarfile $(deb libtsruntime1) |
  tar x -O --wildcards './usr/lib/*/libtsruntime.so.1.*' >$scratch/lib.so &&
  ! readelf -S $scratch/lib.so | grep -q '\.debug_info' && readelf -S $scratch/lib.so | grep -q gnu_debuglink"

[ -n "$gambas" ] && gambas_package_holds_the_component

# The scratch root: this machine seen through an overlay, with its own /dev, /proc, /tmp.
mount_at "$layers" -t tmpfs tmpfs
mkdir -p "$layers/upper" "$layers/work"
mount_at "$root" -t overlay overlay -o "lowerdir=/,upperdir=$layers/upper,workdir=$layers/work"
mount_at "$root/dev" -t tmpfs -o mode=755 tmpfs
for node in null:1:3 zero:1:5 full:1:7 random:1:8 urandom:1:9; do
  IFS=: read -r name major minor <<<"$node"
  mknod -m 666 "$root/dev/$name" c "$major" "$minor"
done
mount_at "$root/dev/pts" -t devpts -o newinstance,ptmxmode=0666 devpts
ln -s pts/ptmx "$root/dev/ptmx"
mount_at "$root/proc" -t proc proc
mount_at "$root/tmp" -t tmpfs tmpfs
mkdir -m 755 "$root/tmp/debs" && cp "$dir"/*.deb "$root/tmp/debs/" && chmod 644 "$root"/tmp/debs/*
names=$(for f in "$dir"/*.deb; do dpkg-deb -f "$f" Package; done | tr '\n' ' ')

check "apt-get installs every package without a warning" quiet "apt-get install -y /tmp/debs/*.deb"
check "tsrt runs" in_root "[ \"\$(tsrt call clsZKRunTimeLib Init)\" = True ]"
check "tsrt tells its version" in_root "tsrt --version | grep -q '^tsrt (TSRuntimeLib) '"
check "man tsrt shows the installed manual page without a warning" in_root \
  "[ -z \"\$(man --warnings tsrt 2>&1 >/dev/null)\" ] && man tsrt 2>/dev/null | grep -q 'tsrt members CLASS'"
check "the system Python imports the package, which tells the same version" in_root "python3 -c '
import subprocess, tsruntime
assert tsruntime.__file__ == \"/usr/lib/python3/dist-packages/tsruntime/__init__.py\", tsruntime.__file__
assert tsruntime.Dispatch(\"TSRuntimeLib.clsZKRunTimeLib\").Init() is True
assert subprocess.check_output([\"tsrt\", \"--version\"], text=True).split()[-1] == tsruntime.__version__'"
check "the Python package was byte-compiled on install" in_root \
  "ls /usr/lib/python3/dist-packages/tsruntime/__pycache__/__init__.cpython-3*.pyc"
check "root writes the machine-wide store under /var/lib/tsruntime" in_root \
  "tsrt call clsZKRegistry SetString -2147483646 '\"Software\\Check\"' '\"Name\"' '\"x\"' >/dev/null &&
   test -s /var/lib/tsruntime/registry.db"
check "pkg-config gives C++ hosts the standard and nothing else for /usr" in_root \
  "[ \"\$(echo \$(pkg-config --cflags --libs tsruntime))\" = '-std=c++20 -ltsruntime' ]"
check "pkg-config gives C hosts no C++ flag" in_root \
  "[ \"\$(echo \$(pkg-config --cflags --libs tsruntime-c))\" = -ltsruntime ]"
check "pkg-config's paths are plain" in_root \
  "[ \"\$(pkg-config --variable=includedir tsruntime-c) \$(pkg-config --variable=libdir tsruntime)\" = \
     \"/usr/include /usr/lib/\$(dpkg-architecture -qDEB_HOST_MULTIARCH 2>/dev/null || gcc -print-multiarch)\" ]"

# Each program of the README builds, warning-free, with the command in its first line
# (// c++ FILE $(pkg-config ...) -o PROGRAM), and runs.
for lang in cpp c; do
  awk -v lang="$lang" '$0 == "```" lang {on = 1; next} on && $0 == "```" {exit} on' "$readme" \
    >"$root/tmp/readme.$lang"
  build=$(head -1 "$root/tmp/readme.$lang" | sed -n 's|^// *||p')
  file=$(echo "$build" | awk '{print $2}')
  program=$(echo "$build" | sed -n 's/.* -o \([^ ]*\).*/\1/p')
  check "the README's $lang program builds with its pkg-config line and runs" in_root "
    cd /tmp && cp readme.$lang '$file' && $build -Wall -Werror && ./$program | grep 'abc'"
done

check "a venv given a link to the package's folder imports it, and no other Debian package" in_root "
  python3 -m venv --without-pip /tmp/venv &&
  ln -s \$(tsrt --python-path)/tsruntime \$(/tmp/venv/bin/python3 -c 'import sysconfig; print(sysconfig.get_path(\"purelib\"))')/ &&
  /tmp/venv/bin/python3 -c 'import sys, tsruntime
assert tsruntime.Dispatch(\"clsZKRunTimeLib\").Init() is True
assert not [p for p in sys.path if p.startswith(\"/usr/lib/python3/\")], sys.path'"

# The bindings build against the installed packages as docs/bindings.md shows.
cp -r "$(dirname "$readme")/examples" "$root/tmp/examples"
if command -v fpc >/dev/null; then
  check "the Free Pascal example builds against the packages and passes" in_root "
    mkdir -p /tmp/pascal && fpc -Mobjfpc -FU/tmp/pascal -FE/tmp/pascal /tmp/examples/pascal/tsrt_demo.pas &&
    /tmp/pascal/tsrt_demo"
fi
[ -n "$gambas" ] && gambas_program_runs_installed

check "apt-get removes every package without a warning" quiet "apt-get remove -y $names"
check "removal leaves no byte code" bash -c "! test -e $root/usr/lib/python3/dist-packages/tsruntime"
check "removal keeps the machine-wide store" test -e "$root/var/lib/tsruntime/registry.db"
# apt-get purges only what is installed (a removed package from a file is unknown to it).
check "apt-get installs them again without a warning" quiet "apt-get install -y /tmp/debs/*.deb"
check "apt-get purges every package without a warning" quiet "apt-get purge -y $names"
check "purge removes the machine-wide store" bash -c "! test -e $root/var/lib/tsruntime"
# Whatever the overlay holds now, apart from the package manager's own records, is a file
# the packages made and left, or a folder they made that did not exist before.
leftovers() {
  (cd "$layers/upper" && find . -mindepth 1 \( -path ./var/lib/dpkg -o -path ./var/lib/apt \
      -o -path ./var/cache -o -path ./var/log -o -path ./tmp -o -path ./dev -o -path ./proc \
      -o -path ./etc/ld.so.cache \) -prune -o \( -type d -o -type c \) -o -print
   find . -mindepth 1 -type d | while read -r d; do [ -e "/$d" ] || echo "$d"; done)
}
leftovers >"$scratch/leftovers" 2>&1
check "purge leaves nothing behind" bash -c "cat $scratch/leftovers; ! test -s $scratch/leftovers"

echo "packages: $passed passed, $failed failed"
[ "$failed" -eq 0 ]
