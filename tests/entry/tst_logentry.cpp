// The log store's own questions, through the core: values no log has and logs that price to
// nothing are asked about before anything is written, and "Nein" leaves the table untouched.
#include "common/numbers.h"
#include "entry/logentry.h"
#include "rules/masterdatalookup.h"
#include "store/records.h"
#include "store/sql.h"
#include "support/entryfixture.h"

#include <QTest>

using namespace tarvik;

class TestLogEntry : public QObject, protected test::EntryFixture {
    Q_OBJECT

    LogForm log(const QString& diameter, const QString& length, const QString& quality) const
    {
        LogForm f;
        f.losNr = QStringLiteral("1");
        f.laufendeNr = QStringLiteral("1");
        f.species = QStringLiteral("FI (Fichte)");
        f.quality = quality;
        f.measuredDiameter = diameter;
        f.length = length;
        f.mode = BarkMode::Ohne;
        return f;
    }

private slots:
    void init()
    {
        resetDatabase(1);
        createLot(db(), m_harvest, 1, QStringLiteral("Stämme"));
    }

    void doubtfulValuesAskFirst_data()
    {
        QTest::addColumn<QString>("diameter");
        QTest::addColumn<QString>("length");
        QTest::addColumn<QString>("quality");
        QTest::addColumn<float>("flatPrice");
        QTest::addColumn<QStringList>("doubts");
        const QString noQuality = QStringLiteral("...der Stamm keine Güteklasse hat und 0,00 € kostet.");
        QTest::newRow("ordinary log") << "35" << "4,5" << "B" << 0.f << QStringList();
        QTest::newRow("at both limits") << "150" << "40" << "B" << 0.f << QStringList();
        QTest::newRow("slipped diameter") << "337" << "4,5" << "B" << 0.f << QStringList{"...die Stärke von 337 cm größer als 150 cm ist."};
        QTest::newRow("slipped length") << "3" << "52,3" << "B" << 0.f
                                        << QStringList{"...die Länge von 52,3 m größer als 40 m ist."};
        QTest::newRow("both") << "151" << "40,5" << "B" << 0.f
                              << QStringList{"...die Stärke von 151 cm größer als 150 cm ist.",
                                             "...die Länge von 40,5 m größer als 40 m ist."};
        QTest::newRow("no quality, no price") << "35" << "4,5" << "" << 0.f << QStringList{noQuality};
        QTest::newRow("no quality, flat price") << "35" << "4,5" << "" << 50.f << QStringList();
        QTest::newRow("no quality and slipped") << "351" << "4,5" << "" << 0.f
                                                << QStringList{"...die Stärke von 351 cm größer als 150 cm ist.", noQuality};
    }
    void doubtfulValuesAskFirst()
    {
        QFETCH(QString, diameter);
        QFETCH(QString, length);
        QFETCH(QString, quality);
        QFETCH(float, flatPrice);
        QFETCH(QStringList, doubts);
        MasterDataLookup lookup(db());
        LogForm f = log(diameter, length, quality);
        if (flatPrice > 0) {
            f.prices.preisArt = 2;
            f.prices.pauschalpreisEfm = flatPrice;
        }
        recomputeLog(f, lookup);
        QCOMPARE(logDoubts(f), doubts);
        const AppContext ctx = context();

        if (!doubts.isEmpty()) {
            // Nein: nothing is written, not even the lot's totals.
            m_prompter.answerNo();
            QVERIFY(!storeLog(ctx, lookup, m_harvest, f, std::nullopt));
            QCOMPARE(m_prompter.questions(), QStringList{QStringLiteral("Bitte prüfen Sie die Eingabe, weil...\n\n") + doubts.join(u'\n')
                                                         + QStringLiteral("\n\nSoll der Stamm trotzdem so gespeichert werden?")});
            QCOMPARE(value(QStringLiteral("SELECT count(*) FROM Stämme WHERE Kennung = ?")), QStringLiteral("0"));
            QCOMPARE(value(QStringLiteral("SELECT Anzahl_Stämme FROM Lose WHERE Kennung = ?")), QStringLiteral("0"));
            m_prompter.answerYes();
        }
        const auto stored = storeLog(ctx, lookup, m_harvest, f, std::nullopt);
        QVERIFY(stored);
        QCOMPARE(m_prompter.pendingAnswers(), 0);
        QCOMPARE(value(QStringLiteral("SELECT Stärke_gemessen || '/' || round(Länge_m, 1) FROM Stämme WHERE Kennung = ?")),
                 QString::number(readNumber(diameter)) + u'/' + QString::number(readNumber(length), 'f', 1));
    }

    // A log that joins a lot already invoiced asks first, and "Nein" stores nothing; a log
    // changed within its lot, or a lot not invoiced, asks nothing.
    void invoicedLotAsksFirst_data()
    {
        QTest::addColumn<int>("reNr");       // of lot 2
        QTest::addColumn<QString>("change");  // "": a new log; else the lot of the stored log changed
        QTest::addColumn<QString>("girth");
        QTest::addColumn<QString>("question"); // empty: none
        const QString onLot = QStringLiteral("Das Los 2 ist bereits in Rechnung 20260001 abgerechnet. ");
        QTest::newRow("new log") << 20260001 << "" << "" << onLot + "Soll der Stamm trotzdem hinzugefügt werden?";
        QTest::newRow("girth measurement") << 20260001 << "" << "3" << onLot + "Sollen die 3 Stämme trotzdem hinzugefügt werden?";
        QTest::newRow("log moved into the lot") << 20260001 << "1" << "" << onLot + "Soll der Stamm trotzdem hinzugefügt werden?";
        QTest::newRow("log changed within the lot") << 20260001 << "2" << "" << "";
        QTest::newRow("lot not invoiced") << 0 << "" << "" << "";
    }
    void invoicedLotAsksFirst()
    {
        QFETCH(int, reNr);
        QFETCH(QString, change);
        QFETCH(QString, girth);
        QFETCH(QString, question);
        createLot(db(), m_harvest, 2, QStringLiteral("Stämme"));
        execSql(db(), QStringLiteral("UPDATE Lose SET ReNr = ? WHERE Kennung = ? AND Los_Nr = 2"), {reNr, m_harvest});
        std::optional<qint32> edited;
        if (!change.isEmpty()) {
            execSql(db(), QStringLiteral("INSERT INTO Stämme(Los_Nr, Laufende_Nr, Baumart, Kennung) VALUES (?, 7, 'FI (Fichte)', ?)"),
                    {change.toInt(), m_harvest});
            edited = idOf(QStringLiteral("SELECT max(ID) FROM Stämme WHERE Kennung = ?"));
        }
        const QString before = value(QStringLiteral("SELECT count(*) || '/' || group_concat(Los_Nr) FROM Stämme WHERE Kennung = ?"));
        MasterDataLookup lookup(db());
        LogForm f = log(QStringLiteral("35"), QStringLiteral("4,5"), QStringLiteral("B"));
        f.losNr = QStringLiteral("2");
        f.girthCount = girth;
        const AppContext ctx = context();
        if (!question.isEmpty()) {
            m_prompter.answerNo();
            QVERIFY(!storeLog(ctx, lookup, m_harvest, f, edited));
            QCOMPARE(m_prompter.questions(), QStringList{question});
            QCOMPARE(value(QStringLiteral("SELECT count(*) || '/' || group_concat(Los_Nr) FROM Stämme WHERE Kennung = ?")), before);
            m_prompter.clear();
            m_prompter.answerYes();
        }
        if (!girth.isEmpty())
            m_prompter.answerYes(); // the girth measurement's own question
        QVERIFY(storeLog(ctx, lookup, m_harvest, f, edited));
        if (question.isEmpty())
            QCOMPARE(m_prompter.questions(), QStringList());
        else
            QCOMPARE(m_prompter.questions().value(0), question);
        QCOMPARE(value(QStringLiteral("SELECT count(*) FROM Stämme WHERE Kennung = ? AND Los_Nr = 2")),
                 QString::number(girth.isEmpty() ? 1 : girth.toInt()));
    }
};

TARVIK_TEST_MAIN(TestLogEntry)
#include "tst_logentry.moc"
