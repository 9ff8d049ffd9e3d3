#!/usr/bin/env bash
# Installs every Debian package the build, the tests and the benchmarks need.
# Idempotent; run as root (or with sudo available) on a fresh Debian 12 machine.
set -euo pipefail

packages=(
  build-essential cmake ninja-build pkg-config ccache
  libgtest-dev libgmock-dev libbenchmark-dev
  libicu-dev zlib1g-dev uuid-dev libsqlite3-dev libx11-dev
  qt6-base-dev libxcb1-dev xvfb xauth x11-xkb-utils
  qt6-translations-l10n fonts-dejavu-core fonts-dejavu-extra openbox libxtst-dev
  clang libclang-rt-14-dev
  pybind11-dev python3-dev python3-pytest python3-mypy
  coreutils locales man-db groff-base
  libedit-dev tmux
)

# Toolchains of the bindings: the Free Pascal example (examples/pascal) and the Gambas
# component (gambas/, built with gbc3 and gba3 for gambas3-tsruntime). CMake leaves them
# and their tests out where they are missing; the library itself never needs them.
binding_packages=(
  fp-compiler
  gambas3-devel gambas3-runtime
)
packages+=("${binding_packages[@]}")

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
if ! locale -a 2>/dev/null | grep -qix 'ru_RU.utf8'; then
  grep -qx 'ru_RU.UTF-8 UTF-8' /etc/locale.gen 2>/dev/null ||
    echo 'ru_RU.UTF-8 UTF-8' | $sudo tee -a /etc/locale.gen >/dev/null
  $sudo locale-gen >/dev/null
fi
