#!/usr/bin/env bash
# Builds the fuzz targets (clang, libFuzzer, ASan + UBSan) and runs each one for a short
# time on its kept corpus, fuzz/corpus/<target>/. New inputs, findings and any file a target
# writes go to a scratch folder, so the kept corpus changes only when someone copies a
# finding into it, and nothing else in the checkout changes at all.
#   scripts/fuzz.sh [SECONDS_PER_TARGET] [TARGET...]
set -euo pipefail
cd "$(dirname "$0")/.."
seconds=${1:-10}
shift || true
bash scripts/build.sh fuzz
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
export ASAN_OPTIONS=detect_leaks=1:abort_on_error=1 UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1
targets=("$@")
if [ ${#targets[@]} -eq 0 ]; then
  for exe in build/fuzz/fuzz/fuzz_*; do targets+=("$(basename "$exe" | sed 's/^fuzz_//')"); done
fi
# Each target runs in a folder of its own: whatever the calls it makes write under a
# relative name lands there, never in the checkout.
checkout=$(pwd)
failed=0
for t in "${targets[@]}"; do
  mkdir -p "$scratch/$t" "$scratch/$t.cwd" "fuzz/corpus/$t"
  if (cd "$scratch/$t.cwd" &&
      "$checkout/build/fuzz/fuzz/fuzz_$t" -max_total_time="$seconds" -timeout=10 \
        -rss_limit_mb=2048 -artifact_prefix="$scratch/$t-" -print_final_stats=0 \
        "$scratch/$t" "$checkout/fuzz/corpus/$t") >"$scratch/$t.log" 2>&1; then
    echo "fuzz: $t: passed ($(grep -c . <(ls "$scratch/$t")) new inputs)"
  else
    echo "fuzz: $t: FAILED"; tail -40 "$scratch/$t.log"
    for a in "$scratch/$t"-*; do [ -e "$a" ] && { echo "reproducer: $a"; od -c "$a" | head -20; }; done
    failed=$((failed + 1))
  fi
done
echo "fuzz: $(( ${#targets[@]} - failed )) passed, $failed failed"
[ "$failed" -eq 0 ]
