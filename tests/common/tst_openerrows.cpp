#include "common/openerrows.h"

#include <QTest>

using namespace tarvik;

class TestOpenerRows : public QObject {
    Q_OBJECT
private slots:
    void advancesAndWraps_data()
    {
        QTest::addColumn<QList<qint32>>("ids");
        QTest::addColumn<qint32>("start");
        QTest::addColumn<QList<qint32>>("visited");
        QTest::newRow("middle to end, then first") << QList<qint32>{7, 3, 9} << 3 << QList<qint32>{9, 7, 3, 9};
        QTest::newRow("last goes to first") << QList<qint32>{7, 3, 9} << 9 << QList<qint32>{7, 3};
        QTest::newRow("one row stays") << QList<qint32>{5} << 5 << QList<qint32>{5, 5};
        QTest::newRow("unlisted start begins at first") << QList<qint32>{4, 6} << 99 << QList<qint32>{4, 6, 4};
    }
    void advancesAndWraps()
    {
        QFETCH(QList<qint32>, ids);
        QFETCH(qint32, start);
        QFETCH(QList<qint32>, visited);
        OpenerRows rows(ids, start);
        for (qint32 expected : visited) {
            QCOMPARE(rows.advance(), std::optional<qint32>(expected));
            QCOMPARE(rows.current(), std::optional<qint32>(expected));
            QCOMPARE(ids.at(rows.place() - 1), expected);
        }
    }

    void backWrapsToTheLast()
    {
        OpenerRows rows({7, 3, 9}, 3);
        QCOMPARE(rows.back(), std::optional<qint32>(7));
        QCOMPARE(rows.back(), std::optional<qint32>(9));
        QCOMPARE(rows.place(), 3);
        QCOMPARE(rows.advance(), std::optional<qint32>(7));
        OpenerRows unlisted({4, 6}, 99);
        QCOMPARE(unlisted.back(), std::optional<qint32>(6));
    }

    void emptyListHasNoNext()
    {
        OpenerRows rows;
        QVERIFY(rows.isEmpty());
        QCOMPARE(rows.current(), std::nullopt);
        QCOMPARE(rows.advance(), std::nullopt);
        QCOMPARE(rows.back(), std::nullopt);
        QCOMPARE(rows.place(), 0);
    }
};

QTEST_APPLESS_MAIN(TestOpenerRows)
#include "tst_openerrows.moc"
