#!/usr/bin/env bash
# Configures and builds one preset (release by default), installing what is missing.
set -euo pipefail
cd "$(dirname "$0")/.."
preset=${1:-release}
bash scripts/install-deps.sh
source scripts/compiler-cache.sh
cmake --preset "$preset" >/dev/null
cmake --build --preset "$preset"
