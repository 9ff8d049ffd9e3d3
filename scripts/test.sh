#!/usr/bin/env bash
# Builds and runs the whole test suite: the optimised build, then the debug build
# under AddressSanitizer and UndefinedBehaviorSanitizer.
set -euo pipefail
cd "$(dirname "$0")/.."
for preset in release debug; do
  bash scripts/build.sh "$preset"
  ctest --preset "$preset"
done
