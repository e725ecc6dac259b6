#!/usr/bin/env bash
# Runs every fuzz target of a clang fuzz build for a set time on a working copy of its checked-in
# corpus and prints executions and crashes per target. Inputs that crash are kept in
# <build>/fuzz-artifacts/; the grown corpus in <build>/fuzz-corpus/.
#   scripts/fuzz.sh BUILD_DIR SECONDS [TARGET...]
set -uo pipefail
build=${1:?build folder}
seconds=${2:-60}
shift 2 || true
root=$(cd "$(dirname "$0")/.." && pwd)
targets=("$@")
if [ ${#targets[@]} -eq 0 ]; then
  targets=()
  for d in "$root"/tests/fuzz/corpus/*/; do targets+=("$(basename "$d")"); done
fi
mkdir -p "$build/fuzz-artifacts" "$build/fuzz-corpus"
summary=()
failed=0
for t in "${targets[@]}"; do
  exe="$build/bin/$t"
  [ -x "$exe" ] || { echo "$t: nicht gebaut"; failed=1; continue; }
  work="$build/fuzz-corpus/$t"
  mkdir -p "$work"
  log="$build/fuzz-artifacts/$t.log"
  "$exe" -max_total_time="$seconds" -print_final_stats=1 -timeout=10 -rss_limit_mb=2048 \
    -artifact_prefix="$build/fuzz-artifacts/$t-" "$work" "$root/tests/fuzz/corpus/$t" >"$log" 2>&1
  rc=$?
  runs=$(grep -m1 'stat::number_of_executed_units' "$log" | awk '{print $2}')
  crashes=0
  if [ $rc -ne 0 ]; then crashes=1; failed=1; grep -m3 -E 'ERROR|Annahme|runtime error' "$log"; fi
  summary+=("$(printf '%-16s %12s %8s' "$t" "${runs:-?}" "$crashes")")
done
printf '\n%-16s %12s %8s\n' Ziel Ausführungen Abstürze
printf '%s\n' "${summary[@]}"
exit $failed
