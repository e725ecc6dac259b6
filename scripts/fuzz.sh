#!/usr/bin/env bash
# Runs every fuzz target of a clang fuzz build for a set time on a working copy of its checked-in
# corpus and prints executions and crashes per target. Inputs that crash are kept in
# <build>/fuzz-artifacts/; the grown corpus in <build>/fuzz-corpus/.
#   scripts/fuzz.sh BUILD_DIR SECONDS [TARGET...]
# With FUZZ_RUNS set, each target runs that many inputs instead, however long it takes.
# FUZZ_TIMEOUT (seconds, default 10) is how long one input may take before it counts as a hang.
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
# Allocation stacks are left out of reports (a finding is rerun with them); it doubles the rate.
export ASAN_OPTIONS=${ASAN_OPTIONS:-malloc_context_size=0}
# The readers' scratch folders in memory, like their inputs.
[ -d /dev/shm ] && export TMPDIR=${TMPDIR:-/dev/shm}
if [ -n "${FUZZ_RUNS:-}" ]; then limit=(-runs="$FUZZ_RUNS"); else limit=(-max_total_time="$seconds"); fi
summary=()
failed=0
for t in "${targets[@]}"; do
  exe="$build/bin/$t"
  [ -x "$exe" ] || { echo "$t: nicht gebaut"; failed=1; continue; }
  work="$build/fuzz-corpus/$t"
  mkdir -p "$work"
  log="$build/fuzz-artifacts/$t.log"
  start=$(date +%s)
  "$exe" "${limit[@]}" -print_final_stats=1 -timeout="${FUZZ_TIMEOUT:-10}" -rss_limit_mb=2048 \
    -artifact_prefix="$build/fuzz-artifacts/$t-" "$work" "$root/tests/fuzz/corpus/$t" >"$log" 2>&1
  rc=$?
  runs=$(grep -m1 'stat::number_of_executed_units' "$log" | awk '{print $2}')
  took=$(( $(date +%s) - start ))
  crashes=0
  if [ $rc -ne 0 ]; then crashes=1; failed=1; grep -m3 -E 'ERROR|Annahme|runtime error' "$log"; fi
  summary+=("$(printf '%-16s %12s %8s %8s' "$t" "${runs:-?}" "$crashes" "$took")")
  echo "${summary[-1]}"
done
printf '\n%-16s %12s %8s %8s\n' Ziel Ausführungen Abstürze Sekunden
printf '%s\n' "${summary[@]}"
exit $failed
