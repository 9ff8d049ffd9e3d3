#!/usr/bin/env bash
# Builds the library and runs the demo host: `tsrt` lists the classes and drives them.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/build.sh release
tsrt=build/release/tools/tsrt
run() { echo "\$ tsrt $*"; "$tsrt" "$@"; echo; }
run classes
run members clsZKRunTimeLib
run call clsZKRunTimeLib Init
