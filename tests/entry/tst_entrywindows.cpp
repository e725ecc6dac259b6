// The entry windows driven through their controls: the harvest window, the lot window, the hub,
// and the log, pole and stacked-wood windows (numbers, refusals, stepping through the opener's
// list, listing, copying, deleting, paying, bulk changes, the figures shown and the totals that
// follow), and the log store's own questions through the core.
#include "common/numbers.h"
#include "common/ui/gridformat.h"
#include "entry/harvestentry.h"
#include "entry/hub.h"
#include "entry/logentry.h"
#include "entry/lotentry.h"
#include "entry/ui/harvestdialog.h"
#include "entry/ui/hubdialog.h"
#include "entry/ui/logdialog.h"
#include "entry/ui/lotdialog.h"
#include "entry/ui/poledialog.h"
#include "entry/ui/stackdialog.h"
#include "rules/masterdatalookup.h"
#include "store/records.h"
#include "store/sql.h"
#include "support/entryfixture.h"
#include "support/records.h"
#include "support/widgets.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QFile>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTabWidget>
#include <QTableView>
#include <QTimer>

using namespace tarvik;
using test::child;
using test::typeInto;

class TestEntryWindows : public QObject, protected test::EntryFixture {
    Q_OBJECT

    // What a field or an editable list shows, and setting it as a pasted text.
    static QString shown(const QWidget& d, const QString& name)
    {
        QWidget* w = d.findChild<QWidget*>(name);
        if (auto* box = qobject_cast<QComboBox*>(w))
            return box->currentText();
        return qobject_cast<QLineEdit*>(w)->text();
    }
    static void set(const QWidget& d, const QString& name, const QString& text)
    {
        QWidget* w = d.findChild<QWidget*>(name);
        if (auto* box = qobject_cast<QComboBox*>(w))
            box->setEditText(text);
        else
            qobject_cast<QLineEdit*>(w)->setText(text);
    }
    static void press(const QWidget& d, const char* name) { child<QPushButton>(d, name)->click(); }
    static QLineEdit* tz(const QDialog& d, int i) { return static_cast<const EntryWindow&>(d).field(i); }
    static QString noMessages(const test::ScriptedPrompter& p) { return p.messages().join(u'|'); }
    int count(const QString& sql) const { return scalar(db(), sql).toInt(); }

    std::unique_ptr<QDialog> open(const QString& kind, std::optional<qint32> lot = std::nullopt)
    {
        if (kind == u"Hieb")
            return std::make_unique<HarvestDialog>(context(), std::nullopt);
        if (kind == u"Los")
            return std::make_unique<LotDialog>(context(), m_harvest, std::nullopt);
        if (kind == u"Pfähle")
            return std::make_unique<PoleDialog>(context(), m_harvest, std::nullopt, lot);
        if (kind == u"Schichtholz")
            return std::make_unique<StackDialog>(context(), m_harvest, std::nullopt, lot);
        return std::make_unique<LogDialog>(context(), m_harvest, std::nullopt, lot);
    }
    // A log of spruce, quality B, typed as a crew reads it out: length, then diameter.
    static void enterLog(const QDialog& d, const QString& length, const QString& diameter)
    {
        set(d, QStringLiteral("kom(1)"), QStringLiteral("FI (Fichte)"));
        set(d, QStringLiteral("kom(2)"), QStringLiteral("B"));
        typeLog(d, length, diameter);
    }
    static void typeLog(const QDialog& d, const QString& length, const QString& diameter)
    {
        typeInto(tz(d, 2), length);
        typeInto(tz(d, 1), diameter);
    }
    void addLogs(int lot, int from, int to)
    {
        for (int n = from; n <= to; ++n)
            test::addTypedLog(db(), m_harvest, lot, n, QStringLiteral("FI (Fichte)"), 30, 4, QStringLiteral("O"));
    }
    // A log as stored under earlier master data: its figures differ from a recompute today.
    qint32 storedLog()
    {
        execSql(db(), QStringLiteral("INSERT INTO Stämme(Los_Nr, Laufende_Nr, Baumart, Stärke_gemessen, Rindenabzugsart, Rindenabzug, "
                                     "Stärke_oR, Länge_m, Efm_oR, Stärkeklasse, Güteklasse, Zopfdurchm_cm, Klasse_Heilbronn, "
                                     "Preis_berechnet, Holzpreis, Bemerkung, Käferholz, Kennung) "
                                     "VALUES (1, 1, 'FI (Fichte)', 35, 'T', 3, 32, 4.5, 0.4, 'L2b', 'B', 0, 'H3', 11.11, 12.34, 'alt', 0, ?)"),
                {m_harvest});
        return idOf(QStringLiteral("SELECT max(ID) FROM Stämme WHERE Kennung = ?"));
    }
    LogForm logForm(const QString& diameter, const QString& length, const QString& quality) const
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
    void initTestCase() { QStandardPaths::setTestModeEnabled(true); } // grid widths go to a test settings store

    // The harvest window's tests start without any harvest, the others in harvest 41 with lot 1
    // of logs.
    void init()
    {
        const bool harvestWindow = QByteArray(QTest::currentTestFunction()).startsWith("harvest");
        resetDatabase(harvestWindow ? std::nullopt : std::optional<qint32>(41),
                      {QLatin1String(HarvestDefaultsFile), QLatin1String(LotPriceDefaultsFile)});
        if (harvestWindow)
            return;
        createLot(db(), m_harvest, 1, QStringLiteral("Stämme"));
        execSql(db(), QStringLiteral("UPDATE Stärkeklassen_Pfähle SET Schätzpreis_je_St = 2.5 WHERE Klasse = 'P2.11'"));
        execSql(db(), QStringLiteral("UPDATE Stärkeklassen_Schichtholz SET Schätzpreis_je_m3 = 12.5 WHERE Klasse = 'S2.1'"));
    }

    // Text fields show a usual value whole, number fields keep to their digits however wide the
    // window is, and the window fits a 1366×768 screen.
    void fieldWidths_data()
    {
        QTest::addColumn<QString>("window");
        QTest::addColumn<int>("page");
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("number");
        const QString h = QStringLiteral("Hieb"), l = QStringLiteral("Los"), p = QStringLiteral("Pfähle"), s = QStringLiteral("Schichtholz");
        QTest::newRow("Hieb-Nr") << h << 0 << "tz(0)" << "999999" << true;
        QTest::newRow("Waldname") << h << 0 << "komwaldname" << "Großer Eichwald am Hang" << false;
        QTest::newRow("Waldort") << h << 0 << "t(0)" << "Oberhausen-Rheinhausen" << false;
        QTest::newRow("Hiebfläche") << h << 0 << "tz(2)" << "1234,5678" << true;
        QTest::newRow("Hiebdatum von") << h << 0 << "tdat(0)" << "31.12.2026" << true;
        QTest::newRow("Stämme Efm") << h << 0 << "tsumme(2)" << "12.345,678" << true;
        QTest::newRow("Los-Nr") << l << 0 << "kom(0)" << "123456789" << true;
        QTest::newRow("Lagerort") << l << 0 << "kom(2)" << "Waldweg an der Hütte 12" << false;
        QTest::newRow("Abnehmer") << l << 0 << "kom(3)" << "Sägewerk Müller GmbH & Co. KG" << false;
        QTest::newRow("Vermessungsart") << l << 0 << "kom(5)" << "Mittenstärke o.R." << false;
        QTest::newRow("Preis erhalten") << l << 0 << "t(6)" << "123.456,78" << true;
        QTest::newRow("Efm o.R.") << l << 0 << "tsumme(1)" << "12.345,678" << true;
        QTest::newRow("Stamm-Nr von") << l << 1 << "tr(1)" << "123456" << true;
        QTest::newRow("auf Baumart") << l << 1 << "kom(10)" << "DGL (Douglasie)" << false;
        QTest::newRow("Anzahl Pfähle") << p << 0 << "tz(2)" << "1234567" << true;
        QTest::newRow("Preis je Pfahl") << p << 0 << "tz(3)" << "123.456,7890" << true;
        QTest::newRow("Sektionshöhe") << s << 0 << "tz(3)" << "1234,567" << true;
        QTest::newRow("Preis Schichtholz") << s << 0 << "tz(8)" << "123.456.789,00" << true;
    }
    void fieldWidths()
    {
        QFETCH(QString, window);
        QFETCH(int, page);
        QFETCH(QString, name);
        QFETCH(QString, text);
        QFETCH(bool, number);
        const std::unique_ptr<QDialog> d = open(window);
        QVERIFY(d->sizeHint().width() <= 1366 && d->sizeHint().height() <= 700);
        d->resize(1366, d->sizeHint().height());
        d->show();
        if (auto* pages = d->findChild<QTabWidget*>())
            pages->setCurrentIndex(page);
        QVERIFY(QTest::qWaitForWindowExposed(d.get()));
        test::checkFieldWidth(d->findChild<QWidget*>(name), text, number);
        if (name.startsWith(QLatin1String("tsumme")))
            QVERIFY(looksReadOnly(d->findChild<QWidget*>(name)));
    }

    // Every figure of the log window keeps its whole text, at the size it opens with (which fits
    // a 1366×768 screen and still shows twelve logs) and at the smallest it can be made.
    void logFiguresAreNeverCut_data()
    {
        QTest::addColumn<bool>("smallest");
        QTest::newRow("default size") << false;
        QTest::newRow("smallest size") << true;
    }
    void logFiguresAreNeverCut()
    {
        QFETCH(bool, smallest);
        LogDialog d(context(), m_harvest, std::nullopt, 1);
        d.show();
        QVERIFY(QTest::qWaitForWindowExposed(&d));
        if (smallest) {
            d.resize(1, 1);
            QApplication::processEvents();
        } else {
            QVERIFY2(d.width() <= 1366 && d.height() <= 720, qPrintable(QStringLiteral("%1×%2").arg(d.width()).arg(d.height())));
            auto* grid = child<QTableView>(d, "gridli");
            QVERIFY(grid->viewport()->height() >= 12 * grid->verticalHeader()->defaultSectionSize());
        }
        const QList<QLineEdit*> figures = d.findChildren<QLineEdit*>(QRegularExpression(QStringLiteral("^tz\\(\\d+\\)$")));
        QVERIFY(figures.size() >= 14);
        for (QLineEdit* edit : figures) {
            // As many digits as the field takes, the widest text it can hold.
            const QString text(edit->maxLength(), u'8');
            edit->setText(text);
            test::checkFieldWidth(edit, text, false);
        }
    }

    // Tab walks the fields in the order they stand, which is the order a crew reads out a log.
    void tabOrderFollowsTheFields()
    {
        LogDialog d(context(), m_harvest, std::nullopt, 1);
        d.resize(1366, 740);
        d.show();
        QApplication::setActiveWindow(&d);
        child<QComboBox>(d, "kom(0)")->setFocus();
        QStringList walked;
        QList<QPoint> places;
        for (int i = 0; i < 11; ++i) {
            QWidget* w = QApplication::focusWidget();
            if (qobject_cast<QComboBox*>(w->parentWidget()))
                w = w->parentWidget(); // the edit of an editable list
            walked << w->objectName();
            places << w->mapTo(&d, QPoint());
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        }
        QCOMPARE(walked, (QStringList{"kom(0)", "tz(0)", "tz(2)", "tz(1)", "kom(1)", "tz(3)", "kom(2)", "kom(5)",
                                      "tz(4)", "tz(8)", "konkäfer"}));
        // Down the first box, then down the second box to its right.
        for (int i = 1; i < walked.size(); ++i) {
            const bool sameColumn = places[i].x() == places[i - 1].x();
            QVERIFY2(sameColumn ? places[i].y() > places[i - 1].y() : places[i].x() > places[i - 1].x(), qPrintable(walked[i]));
        }
    }

    // The access key of [OK+Nächster] acts at once: digits typed right after it belong to the
    // next harvest, lot or log, not to the one being stored.
    void accessKeyActsAtOnce_data()
    {
        QTest::addColumn<QString>("window");
        QTest::addColumn<QString>("focused");
        QTest::addColumn<QString>("next"); // where the digits typed after the key land
        QTest::addColumn<QString>("stored");
        QTest::addColumn<QString>("expected");
        QTest::newRow("Hieb") << "Hieb" << "tz(0)" << "tz(0)" << "SELECT group_concat(Hieb_Nr) FROM Hiebe WHERE Waldname = 'Hochwald'" << "42";
        QTest::newRow("Los") << "Los" << "kom(0)" << "kom(0)" << "SELECT group_concat(Los_Nr) FROM Lose" << "1,2";
        QTest::newRow("Stamm") << "Stämme" << "tz(1)" << "tz(2)"
                               << "SELECT count(*) || '/' || Stärke_gemessen || '/' || Länge_m FROM Stämme" << "1/35/4.5";
    }
    void accessKeyActsAtOnce()
    {
        QFETCH(QString, window);
        QFETCH(QString, focused);
        QFETCH(QString, next);
        QFETCH(QString, stored);
        const std::unique_ptr<QDialog> d = open(window, 1);
        if (window == u"Hieb")
            set(*d, QStringLiteral("komwaldname"), QStringLiteral("Hochwald"));
        d->show();
        QVERIFY(QTest::qWaitForWindowActive(d.get()));
        if (window == u"Stämme")
            enterLog(*d, QStringLiteral("4,5"), QStringLiteral("35"));
        d->findChild<QWidget*>(focused)->setFocus();
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_N, Qt::AltModifier);
        QTest::keyClicks(QApplication::focusWidget(), QStringLiteral("77"));
        QTest::qWait(250); // longer than a button's click animation
        QVERIFY2(m_prompter.messages().isEmpty(), qPrintable(noMessages(m_prompter)));
        QTEST(scalar(db(), stored).toString(), "expected");
        QCOMPARE(shown(*d, next), QStringLiteral("77"));
    }

    void harvestNumberProposal_data()
    {
        QTest::addColumn<int>("highest");
        QTest::addColumn<QString>("expected");
        QTest::newRow("empty") << 0 << "1";
        QTest::newRow("41") << 41 << "42";
        QTest::newRow("wraps after 999999") << 999999 << "1";
    }
    void harvestNumberProposal()
    {
        QFETCH(int, highest);
        if (highest > 0)
            test::addHarvest(db(), highest);
        HarvestDialog d(context(), std::nullopt);
        QTEST(shown(d, QStringLiteral("tz(0)")), "expected");
        QCOMPARE(shown(d, QStringLiteral("tz(1)")), QStringLiteral("2026"));
        QCOMPARE(shown(d, QStringLiteral("tz(2)")), QStringLiteral("0,0000"));
        QCOMPARE(shown(d, QStringLiteral("tsumme(7)")), QStringLiteral("N"));
    }

    // Every column as typed (quotes and percent signs too), equal dates or none, and the lists
    // grow by each text once whatever its case.
    void harvestStoresEveryColumnAndGrowsTheLists()
    {
        for (int round = 0; round < 2; ++round) {
            HarvestDialog d(context(), std::nullopt);
            set(d, QStringLiteral("komwaldname"), QStringLiteral("O'Briens \"Hang\" 100%"));
            set(d, QStringLiteral("t(0)"), QStringLiteral("Überlingen"));
            set(d, QStringLiteral("tz(2)"), QStringLiteral("1,25"));
            set(d, QStringLiteral("komhiebgrund"), round == 0 ? QStringLiteral("Sturm") : QStringLiteral("STURM"));
            set(d, QStringLiteral("komhiebart"), QStringLiteral("Durchforstung"));
            set(d, QStringLiteral("tdat(0)"), round == 0 ? QStringLiteral("01.03.2026") : QString());
            set(d, QStringLiteral("tdat(1)"), round == 0 ? QStringLiteral("01.03.2026") : QString());
            set(d, QStringLiteral("komwaldbesitzer"), QStringLiteral("Anna Müller"));
            set(d, QStringLiteral("t(2)"), QStringLiteral("Am Bach 3"));
            press(d, "ok");
            QVERIFY2(m_prompter.messages().isEmpty(), qPrintable(noMessages(m_prompter)));
            QCOMPARE(d.result(), int(QDialog::Accepted));
        }
        QCOMPARE(scalar(db(), QStringLiteral("SELECT group_concat(Hieb_Nr || '|' || Waldname || '|' || Waldort || '|' || Hiebfläche || '|' || "
                                             "coalesce(Hiebdatum_von, 'null') || '|' || coalesce(Hiebdatum_bis, 'null') || '|' || "
                                             "Waldbesitzer_Straße || '|' || Selektiert || '|' || Verkauft || '|' || coalesce(Bemerkung, 'null'), "
                                             "'/') FROM Hiebe")).toString(),
                 QStringLiteral("1|O'Briens \"Hang\" 100%|Überlingen|1.25|2026-03-01|2026-03-01|Am Bach 3||N|/"
                                "2|O'Briens \"Hang\" 100%|Überlingen|1.25|null|null|Am Bach 3||N|"));
        for (const char* list : {"Liste_Waldnamen", "Waldbesitzer", "Liste_Hiebgrund", "Liste_Hiebart"})
            QCOMPARE(count(QStringLiteral("SELECT count(*) FROM %1").arg(QString::fromUtf8(list))), 1);
    }

    // Changing a harvest keeps its number and the totals and sale state the window does not show
    // as fields.
    void harvestChangingKeepsItsOwnNumber()
    {
        const qint32 id = test::addHarvest(db(), 12);
        execSql(db(), QStringLiteral("UPDATE Hiebe SET Stämme_Anzahl = 40, Stämme_Efm = 12.5, Teilverkauft = 'J', Verkauft = 'N' WHERE ID = ?"), {id});
        HarvestDialog d(context(), id);
        QCOMPARE(shown(d, QStringLiteral("tz(0)")) + u'/' + shown(d, QStringLiteral("komwaldname")) + u'/' + shown(d, QStringLiteral("tsumme(2)")),
                 QStringLiteral("12/Eichwald/12,500"));
        set(d, QStringLiteral("t(1)"), QStringLiteral("geändert"));
        press(d, "ok");
        QVERIFY(m_prompter.messages().isEmpty());
        QCOMPARE(scalar(db(), QStringLiteral("SELECT Hieb_Nr || Bemerkung || Stämme_Anzahl || Teilverkauft FROM Hiebe WHERE ID = ?"), {id}).toString(),
                 QStringLiteral("12geändert40J"));
    }

    void harvestDefaultsAreRememberedForTheNextNewHarvest()
    {
        {
            HarvestDialog d(context(), std::nullopt);
            set(d, QStringLiteral("komwaldname"), QStringLiteral("Hochwald"));
            set(d, QStringLiteral("t(0)"), QStringLiteral("  Bergdorf "));
            set(d, QStringLiteral("komhiebart"), QStringLiteral("Kahlschlag"));
            set(d, QStringLiteral("komwaldbesitzer"), QStringLiteral("Gemeinde"));
            set(d, QStringLiteral("t(5)"), QStringLiteral("Forst-Nr. 7"));
            press(d, "standard");
            QVERIFY(m_prompter.messages().first().startsWith(QStringLiteral("Die Standardwerte (Waldname, Hiebgrund, Hiebart und Waldbesitzer)")));
        }
        QFile file(m_folder.filePath(QLatin1String(HarvestDefaultsFile)));
        QVERIFY(file.open(QIODevice::ReadOnly));
        QCOMPARE(file.readAll(), QByteArray("Hochwald\r\n  Bergdorf \r\n\r\nKahlschlag\r\nGemeinde\r\n\r\n\r\n\r\nForst-Nr. 7\r\n"));

        HarvestDialog next(context(), std::nullopt);
        QCOMPARE(shown(next, QStringLiteral("komwaldname")), QStringLiteral("Hochwald"));
        QCOMPARE(shown(next, QStringLiteral("t(0)")), QStringLiteral("  Bergdorf "));
        QCOMPARE(shown(next, QStringLiteral("t(5)")), QStringLiteral("Forst-Nr. 7"));
    }

    // "Ändern" stores the shown harvest and moves on in the opener's list, after the last to the
    // first; a refusal stays on the row; Abbrechen closes on the harvest shown last.
    void harvestChangeStepsThroughTheOpenersList_data()
    {
        QTest::addColumn<QString>("button");
        QTest::newRow("OK") << "ok";
        QTest::newRow("OK+Nächster") << "okn_chster";
    }
    void harvestChangeStepsThroughTheOpenersList()
    {
        QFETCH(QString, button);
        const QList<qint32> ids{test::addHarvest(db(), 30), test::addHarvest(db(), 10), test::addHarvest(db(), 20)};
        HarvestDialog d(context(), ids[1], ids);
        QCOMPARE(d.windowTitle(), QStringLiteral("Hiebeingabe - Ändern (2 von 3)"));
        QStringList seen;
        for (int round = 0; round < 3; ++round) {
            set(d, QStringLiteral("t(1)"), QStringLiteral("Runde %1").arg(round));
            press(d, qPrintable(button));
            QVERIFY2(m_prompter.messages().isEmpty(), qPrintable(noMessages(m_prompter)));
            seen << shown(d, QStringLiteral("tz(0)")) + u'/' + shown(d, QStringLiteral("t(1)"));
        }
        QCOMPARE(seen, (QStringList{"20/", "30/", "10/Runde 0"}));
        QCOMPARE(d.windowTitle(), QStringLiteral("Hiebeingabe - Ändern (2 von 3)"));
        QCOMPARE(scalar(db(), QStringLiteral("SELECT group_concat(Hieb_Nr || ':' || Bemerkung) FROM (SELECT * FROM Hiebe ORDER BY ID)")).toString(),
                 QStringLiteral("30:Runde 2,10:Runde 0,20:Runde 1"));

        set(d, QStringLiteral("tz(0)"), QStringLiteral("20")); // taken by another harvest of the list
        press(d, qPrintable(button));
        QCOMPARE(m_prompter.messages(), QStringList{QStringLiteral("Die Eingabe kann nicht übernommen werden, weil...\n...die Hiebnummer bereits existiert.")});
        QCOMPARE(d.shownId(), ids[1]);

        press(d, "cmdabbrechen");
        QCOMPARE(d.result(), int(QDialog::Rejected));
        QCOMPARE(d.shownId(), ids[1]);
        QCOMPARE(d.storedId(), ids[0]);
        QCOMPARE(count(QStringLiteral("SELECT count(*) FROM Hiebe WHERE Hieb_Nr = 10")), 1);
    }

    // Opened without a list, OK closes and [OK+Nächster] begins a new harvest.
    void harvestChangeWithoutAList_data()
    {
        QTest::addColumn<QString>("button");
        QTest::addColumn<int>("result");
        QTest::addColumn<QString>("title");
        QTest::addColumn<QString>("number");
        QTest::newRow("OK") << "ok" << int(QDialog::Accepted) << "Hiebeingabe - Ändern" << "7";
        QTest::newRow("OK+Nächster") << "okn_chster" << int(QDialog::Rejected) << "Hiebeingabe - Neu" << "8";
    }
    void harvestChangeWithoutAList()
    {
        QFETCH(QString, button);
        const qint32 id = test::addHarvest(db(), 7);
        HarvestDialog d(context(), id);
        press(d, qPrintable(button));
        QTEST(d.result(), "result");
        QTEST(d.windowTitle(), "title");
        QTEST(shown(d, QStringLiteral("tz(0)")), "number");
        QCOMPARE(d.storedId(), id);
    }

    // The woodland's place and area come from the list whether the name is picked from the
    // drop-down or typed (completed or in full) and left with Tab; a name that is not listed and
    // an unchanged name leave the fields as they are.
    void harvestWoodlandFillsPlaceAndArea_data()
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
    void harvestWoodlandFillsPlaceAndArea()
    {
        QFETCH(bool, changing);
        QFETCH(QString, keys);
        QFETCH(bool, fromDropDown);
        execSql(db(), QStringLiteral("INSERT INTO Liste_Waldnamen(Waldname, Waldort, Fläche) VALUES ('Eichwald', 'Talheim', 2.5), ('Buchenhang', 'Au', 0.75)"));
        const qint32 id = test::addHarvest(db(), 3);
        execSql(db(), QStringLiteral("UPDATE Hiebe SET Waldname = 'Eichwald', Waldort = 'Oben', Hiebfläche = 1 WHERE ID = ?"), {id});
        HarvestDialog d(context(), changing ? std::optional<qint32>(id) : std::nullopt);
        if (!changing) {
            set(d, QStringLiteral("t(0)"), QStringLiteral("Alt"));
            set(d, QStringLiteral("tz(2)"), QStringLiteral("9"));
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
        QTEST(shown(d, QStringLiteral("t(0)")), "place");
        QTEST(shown(d, QStringLiteral("tz(2)")), "area");
    }

    // The hub shows the harvest's records of the chosen list, money as money, and the buttons
    // that list allows; it steps on to the next harvest.
    void hubListsTheHarvestsRecords()
    {
        addLogs(1, 1, 1);
        execSql(db(), QStringLiteral("UPDATE Stämme SET Holzpreis = 2.5 WHERE Kennung = ?"), {m_harvest});
        const qint32 other = test::addHarvest(db(), 42);
        createLot(db(), other, 1, QStringLiteral("Stämme"));
        HubDialog hub(context(), m_harvest, HubList::Lose);
        QCOMPARE(child<QLabel>(hub, "bezhieb")->text(), QStringLiteral("Eingabe für den Hieb:  41 / Eichwald / "));
        auto* grid = child<QTableView>(hub, "gridli");
        QCOMPARE(grid->model()->rowCount(), 1);
        child<QRadioButton>(hub, "opti(1)")->click();
        QCOMPARE(grid->model()->rowCount(), 1);
        QCOMPARE(grid->model()->headerData(1, Qt::Horizontal).toString(), QStringLiteral("Laufende_Nr"));
        int price = 0;
        while (price < grid->model()->columnCount() && grid->model()->headerData(price, Qt::Horizontal).toString() != u"Holzpreis")
            ++price;
        QCOMPARE(grid->model()->index(0, price).data().toString(), QStringLiteral("2,50"));
        QVERIFY(child<QPushButton>(hub, "kopieren")->isEnabled());
        child<QRadioButton>(hub, "opti(4)")->click();
        QVERIFY(child<QPushButton>(hub, "neu")->isEnabled());
        QVERIFY(!child<QPushButton>(hub, "kopieren")->isEnabled());
        QVERIFY(child<QPushButton>(hub, "bezahlt")->isEnabled());

        press(hub, "löschen");
        QCOMPARE(m_prompter.messages().last(), QStringLiteral("Bitte markieren Sie zuerst den Datensatz, den Sie löschen möchten."));
        press(hub, "comnächster");
        QCOMPARE(hub.harvestId(), other);
    }

    // "Ändern" from the hub: OK (for lots OK+Nächster as well) stores the row shown and goes on
    // down the hub's list, after the last back to the first; Abbrechen closes, and the hub's
    // list then stands on the row shown last.
    void hubChangeStepsThroughTheList_data()
    {
        QTest::addColumn<int>("list");
        QTest::addColumn<QString>("remark"); // the control typed into on each row
        QTest::addColumn<QString>("column"); // and where it is stored
        QTest::addColumn<QString>("button");
        QTest::newRow("logs") << int(HubList::Staemme) << "kom(5)" << "Bemerkung" << "ok";
        QTest::newRow("poles") << int(HubList::Pfaehle) << "kom(3)" << "Bemerkung" << "ok";
        QTest::newRow("sections") << int(HubList::Schichtholz) << "kom(3)" << "Bemerkung" << "ok";
        QTest::newRow("lots, OK") << int(HubList::Lose) << "t(0)" << "Los_Bezeichnung" << "ok";
        QTest::newRow("lots, OK+Nächster") << int(HubList::Lose) << "t(0)" << "Los_Bezeichnung" << "okn_chster";
    }
    void hubChangeStepsThroughTheList()
    {
        QFETCH(int, list);
        QFETCH(QString, remark);
        QFETCH(QString, column);
        QFETCH(QString, button);
        createLot(db(), m_harvest, 2, QStringLiteral("Pfähle"));
        createLot(db(), m_harvest, 3, QStringLiteral("Schichtholz"));
        addLogs(1, 1, 3);
        for (int n = 1; n <= 3; ++n) {
            execSql(db(), QStringLiteral("INSERT INTO Pfähle(Los_Nr, Baumart, Stärke_mR, Länge_m, Anzahl, Stärkeklasse, Kennung) "
                                         "VALUES (2, 'FI (Fichte)', 8, 8, ?, 'P2.11', ?)"), {n, m_harvest});
            execSql(db(), QStringLiteral("INSERT INTO Schichtholz(Los_Nr, Sektions_Nr, Baumart, Stärke, Sektionslänge_m, Sektionstiefe_m, "
                                         "Sektionshöhe_m, Stärkeklasse, Kennung) VALUES (3, ?, 'BU (Rotbuche)', 8, 1, 1, 1, 'S2.1', ?)"),
                    {n, m_harvest});
        }
        HubDialog hub(context(), m_harvest, static_cast<HubList>(list));
        hub.show();
        auto* grid = child<QTableView>(hub, "gridli");
        QCOMPARE(grid->model()->rowCount(), 3);
        grid->selectRow(1);

        QStringList titles;
        QStringList shownRemarks;
        QTimer::singleShot(0, this, [&] {
            auto* window = qobject_cast<QDialog*>(QApplication::activeModalWidget());
            if (!window || window == &hub)
                return;
            for (int step = 0; step < 4; ++step) {
                titles << window->windowTitle();
                shownRemarks << shown(*window, remark);
                set(*window, remark, QStringLiteral("geprüft %1").arg(step));
                press(*window, qPrintable(button));
            }
            titles << window->windowTitle();
            press(*window, "cmdabbrechen");
        });
        press(hub, "ändern");

        const QString title = titles.value(0).section(u' ', 0, 1);
        QCOMPARE(titles, (QStringList{title + QStringLiteral(" - Ändern (2 von 3)"), title + QStringLiteral(" - Ändern (3 von 3)"),
                                      title + QStringLiteral(" - Ändern (1 von 3)"), title + QStringLiteral(" - Ändern (2 von 3)"),
                                      title + QStringLiteral(" - Ändern (3 von 3)")}));
        QCOMPARE(shownRemarks, (QStringList{QString(), QString(), QString(), QStringLiteral("geprüft 0")}));
        QVERIFY2(m_prompter.messages().isEmpty(), qPrintable(noMessages(m_prompter)));
        // Each row got the remark of its last visit, in the hub's order (as stored): rows 2, 3, 1, 2.
        QCOMPARE(value(QStringLiteral("SELECT group_concat(\"%1\", '|') FROM (SELECT * FROM \"%2\" WHERE Kennung = ? ORDER BY ID)")
                           .arg(column, hubTable(static_cast<HubList>(list)))),
                 QStringLiteral("geprüft 2|geprüft 3|geprüft 1"));
        QCOMPARE(grid->currentIndex().row(), 2);
        QVERIFY(grid->selectionModel()->isRowSelected(2, QModelIndex()));
    }

    void hubCopyTakesTheNextFreeNumber()
    {
        addLogs(1, 3, 4);
        QVERIFY(copyRecord(context(), HubList::Staemme, m_harvest, idOf(QStringLiteral("SELECT ID FROM Stämme WHERE Kennung = ? AND Laufende_Nr = 3"))));
        QCOMPARE(value(QStringLiteral("SELECT group_concat(Laufende_Nr) FROM Stämme WHERE Kennung = ?")), QStringLiteral("3,4,5"));
        QCOMPARE(value(QStringLiteral("SELECT Anzahl_Stämme FROM Lose WHERE Kennung = ?")), QStringLiteral("3"));

        execSql(db(), QStringLiteral("INSERT INTO Schichtholz(Los_Nr, Sektions_Nr, Kennung) VALUES (2, 999999, ?)"), {m_harvest});
        QVERIFY(!copyRecord(context(), HubList::Schichtholz, m_harvest, idOf(QStringLiteral("SELECT ID FROM Schichtholz WHERE Kennung = ?"))));
        QCOMPARE(m_prompter.messages().last(),
                 QStringLiteral("Die Suche nach der nächsten freien Sektions-Nummer ist auf über 999999. Deshalb kann die Kopie nicht ausgeführt werden!"));
    }

    void hubDeletingALotAsksOncePerTableWithRows()
    {
        addLogs(1, 1, 2);
        execSql(db(), QStringLiteral("INSERT INTO Pfähle(Los_Nr, Anzahl, Kennung) VALUES (1, 5, ?)"), {m_harvest});
        const qint32 lot = idOf(QStringLiteral("SELECT ID FROM Lose WHERE Kennung = ?"));

        m_prompter.answerYes().answerNo();
        QVERIFY(!deleteRecord(context(), HubList::Lose, m_harvest, lot));
        QCOMPARE(value(QStringLiteral("SELECT count(*) FROM Stämme WHERE Kennung = ?")), QStringLiteral("2"));

        m_prompter.answerYes().answerYes();
        QVERIFY(deleteRecord(context(), HubList::Lose, m_harvest, lot));
        QCOMPARE(m_prompter.questions().size(), 4);
        QCOMPARE(m_prompter.questions().at(2),
                 QStringLiteral("Für das Los 1 sind in der Tabelle Stämme bereits 2 Datensätze eingetragen. Durch das Löschen dieses "
                                "Loses gehen die entsprechenden Buchungen auch verloren. Soll das Los wirklich gelöscht werden?"));
        QVERIFY(m_prompter.questions().at(3).contains(QStringLiteral("in der Tabelle Pfähle bereits 1 Datensätze")));
        for (const char* table : {"Lose", "Stämme", "Pfähle"})
            QCOMPARE(value(QStringLiteral("SELECT count(*) FROM %1 WHERE Kennung = ?").arg(QString::fromUtf8(table))), QStringLiteral("0"));
        QCOMPARE(value(QStringLiteral("SELECT Anzahl_Lose || '/' || Stämme_Anzahl FROM Hiebe WHERE ID = ?")), QStringLiteral("0/0"));
    }

    void hubPayingAnInvoiceSettlesItsLots()
    {
        createLot(db(), m_harvest, 2, QStringLiteral("Stämme"));
        execSql(db(), QStringLiteral("UPDATE Lose SET ReNr = 7, Preis_berechnet = 120.5 WHERE Kennung = ? AND Los_Nr = 1"), {m_harvest});
        execSql(db(), QStringLiteral("INSERT INTO Rechnungen(Abnehmer, ReNr, Betrag) VALUES ('Säge O''Neill', 7, 120.5)"));
        const qint32 invoice = idOf(QStringLiteral("SELECT ID FROM Rechnungen WHERE ReNr = 7 AND ? > 0"));

        m_prompter.answerYes();
        QVERIFY(markInvoicePaid(context(), m_harvest, invoice));
        QVERIFY(m_prompter.questions().last().startsWith(QStringLiteral("Wurde die Rechnung wirklich komplett bezahlt?")));
        QCOMPARE(value(QStringLiteral("SELECT Abgerechnet || '/' || Preis_erhalten FROM Lose WHERE Kennung = ? AND Los_Nr = 1")), QStringLiteral("J/120.5"));
        QCOMPARE(value(QStringLiteral("SELECT Teilverkauft || '/' || Verkauft FROM Hiebe WHERE ID = ?")), QStringLiteral("J/N"));

        QVERIFY(!markInvoicePaid(context(), m_harvest, invoice));
        QCOMPARE(m_prompter.messages().last(), QStringLiteral("Diese Rechnung wurde bereits komplett abgerechnet."));

        HubDialog hub(context(), m_harvest, HubList::Rechnungen);
        QCOMPARE(child<QTableView>(hub, "gridli")->model()->rowCount(), 1);
        child<QCheckBox>(hub, "konoffen")->click();
        QCOMPARE(child<QTableView>(hub, "gridli")->model()->rowCount(), 0);

        m_prompter.answerYes().answerYes();
        QVERIFY(deleteRecord(context(), HubList::Rechnungen, m_harvest, invoice));
        QVERIFY(m_prompter.questions().last().startsWith(QStringLiteral("In den Losen ist die entsprechende Rechnungsnummer auch eingetragen.")));
        QCOMPARE(value(QStringLiteral("SELECT sum(ReNr) FROM Lose WHERE Kennung = ?")), QStringLiteral("0"));
    }

    void newLotThroughTheWindow()
    {
        createLot(db(), m_harvest, 4, QStringLiteral("Stämme"));
        execSql(db(), QStringLiteral("UPDATE Lose SET Lagerort = 'Weg 7', Anfahrt = 'Über die Brücke', GPS_B = '48.1' WHERE Kennung = ?"), {m_harvest});
        LotDialog d(context(), m_harvest, std::nullopt);
        QCOMPARE(shown(d, QStringLiteral("kom(0)")), QStringLiteral("5"));
        auto* place = child<QComboBox>(d, "kom(2)");
        place->setEditText(QStringLiteral("Weg 7"));
        emit place->textActivated(QStringLiteral("Weg 7"));
        QCOMPARE(shown(d, QStringLiteral("t(1)")), QStringLiteral("Über die Brücke"));
        set(d, QStringLiteral("kom(3)"), QStringLiteral("Säge O'Neill"));
        child<QRadioButton>(d, "optipreis(2)")->click();
        set(d, QStringLiteral("tp(0)"), QStringLiteral("45,50"));
        press(d, "ok");
        QVERIFY2(m_prompter.messages().isEmpty(), qPrintable(noMessages(m_prompter)));
        QCOMPARE(value(QStringLiteral("SELECT Sortierung || '|' || Abnehmer || '|' || Preis_Art || '|' || Pauschalpreis_efm || '|' || GPS_B || '|' || Abgerechnet "
                                      "FROM Lose WHERE Kennung = ? AND Los_Nr = 5")),
                 QStringLiteral("Stämme|Säge O'Neill|2|45.5|48.1|N"));
        QCOMPARE(value(QStringLiteral("SELECT count(*) FROM Liste_Abnehmer WHERE ? > 0")), QStringLiteral("1"));
    }

    // Lots entered one after another from the hub: [OK+Nächster] stores and proposes the next free
    // number, the lists grow; the hub then stands on the lot stored last.
    void lotsEnteredOneAfterAnotherFromTheHub()
    {
        createLot(db(), m_harvest, 4, QStringLiteral("Stämme"));
        HubDialog hub(context(), m_harvest, HubList::Lose);
        QStringList proposals;
        QTimer::singleShot(0, this, [&] {
            auto* d = qobject_cast<LotDialog*>(QApplication::activeModalWidget());
            QVERIFY(d);
            for (const char* name : {"Erstes", "Zweites"}) {
                set(*d, QStringLiteral("t(0)"), QString::fromUtf8(name));
                set(*d, QStringLiteral("kom(3)"), QStringLiteral("Säge Nord"));
                press(*d, "okn_chster");
                proposals << shown(*d, QStringLiteral("kom(0)")) + u'/' + shown(*d, QStringLiteral("t(0)")) + u'/' + shown(*d, QStringLiteral("kom(3)"));
            }
            proposals << d->windowTitle();
            QVERIFY(d->isVisible()); // [OK+Nächster] keeps the window open
            QVERIFY(child<QComboBox>(*d, "kom(0)")->findText(QStringLiteral("6")) >= 0);
            QCOMPARE(child<QComboBox>(*d, "kom(3)")->findText(QStringLiteral("Säge Nord")), 0);
            press(*d, "ok");
        });
        press(hub, "neu");
        QVERIFY2(m_prompter.messages().isEmpty(), qPrintable(noMessages(m_prompter)));
        QCOMPARE(proposals, (QStringList{"6//", "7//", "Eingabe Lose - Neu"}));
        QCOMPARE(value(QStringLiteral("SELECT group_concat(Los_Nr || ':' || coalesce(Los_Bezeichnung, '')) FROM "
                                      "(SELECT * FROM Lose WHERE Kennung = ? ORDER BY Los_Nr)")),
                 QStringLiteral("1:,4:,5:Erstes,6:Zweites,7:"));
        auto* grid = child<QTableView>(hub, "gridli");
        QCOMPARE(grid->model()->rowCount(), 5);
        QCOMPARE(grid->model()->index(grid->currentIndex().row(), 0).data().toString(), QStringLiteral("7"));
    }

    void lotDefaultButtonFollowsTheSetting_data()
    {
        QTest::addColumn<int>("setting");
        QTest::addColumn<QString>("defaultButton");
        QTest::newRow("OK") << 0 << "ok";
        QTest::newRow("OK+Nächster") << 1 << "okn_chster";
    }
    void lotDefaultButtonFollowsTheSetting()
    {
        QFETCH(int, setting);
        QFETCH(QString, defaultButton);
        m_settings.zahl[28] = qint16(setting);
        LotDialog d(context(), m_harvest, std::nullopt);
        QStringList defaults;
        for (QPushButton* b : d.findChildren<QPushButton*>())
            if (b->isDefault())
                defaults << b->objectName();
        QCOMPARE(defaults, QStringList{defaultButton});
    }

    void lotMapLinkChecksItsCoordinates()
    {
        LotDialog d(context(), m_harvest, std::nullopt);
        set(d, QStringLiteral("t(2)"), QStringLiteral("39,999999"));
        set(d, QStringLiteral("t(3)"), QStringLiteral("10"));
        press(d, "googlelink");
        QVERIFY(m_prompter.messages().last().startsWith(QStringLiteral("Im aktuellen Los müssen die Breidegrade")));
    }

    void lotRenumberingTakesItsRowsAlong()
    {
        createLot(db(), m_harvest, 2, QStringLiteral("Stämme"));
        addLogs(1, 1, 2);
        const qint32 lot1 = idOf(QStringLiteral("SELECT ID FROM Lose WHERE Kennung = ? AND Los_Nr = 1"));
        {
            LotDialog d(context(), m_harvest, lot1);
            set(d, QStringLiteral("kom(0)"), QStringLiteral("2"));
            press(d, "ok");
            QCOMPARE(m_prompter.messages().last(),
                     QStringLiteral("Die Eingabe kann nicht übernommen werden, weil...\n\n...die Los-Nummer 2 bereits existiert."));
            QVERIFY(d.result() != QDialog::Accepted);
        }
        QCOMPARE(value(QStringLiteral("SELECT group_concat(Los_Nr) FROM (SELECT Los_Nr FROM Lose WHERE Kennung = ? ORDER BY Los_Nr)")), QStringLiteral("1,2"));
        {
            LotDialog d(context(), m_harvest, lot1);
            set(d, QStringLiteral("kom(0)"), QStringLiteral("3"));
            press(d, "ok");
            QCOMPARE(d.result(), int(QDialog::Accepted));
        }
        QCOMPARE(value(QStringLiteral("SELECT count(*) FROM Stämme WHERE Kennung = ? AND Los_Nr = 3")), QStringLiteral("2"));
        QCOMPARE(value(QStringLiteral("SELECT Anzahl_Stämme FROM Lose WHERE Kennung = ? AND Los_Nr = 3")), QStringLiteral("2"));
        QCOMPARE(value(QStringLiteral("SELECT Stämme_Anzahl FROM Hiebe WHERE ID = ?")), QStringLiteral("2"));
    }

    void lotUnknownSortingIsShownAndEmptyIsRefused()
    {
        execSql(db(), QStringLiteral("UPDATE Lose SET Sortierung = 'Brennholz' WHERE Kennung = ?"), {m_harvest});
        const qint32 lot = idOf(QStringLiteral("SELECT ID FROM Lose WHERE Kennung = ? AND Los_Nr = 1"));
        {
            LotDialog d(context(), m_harvest, lot);
            QCOMPARE(shown(d, QStringLiteral("kom(1)")), QStringLiteral("Brennholz"));
            press(d, "ok");
            QCOMPARE(d.result(), int(QDialog::Accepted));
        }
        QCOMPARE(value(QStringLiteral("SELECT Sortierung FROM Lose WHERE Kennung = ?")), QStringLiteral("Brennholz"));
        execSql(db(), QStringLiteral("UPDATE Lose SET Sortierung = '' WHERE Kennung = ?"), {m_harvest});
        LotDialog d(context(), m_harvest, lot);
        press(d, "ok");
        QCOMPARE(m_prompter.messages().last(), QStringLiteral("Die Eingabe kann nicht übernommen werden, weil...\n\n...die Sortierung fehlt."));
    }

    void lotRememberedPricesStartNewLots()
    {
        {
            LotDialog d(context(), m_harvest, std::nullopt);
            child<QRadioButton>(d, "optipreis(3)")->click();
            set(d, QStringLiteral("tp(1)"), QStringLiteral("1500"));
            set(d, QStringLiteral("tp(2)"), QStringLiteral("12,5"));
            m_prompter.answerYes();
            press(d, "preisstandard");
        }
        const auto remembered = rememberedPrices(m_folder.path());
        QVERIFY(remembered);
        QCOMPARE(remembered->preisArt, qint16(3));
        QCOMPARE(remembered->pauschalpreisG, 1500.0f);
        LotDialog next(context(), m_harvest, std::nullopt);
        QVERIFY(child<QRadioButton>(next, "optipreis(3)")->isChecked());
        QCOMPARE(shown(next, QStringLiteral("tp(2)")), QStringLiteral("12,50"));

        child<QRadioButton>(next, "optimerken(1)")->click();
        m_prompter.answerYes();
        press(next, "preisstandard");
        QCOMPARE(m_prompter.messages().last(), QStringLiteral("Die gemerkte Preisberechnung wurde gelöscht!"));
        press(next, "preisstandard");
        QCOMPARE(m_prompter.messages().last(), QStringLiteral("Es ist keine Preisberechnung gemerkt!"));
    }

    void lotBulkChangesOfARange()
    {
        createLot(db(), m_harvest, 2, QStringLiteral("Pfähle"));
        addLogs(1, 1, 5);
        const auto range = [](const char* lot, const char* from, const char* to) {
            return LogRange{QString::fromUtf8(lot), QString::fromUtf8(from), QString::fromUtf8(to)};
        };
        QVERIFY(!moveRangeToLot(context(), m_harvest, range("1", "4", "2"), QStringLiteral("3")));
        QCOMPARE(m_prompter.messages().last(), QStringLiteral("Die Stammnummer von... darf nicht höher sein als die Stammnummer bis..."));
        QVERIFY(!moveRangeToLot(context(), m_harvest, range("1", "1", "2"), QStringLiteral("2")));
        QVERIFY(m_prompter.messages().last().startsWith(QStringLiteral("Dieses Los existiert bereits in einer anderen Sortierung")));

        m_prompter.answerYes();
        QVERIFY(moveRangeToLot(context(), m_harvest, range("1", "4", "5"), QStringLiteral("3")));
        QCOMPARE(m_prompter.questions().last(), QStringLiteral("Soll die Losnummer für das Los 1 und die Stämme 4 bis 5 geändert werden in die Losnummer 3"));
        QCOMPARE(value(QStringLiteral("SELECT Sortierung || Anzahl_Stämme FROM Lose WHERE Kennung = ? AND Los_Nr = 3")), QStringLiteral("Stämme2"));

        m_prompter.answerYes();
        QVERIFY(changeQualityOfRange(context(), m_harvest, range("1", "1", "2"), QStringLiteral("A")));
        QCOMPARE(m_prompter.questions().last(), QStringLiteral("Soll die Güteklasse für das Los 1 und die Stämme 1 bis 2 geändert werden in die Güteklasse A"));
        QVERIFY(m_prompter.messages().last().startsWith(QStringLiteral("WICHTIG!!! Es wurde nur die Güteklasse geändert.")));
        QCOMPARE(value(QStringLiteral("SELECT group_concat(Güteklasse) FROM Stämme WHERE Kennung = ? AND Los_Nr = 1")), QStringLiteral("A,A,B"));

        QVERIFY(!changeSpeciesOfLot(context(), m_harvest, QStringLiteral("1"), QStringLiteral("FI (Fichte)"), QStringLiteral("FI (Fichte)")));
        m_prompter.answerYes();
        QVERIFY(changeSpeciesOfLot(context(), m_harvest, QStringLiteral("1"), QStringLiteral("FI (Fichte)"), QStringLiteral("TA (Tanne)")));
        QCOMPARE(value(QStringLiteral("SELECT count(*) FROM Stämme WHERE Kennung = ? AND Baumart = 'TA (Tanne)'")), QStringLiteral("3"));
    }

    // Every refusal of the harvest, log, pole and stacked-wood windows: the reasons shown, nothing
    // stored, every typed value kept, the window open. Typed: "control=value".
    void refusals_data()
    {
        QTest::addColumn<QString>("window");
        QTest::addColumn<QStringList>("typed");
        QTest::addColumn<QString>("reasons"); // after "weil..."
        const QString logs = QStringLiteral("Stämme"), poles = QStringLiteral("Pfähle"), h = QStringLiteral("Hieb");
        QTest::newRow("harvest: number 0") << h << QStringList{"tz(0)=0", "komwaldname=Eichwald"}
                                           << "\n...die Hiebnummer zwischen 1 und 999999 eingestellt sein muß.";
        QTest::newRow("harvest: dates reversed") << h << QStringList{"komwaldname=Eichwald", "tdat(0)=02.03.2026", "tdat(1)=01.03.2026"}
                                                 << "\n...das Hiebdatum von nicht später als das Hiebdatum bis sein darf.";
        QTest::newRow("harvest: number taken, no woodland") << h << QStringList{"tz(0)=41", "komwaldname= "}
                                                            << "\n...die Hiebnummer bereits existiert.\n...der Waldname angegeben werden muß.";
        QTest::newRow("log: no species") << logs << QStringList{"kom(0)=1", "tz(2)=4", "tz(1)=30"} << "\n\n...die Baumart fehlt.";
        QTest::newRow("log: species not in the master data") << logs << QStringList{"kom(0)=1", "kom(1)=XY (Unbekannt)", "tz(2)=4", "tz(1)=30"}
                                                             << "\n\n...die Baumart XY (Unbekannt) in den Stammdaten fehlt.";
        QTest::newRow("log: no diameter") << logs << QStringList{"kom(0)=1", "kom(1)=FI (Fichte)", "tz(2)=4"}
                                          << "\n\n...die Stärke ohne Rinde (Stamm-Mitte) größer als 0 sein muß.";
        QTest::newRow("log: no length") << logs << QStringList{"kom(0)=1", "kom(1)=FI (Fichte)", "tz(1)=30"} << "\n\n...die Länge fehlt.";
        QTest::newRow("log: top too large") << logs << QStringList{"kom(0)=1", "kom(1)=FI (Fichte)", "tz(2)=4", "tz(1)=30", "tz(3)=30"}
                                            << "\n\n...der Zopfdurchmesser kleiner als die Stärke sein muß.";
        QTest::newRow("log: girth of one") << logs << QStringList{"kom(0)=1", "kom(1)=FI (Fichte)", "tz(2)=4", "tz(1)=30", "tz(8)=1"}
                                           << "\n\n...für die Mantelmessung mehr als 1 Stamm eingetragen werden muß.";
        QTest::newRow("log: lot of poles") << logs << QStringList{"kom(0)=2", "kom(1)=FI (Fichte)", "tz(2)=4", "tz(1)=30"}
                                           << "\n\n...das Los 2 bereits mit der Sortierung Pfähle eingetragen ist.";
        QTest::newRow("pole: length outside every range") << poles << QStringList{"kom(0)=3", "kom(1)=FI (Fichte)", "tz(0)=14", "tz(1)=5", "tz(2)=4"}
                                                          << "\n\n...die Stärkeklasse fehlt.";
        QTest::newRow("pole: no count") << poles << QStringList{"kom(0)=3", "kom(1)=FI (Fichte)", "tz(0)=8", "tz(1)=8"}
                                        << "\n\n...die Anzahl Pfähle fehlt.";
        QTest::newRow("pole: count 0") << poles << QStringList{"kom(0)=3", "kom(1)=FI (Fichte)", "tz(0)=8", "tz(1)=8", "tz(2)=0"}
                                       << "\n\n...die Anzahl Pfähle fehlt.";
        QTest::newRow("pole: no diameter") << poles << QStringList{"kom(0)=3", "kom(1)=FI (Fichte)", "tz(1)=8", "tz(2)=4"}
                                           << "\n\n...die Stärke inkl. Rinde größer als 0 sein muß.";
        QTest::newRow("pole: lot of logs") << poles << QStringList{"kom(0)=1", "kom(1)=FI (Fichte)", "tz(0)=8", "tz(1)=8", "tz(2)=4"}
                                           << "\n\n...das Los 1 bereits mit der Sortierung Stämme eingetragen ist.";
        QTest::newRow("stack: no height") << "Schichtholz" << QStringList{"kom(0)=5", "kom(1)=BU (Rotbuche)", "tz(1)=8", "tz(2)=10", "tz(3)=2"}
                                          << "\n\n...die Sektionslänge, Sektionstiefe und Sektionshöhe angegeben werden muß.";
    }
    void refusals()
    {
        QFETCH(QString, window);
        QFETCH(QStringList, typed);
        QFETCH(QString, reasons);
        createLot(db(), m_harvest, 2, QStringLiteral("Pfähle"));
        const QString rows = QStringLiteral("SELECT (SELECT count(*) FROM Hiebe) || (SELECT count(*) FROM Lose) || (SELECT count(*) FROM Stämme) "
                                            "|| (SELECT count(*) FROM Pfähle) || (SELECT count(*) FROM Schichtholz)");
        const QString before = scalar(db(), rows).toString();
        const std::unique_ptr<QDialog> d = open(window);
        d->show();
        for (const QString& t : typed) {
            const QString name = t.section(u'=', 0, 0);
            if (name.startsWith(u"tz("))
                typeInto(d->findChild<QLineEdit*>(name), t.section(u'=', 1));
            else
                set(*d, name, t.section(u'=', 1));
        }
        press(*d, "ok");
        QCOMPARE(m_prompter.messages(), QStringList{QStringLiteral("Die Eingabe kann nicht übernommen werden, weil...") + reasons});
        QCOMPARE(scalar(db(), rows).toString(), before);
        for (const QString& t : typed)
            QCOMPARE(shown(*d, t.section(u'=', 0, 0)), t.section(u'=', 1));
        QVERIFY(d->result() != QDialog::Accepted);
    }

    // Diameters are whole centimetres: letters, commas and points never get into their fields.
    void diameterFieldsTakeDigitsOnly_data()
    {
        QTest::addColumn<QString>("window");
        QTest::addColumn<int>("field");
        QTest::newRow("Stamm: Stärke m.R.") << QStringLiteral("Stämme") << 1;
        QTest::newRow("Stamm: Zopf") << QStringLiteral("Stämme") << 3;
        QTest::newRow("Stamm: Rindenabzug") << QStringLiteral("Stämme") << 4;
        QTest::newRow("Pfahl: Stärke m.R.") << QStringLiteral("Pfähle") << 0;
        QTest::newRow("Schichtholz: Stärke") << QStringLiteral("Schichtholz") << 1;
    }
    void diameterFieldsTakeDigitsOnly()
    {
        QFETCH(QString, window);
        QFETCH(int, field);
        const std::unique_ptr<QDialog> d = open(window);
        d->show();
        if (auto* fixed = d->findChild<QRadioButton*>(QStringLiteral("optirinde(1)")))
            fixed->click(); // the bark deduction is typed with a fixed deduction only
        typeInto(tz(*d, field), QStringLiteral("3a5,5.-"));
        QCOMPARE(tz(*d, field)->text(), QStringLiteral("355"));
    }

    // The window shows the core's figures as the log is typed: bark deduction, diameter under
    // bark, volume, class and price; a fixed deduction typed by hand counts instead.
    void logIsMeasuredAsItIsTyped()
    {
        LogDialog d(context(), m_harvest, std::nullopt, 1);
        d.show();
        QCOMPARE(tz(d, 0)->text(), QStringLiteral("1"));
        enterLog(d, QStringLiteral("4,5"), QStringLiteral("35"));
        QCOMPARE(tz(d, 4)->text(), QStringLiteral("2"));
        QCOMPARE(tz(d, 5)->text(), QStringLiteral("33"));
        QCOMPARE(tz(d, 6)->text(), QStringLiteral("0,385"));
        QCOMPARE(shown(d, QStringLiteral("kom(3)")), QStringLiteral("L3a"));
        QCOMPARE(tz(d, 14)->text(), QStringLiteral("8,86")); // 23 × 0,385 Efm at index 100
        child<QRadioButton>(d, "optirinde(1)")->click();
        typeInto(tz(d, 4), QStringLiteral("5"));
        QCOMPARE(tz(d, 5)->text(), QStringLiteral("30"));
    }

    void logHeilbronnClassGoesWithTheTopDiameter()
    {
        LogDialog d(context(), m_harvest, std::nullopt, 1);
        d.show();
        auto* heilbronn = child<QComboBox>(d, "kom(4)");
        enterLog(d, QStringLiteral("12"), QStringLiteral("40"));
        typeInto(tz(d, 3), QStringLiteral("28"));
        QVERIFY(!heilbronn->currentText().isEmpty());
        tz(d, 3)->selectAll();
        QTest::keyClick(tz(d, 3), Qt::Key_Delete);
        QCOMPARE(heilbronn->currentText(), QString());
        press(d, "okn_chster");
        QCOMPARE(value(QStringLiteral("SELECT Klasse_Heilbronn FROM Stämme WHERE Kennung = ?")), QString());

        // Picked by hand, the class stays without a top diameter.
        heilbronn->setCurrentIndex(1);
        emit heilbronn->activated(1);
        typeLog(d, QStringLiteral("11"), QStringLiteral("38"));
        QCOMPARE(heilbronn->currentIndex(), 1);
    }

    // Numbered per lot, the proposal follows the lot chosen.
    void logNumberingPerLotProposesWithinTheLot()
    {
        m_settings.zahl[57] = 1;
        createLot(db(), m_harvest, 2, QStringLiteral("Stämme"));
        addLogs(1, 1, 2);
        LogDialog d(context(), m_harvest, std::nullopt, 2);
        QCOMPARE(tz(d, 0)->text(), QStringLiteral("1"));
        set(d, QStringLiteral("kom(0)"), QStringLiteral("1"));
        QCOMPARE(tz(d, 0)->text(), QStringLiteral("3"));
        set(d, QStringLiteral("kom(0)"), QStringLiteral("2"));
        QCOMPARE(tz(d, 0)->text(), QStringLiteral("1"));
    }

    // A log stored when the bark table and the prices were other than today's: opened to be
    // changed, the window shows the row as stored, not what today's tables would make of it; a
    // remark changed alone keeps the stored figures, a measure typed again recomputes them.
    void logChangeKeepsTheStoredFigures()
    {
        const qint32 id = storedLog();
        LogDialog d(context(), m_harvest, id);
        d.show();
        QStringList figures; // bark deduction, under bark, volume, prices, classes, remark
        for (const char* name : {"tz(4)", "tz(5)", "tz(6)", "tz(7)", "tz(14)", "kom(3)", "kom(4)", "kom(5)"})
            figures << shown(d, QString::fromUtf8(name));
        QCOMPARE(figures.join(u'|'), QStringLiteral("3|32|0,400|11,11|12,34|L2b|H3|alt"));
        set(d, QStringLiteral("kom(5)"), QStringLiteral("neu"));
        press(d, "ok");
        QCOMPARE(value(QStringLiteral("SELECT Rindenabzug || '/' || Stärkeklasse || '/' || Holzpreis || '/' || Preis_berechnet "
                                      "|| '/' || Bemerkung FROM Stämme WHERE Kennung = ?")),
                 QStringLiteral("3/L2b/12.34/11.11/neu"));

        LogDialog again(context(), m_harvest, id);
        again.show();
        typeInto(tz(again, 1), QStringLiteral("35"));
        QCOMPARE(tz(again, 4)->text() + u'/' + tz(again, 5)->text(), QStringLiteral("2/33")); // today's bark table
        press(again, "ok");
        QCOMPARE(value(QStringLiteral("SELECT Rindenabzug || '/' || Stärke_oR || '/' || Stärkeklasse FROM Stämme WHERE Kennung = ?")),
                 QStringLiteral("2/33/L3a"));
    }

    // The lot's bark recompute rewrites the shown log too: the window shows the new figures,
    // and OK afterwards does not put the old ones back.
    void logLotRecomputeReachesTheShownLog()
    {
        LogDialog d(context(), m_harvest, storedLog());
        d.show();
        m_prompter.answerYes();
        press(d, "rindenabzuglos");
        QCOMPARE(tz(d, 4)->text() + u'/' + tz(d, 5)->text(), QStringLiteral("2/33"));
        press(d, "ok");
        QCOMPARE(value(QStringLiteral("SELECT Rindenabzug || '/' || Stärke_oR FROM Stämme WHERE Kennung = ?")), QStringLiteral("2/33"));
    }

    void logRunningNumberAboveTheRange()
    {
        LogDialog d(context(), m_harvest, std::nullopt, 1);
        d.show();
        typeInto(tz(d, 0), QStringLiteral("1234567"));
        QCOMPARE(tz(d, 0)->text(), QStringLiteral("123456")); // the field takes six digits
        LogForm form;
        form.losNr = QStringLiteral("1");
        form.laufendeNr = QStringLiteral("1000000");
        QCOMPARE(*checkLog(db(), m_harvest, form),
                 QStringLiteral("Die Eingabe kann nicht übernommen werden, weil...\n\n...die Laufende Nummer höchstens 999999 sein darf."));
    }

    void logQuickEntryInDecimetres_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("shown");
        QTest::newRow("12,5 m") << "125" << "12,5";
        QTest::newRow("leading zero") << "052" << "5,2";
        QTest::newRow("whole metres") << "100" << "10,0";
    }
    void logQuickEntryInDecimetres()
    {
        QFETCH(QString, typed);
        m_settings.zahl[51] = 1;
        LogDialog d(context(), m_harvest, std::nullopt, 1);
        d.show();
        QApplication::setActiveWindow(&d);
        tz(d, 2)->setFocus();
        QTest::keyClicks(tz(d, 2), typed);
        QApplication::processEvents();
        QTEST(tz(d, 2)->text(), "shown");
        QCOMPARE(QApplication::focusWidget(), tz(d, 1));
        typeInto(tz(d, 1), QStringLiteral("30"));
        QVERIFY(!tz(d, 6)->text().isEmpty() && tz(d, 6)->text() != QStringLiteral("0,000")); // the length counts
    }

    // With one log lot it is the lot meant; the lot's last species and quality are proposed.
    void logTheOnlyLotIsChosen_data()
    {
        QTest::addColumn<bool>("secondLot");
        QTest::addColumn<QString>("lot");
        QTest::addColumn<QString>("species");
        QTest::addColumn<QString>("quality");
        QTest::newRow("one log lot") << false << "1" << "KI (Kiefer)" << "C";
        QTest::newRow("two log lots") << true << "" << "" << "";
    }
    void logTheOnlyLotIsChosen()
    {
        QFETCH(bool, secondLot);
        createLot(db(), m_harvest, 2, secondLot ? QStringLiteral("Stämme") : QStringLiteral("Pfähle"));
        test::addTypedLog(db(), m_harvest, 1, 1, QStringLiteral("FI (Fichte)"), 30, 4, QStringLiteral("O"), 0, 0, QStringLiteral("B"));
        test::addTypedLog(db(), m_harvest, 1, 2, QStringLiteral("KI (Kiefer)"), 30, 4, QStringLiteral("O"), 0, 0, QStringLiteral("C"));
        LogDialog d(context(), m_harvest, std::nullopt);
        QTEST(shown(d, QStringLiteral("kom(0)")), "lot");
        QTEST(shown(d, QStringLiteral("kom(1)")), "species");
        QTEST(shown(d, QStringLiteral("kom(2)")), "quality");
    }

    // The grid lists every log of the harvest, a page at a time: a store in a large harvest reads
    // one page again and shows the new log on top; the ID stays hidden.
    void logGridListsTheWholeHarvest()
    {
        createLot(db(), m_harvest, 2, QStringLiteral("Stämme"));
        execSql(db(), QStringLiteral("WITH RECURSIVE k(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM k WHERE i < 3000) "
                                     "INSERT INTO Stämme(Los_Nr, Laufende_Nr, Baumart, Kennung) SELECT 1, i, 'FI (Fichte)', ? FROM k"),
                {m_harvest});
        LogDialog d(context(), m_harvest, std::nullopt, 2);
        d.show();
        auto* grid = child<QTableView>(d, "gridli");
        QCOMPARE(grid->model()->rowCount(), 256);
        enterLog(d, QStringLiteral("4,5"), QStringLiteral("35"));
        press(d, "okn_chster");
        QCOMPARE(grid->model()->rowCount(), 256);
        QCOMPARE(grid->model()->index(0, 0).data().toString() + u'/' + grid->model()->index(0, 1).data().toString(),
                 QStringLiteral("2/3001"));
        QCOMPARE(grid->selectionModel()->selectedRows().value(0).row(), 0);
        QVERIFY(grid->isColumnHidden(grid->model()->columnCount() - 1));
    }

    void logGirthFailingHalfWayStoresNothing()
    {
        execSql(db(), QStringLiteral("INSERT INTO Stämme(Los_Nr, Laufende_Nr, Kennung) VALUES (1, 999998, ?)"), {m_harvest});
        LogDialog d(context(), m_harvest, std::nullopt, 1);
        d.show();
        enterLog(d, QStringLiteral("3"), QStringLiteral("18"));
        typeInto(tz(d, 8), QStringLiteral("3"));
        m_prompter.answerYes();
        press(d, "ok");
        QCOMPARE(value(QStringLiteral("SELECT count(*) FROM Stämme WHERE Kennung = ?")), QStringLiteral("1"));
        QVERIFY(m_prompter.messages().last().contains(QStringLiteral("999999")));
    }

    // Poles by class and count; the new lot is created on "Ja" only, with the window's assortment;
    // the grid lists the poles of every lot, the one just stored on top.
    void polesByClassAndCount()
    {
        createLot(db(), m_harvest, 4, QStringLiteral("Pfähle"));
        execSql(db(), QStringLiteral("INSERT INTO Pfähle(Los_Nr, Baumart, Anzahl, Kennung) VALUES (4, 'FI (Fichte)', 5, ?)"), {m_harvest});
        PoleDialog d(context(), m_harvest, std::nullopt);
        d.show();
        auto* grid = child<QTableView>(d, "gridli");
        QCOMPARE(grid->model()->rowCount(), 1);
        set(d, QStringLiteral("kom(0)"), QStringLiteral("3"));
        set(d, QStringLiteral("kom(1)"), QStringLiteral("FI (Fichte)"));
        typeInto(tz(d, 0), QStringLiteral("8"));
        typeInto(tz(d, 1), QStringLiteral("8"));
        QCOMPARE(shown(d, QStringLiteral("kom(2)")), QStringLiteral("P2.11"));
        QCOMPARE(tz(d, 3)->text(), QStringLiteral("2,50"));
        typeInto(tz(d, 2), QStringLiteral("10"));
        QCOMPARE(tz(d, 4)->text(), QStringLiteral("25,00"));
        m_prompter.answerNo().answerYes();
        press(d, "okn_chster");
        QCOMPARE(m_prompter.messages(), QStringList{QStringLiteral("Die Eingabe wurde nicht gespeichert!")});
        QCOMPARE(value(QStringLiteral("SELECT count(*) FROM Lose WHERE Kennung = ? AND Los_Nr = 3")), QStringLiteral("0"));
        press(d, "okn_chster");
        QCOMPARE(m_prompter.questions().last(), QStringLiteral("Die Los_Nr 3 existiert noch nicht. Soll diese jetzt angelegt werden?"));
        QCOMPARE(value(QStringLiteral("SELECT Sortierung || '/' || Anzahl_Pfähle || '/' || Preis_berechnet FROM Lose WHERE Kennung = ? AND Los_Nr = 3")),
                 QStringLiteral("Pfähle/10/25.0"));
        QCOMPARE(value(QStringLiteral("SELECT Pfähle_Anzahl || '/' || Anzahl_Lose FROM Hiebe WHERE ID = ?")), QStringLiteral("15/3"));
        QCOMPARE(grid->model()->index(0, 0).data().toString() + u'/' + grid->model()->index(1, 0).data().toString(), QStringLiteral("3/4"));
        QCOMPARE(grid->selectionModel()->selectedRows().value(0).row(), 0);
    }

    // 10 × 2 × 1,5 m of beech with a flat deduction of 10 %: the window passes the setting on,
    // shows the core's figures and stores them, and the lot keeps its totals with two decimals.
    void stackVolumesClassAndPrice()
    {
        m_settings.zahl[54] = 10;
        createLot(db(), m_harvest, 2, QStringLiteral("Schichtholz"));
        StackDialog d(context(), m_harvest, std::nullopt, 2);
        d.show();
        set(d, QStringLiteral("kom(1)"), QStringLiteral("BU (Rotbuche)"));
        QCOMPARE(tz(d, 0)->text(), QStringLiteral("1"));
        typeInto(tz(d, 1), QStringLiteral("8"));
        typeInto(tz(d, 2), QStringLiteral("10"));
        typeInto(tz(d, 3), QStringLiteral("2"));
        typeInto(tz(d, 4), QStringLiteral("1,5"));
        QCOMPARE(tz(d, 5)->text() + u'/' + tz(d, 6)->text(), QStringLiteral("30,000/17,550"));
        QCOMPARE(shown(d, QStringLiteral("kom(2)")), QStringLiteral("S2.1"));
        QCOMPARE(tz(d, 8)->text(), QStringLiteral("375,00")); // 12,50 per Ster × 30 Ster
        press(d, "ok");
        QVERIFY2(m_prompter.messages().isEmpty(), qPrintable(noMessages(m_prompter)));
        QCOMPARE(value(QStringLiteral("SELECT m3 || '/' || Efm || '/' || Preis_berechnet FROM Schichtholz WHERE Kennung = ?")),
                 QStringLiteral("30.0/17.55/375.0"));
        QCOMPARE(value(QStringLiteral("SELECT m3_Schichtholz || '/' || Efm_Schichtholz FROM Lose WHERE Kennung = ? AND Los_Nr = 2")),
                 QStringLiteral("30.0/17.55"));
        StackDialog other(context(), m_harvest, std::nullopt, 6); // lists the sections of every lot
        QCOMPARE(child<QTableView>(other, "gridli")->model()->rowCount(), 1);
    }

    void stackSectionNumberIsNeverStoredTwice()
    {
        createLot(db(), m_harvest, 2, QStringLiteral("Schichtholz"));
        execSql(db(), QStringLiteral("INSERT INTO Schichtholz(Los_Nr, Sektions_Nr, Kennung) VALUES (2, 1, ?)"), {m_harvest});
        StackDialog d(context(), m_harvest, std::nullopt, 2);
        d.show();
        set(d, QStringLiteral("kom(1)"), QStringLiteral("BU (Rotbuche)"));
        typeInto(tz(d, 0), QStringLiteral("1"));
        typeInto(tz(d, 1), QStringLiteral("8"));
        for (int i : {2, 3, 4})
            typeInto(tz(d, i), QStringLiteral("1"));
        m_prompter.answerNo();
        press(d, "okn_chster");
        QCOMPARE(m_prompter.messages().last(), QStringLiteral("Die Eingabe wurde nicht gespeichert!"));
        QCOMPARE(value(QStringLiteral("SELECT count(*) FROM Schichtholz WHERE Kennung = ?")), QStringLiteral("1"));

        m_settings.zahl[29] = 1;
        m_prompter.answerYes();
        press(d, "okn_chster");
        QCOMPARE(m_prompter.questions().last(), QStringLiteral("Die Sektions-Nummer 1 existiert beim aktuellen Hieb bereits.\n\n"
                                                               "Soll die Nummer automatisch vergeben werden?"));
        QCOMPARE(value(QStringLiteral("SELECT group_concat(Sektions_Nr) FROM Schichtholz WHERE Kennung = ?")), QStringLiteral("1,2"));
        QCOMPARE(tz(d, 0)->text(), QStringLiteral("3"));
        QCOMPARE(tz(d, 2)->text(), QStringLiteral("0,0")); // dimensions reset for the next section
    }

    void logDoubtfulValuesAskFirst_data()
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
        QTest::newRow("no quality and both slipped") << "151" << "40,5" << "" << 0.f
                                                     << QStringList{"...die Stärke von 151 cm größer als 150 cm ist.",
                                                                    "...die Länge von 40,5 m größer als 40 m ist.", noQuality};
        QTest::newRow("no quality, flat price") << "35" << "4,5" << "" << 50.f << QStringList();
    }
    void logDoubtfulValuesAskFirst()
    {
        QFETCH(QString, diameter);
        QFETCH(QString, length);
        QFETCH(QString, quality);
        QFETCH(float, flatPrice);
        QFETCH(QStringList, doubts);
        MasterDataLookup lookup(db());
        LogForm f = logForm(diameter, length, quality);
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
            QCOMPARE(value(QStringLiteral("SELECT count(*) || '/' || (SELECT Anzahl_Stämme FROM Lose) FROM Stämme WHERE Kennung = ?")),
                     QStringLiteral("0/0"));
            m_prompter.answerYes();
        }
        QVERIFY(storeLog(ctx, lookup, m_harvest, f, std::nullopt));
        QCOMPARE(m_prompter.pendingAnswers(), 0);
        QCOMPARE(value(QStringLiteral("SELECT Stärke_gemessen || '/' || round(Länge_m, 1) FROM Stämme WHERE Kennung = ?")),
                 QString::number(readNumber(diameter)) + u'/' + QString::number(readNumber(length), 'f', 1));
    }

    // A log that joins a lot already invoiced asks first, and "Nein" stores nothing; a log
    // changed within its lot, or a lot not invoiced, asks nothing.
    void logInvoicedLotAsksFirst_data()
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
    void logInvoicedLotAsksFirst()
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
        const QString logsByLot = QStringLiteral("SELECT count(*) || '/' || group_concat(Los_Nr) FROM Stämme WHERE Kennung = ?");
        const QString before = value(logsByLot);
        MasterDataLookup lookup(db());
        LogForm f = logForm(QStringLiteral("35"), QStringLiteral("4,5"), QStringLiteral("B"));
        f.losNr = QStringLiteral("2");
        f.girthCount = girth;
        const AppContext ctx = context();
        if (!question.isEmpty()) {
            m_prompter.answerNo();
            QVERIFY(!storeLog(ctx, lookup, m_harvest, f, edited));
            QCOMPARE(m_prompter.questions(), QStringList{question});
            QCOMPARE(value(logsByLot), before);
            m_prompter.clear();
            m_prompter.answerYes();
        }
        if (!girth.isEmpty())
            m_prompter.answerYes(); // the girth measurement's own question
        QVERIFY(storeLog(ctx, lookup, m_harvest, f, edited));
        QCOMPARE(m_prompter.questions().value(0), question);
        QCOMPARE(value(QStringLiteral("SELECT count(*) FROM Stämme WHERE Kennung = ? AND Los_Nr = 2")),
                 QString::number(girth.isEmpty() ? 1 : girth.toInt()));
    }
};

TARVIK_TEST_MAIN(TestEntryWindows)
#include "tst_entrywindows.moc"
