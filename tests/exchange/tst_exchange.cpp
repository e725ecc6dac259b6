// Exchange files: the round trip between two installations, the renumbering on import, and
// every kind of damaged file refused with its file and line while the others still arrive.
#include "common/textfile.h"
#include "exchange/exchangefile.h"
#include "exchange/exportfiles.h"
#include "exchange/importfiles.h"
#include "store/records.h"
#include "store/sql.h"
#include "store/totals.h"
#include "support/tempdatafolder.h"

#include <QDir>
#include <QFile>
#include <QSqlQuery>
#include <QSqlRecord>

using namespace tarvik;
using namespace tarvik::test;
using namespace tarvik::exchange;

namespace {

void exec(const QSqlDatabase& db, const QString& sql, const QVariantList& values = {}) { execSql(db, sql, values); }

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

void insertLot(const QSqlDatabase& db, qint32 id, qint32 lot, const QString& sorting)
{
    createLot(db, id, lot, sorting);
    exec(db, QStringLiteral("UPDATE Lose SET Lagerort = 'Waldweg 4', Abnehmer = 'Säge Müller' WHERE Kennung = ? AND Los_Nr = ?"), {id, lot});
}

void insertLog(const QSqlDatabase& db, qint32 id, qint32 lot, qint32 nr, int diameter, double efm, const QString& cls)
{
    exec(db, QStringLiteral("INSERT INTO Stämme(Los_Nr, Laufende_Nr, Baumart, Stärke_gemessen, Rindenabzugsart, Rindenabzug, Stärke_oR, "
                            "Länge_m, Efm_oR, Stärkeklasse, Güteklasse, Zopfdurchm_cm, Klasse_Heilbronn, Käferholz, Holzpreis, "
                            "Preis_berechnet, Kennung) VALUES (?, ?, 'FI (Fichte)', ?, 'T', 2, ?, 12.5, ?, ?, 'B', 18, 'H3', 0, 0, 0, ?)"),
         {lot, nr, diameter, diameter - 2, efm, cls, id});
}

// Two selected harvests of every assortment, one harvest that is not selected.
void fillOrigin(const QSqlDatabase& db)
{
    exec(db, QStringLiteral("UPDATE Messbeträge SET SK_L2a = 60, SK_L3a = 80 WHERE Baumart = 'FI (Fichte)'"));
    exec(db, QStringLiteral("UPDATE Messzahlen SET GK_B = 110 WHERE Baumart = 'FI (Fichte)'"));
    exec(db, QStringLiteral("UPDATE Stärkeklassen_Pfähle SET Schätzpreis_je_St = 1.5 WHERE Klasse = 'P2'"));
    exec(db, QStringLiteral("UPDATE Stärkeklassen_Schichtholz SET Schätzpreis_je_m3 = 20 WHERE Klasse = 'S2'"));
    for (const auto& [number, name] : {std::pair{17, QStringLiteral("Eichwald")}, std::pair{4, QStringLiteral("Hölzle")}}) {
        const qint32 id = insertHarvest(db, number, name, QStringLiteral("X"));
        insertLot(db, id, 1, QStringLiteral("Stämme"));
        insertLot(db, id, 2, QStringLiteral("Pfähle"));
        insertLot(db, id, 3, QStringLiteral("Schichtholz"));
        insertLog(db, id, 1, 1, 24, 0.385, QStringLiteral("L2a"));
        insertLog(db, id, 1, 2, 33, 0.98125, QStringLiteral("L3a"));
        exec(db, QStringLiteral("INSERT INTO Pfähle(Los_Nr, Baumart, Stärke_mR, Länge_m, Stärkeklasse, Anzahl, Preis_je_Stück, Preis_berechnet, Kennung) "
                                "VALUES (2, 'KI (Kiefer)', 8, 2.5, 'P2', 40, 1.5, 60, ?)"), {id});
        exec(db, QStringLiteral("INSERT INTO Schichtholz(Los_Nr, Baumart, Sektions_Nr, Stärke, Sektionslänge_m, Sektionstiefe_m, Sektionshöhe_m, "
                                "Stärkeklasse, m3, Efm, Preis_je_Ster, Preis_berechnet, Kennung) "
                                "VALUES (3, 'BU (Rotbuche)', 1, 9, 4, 1, 1.5, 'S2', 6, 4.2, 20, 120, ?)"), {id});
        recomputeTotals(db, id);
        recomputeSaleState(db, id);
    }
    insertHarvest(db, 9, QStringLiteral("Nicht dabei"), QString());
}

// Rows of a table without ids, in a stable order, numbers compared as numbers.
QList<QVariantList> rows(const QSqlDatabase& db, const QString& table, const QStringList& columns, const QString& order)
{
    QStringList quotedColumns;
    for (const QString& c : columns)
        quotedColumns << quoted(c);
    QSqlQuery q = execSql(db, QStringLiteral("SELECT %1 FROM %2 ORDER BY %3").arg(quotedColumns.join(u','), quoted(table), order));
    QList<QVariantList> out;
    while (q.next()) {
        QVariantList row;
        for (int i = 0; i < columns.size(); ++i) {
            const QVariant v = q.value(i);
            row << (v.typeId() == QMetaType::QString ? v : QVariant(v.toDouble()));
        }
        out << row;
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

QByteArray fileBytes(const QString& path)
{
    QFile f(path);
    f.open(QIODevice::ReadOnly);
    return f.readAll();
}

void writeBytes(const QString& path, const QByteArray& bytes)
{
    QFile f(path);
    QVERIFY(f.open(QIODevice::WriteOnly | QIODevice::Truncate));
    f.write(bytes);
}

// The settings a first start leaves: the stacked-wood factors 0,7 / 0,65 / 0,6.
Einstellungen defaults()
{
    Einstellungen s;
    s.repair();
    return s;
}

int count(const QSqlDatabase& db, const QString& table) { return scalar(db, QStringLiteral("SELECT count(*) FROM ") + quoted(table)).toInt(); }

} // namespace

class TestExchange : public QObject {
    Q_OBJECT

private:
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
        exec(fresh->shared(), QStringLiteral("UPDATE Messbeträge SET SK_L2a = 60, SK_L3a = 80 WHERE Baumart = 'FI (Fichte)'"));
        exec(fresh->shared(), QStringLiteral("UPDATE Messzahlen SET GK_B = 110 WHERE Baumart = 'FI (Fichte)'"));
        exec(fresh->shared(), QStringLiteral("UPDATE Stärkeklassen_Pfähle SET Schätzpreis_je_St = 1.5 WHERE Klasse = 'P2'"));
        exec(fresh->shared(), QStringLiteral("UPDATE Stärkeklassen_Schichtholz SET Schätzpreis_je_m3 = 20 WHERE Klasse = 'S2'"));
        const ImportReport report = importFiles(fresh->shared(), defaults(),
                                                {origin.filePath("4_Tarvik_Export.f10"), origin.filePath("17_Tarvik_Export.f10")});
        QCOMPARE(report.messages, QStringList());
        QCOMPARE(report.counts.harvests, 2);
        QCOMPARE(report.counts.lots, 6);
        QCOMPARE(report.counts.logs, 4);
        QCOMPARE(report.counts.poles, 2);
        QCOMPARE(report.counts.sections, 2);

        const QSqlDatabase a = source->shared(), b = fresh->shared();
        exec(a, QStringLiteral("DELETE FROM Hiebe WHERE Hieb_Nr = 9"));
        // Tabs and line breaks inside texts became blanks on the way.
        exec(a, QStringLiteral("UPDATE Hiebe SET Waldort = 'Am Hang unten', Bemerkung = 'Zeile eins Zeile zwei'"));
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
        // The origin's logs are priced the way the import prices them.
        exec(a, QStringLiteral("UPDATE Stämme SET Holzpreis = 25.41, Preis_berechnet = 25.41 WHERE Laufende_Nr = 1"));
        exec(a, QStringLiteral("UPDATE Stämme SET Holzpreis = 86.35, Preis_berechnet = 86.35 WHERE Laufende_Nr = 2"));
        exec(a, QStringLiteral("UPDATE Lose SET Holzpreis = 111.76, Preis_berechnet = 111.76 WHERE Sortierung = 'Stämme'"));
        for (const Table& t : tables) {
            const auto expected = rows(a, t.name, t.columns, t.order);
            const auto actual = rows(b, t.name, t.columns, t.order);
            QCOMPARE(actual.size(), expected.size());
            for (int r = 0; r < expected.size(); ++r)
                for (int c = 0; c < t.columns.size(); ++c) {
                    const QVariant x = expected[r][c], y = actual[r][c];
                    const bool same = x.typeId() == QMetaType::Double ? qAbs(x.toDouble() - y.toDouble()) < 1e-9 : x == y;
                    if (!same)
                        QFAIL(qPrintable(QStringLiteral("%1 row %2 column %3: %4 != %5").arg(t.name).arg(r).arg(t.columns[c],
                                                                                                 y.toString(), x.toString())));
                }
        }
        QCOMPARE(scalar(b, QStringLiteral("SELECT count(*) FROM Hiebe WHERE Selektiert = 'X'")).toInt(), 0);
    }

    void fileLayout()
    {
        TempDataFolder origin;
        std::unique_ptr<Database> source;
        exportOrigin(origin, source);
        const QByteArray bytes = fileBytes(origin.filePath("17_Tarvik_Export.f10"));
        QVERIFY(bytes.contains("\r\n#LOSE#\r\n"));
        QVERIFY(bytes.contains(encodeCp1252(QStringLiteral("#STÄMME#\r\n"))));
        const QStringList lines = readTextFile(origin.filePath("17_Tarvik_Export.f10")).lines;
        QCOMPARE(lines[0], QStringLiteral("#HIEBE#"));
        QCOMPARE(lines[1], QStringLiteral("17\t2026\tEichwald\tDurchforstung\tKäfer\tN\tAm Hang unten\t1,75\t02.03.2026\t20.03.2026\t"
                                          "Zeile eins Zeile zwei\tAnna O'Neill\tBachstraße 3\t79100 Freiburg\t0761 123\t"));
        QCOMPARE(lines[3], QStringLiteral("1\tStämme\t2\t1,366\t0\t0\tWaldweg 4\tSäge Müller\tN"));
        QCOMPARE(lines[7], QStringLiteral("1\tFI (Fichte)\t1\t24\tT\t2\t22\t12,5\t0,385\tL2a\tB\tN\t18\tH3"));
        QVERIFY(lines.contains(QStringLiteral("#PFÄHLE#")));
        QVERIFY(lines.contains(QStringLiteral("3\tBU (Rotbuche)\t1\t9\t4\t1\t1,5\tS2\t6")));

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
        QVERIFY(accepted.messages().last().startsWith("Die Exportdateien wurden erstellt unter den Dateinamen *Tarvik_Export.f10"));
        QVERIFY(accepted.messages().last().endsWith("Diese Dateien können Sie per Mail verschicken und in andere TARVIK3-Versionen importieren."));
    }

    void twoSelectedHarvestsOfOneNumber()
    {
        TempDataFolder folder;
        auto db = folder.openDatabase();
        fillOrigin(db->shared());
        insertHarvest(db->shared(), 17, QStringLiteral("Zweiter"), QStringLiteral("X"));
        ScriptedPrompter prompter;
        prompter.answerYes();
        const ExportOutcome out = writeExportFiles(db->shared(), folder.path(), prompter, selectedHarvestIds(db->shared()));
        QCOMPARE(out.files, (QStringList{"4_Tarvik_Export.f10", "17_Tarvik_Export.f10", "Stammdaten_Tarvik_Export.f10"}));
        QCOMPARE(prompter.messages(),
                 QStringList{"Die Hieb_Nr 17 ist mehrfach selektiert. Es wurde nur der erste Hieb mit dieser Nummer exportiert."});
        QVERIFY(readTextFile(folder.filePath("17_Tarvik_Export.f10")).lines[1].contains("Eichwald"));
    }

    void damagedFileIsRefusedOthersArrive_data()
    {
        QTest::addColumn<QString>("damage");
        QTest::addColumn<int>("line");
        QTest::addColumn<QString>("reason");
        QTest::newRow("missing marker") << "marker" << 9 << "Vor dieser Zeile fehlt die Kennzeichnung #STÄMME#.";
        QTest::newRow("short record") << "short" << 8 << "hat 13 Felder; erwartet werden 14";
        QTest::newRow("text for a number") << "text" << 8 << "Im Feld 3 (Stärke_gemessen) steht \"vierundzwanzig\" statt einer Zahl.";
        QTest::newRow("line of 1 MB") << "long" << 8 << "Die Zeile ist 1048576 Zeichen lang";
        QTest::newRow("cut off") << "cut" << 9 << "die Datei ist unvollständig";
        QTest::newRow("cut after a line") << "cutline" << 8 << "Die Kennzeichnung #PFÄHLE# fehlt";
        QTest::newRow("bad date") << "date" << 2 << "steht \"31.02.2026\" statt eines Datums";
        QTest::newRow("text too wide") << "wide" << 8 << "Im Feld 9 (Stärkeklasse) stehen 9 Zeichen; erlaubt sind höchstens 6.";
    }

    void damagedFileIsRefusedOthersArrive()
    {
        QFETCH(QString, damage);
        QFETCH(int, line);
        QFETCH(QString, reason);
        TempDataFolder origin;
        std::unique_ptr<Database> source;
        exportOrigin(origin, source);
        const QString path = origin.filePath("17_Tarvik_Export.f10");
        QList<QByteArray> lines = fileBytes(path).split('\n');
        lines.removeLast();
        const auto join = [&] { return lines.join('\n') + '\n'; };
        QByteArray bytes;
        if (damage == "marker") {
            lines.removeAt(6); // #STÄMME#
            bytes = join();
        } else if (damage == "short") {
            lines[7] = lines[7].left(lines[7].lastIndexOf('\t')) + '\r';
            bytes = join();
        } else if (damage == "text") {
            lines[7].replace("\t24\t", "\tvierundzwanzig\t");
            bytes = join();
        } else if (damage == "long") {
            lines[7] = QByteArray(1024 * 1024, 'x');
            bytes = join();
        } else if (damage == "cut") {
            bytes = join();
            bytes.truncate(bytes.indexOf("1\tFI (Fichte)\t2\t") + 10);
        } else if (damage == "cutline") {
            lines = lines.mid(0, 8);
            bytes = join();
        } else if (damage == "date") {
            lines[1].replace("02.03.2026", "31.02.2026");
            bytes = join();
        } else if (damage == "wide") {
            lines[7].replace("\tL2a\t", "\tL2a-extra\t");
            bytes = join();
        }
        writeBytes(path, bytes);

        TempDataFolder target;
        auto fresh = target.openDatabase();
        const ImportReport report = importFiles(fresh->shared(), defaults(), {path, origin.filePath("4_Tarvik_Export.f10")});
        QCOMPARE(report.refusedFiles, QStringList{"17_Tarvik_Export.f10"});
        QCOMPARE(report.importedFiles, QStringList{"4_Tarvik_Export.f10"});
        QCOMPARE(report.messages.size(), 1);
        const QString message = report.messages.first();
        QVERIFY2(message.startsWith(QStringLiteral("Die Datei 17_Tarvik_Export.f10 kann nicht importiert werden (Zeile %1): ").arg(line)),
                 qPrintable(message));
        QVERIFY2(message.contains(reason), qPrintable(message));
        QVERIFY(message.endsWith("Von dieser Datei wurde nichts übernommen."));
        QCOMPARE(count(fresh->shared(), "Hiebe"), 1);
        QCOMPARE(scalar(fresh->shared(), "SELECT Hieb_Nr FROM Hiebe").toInt(), 4);
        QCOMPARE(count(fresh->shared(), "Lose"), 3);
        QCOMPARE(count(fresh->shared(), "Stämme"), 2);
    }

    // A harvest file saved again by an editor as UTF-8 (with or without a byte order mark) is
    // read with its umlauts; the closing message names what the file does not carry.
    void utf8FileIsRead_data()
    {
        QTest::addColumn<QString>("encoding");
        QTest::newRow("Windows-1252 as written") << "cp1252";
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
        const QString text = decodeCp1252(fileBytes(path));
        QVERIFY(text.contains(QStringLiteral("Säge Müller")));
        QByteArray bytes = encoding == u"cp1252" ? fileBytes(path) : text.toUtf8();
        if (encoding == u"bom")
            bytes.prepend("\xEF\xBB\xBF");
        if (encoding == u"utf8lf")
            bytes.replace("\r\n", "\n");
        writeBytes(path, bytes);

        TempDataFolder target;
        auto fresh = target.openDatabase();
        const ImportReport report = importFiles(fresh->shared(), defaults(), {path});
        QCOMPARE(report.refusedFiles, QStringList{});
        QCOMPARE(report.importedFiles, QStringList{"4_Tarvik_Export.f10"});
        QCOMPARE(scalar(fresh->shared(), "SELECT Waldname FROM Hiebe").toString(), QStringLiteral("Hölzle"));
        QCOMPARE(scalar(fresh->shared(), "SELECT Hiebgrund FROM Hiebe").toString(), QStringLiteral("Käfer"));
        QCOMPARE(scalar(fresh->shared(), "SELECT group_concat(DISTINCT Abnehmer) FROM Lose").toString(), QStringLiteral("Säge Müller"));
        QCOMPARE(scalar(fresh->shared(), "SELECT group_concat(DISTINCT Baumart) FROM Stämme").toString(), QStringLiteral("FI (Fichte)"));
        QVERIFY(closingMessage(report.counts)
                    .endsWith(QStringLiteral("\n\nDie Exportdatei enthält nicht: die Bemerkungen der Lose, Stämme, Pfähle und Sektionen, die "
                                             "Kennzeichnung als Käferholz, die Preisart und die Kosten (Einschlag, Rücken) der Lose. Die "
                                             "importierten Lose werden deshalb nach Messzahlen und Messbeträgen ohne Kosten berechnet und "
                                             "ihre Stämme gelten nicht als Käferholz; bitte ergänzen Sie diese Angaben bei Bedarf.")));
    }

    void sameFileTwiceGetsTheNextNumber()
    {
        TempDataFolder origin;
        std::unique_ptr<Database> source;
        exportOrigin(origin, source);
        // Harvest 17 is there already (and 9 with it): the copy becomes MAX + 1.
        const ImportReport report = importFiles(source->shared(), defaults(), {origin.filePath("17_Tarvik_Export.f10")});
        QCOMPARE(report.messages, QStringList{"Die Hieb_Nr 17 existiert bereits. Tarvik hat automatisch die Hieb_Nr 18 vergeben!"});
        const qint32 id = report.harvestIds.first();
        QCOMPARE(scalar(source->shared(), "SELECT Hieb_Nr FROM Hiebe WHERE ID = ?", {id}).toInt(), 18);
        QCOMPARE(scalar(source->shared(), "SELECT Stämme_Anzahl FROM Hiebe WHERE ID = ?", {id}).toInt(), 2);
        QCOMPARE(scalar(source->shared(), "SELECT Teilverkauft || Verkauft FROM Hiebe WHERE ID = ?", {id}).toString(), QStringLiteral("NN"));
    }

    void conflictsInsideAFile()
    {
        TempDataFolder folder;
        auto db = folder.openDatabase();
        exec(db->shared(), QStringLiteral("UPDATE Messbeträge SET SK_L2a = 60 WHERE Baumart = 'FI (Fichte)'"));
        exec(db->shared(), QStringLiteral("UPDATE Messzahlen SET GK_B = 110 WHERE Baumart = 'FI (Fichte)'"));
        const QString log = QStringLiteral("1\tFI (Fichte)\t%1\t24\tT\t2\t22\t12,5\t0,385\tL2a\tB\tN\t18\tH3");
        const QStringList lines{
            "#HIEBE#", "5\t2026\tWald\t\t\tA\t\t0\t\t\t\t\t\t\t\t",
            "#LOSE#", "1\tStämme\t0\t0\t0\t0\t\t\tN", "1\tPfähle\t0\t0\t0\t0\t\t\tN", "2\tSchichtholz\t0\t0\t0\t0\t\t\tN",
            "#STÄMME#", log.arg(7), log.arg(7), log.arg(3), log.arg(3), "9\tFI (Fichte)\t1\t24\tT\t2\t22\t12,5\t0,385\tL2a\tB\tN\t18\tH3",
            "#PFÄHLE#", "1\tKI (Kiefer)\t8\t2,5\t40\tP2",
            "#SCHICHTHOLZ#", "2\tBU (Rotbuche)\t4\t9\t4\t1\t1,5\tS2\t6", "2\tBU (Rotbuche)\t4\t9\t2\t1\t1,5\tS2\t3",
        };
        QVERIFY(writeTextFile(folder.filePath("5_Tarvik_Export.f10"), lines).ok);
        const ImportReport report = importFiles(db->shared(), defaults(), {folder.filePath("5_Tarvik_Export.f10")});
        QCOMPARE(report.messages,
                 (QStringList{"Die Los-Nummer 1 existiert bereits und wird deshalb nicht mehr neu angelegt! Stämme, Pfähle und "
                              "Schichthölzer werden nur übernommen, wenn die Sortierung übereinstimmt!",
                              "Die Laufende Nr. 7 war bereits vergeben. Deshalb hat der neu zu importierende Stamm die Nummer 8 erhalten.",
                              "Die Laufende Nr. 3 war bereits vergeben. Deshalb hat der neu zu importierende Stamm die Nummer 9 erhalten.",
                              "Die Sektions-Nr. 4 war bereits vergeben. Deshalb hat die neu zu importierende Sektion die Nummer 5 erhalten.",
                              "Hieb 5: 1 Stämme des Loses 9 wurden nicht übernommen, weil die Datei kein neues Los 9 mit der Sortierung Stämme enthält.",
                              "Hieb 5: 1 Pfahlzeilen des Loses 1 wurden nicht übernommen, weil die Datei kein neues Los 1 mit der Sortierung Pfähle enthält."}));
        const QSqlDatabase d = db->shared();
        QCOMPARE(rows(d, "Stämme", {"Laufende_Nr"}, "ID"), (QList<QVariantList>{{7.0}, {8.0}, {3.0}, {9.0}}));
        QCOMPARE(rows(d, "Schichtholz", {"Sektions_Nr", "Efm", "Preis_je_Ster", "Preis_berechnet"}, "ID"),
                 (QList<QVariantList>{{4.0, 4.2, 0.0, 0.0}, {5.0, 2.1, 0.0, 0.0}}));
        // Index number method: 60 × 0,385 × 110 ÷ 100.
        QCOMPARE(scalar(d, "SELECT Holzpreis FROM Stämme WHERE Laufende_Nr = 7").toDouble(), 25.41);
        QCOMPARE(scalar(d, "SELECT Preis_berechnet FROM Lose WHERE Los_Nr = 1").toDouble(), 101.64);
        QCOMPARE(scalar(d, "SELECT Sortierung FROM Lose WHERE Los_Nr = 1").toString(), QStringLiteral("Stämme"));
        QCOMPARE(count(d, "Pfähle"), 0);
        QCOMPARE(report.counts.lots, 2);
    }

    void offeredFiles()
    {
        TempDataFolder folder;
        const auto file = [&](const QString& name, const QString& status) {
            QVERIFY(writeTextFile(folder.filePath(name), {"#HIEBE#", "1\t2026\t\t\t\t" + status + "\t"}).ok);
        };
        file("1_Tarvik_Export.f10", "N");
        file("2_Tarvik_Export.f10", "A");
        file("3_Tarvik_Export.f10", "X");
        file("4_Tarvik_Export.f10", "");
        file("Stammdaten_Tarvik_Export.f10", "N");
        file("5_anders.f10", "N");
        QCOMPARE(candidateFiles(folder.path()), (QStringList{"1_Tarvik_Export.f10", "2_Tarvik_Export.f10"}));

        ScriptedPrompter prompter;
        prompter.answerYes().answerNo();
        QCOMPARE(filesToImport(prompter, {}, {"a", "b"}), std::optional<QStringList>(QStringList{"a", "b"}));
        QCOMPARE(filesToImport(prompter, {}, {"a", "b"}), std::nullopt);
        QCOMPARE(prompter.questions().first(),
                 QStringLiteral("Es sind noch keine zu importierende Dateien ausgewählt. Sollen jetzt alle ausgewählt werden?"));
        QCOMPARE(filesToImport(prompter, {"b"}, {"a", "b"}), std::optional<QStringList>(QStringList{"b"}));
    }

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
        QCOMPARE(prompter.messages()[1],
                 QStringLiteral("Der Import wurde abgeschlossen. Insgesamt wurden folgende Buchungen eingelesen:\n\n"
                                "Hiebe: 1\nLose: 2\nStämme: 3\nPfähle: 0\nSchichtholz: 0\n\nWICHTIG!!!\n"
                                "Der Holzpreis wurde nach der alten Berechnung abhängig von der Messzahlen und Messbeträgen ermittelt. "
                                "Wenn Sie das importierte Los öffnen, können Sie den Preis auch nach Festpreisen, wahlweise mit "
                                "Lohnabzügen, neu berechnen.\n\nDie Exportdatei enthält nicht: die Bemerkungen der Lose, Stämme, "
                                "Pfähle und Sektionen, die Kennzeichnung als Käferholz, die Preisart und die Kosten (Einschlag, Rücken) "
                                "der Lose. Die importierten Lose werden deshalb nach Messzahlen und Messbeträgen ohne Kosten berechnet "
                                "und ihre Stämme gelten nicht als Käferholz; bitte ergänzen Sie diese Angaben bei Bedarf."));

        ScriptedPrompter few;
        report.messages = {"eins", "zwei"};
        report.counts.logs = 0;
        showImportReport(few, report);
        QCOMPARE(few.messages().size(), 3);
        QVERIFY(!few.messages()[2].contains("WICHTIG"));
    }
};

TARVIK_TEST_CORE_MAIN(TestExchange)
#include "tst_exchange.moc"
