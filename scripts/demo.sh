#!/usr/bin/env bash
# Builds the library and tsrt (installing only what they need), then drives the classes
# through tsrt, one captioned step at a time. Files and the registry go to a scratch
# folder, so the demo leaves nothing behind.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/build.sh runtime
tsrt=build/runtime/tools/tsrt
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
export TSRUNTIME_REGISTRY_DIR=$scratch/registry

step() {  # step CAPTION TSRT-ARGUMENTS...
  local shown=() a q="'"
  for a in "${@:2}"; do   # the command as it would be typed
    if [[ $a =~ ^[A-Za-z0-9_.,:=@/+-]+$ ]]; then shown+=("$a"); else shown+=("'${a//$q/$q\\$q$q}'"); fi
  done
  printf '\n== %s\n$ tsrt %s\n' "$1" "${shown[*]}"
  "$tsrt" "${@:2}" || true   # an error is part of the demo: it prints and goes on
}

step "the classes a host can create" classes
step "the root object's type information" members clsZKRunTimeLib
step "the root object: Init says the library is loaded" call clsZKRunTimeLib Init
step "an amount in Russian words" call clsZKString InWords 1234.56@
step "Filter drops characters and moves the caret, written back into SelStart" \
  call clsZKString Filter '"a-b-c"' '"-"' SelStart:=4
step "Replace scans again after each replacement: aabb, aab, aa" call clsZKString Replace '"aabb"' '"ab"' '"a"'
step "an empty packed text splits into an array bounded -1 to -1" call clsZKString ArraySplit '""'
step "an error: number, source and description, and tsrt exits with 1" \
  call clsZKString InstrRight '"abc"' '"b"' -5
step "sorting with ComareMethod 1, text compare, which ignores case" \
  call clsZKArray SortBubble 'Array("b", "a", "C") As String' ComareMethod:=1
step "the MD5 digest of a string" call clsZKmd5 DigestStrToHexStr '"abc"'
step "a sorted dictionary: the first key in order" \
  call clsZKDictionary SortMode = xcTS_DICT_SORT_ASC : Add '"b"' : Add '"a"' : Key 0
step "files: write INI text (in the ANSI code page, lines ending in CR LF)" \
  call clsZKFileSystem StringWrite '"[Main]" & vbCrLf & "Name=Привет"' "\"$scratch/app.ini\""
step "files: list the folder's files and subfolders" \
  call clsZKFileSystem DirScan "\"$scratch\"" 'Array(Undimensioned) As String' 'Array(Undimensioned) As String'
step "INI data: read a key of a section" \
  call clsZKIniFile FullName = "\"$scratch/app.ini\"" : GetData '"Name"' '""' '"Main"'
step "INI data: a missing key gives False and the default" \
  call clsZKIniFile FullName = "\"$scratch/app.ini\"" : GetData '"Missing"' '""' '"Main"'
step "files: deleting a file that is not there is an error naming it" call clsZKFileSystem FileKill "\"$scratch/none.txt\""
step "the error collection: two errors rendered as text" \
  call clsTSErrors Add '"Нет связи"' 5 : Add '"Мало памяти"' 7 : GetAsText '"  --> "'
step "compression through the module libtszlib.so" \
  call clsZKMem CompressData 'Array(1, 1, 1, 1, 1, 1, 1, 1, 1, 1) As Byte'
step "the high and the low word of a number" call clsZKMem HiWord 65537 : LoWord 65537
step "the registry: write a value under HKEY_CURRENT_USER and read it back" \
  call clsZKRegistry SetString HKEY_CURRENT_USER '"Software\Demo"' '"Name"' '"Привет"' \
  : GetString HKEY_CURRENT_USER '"Software\Demo"' '"Name"'
step "a new GUID" call clsZKSystem CreateGUID

echo
echo "The user-interface classes (CTimer, GSubclass, clsZKCDL, the error report window) are"
echo "built where Qt 6 is installed: scripts/test.sh installs it, builds them and tries them."
