// A new file holds the tables, columns (in order, with type word and width) and indexes of
// the format, and its default master data.
#include "store/sql.h"
#include "support/tempdatafolder.h"

#include <QSqlQuery>

using namespace tarvik;

class TestSchema : public QObject {
    Q_OBJECT
    test::TempDataFolder m_folder;
    test::ScriptedPrompter m_prompter;
    std::unique_ptr<Session> m_session;
    QSqlDatabase db() const { return m_session->database->shared(); }

private slots:
    void initTestCase()
    {
        m_session = m_folder.start(m_prompter);
        QVERIFY(m_session);
        QVERIFY(m_session->database->newlyCreated());
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
        QTest::newRow("Tagespreise") << "Tagespreise" << QStringList{
            "Baumart TEXT (22)", "Güte TEXT (5)", "SK_L0 CURRENCY", "SK_L1a CURRENCY", "SK_L1b CURRENCY", "SK_L2a CURRENCY",
            "SK_L2b CURRENCY", "SK_L3a CURRENCY", "SK_L3b CURRENCY", "SK_L4 CURRENCY", "SK_L5 CURRENCY", "SK_L6 CURRENCY",
            "ID INTEGER"};
        QTest::newRow("Waldbesitzer") << "Waldbesitzer" << QStringList{
            "Besitzer TEXT (30)", "Straße TEXT (30)", "Wohnort TEXT (30)", "Telefon TEXT (15)", "Sonstiges TEXT (30)"};
        QTest::newRow("Liste_Waldnamen") << "Liste_Waldnamen" << QStringList{
            "Waldname TEXT (30)", "Waldort TEXT (50)", "Fläche SINGLE"};
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
    // default rows and values, and text that compares without case.
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
        QTest::newRow("first species") << "SELECT Baumart FROM Baumarten ORDER BY ID LIMIT 1" << QVariant("EI (Eiche)");
        QTest::newRow("misspelling kept") << "SELECT Laubwald FROM Baumarten WHERE Baumart = 'RK (Roßkastianie)'" << QVariant("J");
        QTest::newRow("conifer") << "SELECT Laubwald FROM Baumarten WHERE Baumart = 'AN (Anderes Nadelholz)'" << QVariant("N");
        QTest::newRow("L6 upper bound") << "SELECT Durchm_oR_bis FROM Stärkeklassen_Stämme WHERE Klasse = 'L6'" << QVariant(999);
        QTest::newRow("H4") << "SELECT Zopfdurchmesser_cm || '/' || Länge_m FROM Stärkeklassen_Stämme_Heilbronn WHERE Klasse = 'H4'" << QVariant("17/16");
        QTest::newRow("P2.32") << "SELECT Mindestlänge_von_m || '-' || Mindestlänge_bis_m FROM Stärkeklassen_Pfähle WHERE Klasse = 'P2.32'" << QVariant("13-15");
        QTest::newRow("bark PA L4") << "SELECT SK_L4 FROM Rindenabzug WHERE Baumart = 'PA (Pappel)'" << QVariant(4);
        QTest::newRow("bark DO L6") << "SELECT SK_L6 FROM Rindenabzug WHERE Baumart = 'DO (Douglasie)'" << QVariant(4);
        QTest::newRow("base FI L2a kept low") << "SELECT SK_L2a FROM Messbeträge WHERE Baumart = 'FI (Fichte)'" << QVariant(14);
        QTest::newRow("base ES L6") << "SELECT SK_L6 FROM Messbeträge WHERE Baumart = 'ES (Esche)'" << QVariant(97);
        QTest::newRow("index RE D") << "SELECT GK_D FROM Messzahlen WHERE Baumart = 'RE (Roteiche)'" << QVariant(15);
        QTest::newRow("index BU C") << "SELECT GK_C FROM Messzahlen WHERE Baumart = 'BU (Rotbuche)'" << QVariant(70);
        QTest::newRow("index FI A") << "SELECT GK_A FROM Messzahlen WHERE Baumart = 'FI (Fichte)'" << QVariant(160);
        QTest::newRow("index WK C_D") << "SELECT GK_C_D FROM Messzahlen WHERE Baumart = 'WK (Weymouthskiefer)'" << QVariant(75);
        QTest::newRow("day price quality") << "SELECT count(*) FROM Tagespreise WHERE Güte = 'B' AND SK_L3a = 0" << QVariant(27);
        QTest::newRow("DO range 54-70") << "SELECT Abzug_cm FROM Rindenabzug2 WHERE Baumart = 'DO (Douglasie)' AND Stärke_von = 54" << QVariant(4);
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
};

TARVIK_TEST_CORE_MAIN(TestSchema)
#include "tst_schema.moc"
