// A new file holds every table, column (in order), type word, width and index of the format,
// and the default master data.
#include "store/schema.h"
#include "store/sql.h"
#include "support/tempdatafolder.h"

#include <QSqlQuery>

using namespace tarvik;

namespace {

struct ColumnInfo {
    QString name;
    QString type;
};

QList<ColumnInfo> columnsOf(const QSqlDatabase& db, const QString& table)
{
    QList<ColumnInfo> out;
    QSqlQuery q = execSql(db, QStringLiteral("PRAGMA table_info(%1)").arg(quoted(table)));
    while (q.next())
        out.append({q.value(1).toString(), q.value(2).toString()});
    return out;
}

int count(const QSqlDatabase& db, const QString& sql) { return scalar(db, sql).toInt(); }

} // namespace

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
        QCOMPARE(m_prompter.messages().size(), 1); // the master-data note
        QVERIFY(m_prompter.messages().first().startsWith(QStringLiteral("Hinweis:\nIn der Datenbasis")));
    }

    void tablesInOrder()
    {
        QStringList expected;
        for (const schema::Table& t : schema::tables())
            expected << t.name;
        QCOMPARE(expected.size(), 27);
        QStringList actual;
        QSqlQuery q = execSql(db(), QStringLiteral("SELECT name FROM sqlite_master WHERE type = 'table' AND name <> 'sqlite_sequence' ORDER BY rowid"));
        while (q.next())
            actual << q.value(0).toString();
        QCOMPARE(actual, expected);
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
        for (const ColumnInfo& c : columnsOf(db(), table)) {
            // The declared type keeps the original word first; a text keeps its width.
            const QString type = c.type.startsWith(QLatin1String("TEXT (")) ? c.type : c.type.section(u' ', 0, 0);
            actual << c.name + u' ' + type;
        }
        QCOMPARE(actual, expected);
    }

    void everyDefinedColumnIsInTheFile()
    {
        int columns = 0;
        for (const schema::Table& t : schema::tables()) {
            const QList<ColumnInfo> actual = columnsOf(db(), t.name);
            QCOMPARE(actual.size(), t.columns.size());
            for (int i = 0; i < actual.size(); ++i) {
                QCOMPARE(actual[i].name, t.columns[i].name);
                const QString word = t.columns[i].type == schema::ColumnType::Counter
                                         ? QStringLiteral("INTEGER") : schema::typeWord(t.columns[i].type);
                QVERIFY2(actual[i].type.startsWith(word), qPrintable(t.name + u'.' + actual[i].name));
            }
            columns += int(actual.size());
        }
        QCOMPARE(columns, 207 + 30); // the layout and the three invoice tables of our own
    }

    void everyIndexIsOnItsColumn()
    {
        int indexes = 0;
        for (const schema::Table& t : schema::tables()) {
            for (const schema::Index& index : t.indexes) {
                const QString name = schema::indexName(t.name, index.name);
                QSqlQuery q = execSql(db(), QStringLiteral("PRAGMA index_info(%1)").arg(quoted(name)));
                QVERIFY2(q.next(), qPrintable(name));
                QCOMPARE(q.value(2).toString(), index.column);
                ++indexes;
            }
        }
        QCOMPARE(indexes, 59);
        QCOMPARE(count(db(), QStringLiteral("SELECT count(*) FROM sqlite_master WHERE type = 'index' AND sql IS NOT NULL AND name NOT LIKE 'tarvik_%'")), 59);
        // The given names, misspellings included.
        QVERIFY(scalar(db(), QStringLiteral("SELECT 1 FROM sqlite_master WHERE name = 'Rechnungen_abnehnmer'")).isValid());
        QVERIFY(scalar(db(), QStringLiteral("SELECT 1 FROM sqlite_master WHERE name = 'Stämme_särkeor'")).isValid());
    }

    // The program's own indexes, with their columns in order (the sums' index covers every
    // column the per-lot totals read); no narrower predecessor beside them.
    void ownIndexesOnTheirColumns()
    {
        for (const schema::OwnIndex& index : schema::ownIndexes()) {
            QCOMPARE(schema::indexColumns(db(), index.name), index.columns);
            if (!index.replaces.isEmpty())
                QVERIFY(!scalar(db(), QStringLiteral("SELECT 1 FROM sqlite_master WHERE name = ?"), {index.replaces}).isValid());
        }
        QCOMPARE(count(db(), QStringLiteral("SELECT count(*) FROM sqlite_master WHERE type = 'index' AND name LIKE 'tarvik_%'")),
                 int(schema::ownIndexes().size()));
        QVERIFY(scalar(db(), QStringLiteral("SELECT 1 FROM sqlite_master WHERE name = 'tarvik_stämme_los_summen'")).isValid());
    }

    void defaultRowCounts_data()
    {
        QTest::addColumn<QString>("table");
        QTest::addColumn<int>("rows");
        QTest::newRow("species") << "Baumarten" << 27;
        QTest::newRow("log classes") << "Stärkeklassen_Stämme" << 10;
        QTest::newRow("Heilbronn") << "Stärkeklassen_Stämme_Heilbronn" << 6;
        QTest::newRow("pole classes") << "Stärkeklassen_Pfähle" << 11;
        QTest::newRow("stacked classes") << "Stärkeklassen_Schichtholz" << 7;
        QTest::newRow("qualities") << "Güteklassen" << 7;
        QTest::newRow("bark") << "Rindenabzug" << 27;
        QTest::newRow("base amounts") << "Messbeträge" << 27;
        QTest::newRow("day prices") << "Tagespreise" << 27;
        QTest::newRow("index numbers") << "Messzahlen" << 27;
        QTest::newRow("bark ranges before first activation") << "Rindenabzug2" << 18;
        QTest::newRow("harvests") << "Hiebe" << 0;
    }
    void defaultRowCounts()
    {
        QFETCH(QString, table);
        QFETCH(int, rows);
        QCOMPARE(count(db(), QStringLiteral("SELECT count(*) FROM %1").arg(quoted(table))), rows);
    }

    void defaultValues_data()
    {
        QTest::addColumn<QString>("sql");
        QTest::addColumn<QVariant>("expected");
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
    void defaultValues()
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
            QCOMPARE(e.message(), QStringLiteral("Der Wert im Feld \"Baumart\" ist zu lang: es nimmt höchstens 22 Zeichen auf."));
        }
    }

    void textComparesWithoutCase()
    {
        QCOMPARE(count(db(), QStringLiteral("SELECT count(*) FROM Baumarten WHERE Baumart = 'fi (fichte)'")), 1);
    }

    void integrity() { QCOMPARE(scalar(db(), QStringLiteral("PRAGMA integrity_check")).toString(), QStringLiteral("ok")); }

    void apostropheIsStoredAsItStands()
    {
        const QString name = QStringLiteral("O'Brien \"Forst\" 100%");
        execSql(db(), QStringLiteral("INSERT INTO Liste_Abnehmer(Inhalt) VALUES (?)"), {name});
        QCOMPARE(scalar(db(), QStringLiteral("SELECT Inhalt FROM Liste_Abnehmer WHERE Inhalt = ?"), {name}).toString(), name);
    }
};

TARVIK_TEST_CORE_MAIN(TestSchema)
#include "tst_schema.moc"
