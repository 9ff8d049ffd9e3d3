#!/usr/bin/env bash
# Builds the Debian packages from an optimised build for the /usr prefix:
# libtsruntime1, libtsruntime-dev, python3-tsruntime, tsruntime-tools and
# gambas3-tsruntime (cmake/PackagingGambas.cmake).
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
ls "$out"/*.deb
