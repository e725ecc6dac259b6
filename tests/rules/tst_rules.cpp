// Measurement and pricing against worked examples and the default tables; the recomputes of a
// whole lot on typed-in logs.
#include "common/numbers.h"
#include "rules/logmeasure.h"
#include "rules/lotrecompute.h"
#include "rules/masterdatalookup.h"
#include "rules/poles.h"
#include "rules/pricing.h"
#include "rules/stackedwood.h"
#include "store/sql.h"
#include "support/records.h"
#include "support/tempdatafolder.h"

using namespace tarvik;

Q_DECLARE_METATYPE(tarvik::BarkMode)

class TestRules : public QObject {
    Q_OBJECT
    // Default master data plus a test species of its own, so price examples do not depend on
    // the default amounts.
    test::TempDataFolder m_folder;
    std::unique_ptr<Database> m_db;
    std::unique_ptr<MasterDataLookup> m_lookup;
    // A harvest 41 with lot 1 (FI 55 cm, 10 m, table bark; FI 35 cm, 4,5 m, fixed 2 cm, top 20)
    // and lot 2 (BU 40 cm, 5 m, without bark), fresh for every lot test.
    test::TempDataFolder m_lotFolder;
    std::unique_ptr<Database> m_lotDb;
    qint32 m_harvest = 0;
    test::ScriptedPrompter m_prompter;

    QSqlDatabase lotDb() const { return m_lotDb->shared(); }
    void newHarvest()
    {
        m_lotDb.reset();
        QFile::remove(m_lotFolder.databasePath());
        m_lotDb = m_lotFolder.openDatabase();
        m_prompter.clear();
        m_harvest = test::addHarvest(lotDb(), 41);
        test::addLot(lotDb(), m_harvest, 1);
        test::addTypedLog(lotDb(), m_harvest, 1, 1, QStringLiteral("FI (Fichte)"), 55, 10, QStringLiteral("T"));
        test::addTypedLog(lotDb(), m_harvest, 1, 2, QStringLiteral("FI (Fichte)"), 35, 4.5, QStringLiteral("F"), 2, 20);
        test::addLot(lotDb(), m_harvest, 2);
        test::addTypedLog(lotDb(), m_harvest, 2, 3, QStringLiteral("BU (Rotbuche)"), 40, 5, QStringLiteral("O"));
    }
    QString row(qint32 runningNr, const char* columns) const
    {
        return scalar(lotDb(), QStringLiteral("SELECT %1 FROM Stämme WHERE Kennung = ? AND Laufende_Nr = ?").arg(QString::fromUtf8(columns)),
                      {m_harvest, runningNr}).toString();
    }
    std::optional<LotRecomputeResult> recomputeBark(std::optional<BarkMode> mode)
    {
        MasterDataLookup lookup(lotDb());
        return recomputeLotBark(lotDb(), lookup, m_harvest, 1, mode, PriceSettings{}, m_prompter);
    }

private slots:
    void initTestCase()
    {
        m_db = m_folder.openDatabase();
        const QSqlDatabase db = m_db->shared();
        execSql(db, QStringLiteral("INSERT INTO Messbeträge(Baumart, SK_L3a) VALUES ('TS (Test)', 60)"));
        execSql(db, QStringLiteral("INSERT INTO Messzahlen(Baumart, GK_B, GK_A) VALUES ('TS (Test)', 110, NULL)"));
        execSql(db, QStringLiteral("INSERT INTO Tagespreise(Baumart, Güte, SK_L3a) VALUES ('TS (Test)', '', 80)"));
        execSql(db, QStringLiteral("INSERT INTO Tagespreise(Baumart, Güte, SK_L3a) VALUES ('TS (Test)', 'A', 120)"));
        execSql(db, QStringLiteral("INSERT INTO Tagespreise(Baumart, Güte, SK_L3a) VALUES ('TB (Test B)', 'B', 90)"));
        m_lookup = std::make_unique<MasterDataLookup>(db);
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

    // Every class lookup of the default tables: log (L), Heilbronn (H: by length and top
    // diameter of a 40 cm log), pole (P: diameter and length) and stacked wood (S).
    void classOf_data()
    {
        QTest::addColumn<char>("kind");
        QTest::addColumn<QString>("diameter");
        QTest::addColumn<QString>("length");
        QTest::addColumn<QString>("expected");
        QTest::newRow("log: lower bound") << 'L' << "20" << "" << "L2a";
        QTest::newRow("log: top class") << 'L' << "999" << "" << "L6";
        QTest::newRow("log: beyond every class") << 'L' << "1000" << "" << "";
        QTest::newRow("log: empty counts as 0") << 'L' << "" << "" << "L0";
        QTest::newRow("heilbronn: 4,9 m counts as 4") << 'H' << "15" << "4,9" << "H4";
        QTest::newRow("heilbronn: 8,9 m counts as 8") << 'H' << "10" << "8,9" << "H1";
        QTest::newRow("heilbronn: 9 m") << 'H' << "10" << "9" << "H2";
        QTest::newRow("heilbronn: 4,96 m shows as 5,0") << 'H' << "10" << "4,96" << "H1";
        QTest::newRow("heilbronn: top above every class") << 'H' << "31" << "10" << "";
        QTest::newRow("heilbronn: length above every class") << 'H' << "10" << "19" << "";
        QTest::newRow("heilbronn: no top diameter") << 'H' << "0" << "10" << "";
        QTest::newRow("pole: finest of three overlapping") << 'P' << "8" << "8" << "P2.11";
        QTest::newRow("pole: long thin") << 'P' << "8" << "12" << "P2.12";
        QTest::newRow("pole: 12 cm, 14 m") << 'P' << "12" << "14" << "P2.32";
        QTest::newRow("pole: general class only") << 'P' << "8" << "3" << "P2";
        QTest::newRow("pole: thin") << 'P' << "5" << "2" << "P1";
        QTest::newRow("pole: length outside every range") << 'P' << "14" << "5" << "";
        QTest::newRow("stacked: 8 cm") << 'S' << "8" << "" << "S2.1";
        QTest::newRow("stacked: 13 cm") << 'S' << "13" << "" << "S2.2";
        QTest::newRow("stacked: 15 cm") << 'S' << "15" << "" << "S3.1";
        QTest::newRow("stacked: 25 cm") << 'S' << "25" << "" << "S3.2";
        QTest::newRow("stacked: too thin") << 'S' << "2" << "" << "";
    }
    void classOf()
    {
        QFETCH(char, kind);
        QFETCH(QString, diameter);
        QFETCH(QString, length);
        QString found;
        if (kind == 'L')
            found = diameterClassOf(*m_lookup, diameter);
        else if (kind == 'H')
            found = tarvik::measureLog({QStringLiteral("FI (Fichte)"), QStringLiteral("40"), length, diameter, QString(), BarkMode::Ohne},
                                       *m_lookup).heilbronnClass;
        else if (kind == 'P')
            found = poleClassOf(*m_lookup, diameter, length);
        else
            found = stackedClassOf(*m_lookup, diameter);
        QTEST(found, "expected");
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

    void polesAndStackedPriceAndVolume()
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
        QCOMPARE(stackedPrice(12.5f, 30.0f), 375.0f); // per stacked m³, not per Efm
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

    void price_data()
    {
        QTest::addColumn<int>("kind");
        QTest::addColumn<QString>("species");
        QTest::addColumn<QString>("diameterClass");
        QTest::addColumn<QString>("quality");
        QTest::addColumn<float>("efm");
        QTest::addColumn<QString>("gross");
        const QString ts = QStringLiteral("TS (Test)");
        QTest::newRow("index number: 60 x 0,385 x 110 / 100") << 0 << ts << "L3a" << "B" << 0.385f << "25,41";
        QTest::newRow("index number: quality without column") << 0 << ts << "L3a" << "X" << 0.385f << "23,10";
        QTest::newRow("index number: null index reads 0") << 0 << ts << "L3a" << "A" << 0.385f << "0,00";
        QTest::newRow("index number: no quality") << 0 << ts << "L3a" << "" << 0.385f << "0,00";
        QTest::newRow("index number: no volume") << 0 << ts << "L3a" << "B" << 0.0f << "0,00";
        QTest::newRow("index number: class without column") << 0 << ts << "L9" << "B" << 1.0f << "0,00";
        QTest::newRow("index number: species without row") << 0 << "XY (Keine)" << "L3a" << "B" << 1.0f << "0,00";
        QTest::newRow("index number: default fir") << 0 << "FI (Fichte)" << "L3a" << "A" << 1.0f << "36,80";
        QTest::newRow("day price: no quality takes ''") << 1 << ts << "L3a" << "" << 0.385f << "30,80";
        QTest::newRow("day price: no quality takes 'B'") << 1 << "TB (Test B)" << "L3a" << "" << 1.0f << "90,00";
        QTest::newRow("day price: quality A") << 1 << ts << "L3a" << "A" << 0.385f << "46,20";
        QTest::newRow("day price: quality without row") << 1 << ts << "L3a" << "C" << 0.385f << "0,00";
        QTest::newRow("day price: no class") << 1 << ts << "" << "A" << 0.385f << "0,00";
        QTest::newRow("flat per Efm") << 2 << "" << "" << "" << 2.0f << "100,00";
        QTest::newRow("flat for the lot") << 3 << ts << "L3a" << "B" << 2.0f << "0,00";
        QTest::newRow("hostile class name") << 0 << ts << "L1\"; DROP TABLE Hiebe; --" << "B" << 1.0f << "0,00";
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
        QTEST(formatDecimal(p.net, 2), "gross"); // no costs set
        QVERIFY(scalar(m_db->shared(), QStringLiteral("SELECT count(*) FROM Hiebe")).isValid());
    }

    // Costs come off the gross value: bark beetle 20 %, felling 10, skidding 5 per Efm,
    // difficulty 10 % of the costs.
    void costs_data()
    {
        QTest::addColumn<int>("beetle");
        QTest::addColumn<float>("perEfm");
        QTest::addColumn<QString>("gross");
        QTest::addColumn<QString>("net");
        QTest::newRow("bark-beetle log: 100 - 20 - 20 - 10 - 1,5") << 1 << 50.f << "100,00" << "48,50";
        QTest::newRow("healthy log: 100 - 20 - 10 - 1,5") << 0 << 50.f << "100,00" << "68,50";
        QTest::newRow("no costs without value") << 0 << 0.f << "0,00" << "0,00";
    }
    void costs()
    {
        QFETCH(int, beetle);
        QFETCH(float, perEfm);
        PriceSettings s;
        s.preisArt = FlatPerEfm;
        s.pauschalpreisEfm = perEfm;
        s.kaeferholzabschlag = 20;
        s.kostenEinschlag = 10;
        s.kostenRuecken = 5;
        s.erschwerniszuschlag = 10;
        const LogPrice p = priceLog(s, {QString(), QString(), 2.0f, QString(), beetle}, *m_lookup);
        QTEST(formatDecimal(p.gross, 2), "gross");
        QTEST(formatDecimal(p.net, 2), "net");
    }

    // The whole lot again after a Yes: each log keeps its own bark mode unless one is chosen for
    // all, and is priced again (index numbers: FI L5 = 26 per Efm, quality B 100 %); a second run
    // changes nothing; a No and lot 2 leave every log as it was.
    void lotBark_data()
    {
        QTest::addColumn<int>("mode"); // -1: each log keeps its own
        QTest::addColumn<bool>("yes");
        QTest::addColumn<QString>("logs"); // mode, deduction, diameter, class, Efm of logs 1 and 2
        QTest::addColumn<QString>("price"); // of log 1
        QTest::newRow("each log's own mode: 26 x 2,124") << -1 << true << "T3/52/L5/2.124 F2/33/L3a/0.385" << "55.224";
        QTest::newRow("without bark for all: 26 x 2,376") << int(BarkMode::Ohne) << true << "O0/55/L5/2.376 O0/35/L3b/0.433" << "61.776";
        QTest::newRow("No") << int(BarkMode::Tabelle) << false << "T F" << "";
    }
    void lotBark()
    {
        QFETCH(int, mode);
        QFETCH(bool, yes);
        newHarvest();
        const std::optional<BarkMode> chosen = mode < 0 ? std::nullopt : std::optional(BarkMode(mode));
        yes ? m_prompter.answerYes() : m_prompter.answerNo();
        const auto result = recomputeBark(chosen);
        QCOMPARE(m_prompter.questions(), QStringList{QStringLiteral("Möchten Sie wirklich alle Stämme vom Los 1 nochmals neu berechnen?")});
        QCOMPARE(result.has_value(), yes);
        QCOMPARE(m_prompter.messages(), yes ? QStringList{QStringLiteral("Es wurden 2 Stämme geändert.")} : QStringList());
        const char* logs = "Rindenabzugsart || coalesce(Rindenabzug || '/' || Stärke_oR || '/' || Stärkeklasse || '/' || round(Efm_oR, 3), '')";
        QTEST(row(1, logs) + u' ' + row(2, logs), "logs");
        QTEST(row(1, "coalesce(Holzpreis, '')"), "price");
        QCOMPARE(row(3, "coalesce(Stärke_oR, 'leer')"), QStringLiteral("leer"));
        if (yes) {
            m_prompter.answerYes();
            QCOMPARE(recomputeBark(chosen)->changed, 0);
        }
    }

    void lotRecomputeWithoutALot()
    {
        newHarvest();
        MasterDataLookup lookup(lotDb());
        QVERIFY(!recomputeLotBark(lotDb(), lookup, m_harvest, std::nullopt, BarkMode::Tabelle, PriceSettings{}, m_prompter));
        QVERIFY(!recomputeLotPrices(lotDb(), lookup, m_harvest, std::nullopt, PriceSettings{}, m_prompter));
        QCOMPARE(m_prompter.messages(),
                 (QStringList{QStringLiteral("Bitte wählen Sie links bei den Stammdaten die Los-Nr aus, bei der die Rindenabzüge neu "
                                             "berechnet werden sollen."),
                              QStringLiteral("Bitte legen Sie zuerst fest, welches Los neu berechnet werden soll!")}));
    }

    void lotPricesFollowTheSettings_data()
    {
        QTest::addColumn<int>("kind");
        QTest::addColumn<float>("costs");
        QTest::addColumn<QString>("logPrices"); // wood price/computed price of logs 1 and 2
        QTest::addColumn<QString>("lot");
        // 2,124 + 0,385 Efm at 40 per Efm.
        QTest::newRow("flat per Efm") << int(FlatPerEfm) << 0.f << "84.96/84.96 15.4/15.4" << "100.36/100.36/2/0.0";
        QTest::newRow("flat for the lot") << int(FlatForLot) << 12.5f << "0.0/0.0 0.0/0.0" << "500.0/500.0/3/12.5";
    }
    void lotPricesFollowTheSettings()
    {
        QFETCH(int, kind);
        QFETCH(float, costs);
        newHarvest();
        m_prompter.answerYes().answerYes();
        recomputeBark(std::nullopt);
        PriceSettings s;
        s.preisArt = qint16(kind);
        s.pauschalpreisEfm = 40;
        s.pauschalpreisG = 500;
        s.kostenEinschlag = costs;
        MasterDataLookup lookup(lotDb());
        const auto result = recomputeLotPrices(lotDb(), lookup, m_harvest, 1, s, m_prompter);
        QVERIFY(result);
        QCOMPARE(result->logs, 2);
        QCOMPARE(m_prompter.questions().last(),
                 QStringLiteral("Sollen die Preise (alle Stämme) für das Los 1 wirklich lt. den Preiseinstellungen neu berechent werden?"));
        QVERIFY(m_prompter.messages().last().startsWith(QStringLiteral("Die Preise wurden lt. den aktuellen Vorgaben neu berechnet.")));
        QTEST(row(1, "Holzpreis || '/' || Preis_berechnet") + u' ' + row(2, "Holzpreis || '/' || Preis_berechnet"), "logPrices");
        QTEST(scalar(lotDb(), QStringLiteral("SELECT round(Holzpreis, 2) || '/' || round(Preis_berechnet, 2) || '/' || Preis_Art || '/' "
                                             "|| Kosten_Einschlag FROM Lose WHERE Kennung = ? AND Los_Nr = 1"), {m_harvest}).toString(),
              "lot");
        QCOMPARE(loadLotPriceSettings(lotDb(), m_harvest, 1)->pauschalpreisG, 500.0f); // the lot keeps its settings
    }
};

TARVIK_TEST_CORE_MAIN(TestRules)
#include "tst_rules.moc"
