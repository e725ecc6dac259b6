// Lot and harvest totals and the sale state.
#include "store/sql.h"
#include "store/totals.h"
#include "support/records.h"
#include "support/tempdatafolder.h"

using namespace tarvik;

class TestTotals : public QObject {
    Q_OBJECT
    test::TempDataFolder m_folder;
    std::unique_ptr<Database> m_db;
    QSqlDatabase db() const { return m_db->shared(); }

    QString harvest(qint32 id, const char* expression) const
    {
        return scalar(db(), QStringLiteral("SELECT %1 FROM Hiebe WHERE ID = ?").arg(QString::fromUtf8(expression)), {id}).toString();
    }
    QString lot(qint32 id, int lotNr, const char* expression) const
    {
        return scalar(db(), QStringLiteral("SELECT %1 FROM Lose WHERE Kennung = ? AND Los_Nr = ?").arg(QString::fromUtf8(expression)),
                      {id, lotNr}).toString();
    }

private slots:
    void initTestCase() { m_db = m_folder.openDatabase(); }

    void twoLogsOfOneLot()
    {
        const qint32 id = test::addHarvest(db(), 1);
        test::addLot(db(), id, 1);
        execSql(db(), QStringLiteral("INSERT INTO Stämme(Los_Nr, Efm_oR, Holzpreis, Preis_berechnet, Kennung) VALUES (1, 0.512, 10.005, 8, ?)"), {id});
        execSql(db(), QStringLiteral("INSERT INTO Stämme(Los_Nr, Efm_oR, Holzpreis, Preis_berechnet, Kennung) VALUES (1, 0.25, 5, 4.5, ?)"), {id});
        recomputeTotals(db(), id);
        QCOMPARE(lot(id, 1, "Anzahl_Stämme || '/' || Efm_oR || '/' || Efm_je_Stamm || '/' || Holzpreis || '/' || Preis_berechnet"),
                 QStringLiteral("2/0.762/0.38/15.01/12.5"));
        QCOMPARE(harvest(id, "Anzahl_Lose || '/' || Stämme_Anzahl || '/' || Stämme_Efm || '/' || Stämme_Efm_je_Stück"),
                 QStringLiteral("1/2/0.762/0.381"));
    }

    void everyLotOfTheHarvestIsSummedAgain()
    {
        // Lot 2's stored totals are stale (an import, an older program); a change in lot 1 puts them right.
        const qint32 id = test::addHarvest(db(), 4);
        test::addLot(db(), id, 1);
        test::addLot(db(), id, 2);
        execSql(db(), QStringLiteral("INSERT INTO Stämme(Los_Nr, Efm_oR, Holzpreis, Preis_berechnet, Kennung) VALUES (1, 0.5, 10, 8, ?)"), {id});
        execSql(db(), QStringLiteral("INSERT INTO Stämme(Los_Nr, Efm_oR, Holzpreis, Preis_berechnet, Kennung) VALUES (2, 0.25, 5, 4, ?)"), {id});
        execSql(db(), QStringLiteral("UPDATE Lose SET Anzahl_Stämme = 9, Efm_oR = 99 WHERE Kennung = ? AND Los_Nr = 2"), {id});
        refreshHarvest(db(), id);
        QCOMPARE(lot(id, 2, "Anzahl_Stämme || '/' || Efm_oR || '/' || Preis_berechnet"), QStringLiteral("1/0.25/4.0"));
        QCOMPARE(harvest(id, "Stämme_Anzahl || '/' || Stämme_Efm || '/' || Verkauft"), QStringLiteral("2/0.75/N"));

        // Stale in one column only: the lot is still written.
        execSql(db(), QStringLiteral("UPDATE Lose SET Holzpreis = 77 WHERE Kennung = ? AND Los_Nr = 2"), {id});
        refreshHarvest(db(), id);
        QCOMPARE(lot(id, 2, "Anzahl_Stämme || '/' || Efm_oR || '/' || Holzpreis"), QStringLiteral("1/0.25/5.0"));
    }

    void emptyHarvestAndEmptyLots()
    {
        const qint32 id = test::addHarvest(db(), 2);
        recomputeTotals(db(), id);
        QCOMPARE(harvest(id, "Anzahl_Lose || '/' || Stämme_Anzahl || '/' || Stämme_Efm || '/' || Stämme_Efm_je_Stück || '/' || "
                             "Pfähle_Anzahl || '/' || Schichtholz_Efm || '/' || Schichtholz_m3"),
                 QStringLiteral("0/0/0.0/0.0/0/0.0/0.0"));

        test::addLot(db(), id, 1);
        execSql(db(), QStringLiteral("UPDATE Lose SET Preis_Art = 3, Pauschalpreis_G = 750 WHERE Kennung = ?"), {id});
        recomputeTotals(db(), id);
        QCOMPARE(lot(id, 1, "Anzahl_Stämme || '/' || Efm_oR || '/' || Holzpreis || '/' || Preis_berechnet"),
                 QStringLiteral("0/0.0/0.0/750.0"));
    }

    void polesAndStackedWood()
    {
        const qint32 id = test::addHarvest(db(), 3);
        test::addLot(db(), id, 1, QStringLiteral("Pfähle"));
        test::addLot(db(), id, 2, QStringLiteral("Schichtholz"));
        test::addLot(db(), id, 3, QStringLiteral("Sonstiges"));
        execSql(db(), QStringLiteral("UPDATE Lose SET Preis_berechnet = 99 WHERE Kennung = ? AND Los_Nr = 3"), {id});
        execSql(db(), QStringLiteral("INSERT INTO Pfähle(Los_Nr, Anzahl, Preis_berechnet, Kennung) VALUES (1, 10, 25, ?), (1, 5, 12.5, ?)"), {id, id});
        execSql(db(), QStringLiteral("INSERT INTO Schichtholz(Los_Nr, m3, Efm, Preis_berechnet, Kennung) VALUES (2, 30, 19.5, 300, ?), (2, 2.4, 1.68, 24, ?)"), {id, id});
        recomputeTotals(db(), id);
        QCOMPARE(lot(id, 1, "Anzahl_Pfähle || '/' || Preis_berechnet || '/' || Holzpreis"), QStringLiteral("15/37.5/37.5"));
        QCOMPARE(lot(id, 2, "Efm_Schichtholz || '/' || m3_Schichtholz || '/' || Preis_berechnet"), QStringLiteral("21.18/32.4/324.0"));
        QCOMPARE(lot(id, 3, "Preis_berechnet").toDouble(), 99.0); // other assortments are left alone
        QCOMPARE(harvest(id, "Anzahl_Lose || '/' || Pfähle_Anzahl || '/' || Schichtholz_Efm || '/' || Schichtholz_m3"),
                 QStringLiteral("3/15/21.18/32.4"));
    }

    void saleState_data()
    {
        QTest::addColumn<QStringList>("settled");
        QTest::addColumn<QString>("expected");
        QTest::newRow("no lots") << QStringList{} << "N/N";
        QTest::newRow("all open") << QStringList{"N", "N"} << "N/N";
        QTest::newRow("one of three settled") << QStringList{"N", "J", "N"} << "J/N";
        QTest::newRow("all settled") << QStringList{"J", "J"} << "J/J";
        QTest::newRow("empty counts as open") << QStringList{"J", ""} << "J/N";
    }
    void saleState()
    {
        QFETCH(QStringList, settled);
        static qint32 number = 100;
        const qint32 id = test::addHarvest(db(), ++number);
        for (int i = 0; i < settled.size(); ++i)
            test::addLot(db(), id, i + 1, QStringLiteral("Stämme"), settled[i]);
        recomputeSaleState(db(), id);
        QTEST(harvest(id, "Teilverkauft || '/' || Verkauft"), "expected");
    }

    void otherHarvestsStayUntouched()
    {
        const qint32 a = test::addHarvest(db(), 7);
        const qint32 b = test::addHarvest(db(), 8);
        test::addLot(db(), b, 1, QStringLiteral("Stämme"), QStringLiteral("J"));
        recomputeTotals(db(), a);
        recomputeSaleState(db(), a);
        QCOMPARE(harvest(b, "coalesce(Anzahl_Lose, 'leer') || '/' || coalesce(Verkauft, 'leer')"), QStringLiteral("leer/leer"));
    }

    // Every store sums every lot of its harvest: that stays quick only while the sums come from
    // the index and never from the table's rows.
    void logSumsReadOnlyTheIndex()
    {
        QSqlQuery plan = execSql(db(), QStringLiteral("EXPLAIN QUERY PLAN ") + logLotSumsSql(), {1});
        QStringList steps;
        while (plan.next())
            steps << plan.value(3).toString();
        QCOMPARE(steps, QStringList{QStringLiteral("SEARCH Stämme USING COVERING INDEX tarvik_stämme_los_summen (Kennung=?)")});
    }
};

TARVIK_TEST_CORE_MAIN(TestTotals)
#include "tst_totals.moc"
