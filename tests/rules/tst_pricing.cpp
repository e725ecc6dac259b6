// Price of one log by the lot's price kind, against worked examples.
#include "common/numbers.h"
#include "rules/masterdatalookup.h"
#include "rules/pricing.h"
#include "store/sql.h"
#include "support/tempdatafolder.h"

using namespace tarvik;

class TestPricing : public QObject {
    Q_OBJECT
    test::TempDataFolder m_folder;
    std::unique_ptr<Database> m_db;
    std::unique_ptr<MasterDataLookup> m_lookup;

private slots:
    void initTestCase()
    {
        m_db = m_folder.openDatabase();
        const QSqlDatabase db = m_db->shared();
        // A species of its own, so the examples do not depend on the default amounts.
        execSql(db, QStringLiteral("INSERT INTO Messbeträge(Baumart, SK_L3a) VALUES ('TS (Test)', 60)"));
        execSql(db, QStringLiteral("INSERT INTO Messzahlen(Baumart, GK_B, GK_A) VALUES ('TS (Test)', 110, NULL)"));
        execSql(db, QStringLiteral("INSERT INTO Tagespreise(Baumart, Güte, SK_L3a) VALUES ('TS (Test)', '', 80)"));
        execSql(db, QStringLiteral("INSERT INTO Tagespreise(Baumart, Güte, SK_L3a) VALUES ('TS (Test)', 'A', 120)"));
        execSql(db, QStringLiteral("INSERT INTO Tagespreise(Baumart, Güte, SK_L3a) VALUES ('TB (Test B)', 'B', 90)"));
        m_lookup = std::make_unique<MasterDataLookup>(db);
    }

    void price_data()
    {
        QTest::addColumn<int>("kind");
        QTest::addColumn<QString>("species");
        QTest::addColumn<QString>("diameterClass");
        QTest::addColumn<QString>("quality");
        QTest::addColumn<float>("efm");
        QTest::addColumn<QString>("gross");
        QTest::addColumn<QString>("net");
        const QString ts = QStringLiteral("TS (Test)");
        QTest::newRow("index number: 60 x 0,385 x 110 / 100") << 0 << ts << "L3a" << "B" << 0.385f << "25,41" << "25,41";
        QTest::newRow("index number: quality without column") << 0 << ts << "L3a" << "X" << 0.385f << "23,10" << "23,10";
        QTest::newRow("index number: null index reads 0") << 0 << ts << "L3a" << "A" << 0.385f << "0,00" << "0,00";
        QTest::newRow("index number: no quality") << 0 << ts << "L3a" << "" << 0.385f << "0,00" << "0,00";
        QTest::newRow("index number: no volume") << 0 << ts << "L3a" << "B" << 0.0f << "0,00" << "0,00";
        QTest::newRow("index number: class without column") << 0 << ts << "L9" << "B" << 1.0f << "0,00" << "0,00";
        QTest::newRow("index number: species without row") << 0 << "XY (Keine)" << "L3a" << "B" << 1.0f << "0,00" << "0,00";
        QTest::newRow("index number: default fir") << 0 << "FI (Fichte)" << "L3a" << "A" << 1.0f << "36,80" << "36,80";
        QTest::newRow("day price: no quality takes ''") << 1 << ts << "L3a" << "" << 0.385f << "30,80" << "30,80";
        QTest::newRow("day price: no quality takes 'B'") << 1 << "TB (Test B)" << "L3a" << "" << 1.0f << "90,00" << "90,00";
        QTest::newRow("day price: quality A") << 1 << ts << "L3a" << "A" << 0.385f << "46,20" << "46,20";
        QTest::newRow("day price: quality without row") << 1 << ts << "L3a" << "C" << 0.385f << "0,00" << "0,00";
        QTest::newRow("day price: no class") << 1 << ts << "" << "A" << 0.385f << "0,00" << "0,00";
        QTest::newRow("flat per Efm") << 2 << "" << "" << "" << 2.0f << "100,00" << "100,00";
        QTest::newRow("flat for the lot") << 3 << ts << "L3a" << "B" << 2.0f << "0,00" << "0,00";
    }
    void price()
    {
        QFETCH(int, kind);
        QFETCH(QString, species);
        QFETCH(QString, diameterClass);
        QFETCH(QString, quality);
        QFETCH(float, efm);
        PriceSettings s;
        s.preisArt = qint16(kind);
        s.pauschalpreisEfm = 50;
        const LogPrice p = priceLog(s, {diameterClass, quality, efm, species, 0}, *m_lookup);
        QTEST(formatDecimal(p.gross, 2), "gross");
        QTEST(formatDecimal(p.net, 2), "net");
    }

    void costs_data()
    {
        QTest::addColumn<int>("beetle");
        QTest::addColumn<QString>("net");
        QTest::newRow("bark-beetle log: 100 - 20 - 20 - 10 - 1,5") << 1 << "48,50";
        QTest::newRow("healthy log: 100 - 20 - 10 - 1,5") << 0 << "68,50";
    }
    void costs()
    {
        QFETCH(int, beetle);
        PriceSettings s;
        s.preisArt = FlatPerEfm;
        s.pauschalpreisEfm = 50;
        s.kaeferholzabschlag = 20;
        s.kostenEinschlag = 10;
        s.kostenRuecken = 5;
        s.erschwerniszuschlag = 10;
        const LogPrice p = priceLog(s, {QString(), QString(), 2.0f, QString(), beetle}, *m_lookup);
        QCOMPARE(formatDecimal(p.gross, 2), QStringLiteral("100,00"));
        QTEST(formatDecimal(p.net, 2), "net");
    }

    void noCostsWithoutValue()
    {
        PriceSettings s;
        s.preisArt = FlatPerEfm;
        s.kostenEinschlag = 10;
        s.kostenRuecken = 5;
        const LogPrice p = priceLog(s, {QString(), QString(), 2.0f, QString(), 0}, *m_lookup);
        QCOMPARE(p.gross, 0.0f);
        QCOMPARE(p.net, 0.0f);
    }

    void classNameThatIsNoColumnNeverReachesSql()
    {
        PriceSettings s;
        const LogPrice p = priceLog(s, {QStringLiteral("L1\"; DROP TABLE Hiebe; --"), QStringLiteral("B"), 1.0f,
                                        QStringLiteral("TS (Test)"), 0}, *m_lookup);
        QCOMPARE(p.gross, 0.0f);
        QVERIFY(scalar(m_db->shared(), QStringLiteral("SELECT count(*) FROM Hiebe")).isValid());
    }
};

TARVIK_TEST_CORE_MAIN(TestPricing)
#include "tst_pricing.moc"
