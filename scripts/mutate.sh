#!/usr/bin/env bash
# Shows that the test suite bites: applies deliberate faults one at a time to a scratch copy of
# the tree, builds it and runs the whole suite; every fault must make at least one test fail.
#
#   scripts/mutate.sh [scratch folder]       (default: beside the checkout, ../tarvik-mutate)
#
# The scratch copy takes the working tree as it is (tracked and new files), so uncommitted work is
# measured too. MUTATE_WRAP is put before every build and test run (e.g. "flock /tmp/build.lock").
# Exit status 0 when every fault was caught, 1 when one went unseen or could not be applied.
set -euo pipefail

root=$(git -C "$(dirname "$0")" rev-parse --show-toplevel)
scratch=${1:-$root/../tarvik-mutate}
jobs=$(nproc)
wrap=${MUTATE_WRAP:-}

# name | file | perl substitution (applied to the whole file; it must change it)
faults=(
  "money rounds half down|src/common/money.cpp|s/rest >= 5000/rest > 5000/; s/rest <= -5000/rest < -5000/"
  "totals drop the last lot|src/store/totals.cpp|s/(    lotRows\.finish\(\);\n)/\$1    if (!lots.isEmpty())\n        lots.removeLast();\n/"
  "exchange record: length and volume swapped|src/exchange/exchangefile.cpp|s/\{\"Länge_m\", K::Real\},(\s*)\{\"Efm_oR\", K::Real\}/{\"Efm_oR\", K::Real},\$1\{\"Länge_m\", K::Real}/"
  "bark deduction skipped|src/rules/logmeasure.cpp|s/std::max\(0\.0, measured - deduction\)/std::max(0.0, measured)/"
  "log window's help key empty|src/help/ui/helpbuttons.cpp|s/(QString helpTopicOfWindow\(const QString& objectName\)\n\{\n)/\$1    if (objectName.startsWith(QStringLiteral(\"EF_Eingabe_St\")))\n        return QString();\n/"
  "German order reversed|src/store/collation.cpp|s/UCOL_LESS \? -1 : r == UCOL_GREATER \? 1/UCOL_LESS ? 1 : r == UCOL_GREATER ? -1/g"
)

echo "Scratch copy: $scratch"
mkdir -p "$scratch"
# A fresh copy beside the kept build folder: files removed since the last run go, and every file
# takes the time of the copy, so the build cannot mistake an older source for a built one.
find "$scratch" -mindepth 1 -maxdepth 1 ! -name build -exec rm -rf {} +
(cd "$root" && git ls-files -co --exclude-standard -z | grep -zv '^build' | xargs -0 tar -cf -) | tar -xmf - -C "$scratch"

build() { $wrap cmake --build "$scratch/build" -j "$jobs" > "$scratch/build.log" 2>&1; }
# Runs the suite; prints the names of the failed tests (none when it passes).
suite()
{
    (cd "$scratch/build" && $wrap env QT_QPA_PLATFORM=offscreen ctest -j "$jobs" --timeout 300 > "$scratch/ctest.log" 2>&1) || true
    { sed -n '/The following tests FAILED:/,$p' "$scratch/ctest.log" | grep -E '^\s+[0-9]+ - ' || true; } |
        sed -E 's/^\s+[0-9]+ - ([^ ]+).*/\1/' | tr '\n' ' '
}

$wrap cmake -S "$scratch" -B "$scratch/build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo > "$scratch/configure.log"
build || { echo "The unchanged tree does not build: $scratch/build.log"; exit 1; }
failed=$(suite)
if [ -n "$failed" ]; then
    echo "The unchanged tree fails already: $failed"
    exit 1
fi
echo "Unchanged tree: the suite passes."

missed=0
for entry in "${faults[@]}"; do
    IFS='|' read -r name file expr <<< "$entry"
    target="$scratch/$file"
    cp "$target" "$target.orig"
    perl -0pi -e "$expr" "$target"
    if cmp -s "$target" "$target.orig"; then
        echo "NOT APPLIED  $name ($file no longer has the text the fault changes)"
        missed=1
        mv "$target.orig" "$target"
        continue
    fi
    if ! build; then
        echo "NOT APPLIED  $name (does not build, see $scratch/build.log)"
        missed=1
    else
        failed=$(suite)
        if [ -n "$failed" ]; then
            echo "caught       $name: $failed"
        else
            echo "MISSED       $name"
            missed=1
        fi
    fi
    # A fresh time stamp, so the next build compiles the restored file again.
    cp "$target.orig" "$target" && rm "$target.orig" && touch "$target"
done
build || { echo "The restored tree does not build: $scratch/build.log"; exit 1; }
exit $missed
