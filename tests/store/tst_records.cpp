// Running and section numbers, new lots, lookup lists and the removal of a harvest.
#include "settings/settings.h"
#include "store/records.h"
#include "store/sql.h"
#include "support/records.h"
#include "support/tempdatafolder.h"

using namespace tarvik;

class TestRecords : public QObject {
    Q_OBJECT
    test::TempDataFolder m_folder;
    std::unique_ptr<Database> m_db;
    QSqlDatabase db() const { return m_db->shared(); }

    int count(const QString& sql, const QVariantList& values = {}) const { return scalar(db(), sql, values).toInt(); }

private slots:
    void init()
    {
        m_db.reset();
        QFile::remove(m_folder.databasePath());
        m_db = m_folder.openDatabase();
    }

    void runningNumber_data()
    {
        QTest::addColumn<QList<int>>("used"); // running numbers of lot 1
        QTest::addColumn<bool>("perLot");
        QTest::addColumn<int>("lot");
        QTest::addColumn<QString>("proposal");
        QTest::addColumn<int>("expected");
        QTest::newRow("no logs, no proposal") << QList<int>{} << false << 1 << "0" << 1;
        QTest::newRow("proposal free") << QList<int>{1, 2, 12} << false << 1 << "7" << 7;
        QTest::newRow("proposal used, next free") << QList<int>{7} << false << 1 << "7" << 8;
        QTest::newRow("proposal and next used") << QList<int>{7, 8, 12} << false << 1 << "7" << 13;
        QTest::newRow("empty proposal") << QList<int>{3} << false << 1 << "" << 4;
        QTest::newRow("through the harvest") << QList<int>{1, 2, 40} << false << 2 << "" << 41;
        QTest::newRow("per lot starts again") << QList<int>{1, 2, 40} << true << 2 << "" << 1;
        QTest::newRow("per lot, proposal used in another lot") << QList<int>{5} << true << 2 << "5" << 5;
    }
    void runningNumber()
    {
        QFETCH(QList<int>, used);
        QFETCH(bool, perLot);
        QFETCH(int, lot);
        QFETCH(QString, proposal);
        const qint32 harvest = test::addHarvest(db(), 1);
        const qint32 other = test::addHarvest(db(), 2);
        for (int n : used)
            test::addTypedLog(db(), harvest, 1, n, QStringLiteral("FI (Fichte)"), 30, 4, QStringLiteral("O"));
        test::addTypedLog(db(), other, 1, 500, QStringLiteral("FI (Fichte)"), 30, 4, QStringLiteral("O")); // another harvest
        Einstellungen settings = EinstellungenLaden(QString());
        settings.zahl[57] = perLot ? 1 : 0;
        QTEST(int(nextRunningNumber(db(), settings, harvest, lot, proposal)), "expected");
    }

    void sectionNumbers()
    {
        const qint32 harvest = test::addHarvest(db(), 1);
        QCOMPARE(nextSectionNumber(db(), harvest), 1);
        execSql(db(), QStringLiteral("INSERT INTO Schichtholz(Los_Nr, Sektions_Nr, Kennung) VALUES (1, 4, ?), (2, 9, ?)"), {harvest, harvest});
        QCOMPARE(nextSectionNumber(db(), harvest), 10);
    }

    void newLot()
    {
        const qint32 harvest = test::addHarvest(db(), 1);
        createLot(db(), harvest, 3, QStringLiteral("Pfähle"));
        QCOMPARE(scalar(db(), QStringLiteral("SELECT Los_Nr || Sortierung || Abgerechnet || ReNr || Anzahl_Stämme || Lagerort "
                                             "FROM Lose WHERE Kennung = ?"), {harvest}).toString(),
                 QStringLiteral("3PfähleN00"));
    }

    void lookupListHasEachTextOnce()
    {
        for (const char* text : {"Sturmholz", "sturmholz", "Käferholz", "KÄFERHOLZ", "O'Neill 100%"})
            insertIntoLookupList(db(), QStringLiteral("Liste_Hiebgrund"), QString::fromUtf8(text));
        insertIntoLookupList(db(), QStringLiteral("Liste_Hiebgrund"), QString()); // nothing for an empty text
        QCOMPARE(count(QStringLiteral("SELECT count(*) FROM Liste_Hiebgrund")), 3);
        QCOMPARE(count(QStringLiteral("SELECT count(*) FROM Liste_Hiebgrund WHERE Inhalt = ?"), {QStringLiteral("O'Neill 100%")}), 1);
    }

    void deletingAHarvestTakesEverythingBookedToIt()
    {
        const qint32 doomed = test::addHarvest(db(), 1);
        const qint32 kept = test::addHarvest(db(), 2);
        for (qint32 h : {doomed, kept}) {
            test::addLot(db(), h, 1);
            test::addTypedLog(db(), h, 1, 1, QStringLiteral("FI (Fichte)"), 30, 4, QStringLiteral("O"));
            execSql(db(), QStringLiteral("INSERT INTO Pfähle(Los_Nr, Anzahl, Kennung) VALUES (2, 5, ?)"), {h});
            execSql(db(), QStringLiteral("INSERT INTO Schichtholz(Los_Nr, Sektions_Nr, Kennung) VALUES (3, 1, ?)"), {h});
        }
        deleteHarvest(db(), doomed);
        for (const char* table : {"Hiebe", "Lose", "Stämme", "Pfähle", "Schichtholz"}) {
            const QString t = QString::fromUtf8(table);
            const QString key = t == u"Hiebe" ? QStringLiteral("ID") : QStringLiteral("Kennung");
            QCOMPARE(count(QStringLiteral("SELECT count(*) FROM %1 WHERE %2 = ?").arg(quoted(t), key), {doomed}), 0);
            QCOMPARE(count(QStringLiteral("SELECT count(*) FROM %1 WHERE %2 = ?").arg(quoted(t), key), {kept}), 1);
        }
    }
};

TARVIK_TEST_CORE_MAIN(TestRecords)
#include "tst_records.moc"
