#pragma once
// What the report tests share: a small forest to list, a written file against its golden copy in
// tests/data, and the output of poppler's tools.
#include "common/textfile.h"
#include "store/sql.h"

#include <QFile>
#include <QProcess>
#include <QtTest>

namespace tarvik::test {

inline void addListLog(const QSqlDatabase& db, qint32 harvest, int lot, int nr, const char* species, const char* quality,
                       const char* cls, double efm, double price)
{
    execSql(db, QStringLiteral("INSERT INTO Stämme(Los_Nr, Laufende_Nr, Baumart, Stärke_gemessen, Rindenabzugsart, Rindenabzug, "
                               "Stärke_oR, Länge_m, Efm_oR, Stärkeklasse, Güteklasse, Klasse_Heilbronn, Holzpreis, Preis_berechnet, "
                               "Kennung) VALUES (?, ?, ?, 35, 'T', 2, 33, 4.5, ?, ?, ?, 'H2', ?, ?, ?)"),
            {lot, nr, QString::fromUtf8(species), efm, QString::fromUtf8(cls), QString::fromUtf8(quality), price / efm, price, harvest});
}

struct Forest {
    qint32 unsold2025 = 0, partlySold2026 = 0, sold2026 = 0;
};

// Three harvests of one owner: 2025 unsold with two log lots (five logs), 2026 partly sold with
// a pole lot (and one log), 2026 sold with a stacked-wood lot; three invoices. Names carry
// umlauts and apostrophes.
inline Forest plantForest(const QSqlDatabase& db)
{
    Forest f;
    qint32* ids[] = {&f.unsold2025, &f.partlySold2026, &f.sold2026};
    const char* harvests[][4] = {{"2025", "Eichwald", "N", "N"}, {"2026", "O'Briens Wald", "J", "N"}, {"2026", "Buchenhang", "J", "J"}};
    for (int i = 0; i < 3; ++i) {
        const auto& [year, forest, partly, sold] = harvests[i];
        execSql(db, QStringLiteral("INSERT INTO Hiebe(Hieb_Nr, Jahr, Selektiert, Waldname, Hiebart, Hiebgrund, Waldbesitzer_Name, "
                                   "Hiebfläche, Hiebdatum_von, Hiebdatum_bis, Teilverkauft, Verkauft, Anzahl_Lose, Stämme_Anzahl, "
                                   "Stämme_Efm) VALUES (?, ?, '', ?, 'Durchforstung', 'Sturm', 'Anna Müller', 1.5, ?, ?, ?, ?, 2, 3, 2.5)"),
                {i + 1, QString::fromUtf8(year), QString::fromUtf8(forest), QString::fromUtf8(year) + QStringLiteral("-03-01"),
                 QString::fromUtf8(year) + QStringLiteral("-03-20"), QString::fromUtf8(partly), QString::fromUtf8(sold)});
        *ids[i] = scalar(db, QStringLiteral("SELECT max(ID) FROM Hiebe")).toInt();
    }
    execSql(db, QStringLiteral("INSERT INTO Lose(Los_Nr, Sortierung, Anzahl_Stämme, Efm_oR, Lagerort, Abgerechnet, Abnehmer, "
                               "Preis_berechnet, Preis_erhalten, Bemerkung, Kennung) VALUES "
                               "(1, 'Stämme', 3, 2.5, 'O''Brien''s Weg', 'N', 'Säge Huber', 150, 0, 'nass', ?), "
                               "(2, 'Stämme', 2, 1.25, 'Hof', 'J', 'Säge Huber', 80, 80, '', ?), "
                               "(1, 'Pfähle', 0, 0, 'Hof', 'N', 'Zaunbau Koch', 40, 0, '', ?), "
                               "(1, 'Schichtholz', 0, 0, 'Weg 7', 'J', '', 375, 375, '', ?)"),
            {f.unsold2025, f.unsold2025, f.partlySold2026, f.sold2026});
    addListLog(db, f.unsold2025, 1, 1, "FI (Fichte)", "B", "L2b", 0.5, 20);
    addListLog(db, f.unsold2025, 1, 2, "FI (Fichte)", "B", "L2b", 0.75, 30);
    addListLog(db, f.unsold2025, 1, 3, "FI (Fichte)", "C", "L3a", 1.25, 40);
    addListLog(db, f.unsold2025, 2, 4, "BU (Rotbuche)", "B", "L2b", 0.5, 25);
    addListLog(db, f.unsold2025, 2, 5, "BU (Rotbuche)", "A", "L4", 0.75, 55);
    addListLog(db, f.partlySold2026, 1, 1, "FI (Fichte)", "B", "L2b", 1.0, 44);
    execSql(db, QStringLiteral("INSERT INTO Pfähle(Los_Nr, Baumart, Stärke_mR, Länge_m, Stärkeklasse, Anzahl, Preis_je_Stück, "
                               "Preis_berechnet, Kennung) VALUES (1, 'FI (Fichte)', 8, 8, 'P2.11', 10, 2.5, 25, ?), "
                               "(1, 'LA (Lärche)', 8, 8, 'P2.11', 4, 2.5, 10, ?), (1, 'FI (Fichte)', 12, 14, 'P2.32', 1, 5, 5, ?)"),
            {f.partlySold2026, f.partlySold2026, f.partlySold2026});
    execSql(db, QStringLiteral("INSERT INTO Schichtholz(Los_Nr, Baumart, Sektions_Nr, Stärke, Sektionslänge_m, Sektionstiefe_m, "
                               "Sektionshöhe_m, Stärkeklasse, m3, Efm, Preis_je_Ster, Preis_berechnet, Kennung) VALUES "
                               "(1, 'BU (Rotbuche)', 1, 8, 10, 2, 1.5, 'S2.1', 30, 19.5, 12.5, 375, ?)"),
            {f.sold2026});
    execSql(db, QStringLiteral("INSERT INTO Rechnungen(Abnehmer, Vor_Nachname, Datum, ReNr, MwSt_Proz, Betrag) VALUES "
                               "('Säge Huber', 'Josef Huber', '2025-12-30', 1, 5.5, 84.4), "
                               "('Säge Huber', 'Josef Huber', '2026-01-02', 2, 5.5, 158.25), "
                               "('O''Neill Holz', 'Pat O''Neill', '2026-02-10', 3, 19, 100)"));
    return f;
}

// The written file byte for byte against tests/data/<name>, naming the first line that differs
// (a changed line end counts). TARVIK_UPDATE_GOLDEN=1 writes the golden file anew.
inline void compareWithGolden(const QString& written, const QString& name)
{
    QFile file(written);
    QVERIFY2(file.open(QIODevice::ReadOnly), qPrintable(written));
    const QByteArray actual = file.readAll();
    QFile golden(QStringLiteral(TARVIK_TEST_DATA "/") + name);
    if (qEnvironmentVariableIsSet("TARVIK_UPDATE_GOLDEN")) {
        QVERIFY(golden.open(QIODevice::WriteOnly));
        golden.write(actual);
        return;
    }
    QVERIFY2(golden.open(QIODevice::ReadOnly), qPrintable(golden.fileName()));
    const QList<QByteArray> want = golden.readAll().split('\n');
    const QList<QByteArray> got = actual.split('\n');
    for (qsizetype i = 0; i < std::max(want.size(), got.size()); ++i)
        QVERIFY2(want.value(i) == got.value(i), qPrintable(QStringLiteral("Zeile %1:\n- %2\n+ %3")
                                                               .arg(i + 1)
                                                               .arg(decodeCp1252(want.value(i)), decodeCp1252(got.value(i)))));
}

// What a command-line tool (pdftotext, pdfinfo, pdffonts) prints.
inline QString toolOutput(const QString& program, const QStringList& args)
{
    QProcess p;
    p.start(program, args);
    if (!p.waitForFinished(60000))
        return {};
    return QString::fromUtf8(p.readAllStandardOutput());
}

// The PDF's text as pdftotext lays it out, pages separated by form feeds.
inline QString pdfText(const QString& pdf, const QStringList& options = {QStringLiteral("-layout")})
{
    return toolOutput(QStringLiteral("pdftotext"), options + QStringList{pdf, QStringLiteral("-")});
}

} // namespace tarvik::test
