#!/usr/bin/env bash
# `man tarvik-cli` must show every command and global option that `tarvik-cli --help` lists,
# and render without a warning from man or groff.
# usage: manpage.sh <tarvik-cli> <tarvik-cli.1.gz>
set -euo pipefail
cli=$1 page=$2
help=$("$cli" --help)
rendered=$(MANWIDTH=250 man --warnings -l "$page" 2>"${TMPDIR:-/tmp}/manpage-warnings.$$") || true
warnings=$(cat "${TMPDIR:-/tmp}/manpage-warnings.$$"); rm -f "${TMPDIR:-/tmp}/manpage-warnings.$$"
failed=0 passed=0
if [ -n "$warnings" ]; then
  echo "man warns:"; echo "$warnings"; failed=$((failed + 1))
else
  passed=$((passed + 1))
fi
# Every entry of the help (a line indented by two spaces) is an indented line of the page.
while IFS= read -r entry; do
  name=${entry%% *}
  if grep -Eq "^ +${name//./\\.}( |$)" <<<"$rendered"; then
    passed=$((passed + 1))
  else
    echo "missing from the manual page: $name"; failed=$((failed + 1))
  fi
done < <(sed -n 's/^  \([^ ].*\)$/\1/p' <<<"$help")
[ "$passed" -gt 20 ] || { echo "too few entries found in the help ($passed)"; failed=$((failed + 1)); }
for section in "ÜBERSICHT" "BEFEHLE" "RÜCKGABEWERT"; do
  grep -q "^$section" <<<"$rendered" || { echo "section $section missing"; failed=$((failed + 1)); }
done
echo "$passed passed, $failed failed"
[ "$failed" -eq 0 ]
