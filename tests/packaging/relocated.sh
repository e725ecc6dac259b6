#!/usr/bin/env bash
# An installed copy moved to another folder still finds its shared files: installed under one
# prefix and then moved, tarvik-cli seeds a new data folder from share/tarvik beside it.
# usage: relocated.sh <build folder>
set -euo pipefail
build=$1
work=$(mktemp -d); trap 'rm -rf "$work"' EXIT
cmake --install "$build" --prefix "$work/erst" --strip >/dev/null
mv "$work/erst" "$work/woanders"
cli="$work/woanders/bin/tarvik-cli"
failed=0 passed=0
check() { if "$@"; then passed=$((passed + 1)); else echo "failed: $*"; failed=$((failed + 1)); fi; }
out=$("$cli" --daten "$work/Daten" init) || { echo "init failed: $out"; failed=$((failed + 1)); }
for f in LIESMICH.txt HILFETARVIK.HLP; do
  check cmp -s "$work/woanders/share/tarvik/$f" "$work/Daten/$f"
done
check test -f "$work/Daten/TARVIK3.db"
check "$cli" --daten "$work/Daten" hiebe
echo "$passed passed, $failed failed"
[ "$failed" -eq 0 ]
