#!/usr/bin/env bash
# tarvik-cli end to end: a stored invoice written as a file, that file printed into a PDF, and
# the PDF read back with poppler's tools.
set -euo pipefail
cli="$1"
data=$(mktemp -d)
trap 'rm -rf "$data"' EXIT
"$cli" --daten "$data" init > /dev/null 2>&1
text=$'Forstbetrieb Müller\n\nJörg O\'Neill\n\nRECHNUNG\n========\nPfähle  Los: 3 / Zaun\nRechnungsbetrag:                                       121,20'
sqlite3 "$data/TARVIK3.db" "INSERT INTO Rechnungen(Abnehmer, ReNr, Datum, Inhalt, Betrag) VALUES ('Säge O''Neill', 20260001, '2026-11-15', '${text//\'/\'\'}', 121.2)"
"$cli" --daten "$data" rechnung 20260001 | grep -q "^Jörg O'Neill$"
"$cli" --daten "$data" rechnung 20260001 --datei "$data/rechnung.txt"
# Windows-1252: the ü of Müller is one byte, 0xfc; lines end in CR LF.
head -c 21 "$data/rechnung.txt" | od -An -tx1 | tr -d ' \n' | grep -q '4dfc6c6c65720d0a$'
"$cli" drucken "$data/rechnung.txt" --pdf "$data/rechnung.pdf" | grep -q "Seiten gedruckt"
pdfinfo "$data/rechnung.pdf" | grep -Eq "Pages: +1"
pdffonts "$data/rechnung.pdf" | grep -Eiq "(mono|courier).* yes "
pdftotext -layout "$data/rechnung.pdf" - | grep -Eq "Rechnungsbetrag: +121,20"
pdftotext -layout "$data/rechnung.pdf" - | grep -Eq "Pfähle +Los: 3 / Zaun"
set +e
"$cli" --daten "$data" rechnung 5 2> "$data/err"; code=$?
set -e
[ "$code" -eq 1 ] && grep -q "Die Rechnung mit der Nummer 5 wurde nicht gefunden." "$data/err"
echo "1 passed, 0 failed"
