# The checks of gambas3-tsruntime, sourced by check_packages.sh (its check, deb, holds,
# depends and $root). A Gambas program is compiled against the unpacked component and
# run: the unpacked tree is made a Gambas root (GB_PATH) with the system's own components
# linked in, and the library is found through LD_LIBRARY_PATH, as ldconfig would find it.
check "gambas3-tsruntime is built" test -n "$(deb gambas3-tsruntime)"
[ -n "$(deb gambas3-tsruntime)" ] && dpkg -x "$(deb gambas3-tsruntime)" "$root"
check "the component is in the Gambas root" holds gambas3-tsruntime '/usr/lib/gambas3/gb\.tsruntime\.gambas$'
check "the component is described" holds gambas3-tsruntime '/usr/lib/gambas3/gb\.tsruntime\.component$'
check "the IDE's class list is there" holds gambas3-tsruntime '/usr/share/gambas3/info/gb\.tsruntime\.list$'
check "the IDE's member descriptions are there" holds gambas3-tsruntime '/usr/share/gambas3/info/gb\.tsruntime\.info$'
check "gambas3-tsruntime depends on this very runtime" depends gambas3-tsruntime 'libtsruntime1 \(= [0-9.]+\)'
check "gambas3-tsruntime depends on the Gambas runtime" depends gambas3-tsruntime 'gambas3-runtime \(>= 3\.18\)'

gambas_program_runs() {
  local system program
  system=$(dirname "$(dirname "$(readlink -f "$(command -v gbx3)")")")
  for d in lib/gambas3 share/gambas3/info; do
    for f in "$system/$d"/*; do [ -e "$root/usr/$d/${f##*/}" ] || ln -s "$f" "$root/usr/$d/"; done
  done
  program=$(mktemp -d)
  mkdir "$program/.src"
  printf '# Gambas Project File 3.0\nTitle=first\nStartup=Main\nComponent=gb.tsruntime\n' >"$program/.project"
  printf "' Gambas module file\nPublic Sub Main()\n  Dim s As New clsZKString\n  Print s.InWords(Currency(\"1234.56\"))\nEnd\n" >"$program/.src/Main.module"
  GB_PATH=$root/usr/bin/gbx3 gbc3 -a "$program" >/dev/null &&
    [ "$(GB_PATH=$root/usr/bin/gbx3 LD_LIBRARY_PATH=$(dirname "$root"/usr/lib/*/libtsruntime.so.1) gbx3 "$program")" = \
      "одна тысяча двести тридцать четыре рубля 56 копеек" ]
  local ok=$?
  rm -rf "$program"
  return $ok
}
if command -v gbc3 >/dev/null && command -v gbx3 >/dev/null; then
  check "a Gambas program runs against the unpacked component" gambas_program_runs
fi
