#!/usr/bin/env bash
# Non-blank lines of test code against the program's code: sources, headers, scripts and build
# files; the data files under tests/data (golden files, fixtures, fuzz inputs) do not count.
set -euo pipefail
cd "$(dirname "$0")/.."
count()
{
    find "$1" -path tests/data -prune -o -path '*/corpus' -prune -o -type f \
        \( -name '*.cpp' -o -name '*.h' -o -name '*.sh' -o -name '*.py' -o -name CMakeLists.txt \) -print0 |
        xargs -0 cat | grep -cv '^\s*$'
}
tests=$(count tests)
code=$(count src)
echo "tests/: $tests lines, src/: $code lines, tests are $((100 * tests / code)) % of the code"
