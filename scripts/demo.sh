#!/usr/bin/env bash
# Builds the library and runs the demo host: `tsrt` lists the classes and drives them.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/build.sh release
tsrt=build/release/tools/tsrt
run() {
  echo "\$ tsrt $*"
  "$tsrt" "$@" || true   # an error is part of the demo: it prints and goes on
  echo
}
run classes
run members clsZKRunTimeLib
run call clsZKRunTimeLib Init
run call clsZKString InWords 1234.56@
run call clsZKString Filter '"a-b-c"' '"-"' SelStart:=4
run call clsZKString Replace '"aabb"' '"ab"' '"a"'
run call clsZKString ArraySplit '""'
run call clsZKString InstrRight '"abc"' '"b"' -5
run call clsZKArray SortBubble 'Array("b", "a", "C") As String' ComareMethod:=1
run call clsZKmd5 DigestStrToHexStr '"abc"'
run call clsZKDictionary SortMode = 1 : Add '"b"' : Add '"a"' : Key 0
