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

# Files, INI data, errors, compression, the registry and the system, in a scratch folder
# with a scratch registry store, so the demo leaves nothing behind.
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
export TSRUNTIME_REGISTRY_DIR=$scratch/registry
run call clsZKFileSystem StringWrite '"[Main]" & vbCrLf & "Name=Привет"' "\"$scratch/app.ini\""
run call clsZKFileSystem DirScan "\"$scratch\"" 'Array(Undimensioned) As String' 'Array(Undimensioned) As String'
run call clsZKIniFile FullName = "\"$scratch/app.ini\"" : GetData '"Name"' '""' '"Main"'
run call clsZKIniFile FullName = "\"$scratch/app.ini\"" : GetData '"Missing"' '""' '"Main"'
run call clsZKFileSystem FileKill "\"$scratch/none.txt\""
run call clsTSErrors Add '"Нет связи"' 5 : Add '"Мало памяти"' 7 : GetAsText '"  --> "'
run call clsZKMem CompressData 'Array(1, 1, 1, 1, 1, 1, 1, 1, 1, 1) As Byte'
run call clsZKMem HiWord 65537 : LoWord 65537
hkcu=-2147483647   # HKEY_CURRENT_USER (tsrt enums xeREGISTRY_HKEY)
run call clsZKRegistry SetString $hkcu '"Software\Demo"' '"Name"' '"Привет"' : GetString $hkcu '"Software\Demo"' '"Name"'
run call clsZKSystem CreateGUID
run call CTimer Interval = 100 : Interval
