#!/usr/bin/env bash
# tarvik-cli runs on servers without a desktop: it must not link Qt Widgets, not even
# through another Qt library.
set -euo pipefail
libs=$(ldd "$1")
echo "$libs" | grep -q "libQt6Core" || { echo "ldd found no Qt at all"; echo "0 passed, 1 failed"; exit 1; }
if echo "$libs" | grep -q "libQt6Widgets\|libQt6PrintSupport"; then
  echo "tarvik-cli links widgets:"; echo "$libs" | grep "Widgets\|PrintSupport"
  echo "0 passed, 1 failed"; exit 1
fi
echo "1 passed, 0 failed"
