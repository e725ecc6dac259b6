#!/usr/bin/env bash
# tarvik-cli end to end: a new data folder, a harvest, its timber list as a Windows-1252 report
# file, and that file printed into a PDF with a fixed-pitch font embedded and its umlauts intact.
set -euo pipefail
cli="$1"
data=$(mktemp -d)
trap 'rm -rf "$data"' EXIT
"$cli" --daten "$data" init > /dev/null 2>&1
sqlite3 "$data/TARVIK3.db" "INSERT INTO Hiebe(Hieb_Nr, Jahr, Waldname) VALUES (5, '2026', 'Eichwald Süd')"
"$cli" --daten "$data" holzliste 5 --datei "$data/Daten.txt"
head -c 11 "$data/Daten.txt" | od -c | grep -q 'H   I   E   B   D   A   T   E   N  \\r  \\n'
"$cli" drucken "$data/Daten.txt" --pdf "$data/liste.pdf" --quer --rand 3 | grep -q "Seiten gedruckt"
pdfinfo "$data/liste.pdf" | grep -Eq "Pages: +1"
pdfinfo "$data/liste.pdf" | grep -Eq "Page size: +842 x 595"
pdffonts "$data/liste.pdf" | grep -Eiq "(mono|courier).* yes "
pdftotext -layout "$data/liste.pdf" - | grep -Eq "Waldname: +Eichwald Süd"
set +e
"$cli" drucken "$data/fehlt.txt" --pdf "$data/x.pdf" 2> "$data/err"; code=$?
set -e
[ "$code" -eq 1 ] && grep -q "existiert nicht" "$data/err"
echo "1 passed, 0 failed"
