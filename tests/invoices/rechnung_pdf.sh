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
"$cli" --daten "$data" rechnung 20260001 --datei "$data/rechnung.txt"
"$cli" drucken "$data/rechnung.txt" --pdf "$data/rechnung.pdf" | grep -q "Seiten gedruckt"
pdfinfo "$data/rechnung.pdf" | grep -Eq "Pages: +1"
pdffonts "$data/rechnung.pdf" | grep -Eiq "(mono|courier).* yes "
pdftotext -layout "$data/rechnung.pdf" - | grep -Eq "Rechnungsbetrag: +121,20"
pdftotext -layout "$data/rechnung.pdf" - | grep -Eq "Pfähle +Los: 3 / Zaun"
echo "1 passed, 0 failed"
