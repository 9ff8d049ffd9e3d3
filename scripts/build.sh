#!/usr/bin/env bash
# Configures and builds one preset (release by default), installing what is missing:
# for the `runtime` preset only what the library and tsrt need, for the others everything.
set -euo pipefail
cd "$(dirname "$0")/.."
preset=${1:-release}
if [ "$preset" = runtime ]; then bash scripts/install-deps.sh runtime; else bash scripts/install-deps.sh; fi
source scripts/compiler-cache.sh
cmake --preset "$preset" >/dev/null
cmake --build --preset "$preset"
