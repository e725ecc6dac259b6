// The timber list against checked-in golden files, byte for byte (Windows-1252, CR LF).
#include "common/textfile.h"
#include "reports/timberlist.h"
#include "store/sql.h"
#include "store/totals.h"
#include "support/records.h"
#include "support/reportsfixture.h"
#include "support/tempdatafolder.h"

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
    test::TempDataFolder m_folder;
    std::unique_ptr<Database> m_db = m_folder.openDatabase();

    // The lines as the program writes them, against the golden file.
    void compareWithGolden(const QStringList& lines, const QString& name)
    {
        const QString written = m_folder.filePath(name);
        QVERIFY(writeTextFile(written, lines).ok);
        test::compareWithGolden(written, name);
    }

private slots:
    void fullHarvestMatchesItsGoldenFile()
    {
        compareWithGolden(timberList(m_db->shared(), fullHarvest(m_db->shared())), QStringLiteral("holzliste_voll.txt"));
    }

    // The pole and stacked-wood blocks stand there although empty.
    void harvestWithoutPolesAndStacks()
    {
        compareWithGolden(timberList(m_db->shared(), logsOnly(m_db->shared())), QStringLiteral("holzliste_nur_staemme.txt"));
    }

    // Line breaks and tabs typed into texts become blanks: the report keeps its lines.
    void textsCannotBreakTheLines()
    {
        const QSqlDatabase db = m_db->shared();
        const qint32 id = fullHarvest(db);
        const int plain = int(timberList(db, id).size());
        execSql(db, QStringLiteral("UPDATE Hiebe SET Waldname = ?, Bemerkung = ?, Harvester = ? WHERE ID = ?"),
                {QStringLiteral("Ober\r\nwald"), QStringLiteral("Nord\nhang\tmit Graben"), QStringLiteral("Zeile 1\r\nZeile 2\rZeile 3"), id});
        execSql(db, QStringLiteral("UPDATE Lose SET Los_Bezeichnung = ?, Lagerort = ? WHERE Kennung = ? AND Los_Nr = 1"),
                {QStringLiteral("Fichte\nlang"), QStringLiteral("Weg\r7\tam Bach"), id});
        const QStringList lines = timberList(db, id);
        QCOMPARE(lines.size(), plain + 1); // the harvester text now has its line
        for (const QString& line : lines)
            QVERIFY2(!line.contains(u'\r') && !line.contains(u'\n') && !line.contains(u'\t'), qPrintable(line));
        for (const char* joined : {"Waldname:        Ober wald", "Nord hang mit Graben", "Zeile 1 Zeile 2 Zeile 3",
                                   "     1       5    4,327   105,85  Fichte lang      Weg 7 am Bach"})
            QVERIFY2(lines.contains(QString::fromUtf8(joined)), joined);
    }
};

TARVIK_TEST_CORE_MAIN(TestTimberList)
#include "tst_timberlist.moc"
