// The timber list against checked-in golden files, byte for byte (Windows-1252, CR LF).
// Set TARVIK_UPDATE_GOLDEN=1 to write the files anew after a deliberate change, then review them.
#include "common/textfile.h"
#include "reports/timberlist.h"
#include "store/sql.h"
#include "store/totals.h"
#include "support/records.h"
#include "support/tempdatafolder.h"

#include <QFile>

using namespace tarvik;

namespace {

void run(const QSqlDatabase& db, const char* sql) { execSql(db, QString::fromUtf8(sql)); }

// Several log lots (mixed species, qualities and classes, one whose logs all have 0 Efm), a
// pole lot and a stacked-wood lot.
qint32 fullHarvest(const QSqlDatabase& db)
{
    run(db, "INSERT INTO Hiebe(Hieb_Nr, Jahr, Waldname, Waldort, Hiebfläche, Hiebgrund, Hiebart, Hiebdatum_von, Hiebdatum_bis, "
            "Teilverkauft, Verkauft, Waldbesitzer_Name, Bemerkung, Harvester) VALUES (41, '2026', 'O''Briens Wald', 'Überlingen', "
            "1.25, 'Sturm', 'Durchforstung', '2026-03-01', '2026-03-05', 'N', 'N', 'Anna Müller', 'Nordhang', '')");
    const qint32 id = scalar(db, QStringLiteral("SELECT max(ID) FROM Hiebe")).toInt();
    execSql(db, QStringLiteral("INSERT INTO Lose(Los_Nr, Sortierung, Los_Bezeichnung, Lagerort, Preis_Art, Abgerechnet, Kennung) VALUES "
                               "(1, 'Stämme', 'Fichte lang', 'Weg 7', 0, 'N', ?1), (2, 'Stämme', 'Bruch', '', 0, 'N', ?1), "
                               "(3, 'Pfähle', 'Zaun', 'Hof', 0, 'N', ?1), (4, 'Schichtholz', 'Brennholz', 'Weg 7', 0, 'N', ?1)")
                    .replace(QStringLiteral("?1"), QString::number(id)));
    execSql(db, QStringLiteral(
        "INSERT INTO Stämme(Los_Nr, Laufende_Nr, Baumart, Stärke_gemessen, Rindenabzugsart, Rindenabzug, Stärke_oR, Länge_m, Efm_oR, "
        "Stärkeklasse, Güteklasse, Holzpreis, Preis_berechnet, Kennung) VALUES "
        "(1, 1, 'FI (Fichte)', 35, 'T', 2, 33, 4.5, 0.385, 'L3a', 'B', 8.855, 8.855, ?1), "
        "(1, 2, 'FI (Fichte)', 55, 'T', 3, 52, 10, 2.124, 'L5', 'B', 55.224, 55.224, ?1), "
        "(1, 3, 'FI (Fichte)', 28, 'T', 2, 26, 12.5, 0.664, 'L2b', 'C', 11.288, 11.288, ?1), "
        "(1, 4, 'BU (Rotbuche)', 45, 'T', 2, 43, 6, 0.871, 'L4', 'A', 30.485, 30.485, ?1), "
        "(1, 5, 'XY (Weißtanne Ostalbk)', 30, 'O', 0, 30, 4, 0.283, 'L3a', NULL, NULL, NULL, ?1), "
        "(2, 6, 'KI (Kiefer)', 0, 'O', 0, 0, 3, 0, 'L0', 'D', 0, 0, ?1), "
        "(2, 7, 'KI (Kiefer)', 0, 'O', 0, 0, 3, 0, 'L0', 'D', 0, 0, ?1)").replace(QStringLiteral("?1"), QString::number(id)));
    execSql(db, QStringLiteral(
        "INSERT INTO Pfähle(Los_Nr, Baumart, Stärke_mR, Länge_m, Stärkeklasse, Anzahl, Preis_je_Stück, Preis_berechnet, Kennung) VALUES "
        "(3, 'FI (Fichte)', 8, 8, 'P2.11', 10, 2.5, 25, ?1), (3, 'FI (Fichte)', 12, 14, 'P2.32', 4, 6, 24, ?1), "
        "(3, 'LA (Lärche)', 8, 8, 'P2.11', 25, 2.5, 62.5, ?1)").replace(QStringLiteral("?1"), QString::number(id)));
    execSql(db, QStringLiteral(
        "INSERT INTO Schichtholz(Los_Nr, Baumart, Sektions_Nr, Stärke, Sektionslänge_m, Sektionstiefe_m, Sektionshöhe_m, Stärkeklasse, "
        "m3, Efm, Preis_je_Ster, Preis_berechnet, Kennung) VALUES "
        "(4, 'BU (Rotbuche)', 1, 8, 10, 2, 1.5, 'S2.1', 30, 19.5, 12.5, 375, ?1), "
        "(4, 'BU (Rotbuche)', 2, 15, 4, 1, 1.2, 'S3.1', 4.8, 3.36, 0, 0, ?1)").replace(QStringLiteral("?1"), QString::number(id)));
    recomputeTotals(db, id);
    return id;
}

qint32 logsOnly(const QSqlDatabase& db)
{
    const qint32 id = test::addHarvest(db, 42);
    test::addLot(db, id, 1);
    execSql(db, QStringLiteral("INSERT INTO Stämme(Los_Nr, Laufende_Nr, Baumart, Stärke_gemessen, Länge_m, Efm_oR, Stärkeklasse, "
                               "Güteklasse, Kennung) VALUES (1, 1, 'EI (Eiche)', 62, 8.2, 2.311, 'L6', 'A', ?)"), {id});
    recomputeTotals(db, id);
    return id;
}

} // namespace

class TestTimberList : public QObject {
    Q_OBJECT

    static void compareWithGolden(const QStringList& lines, const QString& name)
    {
        const QString golden = QStringLiteral(TARVIK_TEST_DATA "/") + name;
        if (qEnvironmentVariableIsSet("TARVIK_UPDATE_GOLDEN")) {
            QVERIFY(writeTextFile(golden, lines).ok);
            return;
        }
        test::TempDataFolder dir;
        const QString produced = dir.filePath(name);
        QVERIFY(writeTextFile(produced, lines).ok);
        QFile expectedFile(golden), producedFile(produced);
        QVERIFY2(expectedFile.open(QIODevice::ReadOnly), qPrintable(golden));
        QVERIFY(producedFile.open(QIODevice::ReadOnly));
        const QByteArray expected = expectedFile.readAll();
        const QByteArray actual = producedFile.readAll();
        if (expected != actual) {
            const QStringList want = readTextFile(golden).lines;
            for (int i = 0; i < std::max(want.size(), lines.size()); ++i) {
                if (want.value(i) != lines.value(i)) {
                    QFAIL(qPrintable(QStringLiteral("first difference in line %1:\n- %2\n+ %3").arg(i + 1).arg(want.value(i), lines.value(i))));
                }
            }
            QFAIL("the files differ in their bytes (line ends or encoding)");
        }
    }

private slots:
    void fullHarvestMatchesItsGoldenFile()
    {
        test::TempDataFolder folder;
        auto db = folder.openDatabase();
        compareWithGolden(timberList(db->shared(), fullHarvest(db->shared())), QStringLiteral("holzliste_voll.txt"));
    }

    void harvestWithoutPolesAndStacksStillPrintsTheirBlocks()
    {
        test::TempDataFolder folder;
        auto db = folder.openDatabase();
        const QStringList lines = timberList(db->shared(), logsOnly(db->shared()));
        QVERIFY(lines.contains(QStringLiteral("LOSE (Pfähle)")));
        QVERIFY(lines.contains(QStringLiteral("LOS_NR     EFM      RM  LOS-BEZEICHNUNG  LAGERORT")));
        compareWithGolden(lines, QStringLiteral("holzliste_nur_staemme.txt"));
    }

    // Line breaks and tabs typed into texts become blanks: the report keeps its lines.
    void textsCannotBreakTheLines()
    {
        test::TempDataFolder folder;
        auto db = folder.openDatabase();
        const qint32 id = fullHarvest(db->shared());
        const int plain = int(timberList(db->shared(), id).size());
        execSql(db->shared(), QStringLiteral("UPDATE Hiebe SET Waldname = ?, Bemerkung = ?, Harvester = ? WHERE ID = ?"),
                {QStringLiteral("Ober\r\nwald"), QStringLiteral("Nord\nhang\tmit Graben"), QStringLiteral("Zeile 1\r\nZeile 2\rZeile 3"), id});
        execSql(db->shared(), QStringLiteral("UPDATE Lose SET Los_Bezeichnung = ?, Lagerort = ? WHERE Kennung = ? AND Los_Nr = 1"),
                {QStringLiteral("Fichte\nlang"), QStringLiteral("Weg\r7\tam Bach"), id});
        const QStringList lines = timberList(db->shared(), id);
        QCOMPARE(lines.size(), plain + 1); // the harvester text now has its line
        for (const QString& line : lines)
            QVERIFY2(!line.contains(u'\r') && !line.contains(u'\n') && !line.contains(u'\t'), qPrintable(line));
        QVERIFY(lines.contains(QStringLiteral("Waldname:        Ober wald")));
        QVERIFY(lines.contains(QStringLiteral("Nord hang mit Graben")));
        QVERIFY(lines.contains(QStringLiteral("Zeile 1 Zeile 2 Zeile 3")));
        QVERIFY(lines.contains(QStringLiteral("     1       5    4,327   105,85  Fichte lang      Weg 7 am Bach")));

        const QString file = folder.filePath(QStringLiteral("Daten.txt"));
        QVERIFY(writeTextFile(file, lines).ok);
        QFile f(file);
        QVERIFY(f.open(QIODevice::ReadOnly));
        const QByteArray bytes = f.readAll();
        QCOMPARE(bytes.count('\r'), lines.size()); // no bare CR: every CR ends a line
        QCOMPARE(bytes.count('\n'), lines.size());
    }

    void noPageMarks()
    {
        test::TempDataFolder folder;
        auto db = folder.openDatabase();
        for (const QString& line : timberList(db->shared(), fullHarvest(db->shared())))
            QVERIFY(line.trimmed() != u"#");
    }
};

TARVIK_TEST_CORE_MAIN(TestTimberList)
#include "tst_timberlist.moc"
