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
  libedit-dev python3
)

# The rest, one need per line.
test_packages=(
  qt6-base-dev libxcb1-dev libxtst-dev   # the user-interface module and its key presses
  qt6-translations-l10n                  # the dialogs' Russian texts
  libgtest-dev libgmock-dev              # unit tests
  libbenchmark-dev                       # benchmarks
  pybind11-dev python3-dev               # the Python module
  python3-pytest python3-mypy            # its tests and its type stubs' check
  clang libclang-rt-14-dev               # fuzz targets (libFuzzer)
  xvfb xauth x11-xkb-utils openbox       # user-interface and keyboard tests
  fonts-dejavu-core fonts-dejavu-extra   # the dialogs' faces, bold italic included
  coreutils locales                      # the tests' locales and throwaway users
  man-db groff-base                      # tsrt's manual page, rendered by its test
  tmux                                   # tsrt's interactive session on a terminal
  file                                   # CPack, to find the binaries it strips
  fp-compiler                            # the Free Pascal binding example
  gambas3-devel gambas3-runtime          # the Gambas component and its test
)

packages=("${runtime_packages[@]}")
[ "${1:-}" = runtime ] || packages+=("${test_packages[@]}")

missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed' || missing+=("$p")
done
sudo=""
[ "$(id -u)" -eq 0 ] || sudo="sudo"
if [ ${#missing[@]} -gt 0 ]; then
  export DEBIAN_FRONTEND=noninteractive
  $sudo apt-get update
  $sudo apt-get install -y --no-install-recommends "${missing[@]}"
fi

# The user-interface tests run as a Russian-speaking user: the locale must exist.
if [ "${1:-}" != runtime ] && ! locale -a 2>/dev/null | grep -qix 'ru_RU.utf8'; then
  grep -qx 'ru_RU.UTF-8 UTF-8' /etc/locale.gen 2>/dev/null ||
    echo 'ru_RU.UTF-8 UTF-8' | $sudo tee -a /etc/locale.gen >/dev/null
  $sudo locale-gen >/dev/null
fi
