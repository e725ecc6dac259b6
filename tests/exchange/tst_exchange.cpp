// Exchange files: the round trip between two installations, directly, through a handheld folder
// and through tarvik-cli; the record layout against hand-written lines; the renumbering on
// import; every kind of damaged file refused with its file and line while the others arrive.
#include "common/textfile.h"
#include "exchange/exchangefile.h"
#include "exchange/exportfiles.h"
#include "exchange/handheld.h"
#include "exchange/importfiles.h"
#include "store/database.h"
#include "store/records.h"
#include "store/sql.h"
#include "store/totals.h"
#include "support/clirun.h"
#include "support/records.h"
#include "support/reliabilityfiles.h"
#include "support/tempdatafolder.h"

#include <QDir>
#include <QFile>
#include <QSqlQuery>
#include <QTemporaryDir>

using namespace tarvik;
using namespace tarvik::test;
using namespace tarvik::exchange;

namespace {

qint32 insertHarvest(const QSqlDatabase& db, qint32 number, const QString& waldname, const QString& selected)
{
    QSqlQuery q = execSql(db, QStringLiteral(
        "INSERT INTO Hiebe(Hieb_Nr, Jahr, Selektiert, Waldname, Waldort, Hiebfläche, Hiebgrund, Hiebart, Hiebdatum_von, Hiebdatum_bis, "
        "Bemerkung, Waldbesitzer_Name, Waldbesitzer_Straße, Waldbesitzer_Wohnort, Waldbesitzer_Tel, Waldbesitzer_Sonst, Teilverkauft, Verkauft) "
        "VALUES (?, '2026', ?, ?, 'Am Hang\tunten', 1.75, 'Käfer', 'Durchforstung', '2026-03-02', '2026-03-20', ?, "
        "'Anna O''Neill', 'Bachstraße 3', '79100 Freiburg', '0761 123', '', 'N', 'N')"),
                          {number, selected, waldname, QStringLiteral("Zeile eins\nZeile zwei")});
    return q.lastInsertId().toInt();
}

void insertLog(const QSqlDatabase& db, qint32 id, qint32 nr, int diameter, double efm, const QString& cls)
{
    execSql(db, QStringLiteral("INSERT INTO Stämme(Los_Nr, Laufende_Nr, Baumart, Stärke_gemessen, Rindenabzugsart, Rindenabzug, Stärke_oR, "
                            "Länge_m, Efm_oR, Stärkeklasse, Güteklasse, Zopfdurchm_cm, Klasse_Heilbronn, Käferholz, Holzpreis, "
                            "Preis_berechnet, Kennung) VALUES (1, ?, 'FI (Fichte)', ?, 'T', 2, ?, 12.5, ?, ?, 'B', 18, 'H3', 0, 0, 0, ?)"),
         {nr, diameter, diameter - 2, efm, cls, id});
}

// Spruce L2a 60 and L3a 80 per Efm at quality index 110; poles P2 1,50 each; S2 20 per m³.
void setPrices(const QSqlDatabase& db)
{
    execSql(db, QStringLiteral("UPDATE Messbeträge SET SK_L2a = 60, SK_L3a = 80 WHERE Baumart = 'FI (Fichte)'"));
    execSql(db, QStringLiteral("UPDATE Messzahlen SET GK_B = 110 WHERE Baumart = 'FI (Fichte)'"));
    execSql(db, QStringLiteral("UPDATE Stärkeklassen_Pfähle SET Schätzpreis_je_St = 1.5 WHERE Klasse = 'P2'"));
    execSql(db, QStringLiteral("UPDATE Stärkeklassen_Schichtholz SET Schätzpreis_je_m3 = 20 WHERE Klasse = 'S2'"));
}

// Two selected harvests (17, 4) of every assortment, one harvest (9) that is not selected.
void fillOrigin(const QSqlDatabase& db)
{
    setPrices(db);
    for (const auto& [number, name] : {std::pair{17, QStringLiteral("Eichwald")}, std::pair{4, QStringLiteral("Hölzle")}}) {
        const qint32 id = insertHarvest(db, number, name, QStringLiteral("X"));
        for (const auto& [lot, sorting] : {std::pair{1, "Stämme"}, std::pair{2, "Pfähle"}, std::pair{3, "Schichtholz"}}) {
            createLot(db, id, lot, QString::fromUtf8(sorting));
            execSql(db, QStringLiteral("UPDATE Lose SET Lagerort = 'Waldweg 4', Abnehmer = 'Säge Müller' WHERE Kennung = ? AND Los_Nr = ?"), {id, lot});
        }
        insertLog(db, id, 1, 24, 0.385, QStringLiteral("L2a"));
        insertLog(db, id, 2, 33, 0.98125, QStringLiteral("L3a"));
        execSql(db, QStringLiteral("INSERT INTO Pfähle(Los_Nr, Baumart, Stärke_mR, Länge_m, Stärkeklasse, Anzahl, Preis_je_Stück, Preis_berechnet, Kennung) "
                                "VALUES (2, 'KI (Kiefer)', 8, 2.5, 'P2', 40, 1.5, 60, ?)"), {id});
        execSql(db, QStringLiteral("INSERT INTO Schichtholz(Los_Nr, Baumart, Sektions_Nr, Stärke, Sektionslänge_m, Sektionstiefe_m, Sektionshöhe_m, "
                                "Stärkeklasse, m3, Efm, Preis_je_Ster, Preis_berechnet, Kennung) "
                                "VALUES (3, 'BU (Rotbuche)', 1, 9, 4, 1, 1.5, 'S2', 6, 4.2, 20, 120, ?)"), {id});
        recomputeTotals(db, id);
        recomputeSaleState(db, id);
    }
    insertHarvest(db, 9, QStringLiteral("Nicht dabei"), QString());
}

// Rows of a table without ids, in a stable order, fields joined by '|', numbers to 12 digits.
QStringList rows(const QSqlDatabase& db, const QString& table, const QStringList& columns, const QString& order)
{
    QStringList quotedColumns;
    for (const QString& c : columns)
        quotedColumns << quoted(c);
    QSqlQuery q = execSql(db, QStringLiteral("SELECT %1 FROM %2 ORDER BY %3").arg(quotedColumns.join(u','), quoted(table), order));
    QStringList out;
    while (q.next()) {
        QStringList row;
        for (int i = 0; i < columns.size(); ++i) {
            const QVariant v = q.value(i);
            row << (v.typeId() == QMetaType::QString || v.isNull() ? v.toString() : QString::number(v.toDouble(), 'g', 12));
        }
        out << row.join(u'|');
    }
    return out;
}

QStringList columnsOf(Section section)
{
    QStringList names;
    for (const FieldLayout& f : sectionFields(section))
        if (f.column)
            names << QString::fromUtf8(f.column);
    return names;
}

// The settings a first start leaves (stacked-wood factors 0,7 / 0,65 / 0,6), with the handheld's folder.
Einstellungen settingsWith(const QString& handheld = QString())
{
    Einstellungen s;
    s.repair();
    s.text[HandheldFolderSlot] = handheld;
    return s;
}

int count(const QSqlDatabase& db, const QString& table) { return scalar(db, QStringLiteral("SELECT count(*) FROM ") + quoted(table)).toInt(); }

QStringList exchangeFiles(const QString& folder)
{
    return QDir(folder).entryList({QStringLiteral("*Tarvik_Export.f10")}, QDir::Files, QDir::Name);
}

const QStringList OriginFiles{"17_Tarvik_Export.f10", "4_Tarvik_Export.f10", "Stammdaten_Tarvik_Export.f10"};

} // namespace

class TestExchange : public QObject {
    Q_OBJECT

    // Exports harvests 4 and 17 of a filled database into its folder.
    void exportOrigin(TempDataFolder& folder, std::unique_ptr<Database>& db)
    {
        db = folder.openDatabase();
        fillOrigin(db->shared());
        ScriptedPrompter prompter;
        prompter.answerYes();
        const ExportOutcome out = writeExportFiles(db->shared(), folder.path(), prompter, selectedHarvestIds(db->shared()));
        QVERIFY(out.written);
        QCOMPARE(out.files, (QStringList{"4_Tarvik_Export.f10", "17_Tarvik_Export.f10", "Stammdaten_Tarvik_Export.f10"}));
    }

private slots:
    void roundTripKeepsEveryValue()
    {
        TempDataFolder origin;
        std::unique_ptr<Database> source;
        exportOrigin(origin, source);

        TempDataFolder target;
        auto fresh = target.openDatabase();
        setPrices(fresh->shared());
        const ImportReport report = importFiles(fresh->shared(), settingsWith(),
                                                {origin.filePath("4_Tarvik_Export.f10"), origin.filePath("17_Tarvik_Export.f10")});
        QCOMPARE(report.messages, QStringList());
        QCOMPARE(report.counts.harvests, 2);
        QCOMPARE(report.counts.lots, 6);
        QCOMPARE(report.counts.logs, 4);
        QCOMPARE(report.counts.poles, 2);
        QCOMPARE(report.counts.sections, 2);

        const QSqlDatabase a = source->shared(), b = fresh->shared();
        execSql(a, QStringLiteral("DELETE FROM Hiebe WHERE Hieb_Nr = 9"));
        // Tabs and line breaks inside texts became blanks on the way.
        execSql(a, QStringLiteral("UPDATE Hiebe SET Waldort = 'Am Hang unten', Bemerkung = 'Zeile eins Zeile zwei'"));
        // The import prices logs by index number: 60 × 0,385 × 110 ÷ 100 and 80 × 0,98125 × 110 ÷ 100.
        execSql(a, QStringLiteral("UPDATE Stämme SET Holzpreis = 25.41, Preis_berechnet = 25.41 WHERE Laufende_Nr = 1"));
        execSql(a, QStringLiteral("UPDATE Stämme SET Holzpreis = 86.35, Preis_berechnet = 86.35 WHERE Laufende_Nr = 2"));
        execSql(a, QStringLiteral("UPDATE Lose SET Holzpreis = 111.76, Preis_berechnet = 111.76 WHERE Sortierung = 'Stämme'"));
        struct Table {
            QString name;
            QStringList columns;
            QString order;
        };
        const QString lotKey = QStringLiteral("(SELECT Hieb_Nr FROM Hiebe WHERE Hiebe.ID = Kennung)");
        const QList<Table> tables{
            {"Hiebe", columnsOf(HarvestSection) + QStringList{"Anzahl_Lose", "Stämme_Anzahl", "Stämme_Efm", "Stämme_Efm_je_Stück",
                                                             "Pfähle_Anzahl", "Schichtholz_Efm", "Schichtholz_m3", "Teilverkauft", "Verkauft"},
             "Hieb_Nr"},
            {"Lose", columnsOf(LotSection) + QStringList{"Efm_je_Stamm", "Efm_Schichtholz", "Holzpreis", "Preis_berechnet", "Abgerechnet"},
             lotKey + ", Los_Nr"},
            {"Stämme", columnsOf(LogSection) + QStringList{"Holzpreis", "Preis_berechnet"}, lotKey + ", Laufende_Nr"},
            {"Pfähle", columnsOf(PoleSection) + QStringList{"Preis_je_Stück", "Preis_berechnet"}, lotKey + ", Los_Nr"},
            {"Schichtholz", columnsOf(StackSection) + QStringList{"Efm", "Preis_je_Ster", "Preis_berechnet"}, lotKey + ", Sektions_Nr"},
        };
        for (const Table& t : tables)
            QCOMPARE(rows(b, t.name, t.columns, t.order), rows(a, t.name, t.columns, t.order));
        QCOMPARE(scalar(b, QStringLiteral("SELECT count(*) FROM Hiebe WHERE Selektiert = 'X'")).toInt(), 0);
    }

    // Every record of a harvest file, field by field, as the other installation reads it.
    void fileLayout()
    {
        TempDataFolder origin;
        std::unique_ptr<Database> source;
        exportOrigin(origin, source);
        const QByteArray bytes = readBytes(origin.filePath("17_Tarvik_Export.f10"));
        QVERIFY(bytes.contains(encodeCp1252(QStringLiteral("\r\n#STÄMME#\r\n"))));
        QCOMPARE(readTextFile(origin.filePath("17_Tarvik_Export.f10")).lines,
                 (QStringList{"#HIEBE#",
                              "17\t2026\tEichwald\tDurchforstung\tKäfer\tN\tAm Hang unten\t1,75\t02.03.2026\t20.03.2026\t"
                              "Zeile eins Zeile zwei\tAnna O'Neill\tBachstraße 3\t79100 Freiburg\t0761 123\t",
                              "#LOSE#",
                              "1\tStämme\t2\t1,366\t0\t0\tWaldweg 4\tSäge Müller\tN",
                              "2\tPfähle\t0\t0\t40\t0\tWaldweg 4\tSäge Müller\tN",
                              "3\tSchichtholz\t0\t0\t0\t6\tWaldweg 4\tSäge Müller\tN",
                              "#STÄMME#",
                              "1\tFI (Fichte)\t1\t24\tT\t2\t22\t12,5\t0,385\tL2a\tB\tN\t18\tH3",
                              "1\tFI (Fichte)\t2\t33\tT\t2\t31\t12,5\t0,98125\tL3a\tB\tN\t18\tH3",
                              "#PFÄHLE#",
                              "2\tKI (Kiefer)\t8\t2,5\t40\tP2",
                              "#SCHICHTHOLZ#",
                              "3\tBU (Rotbuche)\t1\t9\t4\t1\t1,5\tS2\t6"}));

        const QStringList master = readTextFile(origin.filePath("Stammdaten_Tarvik_Export.f10")).lines;
        QStringList markers;
        for (const QString& l : master)
            if (l.startsWith(u'#'))
                markers << l;
        QCOMPARE(markers, (QStringList{"#BAUMART#", "#KLASSESTÄMME#", "#KLASSEHEILBRONN#", "#KLASSEPFÄHLE#", "#KLASSESCHICHTHOLZ#",
                                       "#GÜTEKLASSEN#", "#RINDENABZUG#", "#RINDENABZUG2#", "#WALDNAME#", "#LAGERORT#", "#HIEBART#",
                                       "#HIEBGRUND#", "#ABNEHMER#"}));
        const int bark = int(master.indexOf(QStringLiteral("#RINDENABZUG#")));
        QCOMPARE(master[bark + 1], QStringLiteral("SK_L0\tSK_L1a\tSK_L1b\tSK_L2a\tSK_L2b\tSK_L3a\tSK_L3b\tSK_L4\tSK_L5\tSK_L6\t"));
        // An empty list still has its marker, directly followed by the next one.
        QCOMPARE(master.last(), QStringLiteral("#ABNEHMER#"));
    }

    void exportQuestionsAndOldFiles()
    {
        TempDataFolder folder;
        auto db = folder.openDatabase();
        ScriptedPrompter nothing;
        QVERIFY(!writeExportFiles(db->shared(), folder.path(), nothing, selectedHarvestIds(db->shared())).written);
        QCOMPARE(nothing.messages(),
                 QStringList{"Bitte selektieren Sie zuerst die Hiebe, die für einen Export berücksichtigt werden sollen!"});

        fillOrigin(db->shared());
        writeBytes(folder.filePath("99_Tarvik_Export.f10"), "old");
        ScriptedPrompter declined;
        declined.answerNo();
        QVERIFY(!writeExportFiles(db->shared(), folder.path(), declined, selectedHarvestIds(db->shared())).written);
        QCOMPARE(declined.questions(),
                 QStringList{"Sollen von den 2 selektierten Hieben wirklich Export-Dateien angelegt werden?\n"
                             "Falls bereits Exportdateien vorliegen, werden diese vorher gelöscht!"});
        QVERIFY(QFile::exists(folder.filePath("99_Tarvik_Export.f10")));

        ScriptedPrompter accepted;
        accepted.answerYes();
        QVERIFY(exportToInstallation(db->shared(), folder.path(), accepted, selectedHarvestIds(db->shared())).written);
        QVERIFY(!QFile::exists(folder.filePath("99_Tarvik_Export.f10")));

        // Two selected harvests of one number: the first one's file, and a word about the other.
        insertHarvest(db->shared(), 17, QStringLiteral("Zweiter"), QStringLiteral("X"));
        ScriptedPrompter twice;
        twice.answerYes();
        const ExportOutcome out = writeExportFiles(db->shared(), folder.path(), twice, selectedHarvestIds(db->shared()));
        QCOMPARE(out.files, (QStringList{"4_Tarvik_Export.f10", "17_Tarvik_Export.f10", "Stammdaten_Tarvik_Export.f10"}));
        QCOMPARE(twice.messages(),
                 QStringList{"Die Hieb_Nr 17 ist mehrfach selektiert. Es wurde nur der erste Hieb mit dieser Nummer exportiert."});
        QVERIFY(readTextFile(folder.filePath("17_Tarvik_Export.f10")).lines[1].contains("Eichwald"));
    }

    // Harvest 17's file changed (every occurrence of `from` replaced, or cut right after the
    // first `cutAfter`), imported together with harvest 4's.
    void damagedFileIsRefusedOthersArrive_data()
    {
        QTest::addColumn<QString>("from");
        QTest::addColumn<QString>("to");
        QTest::addColumn<QString>("cutAfter");
        QTest::addColumn<int>("line");
        QTest::addColumn<QString>("reason");
        const QString firstLog = QStringLiteral("1\tFI (Fichte)\t1\t24\tT\t2\t22\t12,5\t0,385\tL2a\tB\tN\t18\tH3");
        QTest::newRow("missing marker") << "\r\n#STÄMME#\r\n" << "\r\n" << "" << 9 << "Vor dieser Zeile fehlt die Kennzeichnung #STÄMME#.";
        QTest::newRow("short record") << "\t18\tH3\r\n" << "\t18\r\n" << "" << 8 << "hat 13 Felder; erwartet werden 14";
        QTest::newRow("text for a number") << "\t24\t" << "\tvierundzwanzig\t" << "" << 8
                                           << "Im Feld 3 (Stärke_gemessen) steht \"vierundzwanzig\" statt einer Zahl.";
        QTest::newRow("line of 1 MB") << firstLog + "\r\n" << QString(1024 * 1024, u'x') + "\n" << "" << 8 << "Die Zeile ist 1048576 Zeichen lang";
        QTest::newRow("line a character too long, its CR not counted") << firstLog + "\r\n" << QString(32 * 1024 + 1, u'x') + "\r\n"
                                                                         << "" << 8 << "Die Zeile ist 32769 Zeichen lang;";
        QTest::newRow("cut off") << "" << "" << "\t2\t33" << 9 << "die Datei ist unvollständig";
        QTest::newRow("cut after a line") << "" << "" << "\tH3\r\n" << 8 << "Die Kennzeichnung #PFÄHLE# fehlt";
        QTest::newRow("bad date") << "02.03.2026" << "31.02.2026" << "" << 2 << "steht \"31.02.2026\" statt eines Datums";
        QTest::newRow("text too wide") << "\tL2a\t" << "\tL2a-extra\t" << "" << 8
                                       << "Im Feld 9 (Stärkeklasse) stehen 9 Zeichen; erlaubt sind höchstens 6.";
    }
    void damagedFileIsRefusedOthersArrive()
    {
        QFETCH(QString, from);
        QFETCH(QString, to);
        QFETCH(QString, cutAfter);
        QFETCH(int, line);
        QFETCH(QString, reason);
        TempDataFolder origin;
        std::unique_ptr<Database> source;
        exportOrigin(origin, source);
        const QString path = origin.filePath("17_Tarvik_Export.f10");
        QByteArray bytes = readBytes(path);
        if (!from.isEmpty())
            bytes.replace(encodeCp1252(from), encodeCp1252(to));
        if (!cutAfter.isEmpty())
            bytes.truncate(bytes.indexOf(cutAfter.toLatin1()) + cutAfter.size());
        writeBytes(path, bytes);

        TempDataFolder target;
        auto fresh = target.openDatabase();
        const ImportReport report = importFiles(fresh->shared(), settingsWith(), {path, origin.filePath("4_Tarvik_Export.f10")});
        QCOMPARE(report.refusedFiles, QStringList{"17_Tarvik_Export.f10"});
        QCOMPARE(report.importedFiles, QStringList{"4_Tarvik_Export.f10"});
        QCOMPARE(report.messages.size(), 1);
        const QString message = report.messages.first();
        QVERIFY2(message.startsWith(QStringLiteral("Die Datei 17_Tarvik_Export.f10 kann nicht importiert werden (Zeile %1): ").arg(line)),
                 qPrintable(message));
        QVERIFY2(message.contains(reason), qPrintable(message));
        QVERIFY(message.endsWith("Von dieser Datei wurde nichts übernommen."));
        QCOMPARE(scalar(fresh->shared(), "SELECT group_concat(Hieb_Nr) FROM Hiebe").toString(), QStringLiteral("4"));
        QCOMPARE(count(fresh->shared(), "Lose"), 3);
        QCOMPARE(count(fresh->shared(), "Stämme"), 2);
    }

    // A harvest file saved again by an editor as UTF-8 (with or without a byte order mark) is
    // read with its umlauts.
    void utf8FileIsRead_data()
    {
        QTest::addColumn<QString>("encoding");
        QTest::newRow("UTF-8") << "utf8";
        QTest::newRow("UTF-8 with byte order mark") << "bom";
        QTest::newRow("UTF-8, LF line ends") << "utf8lf";
    }
    void utf8FileIsRead()
    {
        QFETCH(QString, encoding);
        TempDataFolder origin;
        std::unique_ptr<Database> source;
        exportOrigin(origin, source);
        const QString path = origin.filePath("4_Tarvik_Export.f10");
        QByteArray bytes = decodeCp1252(readBytes(path)).toUtf8();
        if (encoding == u"bom")
            bytes.prepend("\xEF\xBB\xBF");
        if (encoding == u"utf8lf")
            bytes.replace("\r\n", "\n");
        writeBytes(path, bytes);

        TempDataFolder target;
        auto fresh = target.openDatabase();
        const ImportReport report = importFiles(fresh->shared(), settingsWith(), {path});
        QCOMPARE(report.importedFiles, QStringList{"4_Tarvik_Export.f10"});
        QCOMPARE(scalar(fresh->shared(), "SELECT Waldname || '|' || Hiebgrund FROM Hiebe").toString(), QStringLiteral("Hölzle|Käfer"));
        QCOMPARE(scalar(fresh->shared(), "SELECT group_concat(DISTINCT Abnehmer) FROM Lose").toString(), QStringLiteral("Säge Müller"));
        QCOMPARE(scalar(fresh->shared(), "SELECT group_concat(DISTINCT Baumart) FROM Stämme").toString(), QStringLiteral("FI (Fichte)"));
    }

    void conflictsInsideAFile()
    {
        TempDataFolder folder;
        auto db = folder.openDatabase();
        setPrices(db->shared());
        const QString log = QStringLiteral("1\tFI (Fichte)\t%1\t24\tT\t2\t22\t12,5\t0,385\tL2a\tB\tN\t18\tH3");
        const QStringList lines{
            "#HIEBE#", "5\t2026\tWald\t\t\tA\t\t0\t\t\t\t\t\t\t\t",
            "#LOSE#", "1\tStämme\t0\t0\t0\t0\t\t\tN", "1\tPfähle\t0\t0\t0\t0\t\t\tN", "2\tSchichtholz\t0\t0\t0\t0\t\t\tN",
            "#STÄMME#", log.arg(7), log.arg(7), log.arg(3), log.arg(3), "9\tFI (Fichte)\t1\t24\tT\t2\t22\t12,5\t0,385\tL2a\tB\tN\t18\tH3",
            "#PFÄHLE#", "1\tKI (Kiefer)\t8\t2,5\t40\tP2",
            "#SCHICHTHOLZ#", "2\tBU (Rotbuche)\t4\t9\t4\t1\t1,5\tS2\t6", "2\tBU (Rotbuche)\t4\t9\t2\t1\t1,5\tS2\t3",
        };
        QVERIFY(writeTextFile(folder.filePath("5_Tarvik_Export.f10"), lines).ok);
        const ImportReport report = importFiles(db->shared(), settingsWith(), {folder.filePath("5_Tarvik_Export.f10")});
        QCOMPARE(report.messages,
                 (QStringList{"Die Los-Nummer 1 existiert bereits und wird deshalb nicht mehr neu angelegt! Stämme, Pfähle und "
                              "Schichthölzer werden nur übernommen, wenn die Sortierung übereinstimmt!",
                              "Die Laufende Nr. 7 war bereits vergeben. Deshalb hat der neu zu importierende Stamm die Nummer 8 erhalten.",
                              "Die Laufende Nr. 3 war bereits vergeben. Deshalb hat der neu zu importierende Stamm die Nummer 9 erhalten.",
                              "Die Sektions-Nr. 4 war bereits vergeben. Deshalb hat die neu zu importierende Sektion die Nummer 5 erhalten.",
                              "Hieb 5: 1 Stämme des Loses 9 wurden nicht übernommen, weil die Datei kein neues Los 9 mit der Sortierung Stämme enthält.",
                              "Hieb 5: 1 Pfahlzeilen des Loses 1 wurden nicht übernommen, weil die Datei kein neues Los 1 mit der Sortierung Pfähle enthält."}));
        const QSqlDatabase d = db->shared();
        QCOMPARE(rows(d, "Stämme", {"Laufende_Nr"}, "ID"), (QStringList{"7", "8", "3", "9"}));
        // Stacked wood: 4 × 1 × 1,5 = 6 m³ × 0,7 = 4,2 Efm at 20 per m³ = 120; 2 × 1 × 1,5 = 3 m³, 2,1 Efm, 60.
        QCOMPARE(rows(d, "Schichtholz", {"Sektions_Nr", "Efm", "Preis_je_Ster", "Preis_berechnet"}, "ID"),
                 (QStringList{"4|4.2|20|120", "5|2.1|20|60"}));
        // Index number method: 60 × 0,385 × 110 ÷ 100; four such logs in lot 1.
        QCOMPARE(scalar(d, "SELECT Holzpreis FROM Stämme WHERE Laufende_Nr = 7").toDouble(), 25.41);
        QCOMPARE(scalar(d, "SELECT Preis_berechnet FROM Lose WHERE Los_Nr = 1").toDouble(), 101.64);
        QCOMPARE(scalar(d, "SELECT Sortierung FROM Lose WHERE Los_Nr = 1").toString(), QStringLiteral("Stämme"));
        QCOMPARE(count(d, "Pfähle"), 0);
        QCOMPARE(report.counts.lots, 2);
    }

    void offeredFiles()
    {
        TempDataFolder folder;
        const std::pair<const char*, const char*> files[] = {{"1_Tarvik_Export.f10", "N"}, {"2_Tarvik_Export.f10", "A"},
                                                             {"3_Tarvik_Export.f10", "X"}, {"4_Tarvik_Export.f10", ""},
                                                             {"Stammdaten_Tarvik_Export.f10", "N"}, {"5_anders.f10", "N"}};
        for (const auto& [name, status] : files)
            QVERIFY(writeTextFile(folder.filePath(name), {"#HIEBE#", "1\t2026\t\t\t\t" + QString::fromLatin1(status) + "\t"}).ok);
        QCOMPARE(candidateFiles(folder.path()), (QStringList{"1_Tarvik_Export.f10", "2_Tarvik_Export.f10"}));
    }

    // At most 200 messages in one box, the rest counted; the note on prices only when logs came.
    void manyMessagesMakeOneReport()
    {
        ImportReport report;
        report.counts = {1, 2, 3, 0, 0};
        for (int i = 0; i < 250; ++i)
            report.messages << QStringLiteral("Meldung %1").arg(i);
        ScriptedPrompter prompter;
        showImportReport(prompter, report);
        QCOMPARE(prompter.messages().size(), 2);
        QVERIFY(prompter.messages()[0].startsWith("Beim Import sind 250 Meldungen angefallen:\n\nMeldung 0\nMeldung 1\n"));
        QVERIFY(prompter.messages()[0].endsWith("Meldung 199\n... und 50 weitere Meldungen."));
        QVERIFY(prompter.messages()[1].startsWith("Der Import wurde abgeschlossen. Insgesamt wurden folgende Buchungen eingelesen:\n\n"
                                                  "Hiebe: 1\nLose: 2\nStämme: 3\nPfähle: 0\nSchichtholz: 0\n\nWICHTIG!!!\n"));

        ScriptedPrompter few;
        report.messages = {"eins", "zwei"};
        report.counts.logs = 0;
        showImportReport(few, report);
        QCOMPARE(few.messages().size(), 3);
        QVERIFY(!few.messages()[2].contains("WICHTIG"));
    }

    // Out to the handheld's folder from one installation, in from it on another: only files
    // of harvests marked new or changed are offered, nothing but exchange files is copied.
    void roundTripThroughTheHandheld()
    {
        TempDataFolder office, home;
        QTemporaryDir device;
        auto source = office.openDatabase();
        fillOrigin(source->shared());
        ScriptedPrompter out;
        out.answerYes().answerYes();
        QVERIFY(exportToHandheld(source->shared(), office.path(), settingsWith(device.path()), out, selectedHarvestIds(source->shared())).written);
        QCOMPARE(exchangeFiles(device.path()), OriginFiles);
        QCOMPARE(exchangeFiles(office.path()), OriginFiles);

        QVERIFY(writeTextFile(QDir(device.path()).filePath("13_Tarvik_Export.f10"), {"#HIEBE#", "13\t2026\tW\t\t\tX\t"}).ok);
        QVERIFY(writeTextFile(QDir(device.path()).filePath("notizen.txt"), {"nicht kopieren"}).ok);
        auto target = home.openDatabase();
        ScriptedPrompter in;
        in.answerYes();
        QCOMPARE(copyFromHandheld(home.path(), settingsWith(device.path()), in).copied, 4);
        QVERIFY(!QFile::exists(home.filePath("notizen.txt")));
        const QStringList offered = candidateFiles(home.path());
        QCOMPARE(offered, (QStringList{"17_Tarvik_Export.f10", "4_Tarvik_Export.f10"}));
        const ImportReport report = importFiles(target->shared(), settingsWith(), {home.filePath(offered[0]), home.filePath(offered[1])});
        QCOMPARE(report.counts.harvests, 2);
        QCOMPARE(report.counts.logs, 4);
        QCOMPARE(scalar(target->shared(), "SELECT group_concat(Hieb_Nr) FROM Hiebe").toString(), QStringLiteral("17,4"));
    }

    // Without a reachable handheld folder, or with the copy declined, the files stay in the data folder.
    void exportWithoutCopyLeavesTheFilesHere_data()
    {
        QTest::addColumn<QString>("folder"); // "@device": a reachable folder
        QTest::addColumn<bool>("copy");
        QTest::addColumn<QString>("start");
        QTest::newRow("none chosen") << "" << true << "Es ist noch kein Ordner des Pocket-PC eingestellt";
        QTest::newRow("not connected") << "/nicht/angeschlossen" << true << "Der Ordner des Pocket-PC /nicht/angeschlossen ist nicht erreichbar.";
        QTest::newRow("copy declined") << "@device" << false << "";
    }
    void exportWithoutCopyLeavesTheFilesHere()
    {
        QFETCH(QString, folder);
        QFETCH(bool, copy);
        QFETCH(QString, start);
        TempDataFolder data;
        QTemporaryDir device;
        auto db = data.openDatabase();
        fillOrigin(db->shared());
        ScriptedPrompter prompter;
        prompter.answerYes();
        copy ? prompter.answerYes() : prompter.answerNo();
        const QString chosen = folder == u"@device" ? device.path() : folder;
        QVERIFY(exportToHandheld(db->shared(), data.path(), settingsWith(chosen), prompter, selectedHarvestIds(db->shared())).written);
        QCOMPARE(exchangeFiles(data.path()), OriginFiles);
        QCOMPARE(exchangeFiles(device.path()), QStringList());
        QCOMPARE(prompter.messages().size(), start.isEmpty() ? 0 : 1);
        if (!start.isEmpty())
            QVERIFY2(prompter.messages()[0].startsWith(start), qPrintable(prompter.messages()[0]));
    }

    void importWithoutHandheldGoesOnWithWhatIsHere()
    {
        TempDataFolder data;
        QVERIFY(writeTextFile(data.filePath("21_Tarvik_Export.f10"), {"#HIEBE#", "21\t2026\tW\t\t\tA\t"}).ok);
        ScriptedPrompter prompter;
        QCOMPARE(copyFromHandheld(data.path(), settingsWith(), prompter).copied, 0);
        QVERIFY(prompter.messages()[0].endsWith("Der Import wird jetzt trotzdem weiter ausgeführt."));
        QCOMPARE(candidateFiles(data.path()), QStringList{"21_Tarvik_Export.f10"});
    }

    // The handheld folder reached a second way (another spelling, a link) is the data folder
    // itself: no file is copied onto itself, and the files keep their content.
    void noFileIsCopiedOntoItself_data()
    {
        QTest::addColumn<QString>("spelling"); // relative to the data folder; "@link" a link to it
        QTest::newRow("dot") << "/.";
        QTest::newRow("up and back") << "/../@name";
        QTest::newRow("linked folder") << "@link";
    }
    void noFileIsCopiedOntoItself()
    {
        QFETCH(QString, spelling);
        TempDataFolder data;
        QTemporaryDir elsewhere;
        const QStringList content{"#HIEBE#", "12\t2026\tW\t\t\tN\t"};
        QVERIFY(writeTextFile(data.filePath("12_Tarvik_Export.f10"), content).ok);
        QString device = data.path() + spelling;
        device.replace(QStringLiteral("@name"), QDir(data.path()).dirName());
        if (spelling == u"@link") {
            device = QDir(elsewhere.path()).filePath(QStringLiteral("geraet"));
            QVERIFY(QFile::link(data.path(), device));
        }
        const CopyResult copy = copyExchangeFiles(data.path(), device);
        QCOMPARE(copy.copied, 0);
        QCOMPARE(copy.already, QStringList{"12_Tarvik_Export.f10"});
        QCOMPARE(readTextFile(data.filePath("12_Tarvik_Export.f10")).lines, content);

        // The handheld steps refuse the folder before they copy.
        ScriptedPrompter prompter;
        QCOMPARE(copyFromHandheld(data.path(), settingsWith(device), prompter).copied, 0);
        QVERIFY2(prompter.messages().first().contains(QStringLiteral("ist der Datenordner von TARVIK")), qPrintable(prompter.messages().first()));
        QVERIFY(prompter.questions().isEmpty());
        QCOMPARE(readTextFile(data.filePath("12_Tarvik_Export.f10")).lines, content);
    }

    // A copy that breaks off leaves the old file on the device whole.
    void brokenCopyKeepsTheOldFile()
    {
        TempDataFolder data;
        QTemporaryDir device;
        const QStringList old{"#HIEBE#", "12\t2026\tAlt\t\t\tN\t"};
        QVERIFY(writeTextFile(QDir(device.path()).filePath("12_Tarvik_Export.f10"), old).ok);
        // Reading the process's own memory file at its start fails with an input/output error.
        QVERIFY(QFile::link(QStringLiteral("/proc/self/mem"), data.filePath("12_Tarvik_Export.f10")));
        QVERIFY(writeTextFile(data.filePath("13_Tarvik_Export.f10"), {"#HIEBE#", "13\t2026\tNeu\t\t\tN\t"}).ok);
        const CopyResult copy = copyExchangeFiles(data.path(), device.path());
        QCOMPARE(copy.failed, QStringList{"12_Tarvik_Export.f10"});
        QCOMPARE(copy.copied, 1);
        QCOMPARE(readTextFile(QDir(device.path()).filePath("12_Tarvik_Export.f10")).lines, old);
        QCOMPARE(exchangeFiles(device.path()), (QStringList{"12_Tarvik_Export.f10", "13_Tarvik_Export.f10"})); // no temporary left
    }

    // tarvik-cli: files on stdout, counts on stdout, messages and questions on stderr, exit codes.
    void commandLineExportThenImportElsewhere()
    {
        TempDataFolder office, home;
        QCOMPARE(runCli({"--daten", office.path(), "init"}).code, 0);
        QCOMPARE(runCli({"--daten", home.path(), "init"}).code, 0);
        {
            auto db = Database::openOrCreate(office.databasePath());
            for (qint32 number : {41, 42}) {
                const qint32 id = addHarvest(db->shared(), number);
                addLot(db->shared(), id, 1);
                addTypedLog(db->shared(), id, 1, 1, QStringLiteral("FI (Fichte)"), 35, 4.5, QStringLiteral("O"));
            }
        }
        const CliOutput none = runCli({"--ja", "--daten", office.path(), "export"});
        QCOMPARE(none.code, 1);
        QVERIFY(none.err.contains("Bitte selektieren Sie zuerst die Hiebe"));
        const CliOutput declined = runCli({"--daten", office.path(), "export", "42"});
        QCOMPARE(declined.code, 1);
        QCOMPARE(runCli({"--ja", "--daten", office.path(), "export", "99"}).code, 1);
        QCOMPARE(runCli({"--daten", office.path(), "export", "vier"}).code, 2);

        const CliOutput exported = runCli({"--ja", "--daten", office.path(), "export", "42", "41"});
        QCOMPARE(exported.code, 0);
        QCOMPARE(exported.out, office.filePath("42_Tarvik_Export.f10") + u'\n' + office.filePath("41_Tarvik_Export.f10") + u'\n' +
                                   office.filePath("Stammdaten_Tarvik_Export.f10") + u'\n');

        QVERIFY(writeTextFile(home.filePath("7_Tarvik_Export.f10"), {"#HIEBE#", "7\t2026"}).ok);
        const CliOutput imported = runCli({"--daten", home.path(), "import", office.filePath("41_Tarvik_Export.f10"),
                                           home.filePath("7_Tarvik_Export.f10"), office.filePath("42_Tarvik_Export.f10")});
        QCOMPARE(imported.code, 1);
        QVERIFY(imported.out.contains("Hiebe: 2\nLose: 2\nStämme: 2\n"));
        QVERIFY(imported.err.contains("Die Datei 7_Tarvik_Export.f10 kann nicht importiert werden (Zeile 2)"));
        QCOMPARE(runCli({"--daten", home.path(), "import"}).code, 2);
        auto db = Database::openOrCreate(home.databasePath());
        QCOMPARE(scalar(db->shared(), "SELECT group_concat(Hieb_Nr) FROM Hiebe").toString(), QStringLiteral("41,42"));
    }
};

TARVIK_TEST_CORE_MAIN(TestExchange)
#include "tst_exchange.moc"
