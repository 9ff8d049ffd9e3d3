#!/usr/bin/env bash
# Builds the Debian packages from an optimised build for the /usr prefix:
# libtsruntime1, libtsruntime-dev, python3-tsruntime, tsruntime-tools and
# gambas3-tsruntime, and the -dbgsym packages with the debug information of those that
# hold binaries.
#   scripts/package.sh [OUTDIR]     (default build/packages)
set -euo pipefail
cd "$(dirname "$0")/.."
out=$(realpath -m "${1:-build/packages}")
bash scripts/install-deps.sh
source scripts/compiler-cache.sh
cmake --preset release -B build/package -DCMAKE_INSTALL_PREFIX=/usr \
  -DTSRUNTIME_TESTS=OFF -DTSRUNTIME_BENCHMARKS=OFF >/dev/null
cmake --build build/package
mkdir -p "$out"
(cd build/package && cpack -G DEB -B "$out" >"$out/cpack.log" 2>&1) || { cat "$out/cpack.log"; exit 1; }
rm -rf "$out/_CPack_Packages" "$out/cpack.log"
# CPack names the debug-symbol packages .ddeb and leaves them without a documentation
# folder: as Debian's do, each gets /usr/share/doc/<package>-dbgsym pointing at its
# package's, and the ordinary extension apt-get installs from a file.
for ddeb in "$out"/*.ddeb; do
  [ -e "$ddeb" ] || continue
  tree=$(mktemp -d)
  dpkg-deb -R "$ddeb" "$tree"
  package=$(dpkg-deb -f "$ddeb" Package)
  mkdir -p "$tree/usr/share/doc"
  ln -s "${package%-dbgsym}" "$tree/usr/share/doc/$package"
  dpkg-deb --root-owner-group -b "$tree" "${ddeb%.ddeb}.deb" >/dev/null
  rm -rf "$tree" "$ddeb"
done
ls "$out"/*.deb
