#!/usr/bin/env bash
# Checks the Debian package as CI does: its contents, lintian without errors, the desktop entry
# and the AppStream data; then installs it with dpkg, runs the installed tarvik-cli on a new data
# folder and removes the package again.
# usage: scripts/check-package.sh [build folder]
set -euo pipefail
cd "$(dirname "$0")/.."
build=${1:-build}
shopt -s nullglob
debs=("$build"/tarvik_*.deb)
[ ${#debs[@]} -eq 1 ] || { echo "expected one tarvik_*.deb in $build, found ${#debs[@]}"; exit 1; }
deb=${debs[0]}
sudo=""
if [ "$(id -u)" -ne 0 ]; then sudo="sudo"; fi
work=$(mktemp -d); trap 'rm -rf "$work"' EXIT

echo "== contents of $deb"
dpkg-deb -c "$deb" | awk '{print $6}' | sed 's|^\./|/|' > "$work/files"
for f in /usr/bin/tarvik /usr/bin/tarvik-cli \
         /usr/share/tarvik/HILFETARVIK.HLP /usr/share/tarvik/LIESMICH.txt /usr/share/tarvik/backup/stick_gruen.png \
         /usr/share/applications/de.tarvik.holzliste.desktop /usr/share/metainfo/de.tarvik.holzliste.metainfo.xml \
         /usr/share/icons/hicolor/scalable/apps/tarvik.svg /usr/share/icons/hicolor/48x48/apps/tarvik.png \
         /usr/share/icons/hicolor/256x256/apps/tarvik.png /usr/share/man/man1/tarvik-cli.1.gz \
         /usr/share/doc/tarvik/copyright; do
  grep -qx "$f" "$work/files" || { echo "missing from the package: $f"; exit 1; }
done
dpkg-deb -f "$deb" Package Version Section Depends

echo "== lintian"
lintian --fail-on error "$deb"

echo "== desktop entry and AppStream data"
dpkg-deb -x "$deb" "$work/root"
desktop-file-validate "$work/root/usr/share/applications/de.tarvik.holzliste.desktop"
appstreamcli validate --no-net "$work/root/usr/share/metainfo/de.tarvik.holzliste.metainfo.xml"

echo "== installed"
$sudo dpkg -i "$deb"
trap '$sudo dpkg -r tarvik >/dev/null 2>&1 || true; rm -rf "$work"' EXIT
/usr/bin/tarvik-cli --daten "$work/Daten" init
/usr/bin/tarvik-cli --daten "$work/Daten" hiebe
cmp /usr/share/tarvik/LIESMICH.txt "$work/Daten/LIESMICH.txt"
man -w tarvik-cli
tests/packaging/manpage.sh /usr/bin/tarvik-cli "$(man -w tarvik-cli)"

echo "== removed"
$sudo dpkg -r tarvik
if [ -e /usr/bin/tarvik-cli ] || [ -e /usr/share/tarvik ]; then echo "files left after removal"; exit 1; fi
echo "package checks passed"
