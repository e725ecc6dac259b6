// Log, pole and stacked-wood measurement against the worked examples and the default tables.
#include "rules/logmeasure.h"
#include "rules/masterdatalookup.h"
#include "rules/poles.h"
#include "rules/stackedwood.h"
#include "common/numbers.h"
#include "store/sql.h"
#include "support/tempdatafolder.h"

using namespace tarvik;

Q_DECLARE_METATYPE(tarvik::BarkMode)

class TestMeasurement : public QObject {
    Q_OBJECT
    test::TempDataFolder m_folder;
    std::unique_ptr<Database> m_db;
    std::unique_ptr<MasterDataLookup> m_lookup;

private slots:
    void initTestCase()
    {
        m_db = m_folder.openDatabase();
        m_lookup = std::make_unique<MasterDataLookup>(m_db->shared());
    }

    void measureLog_data()
    {
        QTest::addColumn<QString>("species");
        QTest::addColumn<BarkMode>("mode");
        QTest::addColumn<QString>("diameter");
        QTest::addColumn<QString>("length");
        QTest::addColumn<QString>("fixed");
        QTest::addColumn<QString>("deduction");
        QTest::addColumn<QString>("underBark");
        QTest::addColumn<QString>("volume");
        QTest::addColumn<QString>("diameterClass");
        const QString fi = QStringLiteral("FI (Fichte)");
        QTest::newRow("fixed 2 cm, 35 cm, 4,5 m") << fi << BarkMode::Fest << "35" << "4,5" << "2" << "2" << "33" << "0,385" << "L3a";
        QTest::newRow("fixed 2,5 rounds to even") << fi << BarkMode::Fest << "35" << "4,5" << "2,5" << "2" << "33" << "0,385" << "L3a";
        QTest::newRow("fixed 3,5 rounds to even") << fi << BarkMode::Fest << "35" << "4,5" << "3,5" << "4" << "31" << "0,340" << "L3a";
        QTest::newRow("without bark ignores the field") << fi << BarkMode::Ohne << "35" << "4,5" << "7" << "0" << "35" << "0,433" << "L3b";
        // Class of 55 with bark is L5 (standard table 2 cm); the range 51-999 gives 3 and wins.
        QTest::newRow("table: free ranges win") << fi << BarkMode::Tabelle << "55" << "10" << "" << "3" << "52" << "2,124" << "L5";
        QTest::newRow("table: standard only") << "WO (Wildobst)" << BarkMode::Tabelle << "45" << "4" << "" << "2" << "43" << "0,581" << "L4";
        QTest::newRow("table: species without rows") << "XY (Unbekannt)" << BarkMode::Tabelle << "45" << "4" << "" << "0" << "45" << "0,636" << "L4";
        QTest::newRow("table: oak 19 cm") << "EI (Eiche)" << BarkMode::Tabelle << "19" << "3" << "" << "2" << "17" << "0,068" << "L1b";
        QTest::newRow("deduction above diameter") << fi << BarkMode::Fest << "10" << "4" << "12" << "12" << "0" << "0,000" << "L0";
        QTest::newRow("junk reads as 0") << fi << BarkMode::Fest << "abc" << "x" << "y" << "0" << "0" << "0,000" << "L0";
        QTest::newRow("length with point") << fi << BarkMode::Ohne << "20" << "2.5" << "" << "0" << "20" << "0,079" << "L2a";
    }
    void measureLog()
    {
        QFETCH(QString, species);
        QFETCH(BarkMode, mode);
        QFETCH(QString, diameter);
        QFETCH(QString, length);
        QFETCH(QString, fixed);
        const LogDerived d = tarvik::measureLog({species, diameter, length, QString(), fixed, mode}, *m_lookup);
        QTEST(d.deduction, "deduction");
        QTEST(d.diameterUnderBark, "underBark");
        QTEST(d.volume, "volume");
        QTEST(d.diameterClass, "diameterClass");
        QCOMPARE(d.heilbronnClass, QString());
    }

    void heilbronn_data()
    {
        QTest::addColumn<QString>("length");
        QTest::addColumn<QString>("top");
        QTest::addColumn<QString>("expected");
        QTest::newRow("4,9 m counts as 4") << "4,9" << "15" << "H4";
        QTest::newRow("8,9 m counts as 8") << "8,9" << "10" << "H1";
        QTest::newRow("9 m") << "9" << "10" << "H2";
        QTest::newRow("4,96 m shows as 5,0") << "4,96" << "10" << "H1";
        QTest::newRow("top above every class") << "10" << "31" << "";
        QTest::newRow("length above every class") << "19" << "10" << "";
        QTest::newRow("no top diameter") << "10" << "0" << "";
        QTest::newRow("empty top diameter") << "10" << "" << "";
    }
    void heilbronn()
    {
        QFETCH(QString, length);
        QFETCH(QString, top);
        const LogDerived d = tarvik::measureLog({QStringLiteral("FI (Fichte)"), QStringLiteral("40"), length, top,
                                                 QString(), BarkMode::Ohne}, *m_lookup);
        QTEST(d.heilbronnClass, "expected");
    }

    void classBoundsAreInclusive_data()
    {
        QTest::addColumn<QString>("diameter");
        QTest::addColumn<QString>("expected");
        QTest::newRow("lower bound") << "20" << "L2a";
        QTest::newRow("upper bound") << "24" << "L2a";
        QTest::newRow("top class") << "999" << "L6";
        QTest::newRow("beyond every class") << "1000" << "";
        QTest::newRow("empty counts as 0") << "" << "L0";
    }
    void classBoundsAreInclusive()
    {
        QFETCH(QString, diameter);
        QTEST(diameterClassOf(*m_lookup, diameter), "expected");
    }

    void sharedBoundGoesToTheClassSortingLast()
    {
        test::TempDataFolder folder;
        auto db = folder.openDatabase();
        execSql(db->shared(), QStringLiteral("UPDATE Stärkeklassen_Stämme SET Durchm_oR_bis = 20 WHERE Klasse = 'L1b'"));
        MasterDataLookup lookup(db->shared());
        QCOMPARE(diameterClassOf(lookup, QStringLiteral("20")), QStringLiteral("L2a"));
        QCOMPARE(diameterClassOf(lookup, QStringLiteral("19")), QStringLiteral("L1b"));
    }

    void poleClass_data()
    {
        QTest::addColumn<QString>("diameter");
        QTest::addColumn<QString>("length");
        QTest::addColumn<QString>("expected");
        QTest::newRow("finest of three overlapping") << "8" << "8" << "P2.11";
        QTest::newRow("long thin") << "8" << "12" << "P2.12";
        QTest::newRow("12 cm, 14 m") << "12" << "14" << "P2.32";
        QTest::newRow("general class only") << "8" << "3" << "P2";
        QTest::newRow("thin") << "5" << "2" << "P1";
        QTest::newRow("length outside every range") << "14" << "5" << "";
    }
    void poleClass()
    {
        QFETCH(QString, diameter);
        QFETCH(QString, length);
        QTEST(poleClassOf(*m_lookup, diameter, length), "expected");
    }

    void polePriceAndVolume()
    {
        test::TempDataFolder folder;
        auto db = folder.openDatabase();
        execSql(db->shared(), QStringLiteral("UPDATE Stärkeklassen_Pfähle SET Schätzpreis_je_St = 2.5 WHERE Klasse = 'P2.11'"));
        MasterDataLookup lookup(db->shared());
        const float perPiece = poleEstimatedPrice(lookup, QStringLiteral("P2.11"));
        QCOMPARE(perPiece, 2.5f);
        QCOMPARE(formatDecimal(polePrice(perPiece, 10), 2), QStringLiteral("25,00"));
        QCOMPARE(poleEstimatedPrice(lookup, QString()), 0.0f);
        QCOMPARE(formatDecimal(poleVolume(10, 10, 2), 3), QStringLiteral("0,157"));
    }

    void stack_data()
    {
        QTest::addColumn<QString>("length");
        QTest::addColumn<QString>("depth");
        QTest::addColumn<QString>("height");
        QTest::addColumn<int>("deduction");
        QTest::addColumn<QString>("m3");
        QTest::addColumn<QString>("efm");
        QTest::newRow("10 x 2 x 1,5") << "10" << "2" << "1,5" << 0 << "30,000" << "19,500";
        QTest::newRow("with 10 % deduction") << "10" << "2" << "1,5" << 10 << "30,000" << "17,550";
        QTest::newRow("depth exactly 1 m") << "10" << "1" << "1" << 0 << "10,000" << "7,000";
        QTest::newRow("depth 2,1 m") << "10" << "2,1" << "1" << 0 << "21,000" << "12,600";
        QTest::newRow("depth 0,5 m") << "4" << "0,5" << "1,2" << 0 << "2,400" << "1,680";
        QTest::newRow("missing height") << "10" << "2" << "" << 0 << "0,000" << "0,000";
    }
    void stack()
    {
        QFETCH(QString, length);
        QFETCH(QString, depth);
        QFETCH(QString, height);
        QFETCH(int, deduction);
        Einstellungen settings = EinstellungenLaden(QString());
        settings.zahl[54] = qint16(deduction);
        const StackedVolumes v = measureStack({length, depth, height}, StackedFactors::from(settings));
        QTEST(v.m3, "m3");
        QTEST(v.efm, "efm");
    }

    void stackedClass_data()
    {
        QTest::addColumn<QString>("diameter");
        QTest::addColumn<QString>("expected");
        QTest::newRow("8 cm") << "8" << "S2.1";
        QTest::newRow("13 cm") << "13" << "S2.2";
        QTest::newRow("15 cm") << "15" << "S3.1";
        QTest::newRow("25 cm") << "25" << "S3.2";
        QTest::newRow("too thin") << "2" << "";
    }
    void stackedClass()
    {
        QFETCH(QString, diameter);
        QTEST(stackedClassOf(*m_lookup, diameter), "expected");
    }

    void stackedPriceUsesStackedVolume() { QCOMPARE(stackedPrice(12.5f, 30.0f), 375.0f); }
};

TARVIK_TEST_CORE_MAIN(TestMeasurement)
#include "tst_measurement.moc"
