// The paged grid model over a harvest's rows: pages in ID order without gaps or repeats, only
// the harvest's rows, and page reads that walk the Kennung index instead of sorting the table.
#include "store/gridquery.h"
#include "store/sql.h"
#include "support/entryfixture.h"
#include "support/records.h"

#include <QTest>

using namespace tarvik;

class TestGridQuery : public QObject, protected test::EntryFixture {
    Q_OBJECT

    qint32 m_other = 0;

    // n logs in one statement: a large harvest without n round trips.
    void addLogs(qint32 harvest, int n)
    {
        execSql(db(), QStringLiteral("WITH RECURSIVE k(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM k WHERE i < ?) "
                                     "INSERT INTO Stämme(Los_Nr, Laufende_Nr, Baumart, Kennung) SELECT 1, i, 'FI (Fichte)', ? FROM k"),
                {n, harvest});
    }

private slots:
    void initTestCase()
    {
        resetDatabase(1);
        m_other = test::addHarvest(db(), 2);
        // The two harvests' rows interleave in ID order.
        for (int part = 0; part < 5; ++part) {
            addLogs(m_harvest, 2000);
            addLogs(m_other, 100);
        }
    }

    void pagesCoverTheHarvestOnce_data()
    {
        QTest::addColumn<bool>("harvest");
        QTest::addColumn<int>("rows");
        QTest::newRow("10,000 logs") << true << 10000;
        QTest::newRow("500 logs beside them") << false << 500;
    }
    void pagesCoverTheHarvestOnce()
    {
        QFETCH(bool, harvest);
        QFETCH(int, rows);
        const qint32 id = harvest ? m_harvest : m_other;
        HarvestRowsModel model;
        model.setSource(db(), {QStringLiteral("Stämme"), {QStringLiteral("Laufende_Nr"), QStringLiteral("Kennung")}, id});
        QCOMPARE(model.rowCount(), HarvestRowsModel::PageSize);
        QCOMPARE(model.columnCount(), 3);
        QCOMPARE(model.headerData(0, Qt::Horizontal).toString(), QStringLiteral("Laufende_Nr"));
        QCOMPARE(model.idAt(0), scalar(db(), QStringLiteral("SELECT max(ID) FROM Stämme WHERE Kennung = ?"), {id}).toInt());

        // The oldest row is found by reading on to the last page.
        const qint32 oldest = scalar(db(), QStringLiteral("SELECT min(ID) FROM Stämme WHERE Kennung = ?"), {id}).toInt();
        QCOMPARE(model.rowOfId(oldest), rows - 1);
        QCOMPARE(model.rowCount(), rows);
        QVERIFY(!model.canFetchMore());
        for (int row = 1; row < rows; ++row) {
            if (model.idAt(row) >= model.idAt(row - 1))
                QFAIL(qPrintable(QStringLiteral("row %1 out of order").arg(row)));
        }
        for (int row = 0; row < rows; ++row) {
            if (model.data(model.index(row, 1)).toInt() != id)
                QFAIL(qPrintable(QStringLiteral("row %1 of another harvest").arg(row)));
        }
        QCOMPARE(model.rowOfId(-5), -1);
    }

    void pageReadsDoNotSort_data()
    {
        QTest::addColumn<QString>("table");
        QTest::addColumn<bool>("afterId");
        for (const char* table : {"Stämme", "Pfähle", "Schichtholz"}) {
            QTest::addRow("%s first page", table) << QString::fromUtf8(table) << false;
            QTest::addRow("%s next page", table) << QString::fromUtf8(table) << true;
        }
    }
    void pageReadsDoNotSort()
    {
        QFETCH(QString, table);
        QFETCH(bool, afterId);
        const QString sql = harvestRowsPageSql({table, {QStringLiteral("Los_Nr")}, m_harvest}, afterId, 256);
        QSqlQuery plan = execSql(db(), QStringLiteral("EXPLAIN QUERY PLAN ") + sql,
                                 afterId ? QVariantList{m_harvest, 5000} : QVariantList{m_harvest});
        QStringList steps;
        while (plan.next())
            steps << plan.value(3).toString();
        QVERIFY2(!steps.join(u'|').contains(QStringLiteral("TEMP B-TREE")), qPrintable(steps.join(u'|')));
        QVERIFY2(steps.join(u'|').contains(QStringLiteral("INDEX")), qPrintable(steps.join(u'|')));
    }
};

TARVIK_TEST_MAIN(TestGridQuery)
#include "tst_gridquery.moc"
