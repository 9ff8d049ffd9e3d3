# The checks of gambas3-tsruntime, sourced by check_packages.sh (its check, deb, holds,
# depends and in_root), in two steps: as a file before the packages are installed, and
# as Gambas users meet it once apt-get has installed it into the scratch root.
gambas_package_holds_the_component() {
  check "the component is in the Gambas root" holds gambas3-tsruntime '/usr/lib/gambas3/gb\.tsruntime\.gambas$'
  check "the component is described" holds gambas3-tsruntime '/usr/lib/gambas3/gb\.tsruntime\.component$'
  check "the IDE's class list is there" holds gambas3-tsruntime '/usr/share/gambas3/info/gb\.tsruntime\.list$'
  check "the IDE's member descriptions are there" holds gambas3-tsruntime '/usr/share/gambas3/info/gb\.tsruntime\.info$'
  check "gambas3-tsruntime depends on this very runtime" depends gambas3-tsruntime 'libtsruntime1 \(= [0-9.]+\)'
  check "gambas3-tsruntime depends on the Gambas runtime" depends gambas3-tsruntime 'gambas3-runtime \(>= 3\.18\)'
}

# A first program as docs/gambas.md shows it, compiled and run against the installed
# component with no path given.
gambas_program_runs_installed() {
  check "a Gambas program runs against the installed component" in_root "
    mkdir -p /tmp/first/.src && cd /tmp/first &&
    printf '# Gambas Project File 3.0\nTitle=first\nStartup=Main\nComponent=gb.tsruntime\n' >.project &&
    printf \"' Gambas module file\nPublic Sub Main()\n  Dim s As New clsZKString\n  Print s.InWords(Currency(\\\"1234.56\\\"))\nEnd\n\" >.src/Main.module &&
    gbc3 -a . && [ \"\$(gbx3 .)\" = 'одна тысяча двести тридцать четыре рубля 56 копеек' ]"
}
