#!/usr/bin/env bash
# Installs every Debian package that building, testing and running the program needs.
# Safe to run again: it only calls apt-get when a package is missing.
set -euo pipefail

packages=(
  cmake ninja-build g++ make pkg-config
  qt6-base-dev qt6-base-dev-tools libqt6sql6-sqlite libgl-dev
  qt6-translations-l10n
  libsqlite3-dev sqlite3
  libicu-dev # German order of names in the database's statements
  libzip-dev zlib1g-dev zip unzip
  fonts-liberation2
  poppler-utils
  python3-jsonschema
  mdbtools-dev mdbtools
  ccache
  qt6-serialport-dev
  libxlsxwriter-dev qt6-charts-dev libqt6opengl6-dev
  clang libfuzzer-14-dev
  lld # links the test programs fast
  xvfb # a display of its own to look at windows on
  libpoppler-qt6-dev qpdf libxml2-utils default-jre-headless libsaxonhe-java
  dpkg-dev file librsvg2-bin # the Debian package (dpkg-shlibdeps, file) and its icons
  lintian desktop-file-utils appstream man-db # checks of the package in CI
)

missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
[ ${#missing[@]} -eq 0 ] && exit 0

sudo=""
if [ "$(id -u)" -ne 0 ]; then sudo="sudo"; fi
export DEBIAN_FRONTEND=noninteractive
$sudo apt-get update -qq
$sudo apt-get install -y -qq --no-install-recommends "${missing[@]}"
