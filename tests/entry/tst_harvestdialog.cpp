// FH_Hiebeingabe driven through its controls, headless.
#include "common/ui/gridformat.h"
#include "entry/ui/harvestdialog.h"
#include "store/sql.h"
#include "support/entryfixture.h"
#include "support/records.h"
#include "support/tempdatafolder.h"
#include "support/widgets.h"

#include <QApplication>
#include <QComboBox>
#include <QFile>
#include <QLineEdit>
#include <QPushButton>

using namespace tarvik;
using test::child;
using test::typeInto;

class TestHarvestDialog : public QObject, protected test::EntryFixture {
    Q_OBJECT

    static void type(QDialog& d, const char* name, const QString& text) { child<QLineEdit>(d, name)->setText(text); }
    static void choose(QDialog& d, const char* name, const QString& text) { child<QComboBox>(d, name)->setEditText(text); }
    static void press(QDialog& d, const char* name) { child<QPushButton>(d, name)->click(); }
    int count(const QString& sql) const { return scalar(db(), sql).toInt(); }

private slots:
    void init()
    {
        resetDatabase(std::nullopt, {QLatin1String(HarvestDefaultsFile)});
    }

    void numberProposal_data()
    {
        QTest::addColumn<int>("highest");
        QTest::addColumn<QString>("expected");
        QTest::newRow("empty") << 0 << "1";
        QTest::newRow("41") << 41 << "42";
        QTest::newRow("wraps after 999999") << 999999 << "1";
    }
    void numberProposal()
    {
        QFETCH(int, highest);
        if (highest > 0)
            test::addHarvest(db(), highest);
        HarvestDialog d(context(), std::nullopt);
        QTEST(child<QLineEdit>(d, "tz(0)")->text(), "expected");
        QCOMPARE(child<QLineEdit>(d, "tz(1)")->text(), QStringLiteral("2026"));
        QCOMPARE(child<QLineEdit>(d, "tz(2)")->text(), QStringLiteral("0,0000"));
        QCOMPARE(child<QLineEdit>(d, "tsumme(7)")->text(), QStringLiteral("N"));
    }

    void refusals_data()
    {
        QTest::addColumn<QString>("number");
        QTest::addColumn<QString>("woodland");
        QTest::addColumn<QString>("from");
        QTest::addColumn<QString>("to");
        QTest::addColumn<QString>("reason");
        QTest::newRow("number 0") << "0" << "Eichwald" << "" << "" << "...die Hiebnummer zwischen 1 und 999999 eingestellt sein muß.";
        QTest::newRow("number taken") << "5" << "Eichwald" << "" << "" << "...die Hiebnummer bereits existiert.";
        QTest::newRow("no woodland") << "6" << " " << "" << "" << "...der Waldname angegeben werden muß.";
        QTest::newRow("dates reversed") << "6" << "Eichwald" << "02.03.2026" << "01.03.2026"
                                        << "...das Hiebdatum von nicht später als das Hiebdatum bis sein darf.";
        QTest::newRow("reasons gathered") << "5" << "" << "" << ""
                                          << "...die Hiebnummer bereits existiert.\n...der Waldname angegeben werden muß.";
    }
    void refusals()
    {
        QFETCH(QString, number);
        QFETCH(QString, woodland);
        QFETCH(QString, from);
        QFETCH(QString, to);
        QFETCH(QString, reason);
        test::addHarvest(db(), 5);
        HarvestDialog d(context(), std::nullopt);
        type(d, "tz(0)", number);
        choose(d, "komwaldname", woodland);
        type(d, "tdat(0)", from);
        type(d, "tdat(1)", to);
        press(d, "ok");
        QCOMPARE(m_prompter.messages(), QStringList{QStringLiteral("Die Eingabe kann nicht übernommen werden, weil...\n") + reason});
        QCOMPARE(count(QStringLiteral("SELECT count(*) FROM Hiebe")), 1);
        QCOMPARE(child<QLineEdit>(d, "tz(0)")->text(), number); // what was typed stays
        QVERIFY(d.result() != QDialog::Accepted);
    }

    void storesEveryColumnAndGrowsTheLists()
    {
        for (int round = 0; round < 2; ++round) {
            HarvestDialog d(context(), std::nullopt);
            choose(d, "komwaldname", QStringLiteral("O'Briens \"Hang\" 100%"));
            type(d, "t(0)", QStringLiteral("Überlingen"));
            type(d, "tz(2)", QStringLiteral("1,25"));
            choose(d, "komhiebgrund", round == 0 ? QStringLiteral("Sturm") : QStringLiteral("STURM"));
            choose(d, "komhiebart", QStringLiteral("Durchforstung"));
            type(d, "tdat(0)", QStringLiteral("01.03.2026"));
            type(d, "tdat(1)", QStringLiteral("01.03.2026")); // equal dates are fine
            choose(d, "komwaldbesitzer", QStringLiteral("Anna Müller"));
            type(d, "t(2)", QStringLiteral("Am Bach 3"));
            press(d, "ok");
            QVERIFY2(m_prompter.messages().isEmpty(), qPrintable(m_prompter.messages().join(u'|')));
            QCOMPARE(d.result(), int(QDialog::Accepted));
        }
        QCOMPARE(scalar(db(), QStringLiteral("SELECT group_concat(Hieb_Nr) FROM Hiebe")).toString(), QStringLiteral("1,2"));
        QCOMPARE(scalar(db(), QStringLiteral("SELECT Waldname || '|' || Waldort || '|' || Hiebfläche || '|' || Hiebdatum_von || '|' || "
                                             "Hiebdatum_bis || '|' || Waldbesitzer_Straße || '|' || Selektiert || '|' || Verkauft || '|' || "
                                             "coalesce(Bemerkung, 'null') FROM Hiebe WHERE Hieb_Nr = 1")).toString(),
                 QStringLiteral("O'Briens \"Hang\" 100%|Überlingen|1.25|2026-03-01|2026-03-01|Am Bach 3||N|"));
        QCOMPARE(count(QStringLiteral("SELECT count(*) FROM Liste_Waldnamen")), 1);
        QCOMPARE(count(QStringLiteral("SELECT count(*) FROM Waldbesitzer")), 1);
        QCOMPARE(count(QStringLiteral("SELECT count(*) FROM Liste_Hiebgrund")), 1);
        QCOMPARE(count(QStringLiteral("SELECT count(*) FROM Liste_Hiebart")), 1);
    }

    void emptyDateStoresNull()
    {
        HarvestDialog d(context(), std::nullopt);
        choose(d, "komwaldname", QStringLiteral("Eichwald"));
        press(d, "ok");
        QCOMPARE(count(QStringLiteral("SELECT count(*) FROM Hiebe WHERE Hiebdatum_von IS NULL AND Hiebdatum_bis IS NULL")), 1);
    }

    void changingKeepsItsOwnNumber()
    {
        const qint32 id = test::addHarvest(db(), 12);
        execSql(db(), QStringLiteral("UPDATE Hiebe SET Stämme_Anzahl = 40, Stämme_Efm = 12.5, Teilverkauft = 'J', Verkauft = 'N' WHERE ID = ?"), {id});
        HarvestDialog d(context(), id);
        QCOMPARE(child<QLineEdit>(d, "tz(0)")->text(), QStringLiteral("12"));
        QCOMPARE(child<QComboBox>(d, "komwaldname")->currentText(), QStringLiteral("Eichwald"));
        QCOMPARE(child<QLineEdit>(d, "tsumme(2)")->text(), QStringLiteral("12,500"));
        type(d, "t(1)", QStringLiteral("geändert"));
        press(d, "ok");
        QVERIFY(m_prompter.messages().isEmpty());
        QCOMPARE(scalar(db(), QStringLiteral("SELECT Hieb_Nr || Bemerkung || Stämme_Anzahl || Teilverkauft FROM Hiebe WHERE ID = ?"), {id}).toString(),
                 QStringLiteral("12geändert40J"));
    }

    void okNextBeginsTheNextHarvest()
    {
        HarvestDialog d(context(), std::nullopt);
        choose(d, "komwaldname", QStringLiteral("Eichwald"));
        press(d, "okn_chster");
        QCOMPARE(child<QLineEdit>(d, "tz(0)")->text(), QStringLiteral("2"));
        QVERIFY(d.isVisible() || d.result() != QDialog::Accepted);
        QCOMPARE(child<QComboBox>(d, "komwaldname")->findText(QStringLiteral("Eichwald")), 0);
    }

    void defaultsAreRememberedForTheNextNewHarvest()
    {
        {
            HarvestDialog d(context(), std::nullopt);
            choose(d, "komwaldname", QStringLiteral("Hochwald"));
            type(d, "t(0)", QStringLiteral("  Bergdorf "));
            choose(d, "komhiebart", QStringLiteral("Kahlschlag"));
            choose(d, "komwaldbesitzer", QStringLiteral("Gemeinde"));
            type(d, "t(5)", QStringLiteral("Forst-Nr. 7"));
            press(d, "standard");
            QVERIFY(m_prompter.messages().first().startsWith(QStringLiteral("Die Standardwerte (Waldname, Hiebgrund, Hiebart und Waldbesitzer)")));
        }
        QFile file(m_folder.filePath(QLatin1String(HarvestDefaultsFile)));
        QVERIFY(file.open(QIODevice::ReadOnly));
        QCOMPARE(file.readAll(), QByteArray("Hochwald\r\n  Bergdorf \r\n\r\nKahlschlag\r\nGemeinde\r\n\r\n\r\n\r\nForst-Nr. 7\r\n"));

        HarvestDialog next(context(), std::nullopt);
        QCOMPARE(child<QComboBox>(next, "komwaldname")->currentText(), QStringLiteral("Hochwald"));
        QCOMPARE(child<QLineEdit>(next, "t(0)")->text(), QStringLiteral("  Bergdorf "));
        QCOMPARE(child<QLineEdit>(next, "t(5)")->text(), QStringLiteral("Forst-Nr. 7"));
    }

    // "Ändern" stores the shown harvest and moves on in the opener's list, after the last to the
    // first; a refusal stays on the row; Abbrechen closes on the harvest shown last.
    void changeStepsThroughTheOpenersList_data()
    {
        QTest::addColumn<QString>("button");
        QTest::newRow("OK") << "ok";
        QTest::newRow("OK+Nächster") << "okn_chster";
    }
    void changeStepsThroughTheOpenersList()
    {
        QFETCH(QString, button);
        const QList<qint32> ids{test::addHarvest(db(), 30), test::addHarvest(db(), 10), test::addHarvest(db(), 20)};
        HarvestDialog d(context(), ids[1], ids);
        QCOMPARE(d.windowTitle(), QStringLiteral("Hiebeingabe - Ändern (2 von 3)"));
        QStringList shown;
        for (int round = 0; round < 3; ++round) {
            type(d, "t(1)", QStringLiteral("Runde %1").arg(round));
            press(d, qPrintable(button));
            QVERIFY2(m_prompter.messages().isEmpty(), qPrintable(m_prompter.messages().join(u'|')));
            shown << child<QLineEdit>(d, "tz(0)")->text() + u'/' + child<QLineEdit>(d, "t(1)")->text();
        }
        QCOMPARE(shown, (QStringList{"20/", "30/", "10/Runde 0"}));
        QCOMPARE(d.windowTitle(), QStringLiteral("Hiebeingabe - Ändern (2 von 3)"));
        QCOMPARE(scalar(db(), QStringLiteral("SELECT group_concat(Hieb_Nr || ':' || Bemerkung) FROM (SELECT * FROM Hiebe ORDER BY ID)")).toString(),
                 QStringLiteral("30:Runde 2,10:Runde 0,20:Runde 1"));
        QCOMPARE(count(QStringLiteral("SELECT count(*) FROM Hiebe")), 3);

        type(d, "tz(0)", QStringLiteral("20")); // taken by another harvest of the list
        press(d, qPrintable(button));
        QCOMPARE(m_prompter.messages(), QStringList{QStringLiteral("Die Eingabe kann nicht übernommen werden, weil...\n...die Hiebnummer bereits existiert.")});
        QCOMPARE(child<QLineEdit>(d, "tz(0)")->text(), QStringLiteral("20"));
        QCOMPARE(d.shownId(), ids[1]);

        press(d, "cmdabbrechen");
        QCOMPARE(d.result(), int(QDialog::Rejected));
        QCOMPARE(d.shownId(), ids[1]);
        QCOMPARE(d.storedId(), ids[0]);
        QCOMPARE(count(QStringLiteral("SELECT count(*) FROM Hiebe WHERE Hieb_Nr = 10")), 1);
    }

    // The access key of [OK+Nächster] acts at once: digits typed right after it belong to the
    // next harvest, not to the one being stored.
    void accessKeyActsAtOnce()
    {
        HarvestDialog d(context(), std::nullopt);
        choose(d, "komwaldname", QStringLiteral("Eichwald"));
        d.show();
        QVERIFY(QTest::qWaitForWindowActive(&d));
        child<QLineEdit>(d, "tz(0)")->setFocus();
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_N, Qt::AltModifier);
        QTest::keyClicks(QApplication::focusWidget(), QStringLiteral("77"));
        QTest::qWait(150); // longer than a button's click animation
        QVERIFY2(m_prompter.messages().isEmpty(), qPrintable(m_prompter.messages().join(u'|')));
        QCOMPARE(scalar(db(), QStringLiteral("SELECT group_concat(Hieb_Nr) FROM Hiebe")).toString(), QStringLiteral("1"));
        QCOMPARE(child<QLineEdit>(d, "tz(0)")->text(), QStringLiteral("77"));
    }

    // Opened without a list, OK closes and [OK+Nächster] begins a new harvest.
    void changeWithoutAList_data()
    {
        QTest::addColumn<QString>("button");
        QTest::addColumn<int>("result");
        QTest::addColumn<QString>("title");
        QTest::addColumn<QString>("number");
        QTest::newRow("OK") << "ok" << int(QDialog::Accepted) << "Hiebeingabe - Ändern" << "7";
        QTest::newRow("OK+Nächster") << "okn_chster" << int(QDialog::Rejected) << "Hiebeingabe - Neu" << "8";
    }
    void changeWithoutAList()
    {
        QFETCH(QString, button);
        const qint32 id = test::addHarvest(db(), 7);
        HarvestDialog d(context(), id);
        press(d, qPrintable(button));
        QTEST(d.result(), "result");
        QTEST(d.windowTitle(), "title");
        QTEST(child<QLineEdit>(d, "tz(0)")->text(), "number");
        QCOMPARE(d.storedId(), id);
    }

    // The woodland's place and area come from the list whether the name is picked from the
    // drop-down or typed (completed or in full) and left with Tab; a name that is not listed and
    // an unchanged name leave the fields as they are.
    void woodlandFillsPlaceAndArea_data()
    {
        QTest::addColumn<bool>("changing");
        QTest::addColumn<QString>("keys");
        QTest::addColumn<bool>("fromDropDown");
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("place");
        QTest::addColumn<QString>("area");
        QTest::newRow("drop-down") << false << "" << true << "Eichwald" << "Talheim" << "2,5000";
        QTest::newRow("completed, Tab") << false << "Eic" << false << "Eichwald" << "Talheim" << "2,5000";
        QTest::newRow("other case, Tab") << false << "buchen" << false << "Buchenhang" << "Au" << "0,7500";
        QTest::newRow("typed in full, Tab") << false << "Eichwald" << false << "Eichwald" << "Talheim" << "2,5000";
        QTest::newRow("not listed") << false << "Fichtenweg" << false << "Fichtenweg" << "Alt" << "9";
        QTest::newRow("unchanged when changing") << true << "" << false << "Eichwald" << "Oben" << "1,0000";
        QTest::newRow("changed when changing") << true << "Buc" << false << "Buchenhang" << "Au" << "0,7500";
    }
    void woodlandFillsPlaceAndArea()
    {
        QFETCH(bool, changing);
        QFETCH(QString, keys);
        QFETCH(bool, fromDropDown);
        execSql(db(), QStringLiteral("INSERT INTO Liste_Waldnamen(Waldname, Waldort, Fläche) VALUES ('Eichwald', 'Talheim', 2.5), ('Buchenhang', 'Au', 0.75)"));
        const qint32 id = test::addHarvest(db(), 3);
        execSql(db(), QStringLiteral("UPDATE Hiebe SET Waldname = 'Eichwald', Waldort = 'Oben', Hiebfläche = 1 WHERE ID = ?"), {id});
        HarvestDialog d(context(), changing ? std::optional<qint32>(id) : std::nullopt);
        if (!changing) {
            type(d, "t(0)", QStringLiteral("Alt"));
            type(d, "tz(2)", QStringLiteral("9"));
        }
        d.show();
        QVERIFY(QTest::qWaitForWindowActive(&d));
        auto* box = child<QComboBox>(d, "komwaldname");
        box->setFocus();
        if (fromDropDown) {
            box->setCurrentIndex(box->findText(QStringLiteral("Eichwald")));
            emit box->textActivated(QStringLiteral("Eichwald"));
        } else {
            if (!keys.isEmpty()) {
                box->lineEdit()->selectAll();
                QTest::keyClicks(box, keys);
            }
            QTest::keyClick(box, Qt::Key_Tab);
            QVERIFY(!box->hasFocus());
        }
        QTEST(box->currentText(), "name");
        QTEST(child<QLineEdit>(d, "t(0)")->text(), "place");
        QTEST(child<QLineEdit>(d, "tz(2)")->text(), "area");
    }

    void fieldsKeepToTheColumnWidths()
    {
        HarvestDialog d(context(), std::nullopt);
        QCOMPARE(child<QComboBox>(d, "komwaldname")->lineEdit()->maxLength(), 30);
        QCOMPARE(child<QLineEdit>(d, "t(0)")->maxLength(), 50);
        QCOMPARE(child<QLineEdit>(d, "t(4)")->maxLength(), 15);
        QCOMPARE(child<QLineEdit>(d, "tz(1)")->maxLength(), 4);
    }

    // Text fields show a usual value whole, number fields keep to their digits however wide the
    // window is, and the window fits a 1366×768 screen.
    void fieldWidths_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("number");
        QTest::newRow("Hieb-Nr") << "tz(0)" << "999999" << true;
        QTest::newRow("Jahr") << "tz(1)" << "2026" << true;
        QTest::newRow("Waldname") << "komwaldname" << "Großer Eichwald am Hang" << false;
        QTest::newRow("Waldort") << "t(0)" << "Oberhausen-Rheinhausen" << false;
        QTest::newRow("Hiebfläche") << "tz(2)" << "1234,5678" << true;
        QTest::newRow("Hiebgrund") << "komhiebgrund" << "Käferbefall" << false;
        QTest::newRow("Hiebdatum von") << "tdat(0)" << "31.12.2026" << true;
        QTest::newRow("Bemerkung") << "t(1)" << "Sturmholz nach Orkan" << false;
        QTest::newRow("Waldbesitzer") << "komwaldbesitzer" << "Gemeinde Musterstadt" << false;
        QTest::newRow("Stämme Efm") << "tsumme(2)" << "12.345,678" << true;
    }
    void fieldWidths()
    {
        QFETCH(QString, name);
        QFETCH(QString, text);
        QFETCH(bool, number);
        HarvestDialog d(context(), std::nullopt);
        QVERIFY(d.sizeHint().width() <= 1366 && d.sizeHint().height() <= 700);
        d.resize(1366, d.sizeHint().height());
        d.show();
        QVERIFY(QTest::qWaitForWindowExposed(&d));
        test::checkFieldWidth(d.findChild<QWidget*>(name), text, number);
        if (name.startsWith(QLatin1String("tsumme")))
            QVERIFY(looksReadOnly(d.findChild<QWidget*>(name)));
    }
};

TARVIK_TEST_MAIN(TestHarvestDialog)
#include "tst_harvestdialog.moc"
