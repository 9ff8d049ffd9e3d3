#!/usr/bin/env bash
# Builds and runs the whole test suite: the optimised build, the debug build under
# AddressSanitizer and UndefinedBehaviorSanitizer, the Debian packages and what they hold,
# then a short run of every fuzz target.
set -euo pipefail
cd "$(dirname "$0")/.."
for preset in release debug; do
  bash scripts/build.sh "$preset"
  ctest --preset "$preset"
done
bash scripts/package.sh build/packages
bash tests/install/check_packages.sh build/packages
bash scripts/fuzz.sh "${TSRUNTIME_FUZZ_SECONDS:-10}"
