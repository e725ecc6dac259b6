// Own data and buyers: the checks a typed IBAN, VAT id and post code pass or fail, the round trip
// of awkward names through the file, and the command line that shows and sets them.
#include "parties/parties.h"
#include "store/sql.h"
#include "support/clirun.h"
#include "support/entryfixture.h"
#include "support/tempdatafolder.h"

using namespace tarvik;
using namespace tarvik::parties;

class TestParties : public QObject, protected test::EntryFixture {
    Q_OBJECT

private slots:
    void checks_data()
    {
        QTest::addColumn<QString>("kind");
        QTest::addColumn<QString>("value");
        QTest::addColumn<QString>("country");
        QTest::addColumn<bool>("valid");
        // The IBAN of the German banks' own documentation, with blanks and in lower case.
        QTest::newRow("IBAN example") << "iban" << "DE89 3704 0044 0532 0130 00" << "DE" << true;
        QTest::newRow("IBAN one digit typed wrong") << "iban" << "DE89 3704 0044 0532 0131 00" << "DE" << false;
        QTest::newRow("IBAN Austrian") << "iban" << "AT61 1904 3002 3457 3201" << "AT" << true;
        QTest::newRow("IBAN letters in the check") << "iban" << "DEAB 3704 0044 0532 0130 00" << "DE" << false;
        QTest::newRow("VAT id German") << "ustid" << "DE123456789" << "DE" << true;
        QTest::newRow("VAT id eight digits") << "ustid" << "DE12345678" << "DE" << false;
        QTest::newRow("VAT id without DE") << "ustid" << "123456789" << "DE" << false;
        QTest::newRow("VAT id Austrian") << "ustid" << "ATU12345678" << "AT" << true;
        QTest::newRow("post code German") << "plz" << "78333" << "DE" << true;
        QTest::newRow("post code four digits") << "plz" << "7833" << "DE" << false;
        QTest::newRow("post code Austrian four digits") << "plz" << "6020" << "AT" << true;
    }
    void checks()
    {
        QFETCH(QString, kind);
        QFETCH(QString, value);
        QFETCH(QString, country);
        QFETCH(bool, valid);
        if (kind == u"iban")
            QCOMPARE(ibanIsValid(value), valid);
        else if (kind == u"ustid")
            QCOMPARE(vatIdIsValid(value, country), valid);
        else
            QCOMPARE(postCodeIsValid(value, country), valid);
    }

    void ownDataRoundTripAndRefusals()
    {
        resetDatabase(std::nullopt);

        OwnData data;
        data.name = QStringLiteral("Forst O'Neill & Söhne <GbR> \"Nord\"");
        data.street = QStringLiteral("Am Bühl 3");
        data.postCode = QStringLiteral("7833");
        data.vatId = QStringLiteral("DE12345678");
        data.iban = QStringLiteral("DE88 3704 0044 0532 0130 00");
        QVERIFY(!storeOwnData(context(), data));
        QCOMPARE(m_prompter.messages(), QStringList{QStringLiteral("Die Eingabe kann nicht übernommen werden, weil...\n"
                                                                 "...die Postleitzahl in Deutschland aus 5 Ziffern bestehen muss.\n"
                                                                 "...die USt-IdNr. aus DE und 9 Ziffern bestehen muss.\n"
                                                                 "...die IBAN nicht gültig ist (Länge oder Prüfziffer falsch).")});
        QVERIFY(loadOwnData(db()).name.isEmpty());

        data.postCode = QStringLiteral("78333");
        data.vatId = QStringLiteral("de 123456789");
        data.iban = QStringLiteral("de89 3704 0044 0532 0130 00");
        data.regime = TaxRegime::Flat24;
        QVERIFY(storeOwnData(context(), data));
        data.city = QStringLiteral("Stockach");
        QVERIFY(storeOwnData(context(), data)); // the one row is changed, not a second one added
        QCOMPARE(scalar(db(), QStringLiteral("SELECT count(*) FROM Eigene_Angaben")).toInt(), 1);
        const OwnData back = loadOwnData(db());
        QCOMPARE(back.name, data.name);
        QCOMPARE(back.city, QStringLiteral("Stockach"));
        QCOMPARE(back.vatId, QStringLiteral("DE123456789"));
        QCOMPARE(back.iban, QStringLiteral("DE89370400440532013000"));
        QCOMPARE(back.country, QStringLiteral("DE"));
        QCOMPARE(back.regime, TaxRegime::Flat24);
    }

    void commandLine()
    {
        test::TempDataFolder folder;
        const QStringList data{QStringLiteral("--daten"), folder.path()};
        auto run = [&](const QStringList& args) { return test::runCli(data + args); };

        QCOMPARE(run({"eigene-angaben", "name=Anna Müller", "plz=78333", "besteuerung=klein19"}).code, 0);
        test::CliOutput shown = run({"eigene-angaben"});
        QCOMPARE(shown.code, 0);
        QVERIFY(shown.out.contains(QStringLiteral("name\tAnna Müller\n")));
        QVERIFY(shown.out.contains(QStringLiteral("besteuerung\tklein19\n")));
        QCOMPARE(run({"eigene-angaben", "plz="}).code, 0); // an empty value clears the field
        QVERIFY(run({"eigene-angaben"}).out.contains(QStringLiteral("plz\t\n")));

        const test::CliOutput refused = run({"eigene-angaben", "besteuerung=frei"});
        QCOMPARE(refused.code, 1);
        QVERIFY(refused.err.contains(QStringLiteral("besteuerung erwartet regel, pauschal24 oder klein19.")));
        QCOMPARE(run({"eigene-angaben", "farbe=grün"}).code, 1);
        QCOMPARE(run({"eigene-angaben", "name"}).code, 2);

        QCOMPARE(run({"abnehmer", "Säge O'Neill"}).code, 1); // not known yet
        QCOMPARE(run({"abnehmer", "Säge O'Neill", "name=Sägewerk O'Neill & Co.", "plz=88662", "ort=Überlingen",
                      "referenz=04011000-12345-67", "ustid=DE987654321"}).code, 0);
        shown = run({"abnehmer", "Säge O'Neill"});
        QVERIFY(shown.out.contains(QStringLiteral("name\tSägewerk O'Neill & Co.\n")));
        QVERIFY(shown.out.contains(QStringLiteral("referenz\t04011000-12345-67\n")));
    }
};

TARVIK_TEST_CORE_MAIN(TestParties)
#include "tst_parties.moc"
