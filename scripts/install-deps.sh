#!/usr/bin/env bash
# Installs every Debian package the build, the tests and the benchmarks need.
# Idempotent; run as root (or with sudo available) on a fresh Debian 12 machine.
set -euo pipefail

packages=(
  build-essential cmake ninja-build pkg-config ccache
  libgtest-dev libgmock-dev libbenchmark-dev
  libicu-dev zlib1g-dev uuid-dev libsqlite3-dev libx11-dev
  qt6-base-dev libxcb1-dev xvfb xauth x11-xkb-utils
  clang libclang-rt-14-dev
  pybind11-dev python3-dev python3-pytest python3-mypy
  coreutils locales man-db groff-base
)

# Toolchains of the binding examples (examples/gambas, examples/pascal). Only their tests
# use them; CMake leaves those tests out where they are missing, and the library's own
# build never needs them.
binding_packages=(
  fp-compiler
  gambas3-devel gambas3-runtime
)
packages+=("${binding_packages[@]}")

missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed' || missing+=("$p")
done
[ ${#missing[@]} -eq 0 ] && exit 0

sudo=""
[ "$(id -u)" -eq 0 ] || sudo="sudo"
export DEBIAN_FRONTEND=noninteractive
$sudo apt-get update
$sudo apt-get install -y --no-install-recommends "${missing[@]}"
