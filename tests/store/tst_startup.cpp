// The start of a program: refusals end it with their message, one program per data folder,
// the first activation shows the first-steps note only while there is no harvest. A new file
// holds the tables, columns (in order, with type word and width) and indexes of the format,
// and its default master data; files of each older layout are brought up to the columns of a
// new file, and the user is told.
#include "common/textfile.h"
#include "store/database.h"
#include "store/schema.h"
#include "store/sql.h"
#include "store/startup.h"
#include "store/upgrade.h"
#include "support/storefixture.h"
#include "support/tempdatafolder.h"

#include <QDir>
#include <QFileInfo>
#include <QSqlQuery>

using namespace tarvik;

namespace {

// A new file, then taken back to an older layout by the given statements.
void makeOldFile(const QString& path, const QStringList& statements)
{
    createDatabaseFile(path);
    test::withPlainConnection(path, [&](const QSqlDatabase& db) {
        for (const QString& sql : statements)
            execSql(db, sql);
    });
}

QMap<QString, QStringList> sortedColumns(const QSqlDatabase& db)
{
    QMap<QString, QStringList> out;
    for (const schema::Table& t : schema::tables()) {
        QStringList names = schema::columnNames(db, t.name);
        names.sort();
        out.insert(t.name, names);
    }
    return out;
}

// Older files had no wood price per log, and so none of the indexes over it.
const QStringList NoLogPrice{"DROP INDEX tarvik_stämme_los_summen", "ALTER TABLE Stämme DROP COLUMN Holzpreis"};

QStringList versionTwo()
{
    QStringList statements;
    for (const char* c : {"Preis_Art", "Erschwerniszuschlag", "Los_Bezeichnung", "Anfahrt", "GPS_L", "GPS_B",
                          "Käferholzabschlag", "Kosten_Einschlag", "Kosten_Rücken", "Pauschalpreis_efm",
                          "Pauschalpreis_G", "Vermessungsart", "Fixlänge", "Überlänge", "Qualität", "Holzpreis", "ReNr"})
        statements << QStringLiteral("ALTER TABLE Lose DROP COLUMN %1").arg(quoted(QString::fromUtf8(c)));
    return statements + QStringList{"DROP INDEX \"Stämme_käferholz\""} + NoLogPrice +
           QStringList{"ALTER TABLE Stämme DROP COLUMN Käferholz", "DROP TABLE Tagespreise", "DROP TABLE Rechnungen",
                       "DROP TABLE Rindenabzug2",
                       "INSERT INTO Lose(Los_Nr, Sortierung, Preis_berechnet, Kennung) VALUES (1, 'Stämme', 123.5, 1)",
                       "INSERT INTO Stämme(Los_Nr, Laufende_Nr, Preis_berechnet, Kennung) VALUES (1, 1, 45.25, 1)"};
}

StartupOptions optionsFor(const test::TempDataFolder& folder)
{
    StartupOptions options;
    options.dataFolder = folder.path();
    options.locale = QLocale(QLocale::German, QLocale::Germany);
    options.singleInstance = true;
    return options;
}

} // namespace

class TestStartup : public QObject {
    Q_OBJECT
    // A data folder as the first start leaves it, and the columns of its new file.
    test::TempDataFolder m_folder;
    test::ScriptedPrompter m_prompter;
    std::unique_ptr<Session> m_session;
    QMap<QString, QStringList> m_newColumns;
    QSqlDatabase db() const { return m_session->database->shared(); }

private slots:
    void initTestCase()
    {
        m_session = m_folder.start(m_prompter);
        QVERIFY(m_session);
        QVERIFY(m_session->database->newlyCreated());
        m_newColumns = sortedColumns(db());
    }

    // Spot checks against the format itself, independent of the definition in the code.
    void columns_data()
    {
        QTest::addColumn<QString>("table");
        QTest::addColumn<QStringList>("expected");
        QTest::newRow("Stämme") << "Stämme" << QStringList{
            "Los_Nr LONG", "Laufende_Nr LONG", "Baumart TEXT (22)", "Stärke_gemessen SHORT", "Rindenabzugsart TEXT (1)",
            "Rindenabzug SHORT", "Stärke_oR SHORT", "Länge_m SINGLE", "Efm_oR SINGLE", "Stärkeklasse TEXT (6)",
            "Güteklasse TEXT (5)", "Zopfdurchm_cm SHORT", "Klasse_Heilbronn TEXT (5)", "Käferholz SHORT",
            "Holzpreis CURRENCY", "Preis_berechnet CURRENCY", "Bemerkung TEXT (30)", "Kennung LONG", "ID INTEGER"};
        QTest::newRow("Rechnungen") << "Rechnungen" << QStringList{
            "Abnehmer TEXT (50)", "Vor_Nachname TEXT (30)", "Strasse TEXT (30)", "Wohnort TEXT (30)", "Datum DATETIME",
            "ReNr LONG", "Inhalt MEMO", "CMA_Abgabe_Proz SINGLE", "Kundeninfo TEXT (30)", "MwSt_Proz SINGLE",
            "Skonto_Proz SINGLE", "Betrag CURRENCY", "ID INTEGER"};
    }
    void columns()
    {
        QFETCH(QString, table);
        QFETCH(QStringList, expected);
        QStringList actual;
        QSqlQuery q = execSql(db(), QStringLiteral("SELECT name, type FROM pragma_table_info(?)"), {table});
        while (q.next()) {
            // The declared type keeps the original word first; a text keeps its width.
            const QString type = q.value(1).toString();
            actual << q.value(0).toString() + u' ' + (type.startsWith(QLatin1String("TEXT (")) ? type : type.section(u' ', 0, 0));
        }
        QCOMPARE(actual, expected);
    }

    // The layout's counts, its index names (misspellings included) on their columns, the
    // default rows, values the classes and prices do not read, and text that compares without case.
    void facts_data()
    {
        QTest::addColumn<QString>("sql");
        QTest::addColumn<QVariant>("expected");
        QTest::newRow("tables") << "SELECT count(*) FROM sqlite_master WHERE type = 'table' AND name <> 'sqlite_sequence'" << QVariant(27);
        QTest::newRow("columns: the layout's and the three invoice tables of our own")
            << "SELECT count(*) FROM sqlite_master m, pragma_table_info(m.name) WHERE m.type = 'table' AND m.name <> 'sqlite_sequence'"
            << QVariant(207 + 30);
        QTest::newRow("indexes of the format")
            << "SELECT count(*) FROM sqlite_master WHERE type = 'index' AND sql IS NOT NULL AND name NOT LIKE 'tarvik_%'" << QVariant(59);
        QTest::newRow("Rechnungen_abnehnmer") << "SELECT group_concat(name) FROM pragma_index_info('Rechnungen_abnehnmer')" << QVariant("Abnehmer");
        QTest::newRow("Stämme_särkeor") << "SELECT group_concat(name) FROM pragma_index_info('Stämme_särkeor')" << QVariant("Stärke_oR");
        const QList<std::pair<const char*, int>> rowCounts{
            {"Baumarten", 27}, {"Stärkeklassen_Stämme", 10}, {"Stärkeklassen_Stämme_Heilbronn", 6}, {"Stärkeklassen_Pfähle", 11},
            {"Stärkeklassen_Schichtholz", 7}, {"Güteklassen", 7}, {"Rindenabzug", 27}, {"Messbeträge", 27}, {"Tagespreise", 27},
            {"Messzahlen", 27}, {"Rindenabzug2", 18}, {"Hiebe", 0}}; // bark ranges: before the first activation
        for (const auto& [table, rows] : rowCounts)
            QTest::addRow("rows of %s", table) << QStringLiteral("SELECT count(*) FROM \"%1\"").arg(QString::fromUtf8(table)) << QVariant(rows);
        QTest::newRow("without case") << "SELECT count(*) FROM Baumarten WHERE Baumart = 'fi (fichte)'" << QVariant(1);
        QTest::newRow("sound") << "PRAGMA integrity_check" << QVariant("ok");
        QTest::newRow("misspelling kept") << "SELECT Laubwald FROM Baumarten WHERE Baumart = 'RK (Roßkastianie)'" << QVariant("J");
        QTest::newRow("base FI L2a kept low") << "SELECT SK_L2a FROM Messbeträge WHERE Baumart = 'FI (Fichte)'" << QVariant(14);
        QTest::newRow("day price quality") << "SELECT count(*) FROM Tagespreise WHERE Güte = 'B' AND SK_L3a = 0" << QVariant(27);
    }
    void facts()
    {
        QFETCH(QString, sql);
        QFETCH(QVariant, expected);
        QCOMPARE(scalar(db(), sql).toString(), expected.toString());
    }

    // The width is enforced by the file as a safety net, and reported.
    void overlongTextIsRefused()
    {
        try {
            execSql(db(), QStringLiteral("INSERT INTO Baumarten(Baumart, Laubwald) VALUES (?, 'J')"),
                    {QStringLiteral("XX (Ein viel zu langer Name)")});
            QFAIL("an overlong species was stored");
        } catch (const StoreError& e) {
            QCOMPARE(e.problem(), StoreProblem::Rejected);
            QCOMPARE(e.message(), QStringLiteral("Der Wert im Feld \"Baumart\" ist zu lang: es nimmt höchstens 22 Zeichen auf."));
        }
    }
    void upgradesToNewLayout_data()
    {
        QTest::addColumn<QStringList>("change");
        QTest::addColumn<bool>("importMessage");
        QTest::addColumn<QString>("indexesAdded"); // the upgrade's line naming them, where the row is about them
        QTest::addColumn<QString>("probe");        // the rows the old file had, as they read afterwards
        QTest::addColumn<QString>("kept");
        QTest::newRow("no Rindenabzug2") << QStringList{"DROP TABLE Rindenabzug2"} << false << QString() << QString() << QString();
        // Version 2: the lot's and log's prices carried over, one day price per species in the order of their names.
        QTest::newRow("no Tagespreise") << versionTwo() << true << QString()
                                        << "SELECT l.Holzpreis || '|' || Preis_Art || '|' || Anfahrt || '|' || ReNr || '|' || s.Holzpreis || '|' || "
                                           "Käferholz || '|' || (SELECT count(*) FROM Tagespreise WHERE Güte = 'B' AND SK_L2a = 0) || '|' || "
                                           "(SELECT Baumart FROM Tagespreise ORDER BY ID LIMIT 1) FROM Lose l, Stämme s"
                                        << "123.5|0||0|45.25|0|27|AH (Ahorn)";
        QTest::newRow("no Lose.ReNr, no Rechnungen") << QStringList{"ALTER TABLE Lose DROP COLUMN ReNr", "DROP TABLE Rechnungen"} << false
                                                     << QString() << QString() << QString();
        QTest::newRow("no Rechnungen.Kundeninfo")
            << QStringList{"ALTER TABLE Rechnungen DROP COLUMN Kundeninfo", "INSERT INTO Rechnungen(Abnehmer, ReNr) VALUES ('Säge O''Neill', 7)"}
            << false << QString() << "SELECT Abnehmer || '|' || ReNr || '|' || coalesce(Kundeninfo, '') FROM Rechnungen" << "Säge O'Neill|7|";
        // Files from before own data, buyers and invoice details were kept.
        QTest::newRow("no e-invoice tables") << QStringList{"DROP TABLE Eigene_Angaben", "DROP TABLE Abnehmerdaten", "DROP TABLE Rechnungsangaben"}
                                             << false << QString() << QString() << QString();
        QTest::newRow("no Tagespreise.Güte") << QStringList{"ALTER TABLE Tagespreise DROP COLUMN Güte"} << false << QString() << QString()
                                             << QString();
        QTest::newRow("no Hiebe.Harvester")
            << QStringList{"ALTER TABLE Hiebe DROP COLUMN Harvester", "INSERT INTO Hiebe(Hieb_Nr, Jahr) VALUES (1, '2026')"} << false
            << QString() << "SELECT Hieb_Nr || '|' || Jahr FROM Hiebe" << "1|2026";
        // Files from before an index of ours was there, or with its narrower predecessor.
        QTest::newRow("narrower predecessor")
            << QStringList{"DROP INDEX tarvik_stämme_los_summen", "CREATE INDEX tarvik_stämme_hieb_los ON Stämme(Kennung, Los_Nr)"} << false
            << QStringLiteral("Index ergänzt: tarvik_stämme_los_summen") << QString() << QString();
        QTest::newRow("none of ours") << QStringList{"DROP INDEX tarvik_stämme_los_summen", "DROP INDEX tarvik_stämme_hieb_nr"} << false
                                      << QStringLiteral("2 Indizes ergänzt: tarvik_stämme_los_summen, tarvik_stämme_hieb_nr") << QString()
                                      << QString();
        QTest::newRow("one of the format's and one of ours")
            << QStringList{"DROP INDEX Stämme_käferholz", "DROP INDEX tarvik_stämme_hieb_nr"} << false
            << QStringLiteral("2 Indizes ergänzt: Stämme_käferholz, tarvik_stämme_hieb_nr") << QString() << QString();
    }
    void upgradesToNewLayout()
    {
        QFETCH(QStringList, change);
        QFETCH(bool, importMessage);
        QFETCH(QString, indexesAdded);
        QFETCH(QString, probe);
        test::TempDataFolder folder;
        makeOldFile(folder.databasePath(), change);

        auto db = Database::openOrCreate(folder.databasePath());
        test::ScriptedPrompter prompter;
        const UpgradeReport report = upgradeDatabase(db->shared(), prompter);
        QCOMPARE(report.importedFromVersion2, importMessage);
        QCOMPARE(prompter.messages().size(), importMessage ? 1 : 0);
        if (importMessage)
            QCOMPARE(prompter.messages().first(),
                     QStringLiteral("Zur Information:\nDie Datenbank stammte aus TARVIK 2.0 und wurde soeben nun nach TARVIK 3.0 importiert."));

        QCOMPARE(sortedColumns(db->shared()), m_newColumns);
        QCOMPARE(scalar(db->shared(), QStringLiteral("SELECT count(*) FROM sqlite_master WHERE type = 'index' AND sql IS NOT NULL AND name NOT LIKE 'tarvik_%'")).toInt(), 59);
        QCOMPARE(scalar(db->shared(), QStringLiteral("SELECT count(*) FROM Rindenabzug2")).toInt(), 69);
        if (!indexesAdded.isEmpty())
            QVERIFY2(report.changes.contains(indexesAdded), qPrintable(report.changes.join(u'|')));
        if (!probe.isEmpty())
            QTEST(scalar(db->shared(), probe).toString(), "kept");
        // Our own indexes with their columns, none of the predecessors they make redundant.
        for (const schema::OwnIndex& index : schema::ownIndexes()) {
            QCOMPARE(schema::indexColumns(db->shared(), index.name), index.columns);
            if (!index.replaces.isEmpty())
                QCOMPARE(schema::indexColumns(db->shared(), index.replaces), QStringList());
        }

        // A second pass changes nothing and says nothing.
        test::ScriptedPrompter again;
        QCOMPARE(upgradeDatabase(db->shared(), again).changes, QStringList());
        QVERIFY(again.messages().isEmpty());
    }

    // The day-price table takes one column per log class the old file has.
    void versionTwoDayPricesFollowTheFilesClasses()
    {
        test::TempDataFolder folder;
        makeOldFile(folder.databasePath(),
                    versionTwo() << "INSERT INTO Stärkeklassen_Stämme(Klasse, Durchm_oR_von, Durchm_oR_bis) VALUES ('L7', 1000, 1999)"
                                 << "INSERT INTO Stärkeklassen_Stämme(Klasse, Durchm_oR_von, Durchm_oR_bis) VALUES ('L 8', 2000, 2999)");
        auto db = Database::openOrCreate(folder.databasePath());
        test::ScriptedPrompter prompter;
        upgradeDatabase(db->shared(), prompter);
        const QStringList columns = schema::columnNames(db->shared(), QStringLiteral("Tagespreise"));
        QVERIFY(columns.contains(QStringLiteral("SK_L7")));
        QCOMPARE(columns.size(), 14); // Baumart, Güte, 11 classes, ID; "L 8" never reaches SQL
        QCOMPARE(columns.at(2), QStringLiteral("SK_L0"));
    }

    // A file of the current version that lacks a column and a table (an old program's bug, a
    // tool's edit), opened by the desktop program: the upgrade adds them and keeps the file as
    // it was. The user is told in German where the old file and the log are; the column and
    // index names go to the log.
    void missingPiecesAreAddedToldAndTheOldFileKept()
    {
        test::TempDataFolder folder;
        makeOldFile(folder.databasePath(), NoLogPrice + QStringList{"DROP TABLE Stärkeklassen_Stämme", "DROP TABLE Liste_Hiebart",
                                                                     "INSERT INTO Stämme(Los_Nr, Laufende_Nr, Preis_berechnet, Kennung) VALUES (1, 1, 45.25, 1)",
                                                                     "INSERT INTO Hiebe(Hieb_Nr) VALUES (1)"});
        const QString day = QDate::currentDate().toString(QStringLiteral("yyyy-MM-dd"));
        const QString taken = folder.filePath(QStringLiteral("TARVIK3.vor-Aktualisierung-%1.db").arg(day));
        test::writeBytes(taken, QByteArray()); // an earlier copy of the same day stays as it is

        test::ScriptedPrompter prompter;
        auto session = startSession(optionsFor(folder), prompter);
        QVERIFY(session);
        const UpgradeReport report = firstActivation(*session, prompter);
        QVERIFY(report.failures.isEmpty());
        const QString copy = folder.filePath(QStringLiteral("TARVIK3.vor-Aktualisierung-%1-2.db").arg(day));
        QCOMPARE(report.backupPath, copy);
        QCOMPARE(prompter.messages().size(), 1);
        const QString shown = prompter.messages().first();
        QVERIFY2(shown.startsWith(QStringLiteral("Die Datenbank wurde auf den aktuellen Stand gebracht.\n")), qPrintable(shown));
        QVERIFY(shown.contains(QDir::toNativeSeparators(copy)));
        for (const char* technical : {"Holzpreis", "Spalte", "tarvik_", "Indizes"})
            QVERIFY2(!shown.contains(QString::fromUtf8(technical)), qPrintable(shown));
        QCOMPARE(report.logPath, folder.filePath(QStringLiteral("Aktualisierung.log")));
        QVERIFY(shown.contains(QDir::toNativeSeparators(report.logPath)));
        const QStringList log = readTextFile(report.logPath).lines;
        for (const QString& change : {QStringLiteral("Spalte Stämme.Holzpreis ergänzt"), QStringLiteral("Tabelle Stärkeklassen_Stämme mit den Standardwerten angelegt"),
                                      QStringLiteral("Tabelle Liste_Hiebart angelegt"),
                                      QStringLiteral("Kopie des vorherigen Stands: %1").arg(QDir::toNativeSeparators(copy))}) {
            QVERIFY2(report.changes.contains(change), qPrintable(report.changes.join(u'|')));
            QVERIFY2(log.join(u'\n').contains(change), qPrintable(log.join(u'\n')));
        }
        const QSqlDatabase db = session->database->shared();
        QCOMPARE(sortedColumns(db), m_newColumns);
        QVERIFY(layoutIsCurrent(db));
        QCOMPARE(scalar(db, QStringLiteral("SELECT Holzpreis FROM Stämme")).toDouble(), 45.25);
        QCOMPARE(scalar(db, QStringLiteral("SELECT group_concat(Klasse) FROM Stärkeklassen_Stämme")).toString(),
                 QStringLiteral("L0,L1a,L1b,L2a,L2b,L3a,L3b,L4,L5,L6"));
        QCOMPARE(QFileInfo(taken).size(), 0);

        // The copy is the file as it was, complete with its rows.
        test::withPlainConnection(copy, [](const QSqlDatabase& old) {
            QVERIFY(!schema::hasColumn(old, QStringLiteral("Stämme"), QStringLiteral("Holzpreis")));
            QVERIFY(!schema::hasTable(old, QStringLiteral("Stärkeklassen_Stämme")));
            QCOMPARE(scalar(old, QStringLiteral("SELECT Preis_berechnet FROM Stämme")).toDouble(), 45.25);
        });

        // Nothing left to do: no change, no further copy.
        const UpgradeReport again = upgradeDatabase(db, prompter);
        QVERIFY(again.changes.isEmpty());
        QVERIFY(again.backupPath.isEmpty());
        QVERIFY(!QFile::exists(folder.filePath(QStringLiteral("TARVIK3.vor-Aktualisierung-%1-3.db").arg(day))));
    }

    // A step the engine refuses is told in German with what it was about; the others still run.
    void failedStepIsToldInGerman()
    {
        test::TempDataFolder folder;
        // The view takes the name the table needs.
        makeOldFile(folder.databasePath(), NoLogPrice + QStringList{"DROP TABLE Rechnungen", "CREATE VIEW Rechnungen AS SELECT 1 AS x"});
        auto db = Database::openOrCreate(folder.databasePath());
        test::ScriptedPrompter prompter;
        const UpgradeReport report = upgradeDatabase(db->shared(), prompter, QDate(2026, 11, 23));
        QVERIFY(report.changes.contains(QStringLiteral("Spalte Stämme.Holzpreis ergänzt")));
        const QStringList refused = report.failures.filter(QStringLiteral("Der Schritt \"Tabelle Rechnungen anlegen\" ist nicht gelungen: "));
        QVERIFY2(refused.size() == 1, qPrintable(report.failures.join(u'\n')));
        QCOMPARE(prompter.messages().size(), 1);
        const QString shown = prompter.messages().first();
        QVERIFY(shown.startsWith(QStringLiteral("Die Datenbank konnte nicht vollständig auf den aktuellen Stand gebracht werden.")));
        for (const char* technical : {"CREATE", "ALTER", "already exists", "table", "view", "Rechnungen", "Spalte"})
            QVERIFY2(!shown.contains(QString::fromUtf8(technical)), qPrintable(shown));
        // The step that failed is named in the log the message points to.
        QVERIFY(shown.contains(QDir::toNativeSeparators(report.logPath)));
        const QString log = readTextFile(report.logPath).lines.join(u'\n');
        QVERIFY2(log.contains(QStringLiteral("Fehler: Der Schritt \"Tabelle Rechnungen anlegen\" ist nicht gelungen: ")), qPrintable(log));
    }

    void deletedBarkRangesComeBack()
    {
        test::TempDataFolder folder;
        auto db = Database::openOrCreate(folder.databasePath());
        test::ScriptedPrompter prompter;
        upgradeDatabase(db->shared(), prompter);
        execSql(db->shared(), QStringLiteral("DELETE FROM Rindenabzug2 WHERE Baumart = 'LA (Lärche)'"));
        execSql(db->shared(), QStringLiteral("DELETE FROM Rindenabzug2 WHERE Baumart = 'AH (Ahorn)' AND Stärke_von = 42"));
        const UpgradeReport report = upgradeDatabase(db->shared(), prompter);
        QCOMPARE(report.barkRangesAdded, 5); // Ahorn still has a row, so it is left alone
        QCOMPARE(scalar(db->shared(), QStringLiteral("SELECT count(*) FROM Rindenabzug2")).toInt(), 68);
    }

    // A locale other than German and a database that is not ours each end the start with
    // their message; the first creates no database.
    void refusalsEndTheStart_data()
    {
        QTest::addColumn<QLocale>("locale");
        QTest::addColumn<QByteArray>("file");
        QTest::addColumn<QString>("told"); // <datei>: the database's path
        QTest::newRow("English locale") << QLocale(QLocale::English, QLocale::UnitedStates) << QByteArray() << "WICHTIG!!!";
        QTest::newRow("foreign database") << QLocale(QLocale::German, QLocale::Germany) << QByteArray("not a database")
                                          << "Die Datei \"<datei>\" ist keine Datenbank von TARVIK 3.0";
    }
    void refusalsEndTheStart()
    {
        QFETCH(QLocale, locale);
        QFETCH(QByteArray, file);
        QFETCH(QString, told);
        test::TempDataFolder folder;
        if (!file.isEmpty())
            test::writeBytes(folder.databasePath(), file);
        StartupOptions options = optionsFor(folder);
        options.locale = locale;
        test::ScriptedPrompter prompter;
        QVERIFY(!startSession(options, prompter));
        QCOMPARE(prompter.messages().size(), 1);
        QVERIFY2(prompter.messages().first().startsWith(told.replace(QStringLiteral("<datei>"), folder.databasePath())),
                 qPrintable(prompter.messages().first()));
        QCOMPARE(test::readBytes(folder.databasePath()), file);
    }

    void secondInstanceOnTheSameFolderEnds()
    {
        test::TempDataFolder folder;
        test::ScriptedPrompter first;
        auto running = startSession(optionsFor(folder), first);
        QVERIFY(running);
        test::ScriptedPrompter second;
        QVERIFY(!startSession(optionsFor(folder), second));
        QCOMPARE(second.messages(), QStringList{QString::fromUtf8(AlreadyRunningMessage)});

        running.reset(); // the first ends: a new start may go ahead
        test::ScriptedPrompter third;
        QVERIFY(startSession(optionsFor(folder), third));
    }

    void firstStartAndFirstActivation()
    {
        test::TempDataFolder folder;
        test::ScriptedPrompter prompter;
        auto session = startSession(optionsFor(folder), prompter);
        QVERIFY(session);
        QCOMPARE(prompter.messages().size(), 1);
        QVERIFY(prompter.messages().first().startsWith(QStringLiteral("Hinweis:\nIn der Datenbasis"))); // the master-data note
        QVERIFY(QFile::exists(session->settingsPath()));
        QCOMPARE(session->settings.zahl[17], qint16(14));

        prompter.clear();
        const UpgradeReport report = firstActivation(*session, prompter);
        QCOMPARE(prompter.messages(), QStringList{firstStepsNote()});
        QCOMPARE(report.barkRangesAdded, 51);

        // Once a harvest exists, the note is not shown again, and nothing changes.
        execSql(session->database->shared(), QStringLiteral("INSERT INTO Hiebe(Hieb_Nr) VALUES (1)"));
        session.reset();
        test::ScriptedPrompter later;
        auto again = startSession(optionsFor(folder), later);
        QVERIFY(later.messages().isEmpty());
        QVERIFY(firstActivation(*again, later).changes.isEmpty());
        QVERIFY(later.messages().isEmpty());
    }
};

TARVIK_TEST_CORE_MAIN(TestStartup)
#include "tst_startup.moc"
