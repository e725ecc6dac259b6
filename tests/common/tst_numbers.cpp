#include "common/numbers.h"
#include "common/sqldate.h"
#include "common/text.h"
#include "support/tempdatafolder.h"

using namespace tarvik;

class TestNumbers : public QObject {
    Q_OBJECT
private slots:
    void readNumber_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<double>("expected");
        QTest::newRow("empty") << "" << 0.0;
        QTest::newRow("junk") << "abc" << 0.0;
        QTest::newRow("comma") << "4,5" << 4.5;
        QTest::newRow("point") << "4.5" << 4.5;
        QTest::newRow("thousands and comma") << "1.234,5" << 1234.5;
        QTest::newRow("trailing point") << "12." << 12.0;
        QTest::newRow("blanks and unit") << " 35 cm" << 35.0;
        QTest::newRow("negative") << "-2,25" << -2.25;
        QTest::newRow("second comma stops") << "1,2,3" << 1.2;
        QTest::newRow("exponent") << "1E3" << 1000.0;
        QTest::newRow("lone minus") << "-" << 0.0;
        QTest::newRow("leading point") << ",5" << 0.5;
        QTest::newRow("huge exponent") << "1E999" << 0.0;
    }
    void readNumber()
    {
        QFETCH(QString, text);
        QFETCH(double, expected);
        QCOMPARE(tarvik::readNumber(text), expected);
    }

    void readNumberOfNull() { QCOMPARE(tarvik::readNumber(QVariant()), 0.0); }

    void formatDecimal_data()
    {
        QTest::addColumn<double>("value");
        QTest::addColumn<int>("decimals");
        QTest::addColumn<QString>("expected");
        QTest::newRow("volume") << 0.38486 << 3 << "0,385";
        QTest::newRow("half away from zero") << 2.5 << 0 << "3";
        QTest::newRow("negative half") << -2.5 << 0 << "-3";
        QTest::newRow("decimal half") << 1.005 << 2 << "1,01";
        QTest::newRow("carry") << 9.9996 << 3 << "10,000";
        QTest::newRow("zero") << 0.0 << 4 << "0,0000";
        QTest::newRow("tiny negative is zero") << -0.0001 << 2 << "0,00";
        QTest::newRow("small") << 0.00049 << 3 << "0,000";
        QTest::newRow("large") << 1234567.891 << 2 << "1234567,89";
    }
    void formatDecimal()
    {
        QFETCH(double, value);
        QFETCH(int, decimals);
        QFETCH(QString, expected);
        QCOMPARE(tarvik::formatDecimal(value, decimals), expected);
    }

    // A float is rounded by the decimal it stands for, not by its binary neighbour.
    void formatFloat_data()
    {
        QTest::addColumn<float>("value");
        QTest::addColumn<int>("decimals");
        QTest::addColumn<QString>("expected");
        QTest::newRow("0.675f") << 0.675f << 2 << "0,68";
        QTest::newRow("2.675f") << 2.675f << 2 << "2,68";
        QTest::newRow("0.7f") << 0.7f << 3 << "0,700";
        QTest::newRow("sum") << 12345.678f << 3 << "12345,678";
    }
    void formatFloat()
    {
        QFETCH(float, value);
        QFETCH(int, decimals);
        QFETCH(QString, expected);
        QCOMPARE(tarvik::formatDecimal(value, decimals), expected);
    }

    void formatText() { QCOMPARE(formatDecimalText(QStringLiteral("x"), 4), QStringLiteral("0,0000")); }

    void toShortRoundsHalfToEven_data()
    {
        QTest::addColumn<double>("value");
        QTest::addColumn<int>("expected");
        QTest::newRow("2.5") << 2.5 << 2;
        QTest::newRow("3.5") << 3.5 << 4;
        QTest::newRow("-2.5") << -2.5 << -2;
        QTest::newRow("clamped") << 1e9 << 32767;
    }
    void toShortRoundsHalfToEven()
    {
        QFETCH(double, value);
        QFETCH(int, expected);
        QCOMPARE(int(toShort(value)), expected);
    }

    void signedText()
    {
        QCOMPARE(tarvik::signedText(14), QStringLiteral(" 14"));
        QCOMPARE(tarvik::signedText(0), QStringLiteral(" 0"));
        QCOMPARE(tarvik::signedText(-3), QStringLiteral("-3"));
    }

    void readText()
    {
        QCOMPARE(tarvik::readText(QVariant()), QString());
        QCOMPARE(tarvik::readText(QVariant(QStringLiteral("  FI (Fichte) "))), QStringLiteral("FI (Fichte)"));
        QCOMPARE(tarvik::readText(QVariant(12)), QStringLiteral("12"));
    }

    void dates()
    {
        QCOMPARE(sqlDateLiteral(QStringLiteral("21.11.2026")), QStringLiteral("'2026-11-21'"));
        QCOMPARE(sqlDateLiteral(QStringLiteral("31.02.2026")), QStringLiteral("NULL"));
        QCOMPARE(sqlDateLiteral(QString()), QStringLiteral("NULL"));
        QVERIFY(sqlDateValue(QString()).isNull());
        QCOMPARE(sqlDateValue(QStringLiteral("1.2.2026")).toString(), QStringLiteral("2026-02-01"));
        QCOMPARE(germanDateFromSql(QStringLiteral("2026-02-01")), QStringLiteral("01.02.2026"));
        QCOMPARE(germanDateFromSql(QVariant()), QString());
    }
};

TARVIK_TEST_CORE_MAIN(TestNumbers)
#include "tst_numbers.moc"
