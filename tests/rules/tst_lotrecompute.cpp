// The bark and price recomputes of a whole lot, on typed-in logs.
#include "common/numbers.h"
#include "rules/lotrecompute.h"
#include "rules/masterdatalookup.h"
#include "store/sql.h"
#include "support/records.h"
#include "support/tempdatafolder.h"

#include <QSqlQuery>

using namespace tarvik;

class TestLotRecompute : public QObject {
    Q_OBJECT
    test::TempDataFolder m_folder;
    std::unique_ptr<Database> m_db;
    qint32 m_harvest = 0;

    QSqlDatabase db() const { return m_db->shared(); }

    QString row(qint32 runningNr, const char* columns) const
    {
        return scalar(db(), QStringLiteral("SELECT %1 FROM Stämme WHERE Kennung = ? AND Laufende_Nr = ?").arg(QString::fromUtf8(columns)),
                      {m_harvest, runningNr}).toString();
    }

private slots:
    void init()
    {
        m_db.reset();
        QFile::remove(m_folder.databasePath());
        m_db = m_folder.openDatabase();
        m_harvest = test::addHarvest(db(), 41);
        test::addLot(db(), m_harvest, 1);
        test::addTypedLog(db(), m_harvest, 1, 1, QStringLiteral("FI (Fichte)"), 55, 10, QStringLiteral("T"));
        test::addTypedLog(db(), m_harvest, 1, 2, QStringLiteral("FI (Fichte)"), 35, 4.5, QStringLiteral("F"), 2, 20);
        test::addLot(db(), m_harvest, 2);
        test::addTypedLog(db(), m_harvest, 2, 3, QStringLiteral("BU (Rotbuche)"), 40, 5, QStringLiteral("O"));
    }

    void eachLogKeepsItsModeWithoutAChoice()
    {
        MasterDataLookup lookup(db());
        test::ScriptedPrompter prompter;
        prompter.answerYes();
        const auto result = recomputeLotBark(db(), lookup, m_harvest, 1, std::nullopt, PriceSettings{}, prompter);
        QVERIFY(result);
        QCOMPARE(result->logs, 2);
        QCOMPARE(result->changed, 2);
        QCOMPARE(prompter.questions(), QStringList{QStringLiteral("Möchten Sie wirklich alle Stämme vom Los 1 nochmals neu berechnen?")});
        QCOMPARE(prompter.messages(), QStringList{QStringLiteral("Es wurden 2 Stämme geändert.")});

        QCOMPARE(row(1, "Rindenabzugsart || Rindenabzug || '/' || Stärke_oR || '/' || Stärkeklasse"), QStringLiteral("T3/52/L5"));
        QCOMPARE(formatDecimal(scalar(db(), QStringLiteral("SELECT Efm_oR FROM Stämme WHERE Laufende_Nr = 1")).toDouble(), 3), QStringLiteral("2,124"));
        QCOMPARE(row(2, "Rindenabzugsart || Rindenabzug || '/' || Stärke_oR || '/' || Stärkeklasse || '/' || Klasse_Heilbronn"),
                 QStringLiteral("F2/33/L3a/H5"));
        QCOMPARE(row(2, "Efm_oR"), QStringLiteral("0.385"));
        // Index-number prices: FI L5 = 26 × 2,124 Efm, quality B = 100 %.
        QCOMPARE(row(1, "Holzpreis"), QStringLiteral("55.224"));
        // Lot 2 is untouched.
        QCOMPARE(row(3, "coalesce(Stärke_oR, 'leer')"), QStringLiteral("leer"));

        // A second run changes nothing.
        prompter.answerYes();
        QCOMPARE(recomputeLotBark(db(), lookup, m_harvest, 1, std::nullopt, PriceSettings{}, prompter)->changed, 0);
    }

    void chosenModeAppliesToEveryLog()
    {
        MasterDataLookup lookup(db());
        test::ScriptedPrompter prompter;
        prompter.answerYes();
        recomputeLotBark(db(), lookup, m_harvest, 1, BarkMode::Ohne, PriceSettings{}, prompter);
        QCOMPARE(row(1, "Rindenabzugsart || Rindenabzug || '/' || Stärke_oR"), QStringLiteral("O0/55"));
        QCOMPARE(row(2, "Rindenabzugsart || Rindenabzug || '/' || Stärke_oR"), QStringLiteral("O0/35"));
    }

    void noAnswerChangesNothing()
    {
        MasterDataLookup lookup(db());
        test::ScriptedPrompter prompter;
        prompter.answerNo();
        QVERIFY(!recomputeLotBark(db(), lookup, m_harvest, 1, BarkMode::Tabelle, PriceSettings{}, prompter));
        QVERIFY(prompter.messages().isEmpty());
        QCOMPARE(row(1, "coalesce(Stärke_oR, 'leer')"), QStringLiteral("leer"));
    }

    void noLotChosen()
    {
        MasterDataLookup lookup(db());
        test::ScriptedPrompter prompter;
        QVERIFY(!recomputeLotBark(db(), lookup, m_harvest, std::nullopt, BarkMode::Tabelle, PriceSettings{}, prompter));
        QCOMPARE(prompter.messages(), QStringList{QStringLiteral("Bitte wählen Sie links bei den Stammdaten die Los-Nr aus, bei der die Rindenabzüge neu berechnet werden sollen.")});
        QVERIFY(!recomputeLotPrices(db(), lookup, m_harvest, std::nullopt, PriceSettings{}, prompter));
        QCOMPARE(prompter.messages().last(), QStringLiteral("Bitte legen Sie zuerst fest, welches Los neu berechnet werden soll!"));
    }

    void flatPriceForTheLot()
    {
        MasterDataLookup lookup(db());
        test::ScriptedPrompter prompter;
        prompter.answerYes().answerYes();
        recomputeLotBark(db(), lookup, m_harvest, 1, std::nullopt, PriceSettings{}, prompter);
        PriceSettings flat;
        flat.preisArt = FlatForLot;
        flat.pauschalpreisG = 500;
        flat.kostenEinschlag = 12.5f;
        const auto result = recomputeLotPrices(db(), lookup, m_harvest, 1, flat, prompter);
        QVERIFY(result);
        QCOMPARE(result->logs, 2);
        QCOMPARE(prompter.questions().last(),
                 QStringLiteral("Sollen die Preise (alle Stämme) für das Los 1 wirklich lt. den Preiseinstellungen neu berechent werden?"));
        QVERIFY(prompter.messages().last().startsWith(QStringLiteral("Die Preise wurden lt. den aktuellen Vorgaben neu berechnet.")));
        QCOMPARE(scalar(db(), QStringLiteral("SELECT sum(Holzpreis) + sum(Preis_berechnet) FROM Stämme WHERE Los_Nr = 1")).toDouble(), 0.0);
        QCOMPARE(scalar(db(), QStringLiteral("SELECT Holzpreis || '/' || Preis_berechnet || '/' || Preis_Art || '/' || Kosten_Einschlag "
                                             "FROM Lose WHERE Kennung = ? AND Los_Nr = 1"), {m_harvest}).toString(),
                 QStringLiteral("500.0/500.0/3/12.5"));
        QCOMPARE(loadLotPriceSettings(db(), m_harvest, 1)->pauschalpreisG, 500.0f);
    }

    void pricesFollowTheSettings()
    {
        MasterDataLookup lookup(db());
        test::ScriptedPrompter prompter;
        prompter.answerYes().answerYes();
        recomputeLotBark(db(), lookup, m_harvest, 1, std::nullopt, PriceSettings{}, prompter);
        PriceSettings perEfm;
        perEfm.preisArt = FlatPerEfm;
        perEfm.pauschalpreisEfm = 40;
        recomputeLotPrices(db(), lookup, m_harvest, 1, perEfm, prompter);
        // 2,124 + 0,385 Efm at 40 per Efm.
        QCOMPARE(row(1, "Holzpreis"), QStringLiteral("84.96"));
        QCOMPARE(row(2, "Holzpreis"), QStringLiteral("15.4"));
        QCOMPARE(scalar(db(), QStringLiteral("SELECT Holzpreis FROM Lose WHERE Kennung = ? AND Los_Nr = 1"), {m_harvest}).toDouble(), 100.36);
    }
};

TARVIK_TEST_CORE_MAIN(TestLotRecompute)
#include "tst_lotrecompute.moc"
