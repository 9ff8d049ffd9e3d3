#!/usr/bin/env bash
# Installs the Debian packages the project needs. Idempotent; run as root (or with sudo
# available) on a fresh Debian 12 machine.
#   scripts/install-deps.sh [runtime]
# With `runtime`, only what the library, its compression module and tsrt need (the demo);
# without, everything the tests, benchmarks, fuzzing and packaging need as well.
set -euo pipefail

# The library, its compression module and tsrt.
runtime_packages=(
  build-essential cmake ninja-build pkg-config ccache
  libicu-dev zlib1g-dev uuid-dev libsqlite3-dev libx11-dev
)

# The rest, one need per line.
test_packages=(
  qt6-base-dev libxcb1-dev          # the user-interface module
  libgtest-dev libgmock-dev         # unit tests
  libbenchmark-dev                  # benchmarks
  pybind11-dev python3-dev          # the Python module
  python3-pytest                    # its tests
  clang libclang-rt-14-dev          # fuzz targets (libFuzzer)
  xvfb xauth x11-xkb-utils          # user-interface and keyboard tests
  fonts-dejavu-extra                # the font dialog's bold italic face
  coreutils locales                 # the tests' locales and throwaway users
  file                              # CPack, to find the binaries it strips
  fp-compiler                       # the Free Pascal binding example
  gambas3-devel gambas3-runtime     # the Gambas binding example
)

packages=("${runtime_packages[@]}")
[ "${1:-}" = runtime ] || packages+=("${test_packages[@]}")

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
