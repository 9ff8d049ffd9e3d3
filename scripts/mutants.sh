#!/usr/bin/env bash
# Faults the test suite must catch: shows how well the tests notice a wrong library.
#
# Each line of scripts/mutants.txt is one small deliberate fault (a flipped comparison,
# an off-by-one bound, a dropped write-back, a wrong error number, a lost CR LF...):
# a perl substitution that must match exactly once in one file. For each fault this
# script applies it, rebuilds, runs the tests of the fault's subsystem (its ctest label)
# and, when none of those fails, the rest of the suite; then it puts the file back.
#
#   caught        a test failed, or ran past the per-test timeout (a hang)
#   SURVIVED      every test still passed: behaviour the suite does not pin
#   NOT COMPILED  the fault does not build, so it shows nothing (fix the table)
#
# Usage: scripts/mutants.sh [-k] [-n] [ID...]
#   ID...  only these faults, in table order
#   -k     keep going after a fault that survives or does not compile; without it the
#          run stops at the first one
#   -n     only check the table: every fault's substitution matches exactly once
# TSRUNTIME_MUTANT_TIMEOUT sets the seconds a single test may take (180 by default).
#
# It works in its own build tree, build/mutants (the release settings without
# benchmarks), built once unchanged and tested whole before the first fault, so that a
# failure is the fault's. The packaging tests (label install) are left out: they install
# and build the examples, take long, and check packaging rather than behaviour. The run
# takes a rebuild and a test run per fault, so it is not part of scripts/test.sh; run it
# under nice on a shared machine.
#
# The tree is never left changed: the file is restored on every exit, Ctrl-C included,
# and checked against its saved copy. Should the script itself be killed outright, the
# next run restores the file before anything else.
set -euo pipefail
cd "$(dirname "$0")/.."

table=scripts/mutants.txt
build=build/mutants
timeout=${TSRUNTIME_MUTANT_TIMEOUT:-180}
keep_going=false
check_only=false
wanted=()
for arg in "$@"; do
  case "$arg" in
    -k) keep_going=true ;;
    -n) check_only=true ;;
    -h|--help) sed -n '2,/^set -euo/p' "$0" | sed '$d; s/^# \{0,1\}//'; exit 0 ;;
    -*) echo "mutants: unknown option $arg" >&2; exit 2 ;;
    *) wanted+=("$arg") ;;
  esac
done

# Applies substitution $2 to file $1 when it matches exactly once; prints the number of
# matches either way. With $3 = count, only counts.
substitute() {
  perl -e '
    my ($file, $subst, $mode) = @ARGV;
    open(my $in, "<", $file) or die "mutants: cannot read $file: $!\n";
    local $/;
    my $text = <$in>;
    close $in;
    my $n = eval "\$text =~ ${subst}g";
    die "mutants: bad substitution $subst: $@" if $@;
    $n ||= 0;
    print "$n\n";
    exit 0 if $mode eq "count" || $n != 1;
    open(my $out, ">", $file) or die "mutants: cannot write $file: $!\n";
    print $out $text;
    close $out or die "mutants: cannot write $file: $!\n";
  ' "$1" "$2" "${3:-apply}"
}

# --- The table -------------------------------------------------------------------------
ids=() labels=() files=() substs=() descs=()
declare -A seen=()
line_number=0
while IFS= read -r line || [ -n "$line" ]; do
  line_number=$((line_number + 1))
  case "$line" in '' | '#'*) continue ;; esac
  IFS=$'\x1f' read -r id label file subst desc extra <<<"${line//$'\t'/$'\x1f'}"
  if [ -z "${desc:-}" ] || [ -n "${extra:-}" ]; then
    echo "mutants: $table:$line_number: expected id, label, file, substitution, description" >&2
    exit 2
  fi
  if [ -n "${seen[$id]:-}" ]; then
    echo "mutants: $table:$line_number: id $id used twice" >&2
    exit 2
  fi
  seen[$id]=1
  ids+=("$id") labels+=("$label") files+=("$file") substs+=("$subst") descs+=("$desc")
done <"$table"

selected=()
if [ ${#wanted[@]} -eq 0 ]; then
  selected=("${!ids[@]}")
else
  for w in "${wanted[@]}"; do
    [ -n "${seen[$w]:-}" ] || { echo "mutants: no fault $w in $table" >&2; exit 2; }
  done
  for i in "${!ids[@]}"; do
    for w in "${wanted[@]}"; do
      if [ "${ids[$i]}" = "$w" ]; then selected+=("$i"); fi
    done
  done
fi

# --- Restoring -------------------------------------------------------------------------
mkdir -p "$build/logs"
exec 9>"$build/mutants.lock"
flock -n 9 || { echo "mutants: another run is using $build" >&2; exit 2; }
saved=$build/saved-copy
marker=$build/changed-file  # names the file while a fault is in it
child=

restore() {
  [ -f "$marker" ] || return 0
  local file
  file=$(cat "$marker")
  # Written over rather than moved back, so that the file is newer than the objects built
  # from the fault and the next build compiles it again.
  cat "$saved" >"$file"
  if ! cmp -s "$saved" "$file"; then
    echo "mutants: could not restore $file; its original is in $saved" >&2
    return 1
  fi
  rm -f "$marker" "$saved"
}

on_signal() {
  if [ -n "$child" ]; then kill -TERM -- "-$child" 2>/dev/null || true; fi
  restore
  echo "mutants: interrupted" >&2
  exit 130
}
trap restore EXIT
trap on_signal INT TERM HUP

if [ -f "$marker" ]; then
  echo "mutants: restoring $(cat "$marker"), left changed by an earlier run that was killed"
  restore
fi

# --- Checking every fault applies ------------------------------------------------------
bad=0
for i in "${selected[@]}"; do
  if [ ! -f "${files[$i]}" ]; then
    echo "REFUSED  ${ids[$i]}  no file ${files[$i]}" >&2
    bad=1
    continue
  fi
  n=$(substitute "${files[$i]}" "${substs[$i]}" count)
  if [ "$n" != 1 ]; then
    echo "REFUSED  ${ids[$i]}  the substitution matches $n times in ${files[$i]}, not once" >&2
    bad=1
  fi
done
[ $bad -eq 0 ] || exit 2
if $check_only; then
  echo "mutants: every one of the ${#selected[@]} faults applies"
  exit 0
fi

# --- Build and baseline ----------------------------------------------------------------
# Runs a command in a session of its own, so that an interrupt can end all of it.
run() {
  local log=$1
  shift
  setsid "$@" >>"$log" 2>&1 &
  child=$!
  local rc=0
  wait "$child" || rc=$?
  child=
  return $rc
}

# Whether the tests ctest selects with the arguments given all pass. A failure counts
# only when the failed tests fail again on their own: a test that now and then fails
# under load (a desktop session, a terminal) must not pass for a catch. The step is run
# again, up to three times in all, while its failures do not repeat; then it passes.
tests_pass() {
  local attempt
  for attempt in 1 2 3; do
    run "$log" ctest "${ctest_args[@]}" "$@" && return 0
    run "$log" ctest --test-dir "$build" --rerun-failed --timeout "$timeout" --output-on-failure ||
      return 1
    echo "mutants: the failed tests passed when run again; running the step again" >>"$log"
  done
  return 0
}

source scripts/compiler-cache.sh
ctest_args=(--test-dir "$build" -j2 --timeout "$timeout" --output-on-failure)
log=$build/logs/baseline.log
: >"$log"
echo "mutants: building $build"
if ! run "$log" cmake --preset release -B "$build" -DTSRUNTIME_BENCHMARKS=OFF ||
   ! run "$log" cmake --build "$build"; then
  echo "mutants: the unchanged tree does not build; see $log" >&2
  exit 2
fi
known_labels=$(ctest --test-dir "$build" --print-labels | sed -n 's/^  //p')
for i in "${selected[@]}"; do
  if ! grep -qx "${labels[$i]}" <<<"$known_labels"; then
    echo "mutants: fault ${ids[$i]} names label ${labels[$i]}, which no test has" >&2
    exit 2
  fi
done
echo "mutants: running the unchanged suite"
if ! tests_pass -LE '^install$'; then
  echo "mutants: the suite fails without any fault; see $log" >&2
  exit 2
fi

# --- The faults ------------------------------------------------------------------------
caught=0 survived=0 not_compiled=0 tried=0
survivors=() uncompiled=()
results=$build/results.txt
: >"$results"
started=$SECONDS

for i in "${selected[@]}"; do
  id=${ids[$i]} label=${labels[$i]} file=${files[$i]} desc=${descs[$i]}
  log=$build/logs/$id.log
  : >"$log"
  tried=$((tried + 1))
  cp "$file" "$saved"
  echo "$file" >"$marker"
  substitute "$file" "${substs[$i]}" >/dev/null
  git diff -U0 -- "$file" >>"$log" 2>/dev/null || true

  outcome=
  if ! run "$log" cmake --build "$build"; then
    outcome="NOT COMPILED"
  elif ! tests_pass --stop-on-failure -L "^${label}\$"; then
    outcome=caught
  elif ! tests_pass --stop-on-failure -LE "^(${label}|install)\$"; then
    outcome=caught
  else
    outcome=SURVIVED
  fi
  restore

  by=
  if [ "$outcome" = caught ]; then
    # The test that failed twice: the last one the log names.
    by=$(grep -oE '[0-9]+ - [^ ]+ \((Failed|Timeout|SEGFAULT|Subprocess aborted|Exception|Not Run)[^)]*\)' "$log" |
         tail -1 | sed 's/^[0-9]* - //') || true
  fi
  case "$outcome" in
    caught) caught=$((caught + 1)); printf 'caught        %s  %s\n' "$id" "$desc" ;;
    SURVIVED) survived=$((survived + 1)); survivors+=("$id"); printf 'SURVIVED      %s  %s\n' "$id" "$desc" ;;
    *) not_compiled=$((not_compiled + 1)); uncompiled+=("$id"); printf 'NOT COMPILED  %s  %s\n' "$id" "$desc" ;;
  esac
  printf '%s\t%s\t%s\n' "$outcome" "$id" "${by:-}" >>"$results"
  if [ "$outcome" != caught ] && ! $keep_going; then
    echo "mutants: stopping at $id (-k keeps going); see $log"
    break
  fi
done

minutes=$(((SECONDS - started + 30) / 60))
echo "caught $caught of $tried ($((caught * 100 / (tried > 0 ? tried : 1)))%), in $minutes min"
[ $survived -eq 0 ] || echo "survived: ${survivors[*]}"
[ $not_compiled -eq 0 ] || echo "not compiled: ${uncompiled[*]}"
[ $survived -eq 0 ] && [ $not_compiled -eq 0 ]
