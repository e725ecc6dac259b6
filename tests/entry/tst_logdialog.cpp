// The log, pole and stacked-wood windows driven through their controls (classes, volumes,
// prices, refusals, running and section numbers, the totals that follow), and the log store's
// own questions through the core.
#include "common/numbers.h"
#include "entry/logentry.h"
#include "entry/ui/logdialog.h"
#include "entry/ui/poledialog.h"
#include "entry/ui/stackdialog.h"
#include "rules/masterdatalookup.h"
#include "store/records.h"
#include "store/sql.h"
#include "support/entryfixture.h"
#include "support/records.h"
#include "support/tempdatafolder.h"
#include "support/widgets.h"

#include <QApplication>
#include <QComboBox>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QRegularExpression>
#include <QTableView>

using namespace tarvik;
using test::child;
using test::typeInto;

class TestLogDialog : public QObject, protected test::EntryFixture {
    Q_OBJECT

    static QLineEdit* tz(LogDialog& d, int i) { return d.field(i); }
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
    static void typeLog(LogDialog& d, const QString& length, const QString& diameter)
    {
        typeInto(tz(d, 2), length);
        typeInto(tz(d, 1), diameter);
    }
    // A new log of spruce, quality B, on lot 1, shown.
    static void spruceB(LogDialog& d)
    {
        d.show();
        child<QComboBox>(d, "kom(1)")->setEditText(QStringLiteral("FI (Fichte)"));
        child<QComboBox>(d, "kom(2)")->setEditText(QStringLiteral("B"));
    }
    std::unique_ptr<EntryWindow> newEntry(const QString& kind)
    {
        if (kind == u"Stämme")
            return std::make_unique<LogDialog>(context(), m_harvest, std::nullopt);
        if (kind == u"Pfähle")
            return std::make_unique<PoleDialog>(context(), m_harvest, std::nullopt);
        return std::make_unique<StackDialog>(context(), m_harvest, std::nullopt);
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
    void init()
    {
        resetDatabase(1);
        createLot(db(), m_harvest, 1, QStringLiteral("Stämme"));
        execSql(db(), QStringLiteral("UPDATE Stärkeklassen_Pfähle SET Schätzpreis_je_St = 2.5 WHERE Klasse = 'P2.11'"));
        execSql(db(), QStringLiteral("UPDATE Stärkeklassen_Schichtholz SET Schätzpreis_je_m3 = 12.5 WHERE Klasse = 'S2.1'"));
    }

    // Every refusal of the three windows: the reason shown, nothing stored, every typed value
    // kept. Typed: "field=value" in the window's field numbering.
    void refusals_data()
    {
        QTest::addColumn<QString>("window");
        QTest::addColumn<QString>("lot");
        QTest::addColumn<QString>("species");
        QTest::addColumn<QStringList>("typed");
        QTest::addColumn<QString>("reason");
        const QString logs = QStringLiteral("Stämme"), poles = QStringLiteral("Pfähle"), fi = QStringLiteral("FI (Fichte)");
        QTest::newRow("log: no species") << logs << "1" << "" << QStringList{"2=4", "1=30"} << "...die Baumart fehlt.";
        QTest::newRow("log: species not in the master data") << logs << "1" << "XY (Unbekannt)" << QStringList{"2=4", "1=30"}
                                                             << "...die Baumart XY (Unbekannt) in den Stammdaten fehlt.";
        QTest::newRow("log: no diameter") << logs << "1" << fi << QStringList{"2=4"} << "...die Stärke ohne Rinde (Stamm-Mitte) größer als 0 sein muß.";
        QTest::newRow("log: no length") << logs << "1" << fi << QStringList{"1=30"} << "...die Länge fehlt.";
        QTest::newRow("log: top too large") << logs << "1" << fi << QStringList{"2=4", "1=30", "3=30"}
                                            << "...der Zopfdurchmesser kleiner als die Stärke sein muß.";
        QTest::newRow("log: girth of one") << logs << "1" << fi << QStringList{"2=4", "1=30", "8=1"}
                                           << "...für die Mantelmessung mehr als 1 Stamm eingetragen werden muß.";
        QTest::newRow("log: lot of poles") << logs << "2" << fi << QStringList{"2=4", "1=30"}
                                           << "...das Los 2 bereits mit der Sortierung Pfähle eingetragen ist.";
        QTest::newRow("pole: length outside every range") << poles << "3" << fi << QStringList{"0=14", "1=5", "2=4"} << "...die Stärkeklasse fehlt.";
        QTest::newRow("pole: no count") << poles << "3" << fi << QStringList{"0=8", "1=8"} << "...die Anzahl Pfähle fehlt.";
        QTest::newRow("pole: count 0") << poles << "3" << fi << QStringList{"0=8", "1=8", "2=0"} << "...die Anzahl Pfähle fehlt.";
        QTest::newRow("pole: no diameter") << poles << "3" << fi << QStringList{"1=8", "2=4"} << "...die Stärke inkl. Rinde größer als 0 sein muß.";
        QTest::newRow("pole: lot of logs") << poles << "1" << fi << QStringList{"0=8", "1=8", "2=4"}
                                           << "...das Los 1 bereits mit der Sortierung Stämme eingetragen ist.";
        QTest::newRow("stack: no height") << "Schichtholz" << "5" << "BU (Rotbuche)" << QStringList{"1=8", "2=10", "3=2"}
                                          << "...die Sektionslänge, Sektionstiefe und Sektionshöhe angegeben werden muß.";
    }
    void refusals()
    {
        QFETCH(QString, window);
        QFETCH(QStringList, typed);
        QFETCH(QString, reason);
        createLot(db(), m_harvest, 2, QStringLiteral("Pfähle"));
        const std::unique_ptr<EntryWindow> d = newEntry(window);
        d->show();
        QFETCH(QString, lot);
        QFETCH(QString, species);
        child<QComboBox>(*d, "kom(0)")->setEditText(lot);
        child<QComboBox>(*d, "kom(1)")->setEditText(species);
        for (const QString& t : typed)
            typeInto(d->field(t.section(u'=', 0, 0).toInt()), t.section(u'=', 1));
        child<QPushButton>(*d, "ok")->click();
        QCOMPARE(m_prompter.messages(), QStringList{QStringLiteral("Die Eingabe kann nicht übernommen werden, weil...\n\n") + reason});
        QCOMPARE(value(QStringLiteral("SELECT (SELECT count(*) FROM Stämme) + (SELECT count(*) FROM Pfähle) + "
                                      "(SELECT count(*) FROM Schichtholz) + 0 * ?")),
                 QStringLiteral("0"));
        for (const QString& t : typed)
            QCOMPARE(d->field(t.section(u'=', 0, 0).toInt())->text(), t.section(u'=', 1));
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
        const std::unique_ptr<EntryWindow> d = newEntry(window);
        d->show();
        if (auto* fixed = d->findChild<QRadioButton*>(QStringLiteral("optirinde(1)")))
            fixed->click(); // the bark deduction is typed with a fixed deduction only
        typeInto(d->field(field), QStringLiteral("3a5,5.-"));
        QCOMPARE(d->field(field)->text(), QStringLiteral("355"));
    }

    void typedLogIsMeasuredAsItIsTyped()
    {
        LogDialog d(context(), m_harvest, std::nullopt, 1);
        d.show();
        QCOMPARE(tz(d, 0)->text(), QStringLiteral("1"));
        child<QComboBox>(d, "kom(1)")->setEditText(QStringLiteral("FI (Fichte)"));
        child<QComboBox>(d, "kom(2)")->setEditText(QStringLiteral("B"));
        typeLog(d, QStringLiteral("4,5"), QStringLiteral("35"));
        QCOMPARE(tz(d, 4)->text(), QStringLiteral("2"));
        QCOMPARE(tz(d, 5)->text(), QStringLiteral("33"));
        QCOMPARE(tz(d, 6)->text(), QStringLiteral("0,385"));
        QCOMPARE(child<QComboBox>(d, "kom(3)")->currentText(), QStringLiteral("L3a"));
        QCOMPARE(tz(d, 14)->text(), QStringLiteral("8,86")); // 23 × 0,385 Efm at index 100
        child<QRadioButton>(d, "optirinde(1)")->click();
        typeInto(tz(d, 4), QStringLiteral("5"));
        QCOMPARE(tz(d, 5)->text(), QStringLiteral("30"));
    }

    void heilbronnClassGoesWithTheTopDiameter()
    {
        LogDialog d(context(), m_harvest, std::nullopt, 1);
        spruceB(d);
        auto* heilbronn = child<QComboBox>(d, "kom(4)");
        typeLog(d, QStringLiteral("12"), QStringLiteral("40"));
        typeInto(tz(d, 3), QStringLiteral("28"));
        const QString computed = heilbronn->currentText();
        QVERIFY(!computed.isEmpty());
        tz(d, 3)->selectAll();
        QTest::keyClick(tz(d, 3), Qt::Key_Delete);
        QCOMPARE(heilbronn->currentText(), QString());
        child<QPushButton>(d, "okn_chster")->click();
        QCOMPARE(value(QStringLiteral("SELECT Klasse_Heilbronn FROM Stämme WHERE Kennung = ?")), QString());

        // Picked by hand, the class stays without a top diameter.
        heilbronn->setCurrentIndex(1);
        emit heilbronn->activated(1);
        typeLog(d, QStringLiteral("11"), QStringLiteral("38"));
        QCOMPARE(heilbronn->currentIndex(), 1);
    }

    void numberingPerLotProposesWithinTheLot()
    {
        m_settings.zahl[57] = 1;
        createLot(db(), m_harvest, 2, QStringLiteral("Stämme"));
        for (int n = 1; n <= 40; ++n)
            test::addTypedLog(db(), m_harvest, 1, n, QStringLiteral("FI (Fichte)"), 30, 4, QStringLiteral("O"));
        LogDialog d(context(), m_harvest, std::nullopt, 2);
        QCOMPARE(tz(d, 0)->text(), QStringLiteral("1"));
        child<QComboBox>(d, "kom(0)")->setEditText(QStringLiteral("1"));
        QCOMPARE(tz(d, 0)->text(), QStringLiteral("41"));
        child<QComboBox>(d, "kom(0)")->setEditText(QStringLiteral("2"));
        QCOMPARE(tz(d, 0)->text(), QStringLiteral("1"));
    }

    // A log stored when the bark table and the prices were other than today's: opened to be
    // changed, the window shows the row as stored, not what today's tables would make of it.
    void changeShowsTheStoredLog_data()
    {
        QTest::addColumn<QString>("control");
        QTest::addColumn<QString>("shown");
        QTest::newRow("bark deduction") << "tz(4)" << "3";
        QTest::newRow("diameter under bark") << "tz(5)" << "32";
        QTest::newRow("volume") << "tz(6)" << "0,400";
        QTest::newRow("computed price") << "tz(7)" << "11,11";
        QTest::newRow("log price") << "tz(14)" << "12,34";
        QTest::newRow("diameter class") << "kom(3)" << "L2b";
        QTest::newRow("Heilbronn class") << "kom(4)" << "H3";
        QTest::newRow("remark") << "kom(5)" << "alt";
    }
    void changeShowsTheStoredLog()
    {
        QFETCH(QString, control);
        LogDialog d(context(), m_harvest, storedLog());
        d.show();
        QWidget* w = d.findChild<QWidget*>(control);
        QVERIFY(w);
        auto* box = qobject_cast<QComboBox*>(w);
        QTEST(box ? box->currentText() : qobject_cast<QLineEdit*>(w)->text(), "shown");
    }

    // A remark changed alone keeps the stored figures; a measure typed again recomputes them.
    void changedRemarkKeepsTheStoredFigures()
    {
        const qint32 id = storedLog();
        LogDialog d(context(), m_harvest, id);
        d.show();
        child<QComboBox>(d, "kom(5)")->setEditText(QStringLiteral("neu"));
        child<QPushButton>(d, "ok")->click();
        QCOMPARE(value(QStringLiteral("SELECT Rindenabzug || '/' || Stärkeklasse || '/' || Holzpreis || '/' || Preis_berechnet "
                                      "|| '/' || Bemerkung FROM Stämme WHERE Kennung = ?")),
                 QStringLiteral("3/L2b/12.34/11.11/neu"));

        LogDialog again(context(), m_harvest, id);
        again.show();
        typeInto(tz(again, 1), QStringLiteral("35"));
        QCOMPARE(tz(again, 4)->text(), QStringLiteral("2")); // today's bark table
        QCOMPARE(tz(again, 5)->text(), QStringLiteral("33"));
        child<QPushButton>(again, "ok")->click();
        QCOMPARE(value(QStringLiteral("SELECT Rindenabzug || '/' || Stärke_oR || '/' || Stärkeklasse FROM Stämme WHERE Kennung = ?")),
                 QStringLiteral("2/33/L3a"));
    }

    // The lot's bark recompute rewrites the shown log too: the window shows the new figures,
    // and OK afterwards does not put the old ones back.
    void lotRecomputeReachesTheShownLog()
    {
        const qint32 id = storedLog();
        LogDialog d(context(), m_harvest, id);
        d.show();
        m_prompter.answerYes();
        child<QPushButton>(d, "rindenabzuglos")->click();
        QCOMPARE(tz(d, 4)->text(), QStringLiteral("2"));
        QCOMPARE(tz(d, 5)->text(), QStringLiteral("33"));
        child<QPushButton>(d, "ok")->click();
        QCOMPARE(value(QStringLiteral("SELECT Rindenabzug || '/' || Stärke_oR FROM Stämme WHERE Kennung = ?")), QStringLiteral("2/33"));
    }

    // Every figure the window shows keeps its whole text, at the size it opens with and at the
    // smallest the window can be made.
    void figuresAreNeverCut_data()
    {
        QTest::addColumn<bool>("smallest");
        QTest::newRow("default size") << false;
        QTest::newRow("smallest size") << true;
    }
    void figuresAreNeverCut()
    {
        QFETCH(bool, smallest);
        LogDialog d(context(), m_harvest, std::nullopt, 1);
        d.show();
        QVERIFY(QTest::qWaitForWindowExposed(&d));
        if (smallest) {
            d.resize(1, 1);
            QApplication::processEvents();
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

    void runningNumberAboveTheRange()
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

    void missingLotIsCreatedOnYes()
    {
        LogDialog d(context(), m_harvest, std::nullopt, std::nullopt);
        d.show();
        child<QComboBox>(d, "kom(0)")->setEditText(QStringLiteral("7"));
        child<QComboBox>(d, "kom(1)")->setEditText(QStringLiteral("BU (Rotbuche)"));
        child<QComboBox>(d, "kom(2)")->setEditText(QStringLiteral("B"));
        typeLog(d, QStringLiteral("4"), QStringLiteral("30"));
        m_prompter.answerNo();
        child<QPushButton>(d, "ok")->click();
        QCOMPARE(m_prompter.messages().last(), QStringLiteral("Die Eingabe wurde nicht gespeichert!"));
        m_prompter.answerYes();
        child<QPushButton>(d, "ok")->click();
        QCOMPARE(m_prompter.questions().last(), QStringLiteral("Die Los_Nr 7 existiert noch nicht. Soll diese jetzt angelegt werden?"));
        QCOMPARE(value(QStringLiteral("SELECT Sortierung || Anzahl_Stämme FROM Lose WHERE Kennung = ? AND Los_Nr = 7")), QStringLiteral("Stämme1"));
    }

    void quickEntryInDecimetres_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("shown");
        QTest::newRow("12,5 m") << "125" << "12,5";
        QTest::newRow("leading zero") << "052" << "5,2";
        QTest::newRow("whole metres") << "100" << "10,0";
    }
    void quickEntryInDecimetres()
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

    // Tab walks the fields in the order they stand, which is the order a crew reads out a log.
    void tabOrderFollowsTheFields()
    {
        LogDialog d(context(), m_harvest, std::nullopt, 1);
        d.resize(1366, 740);
        d.show();
        QApplication::setActiveWindow(&d);
        child<QComboBox>(d, "kom(0)")->setFocus();
        QStringList walked;
        QList<int> tops;
        QList<int> lefts;
        for (int i = 0; i < 11; ++i) {
            QWidget* w = QApplication::focusWidget();
            if (qobject_cast<QComboBox*>(w->parentWidget()))
                w = w->parentWidget(); // the edit of an editable list
            walked << w->objectName();
            tops << w->mapTo(&d, QPoint()).y();
            lefts << w->mapTo(&d, QPoint()).x();
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        }
        QCOMPARE(walked, (QStringList{"kom(0)", "tz(0)", "tz(2)", "tz(1)", "kom(1)", "tz(3)", "kom(2)", "kom(5)",
                                      "tz(4)", "tz(8)", "konkäfer"}));
        // Down the first box, then down the second box to its right.
        for (int i = 1; i < walked.size(); ++i) {
            const bool sameColumn = lefts[i] == lefts[i - 1];
            QVERIFY2(sameColumn ? tops[i] > tops[i - 1] : lefts[i] > lefts[i - 1], qPrintable(walked[i]));
        }
    }

    // The window fits a 1366×768 screen and still shows twelve logs.
    void fitsTheScreenWithTwelveRows()
    {
        LogDialog d(context(), m_harvest, std::nullopt, 1);
        d.show();
        QVERIFY2(d.minimumSizeHint().width() <= 1366 && d.minimumSizeHint().height() <= 720,
                 qPrintable(QStringLiteral("%1×%2").arg(d.minimumSizeHint().width()).arg(d.minimumSizeHint().height())));
        QVERIFY2(d.width() <= 1366 && d.height() <= 720, qPrintable(QStringLiteral("%1×%2").arg(d.width()).arg(d.height())));
        auto* grid = child<QTableView>(d, "gridli");
        QVERIFY(grid->viewport()->height() >= 12 * grid->verticalHeader()->defaultSectionSize());
    }

    // With one log lot it is the lot meant; the lot's last species and quality are proposed.
    void theOnlyLotIsChosen_data()
    {
        QTest::addColumn<bool>("secondLot");
        QTest::addColumn<QString>("lot");
        QTest::addColumn<QString>("species");
        QTest::addColumn<QString>("quality");
        QTest::newRow("one log lot") << false << "1" << "KI (Kiefer)" << "C";
        QTest::newRow("two log lots") << true << "" << "" << "";
    }
    void theOnlyLotIsChosen()
    {
        QFETCH(bool, secondLot);
        createLot(db(), m_harvest, 2, secondLot ? QStringLiteral("Stämme") : QStringLiteral("Pfähle"));
        test::addTypedLog(db(), m_harvest, 1, 1, QStringLiteral("FI (Fichte)"), 30, 4, QStringLiteral("O"), 0, 0, QStringLiteral("B"));
        test::addTypedLog(db(), m_harvest, 1, 2, QStringLiteral("KI (Kiefer)"), 30, 4, QStringLiteral("O"), 0, 0, QStringLiteral("C"));
        LogDialog d(context(), m_harvest, std::nullopt);
        QTEST(child<QComboBox>(d, "kom(0)")->currentText(), "lot");
        QTEST(child<QComboBox>(d, "kom(1)")->currentText(), "species");
        QTEST(child<QComboBox>(d, "kom(2)")->currentText(), "quality");
    }

    // A crew reads out the next log while the first is stored by its access key: every key after
    // Alt+N belongs to the new log, however fast it follows.
    void accessKeyStoresTheLogAsItStood_data()
    {
        QTest::addColumn<QString>("button");
        QTest::addColumn<char>("key");
        QTest::newRow("OK+Nächster") << "okn_chster" << 'N';
        QTest::newRow("OK") << "ok" << 'O';
    }
    void accessKeyStoresTheLogAsItStood()
    {
        QFETCH(QString, button);
        QFETCH(char, key);
        LogDialog d(context(), m_harvest, std::nullopt, 1);
        spruceB(d);
        QApplication::setActiveWindow(&d);
        typeLog(d, QStringLiteral("4,5"), QStringLiteral("35"));
        tz(d, 1)->setFocus();
        QTest::keyClick(QApplication::focusWidget(), Qt::Key(key), Qt::AltModifier);
        const bool next = button == QStringLiteral("okn_chster");
        if (next) {
            for (QChar c : QStringLiteral("52"))
                QTest::keyClick(QApplication::focusWidget(), c.toLatin1());
        }
        QTest::qWait(250); // long enough for a delayed click to have come
        QCOMPARE(value(QStringLiteral("SELECT count(*) || '/' || Stärke_gemessen || '/' || Länge_m FROM Stämme WHERE Kennung = ?")),
                 QStringLiteral("1/35/4.5"));
        QCOMPARE(d.result(), next ? 0 : int(QDialog::Accepted));
        if (next) {
            QCOMPARE(tz(d, 0)->text(), QStringLiteral("2"));
            QCOMPARE(tz(d, 2)->text(), QStringLiteral("52")); // the new log's length field
            QCOMPARE(tz(d, 1)->text(), QStringLiteral("35"));  // the old diameter, untouched
        }
    }

    // The grid lists every log of the harvest, a page at a time: a store in a large harvest reads
    // one page again and shows the new log on top.
    void gridListsTheWholeHarvest()
    {
        createLot(db(), m_harvest, 2, QStringLiteral("Stämme"));
        execSql(db(), QStringLiteral("WITH RECURSIVE k(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM k WHERE i < 3000) "
                                     "INSERT INTO Stämme(Los_Nr, Laufende_Nr, Baumart, Kennung) SELECT 1, i, 'FI (Fichte)', ? FROM k"),
                {m_harvest});
        LogDialog d(context(), m_harvest, std::nullopt, 2);
        d.show();
        auto* grid = child<QTableView>(d, "gridli");
        QCOMPARE(grid->model()->rowCount(), 256);
        QCOMPARE(grid->model()->headerData(0, Qt::Horizontal).toString(), QStringLiteral("Los_Nr"));
        child<QComboBox>(d, "kom(1)")->setEditText(QStringLiteral("FI (Fichte)"));
        child<QComboBox>(d, "kom(2)")->setEditText(QStringLiteral("B"));
        typeLog(d, QStringLiteral("4,5"), QStringLiteral("35"));
        child<QPushButton>(d, "okn_chster")->click();
        QCOMPARE(grid->model()->rowCount(), 256);
        QCOMPARE(grid->model()->index(0, 0).data().toString() + u'/' + grid->model()->index(0, 1).data().toString(),
                 QStringLiteral("2/3001"));
        QCOMPARE(grid->selectionModel()->selectedRows().value(0).row(), 0);
        QVERIFY(grid->isColumnHidden(grid->model()->columnCount() - 1)); // the ID
    }

    void girthFailingHalfWayStoresNothing()
    {
        execSql(db(), QStringLiteral("INSERT INTO Stämme(Los_Nr, Laufende_Nr, Kennung) VALUES (1, 999998, ?)"), {m_harvest});
        LogDialog d(context(), m_harvest, std::nullopt, 1);
        d.show();
        child<QComboBox>(d, "kom(1)")->setEditText(QStringLiteral("FI (Fichte)"));
        child<QComboBox>(d, "kom(2)")->setEditText(QStringLiteral("B"));
        typeLog(d, QStringLiteral("3"), QStringLiteral("18"));
        typeInto(tz(d, 8), QStringLiteral("3"));
        m_prompter.answerYes();
        child<QPushButton>(d, "ok")->click();
        QCOMPARE(value(QStringLiteral("SELECT count(*) FROM Stämme WHERE Kennung = ?")), QStringLiteral("1"));
        QVERIFY(m_prompter.messages().last().contains(QStringLiteral("999999")));
    }
    void polesByClassAndCount()
    {
        PoleDialog d(context(), m_harvest, std::nullopt);
        d.show();
        child<QComboBox>(d, "kom(0)")->setEditText(QStringLiteral("3"));
        child<QComboBox>(d, "kom(1)")->setEditText(QStringLiteral("FI (Fichte)"));
        typeInto(d.field(0), QStringLiteral("8"));
        typeInto(d.field(1), QStringLiteral("8"));
        QCOMPARE(child<QComboBox>(d, "kom(2)")->currentText(), QStringLiteral("P2.11"));
        QCOMPARE(d.field(3)->text(), QStringLiteral("2,50"));
        typeInto(d.field(2), QStringLiteral("10"));
        QCOMPARE(d.field(4)->text(), QStringLiteral("25,00"));
        m_prompter.answerYes(); // lot 3 is new
        child<QPushButton>(d, "ok")->click();
        QCOMPARE(m_prompter.questions(), QStringList{QStringLiteral("Die Los_Nr 3 existiert noch nicht. Soll diese jetzt angelegt werden?")});
        QCOMPARE(value(QStringLiteral("SELECT Sortierung || '/' || Anzahl_Pfähle || '/' || Preis_berechnet FROM Lose WHERE Kennung = ? AND Los_Nr = 3")),
                 QStringLiteral("Pfähle/10/25.0"));
        QCOMPARE(value(QStringLiteral("SELECT Pfähle_Anzahl || '/' || Anzahl_Lose FROM Hiebe WHERE ID = ?")), QStringLiteral("10/2"));
    }

    // Figures get room for their digits and are not stretched over a wide window.
    void fieldsFitTheirFigures()
    {
        PoleDialog poles(context(), m_harvest, std::nullopt);
        StackDialog stacks(context(), m_harvest, std::nullopt);
        for (QDialog* d : {static_cast<QDialog*>(&poles), static_cast<QDialog*>(&stacks)}) {
            d->resize(1300, 700);
            d->show();
            QVERIFY(QTest::qWaitForWindowExposed(d));
        }
        test::checkFieldWidth(poles.field(2), QStringLiteral("1234567"), true);
        test::checkFieldWidth(poles.field(3), QStringLiteral("123.456,7890"), true);
        test::checkFieldWidth(stacks.field(3), QStringLiteral("1234,567"), true);
        test::checkFieldWidth(stacks.field(8), QStringLiteral("123.456.789,00"), true);
    }

    // Both windows list the rows of every lot of their kind, the one just stored on top.
    void gridsListEveryLot()
    {
        createLot(db(), m_harvest, 3, QStringLiteral("Pfähle"));
        createLot(db(), m_harvest, 4, QStringLiteral("Pfähle"));
        execSql(db(), QStringLiteral("INSERT INTO Pfähle(Los_Nr, Baumart, Anzahl, Kennung) VALUES (3, 'FI (Fichte)', 5, ?)"), {m_harvest});
        execSql(db(), QStringLiteral("INSERT INTO Schichtholz(Los_Nr, Sektions_Nr, Kennung) VALUES (5, 1, ?)"), {m_harvest});
        PoleDialog d(context(), m_harvest, std::nullopt, 4);
        d.show();
        auto* grid = child<QTableView>(d, "gridli");
        QCOMPARE(grid->model()->rowCount(), 1);
        child<QComboBox>(d, "kom(1)")->setEditText(QStringLiteral("FI (Fichte)"));
        typeInto(d.field(0), QStringLiteral("8"));
        typeInto(d.field(1), QStringLiteral("8"));
        typeInto(d.field(2), QStringLiteral("10"));
        child<QPushButton>(d, "okn_chster")->click();
        QCOMPARE(grid->model()->rowCount(), 2);
        QCOMPARE(grid->model()->index(0, 0).data().toString(), QStringLiteral("4"));
        QCOMPARE(grid->model()->index(1, 0).data().toString(), QStringLiteral("3"));
        QCOMPARE(grid->selectionModel()->selectedRows().value(0).row(), 0);

        StackDialog s(context(), m_harvest, std::nullopt, 6);
        QCOMPARE(child<QTableView>(s, "gridli")->model()->rowCount(), 1);
    }

    void stackVolumesClassAndPrice_data()
    {
        QTest::addColumn<int>("deduction");
        QTest::addColumn<QString>("efm");
        QTest::addColumn<double>("storedEfm");
        QTest::newRow("default factors") << 0 << "19,500" << 19.5;
        QTest::newRow("10 % flat deduction") << 10 << "17,550" << 17.55;
    }
    void stackVolumesClassAndPrice()
    {
        QFETCH(int, deduction);
        m_settings.zahl[54] = qint16(deduction);
        createLot(db(), m_harvest, 2, QStringLiteral("Schichtholz"));
        StackDialog d(context(), m_harvest, std::nullopt, 2);
        d.show();
        child<QComboBox>(d, "kom(1)")->setEditText(QStringLiteral("BU (Rotbuche)"));
        QCOMPARE(d.field(0)->text(), QStringLiteral("1"));
        typeInto(d.field(1), QStringLiteral("8"));
        typeInto(d.field(2), QStringLiteral("10"));
        typeInto(d.field(3), QStringLiteral("2"));
        typeInto(d.field(4), QStringLiteral("1,5"));
        QCOMPARE(d.field(5)->text(), QStringLiteral("30,000"));
        QTEST(d.field(6)->text(), "efm");
        QCOMPARE(child<QComboBox>(d, "kom(2)")->currentText(), QStringLiteral("S2.1"));
        QCOMPARE(d.field(8)->text(), QStringLiteral("375,00")); // 12,50 per Ster × 30 Ster
        child<QPushButton>(d, "ok")->click();
        QVERIFY2(m_prompter.messages().isEmpty(), qPrintable(m_prompter.messages().join(u'|')));
        QFETCH(double, storedEfm);
        QCOMPARE(value(QStringLiteral("SELECT m3 || '/' || Preis_berechnet FROM Schichtholz WHERE Kennung = ?")), QStringLiteral("30.0/375.0"));
        QCOMPARE(value(QStringLiteral("SELECT Efm FROM Schichtholz WHERE Kennung = ?")).toDouble(), storedEfm);
        // The lot keeps its stacked-wood totals with two decimals.
        QCOMPARE(value(QStringLiteral("SELECT m3_Schichtholz FROM Lose WHERE Kennung = ? AND Los_Nr = 2")).toDouble(), 30.0);
        QCOMPARE(value(QStringLiteral("SELECT Efm_Schichtholz FROM Lose WHERE Kennung = ? AND Los_Nr = 2")).toDouble(), std::round(storedEfm * 100) / 100);
    }

    void sectionNumberIsNeverStoredTwice()
    {
        createLot(db(), m_harvest, 2, QStringLiteral("Schichtholz"));
        execSql(db(), QStringLiteral("INSERT INTO Schichtholz(Los_Nr, Sektions_Nr, Kennung) VALUES (2, 1, ?)"), {m_harvest});
        StackDialog d(context(), m_harvest, std::nullopt, 2);
        d.show();
        child<QComboBox>(d, "kom(1)")->setEditText(QStringLiteral("BU (Rotbuche)"));
        typeInto(d.field(0), QStringLiteral("1"));
        typeInto(d.field(1), QStringLiteral("8"));
        for (int i : {2, 3, 4})
            typeInto(d.field(i), QStringLiteral("1"));
        m_prompter.answerNo();
        child<QPushButton>(d, "okn_chster")->click();
        QCOMPARE(m_prompter.messages().last(), QStringLiteral("Die Eingabe wurde nicht gespeichert!"));
        QCOMPARE(value(QStringLiteral("SELECT count(*) FROM Schichtholz WHERE Kennung = ?")), QStringLiteral("1"));

        m_settings.zahl[29] = 1;
        m_prompter.answerYes();
        child<QPushButton>(d, "okn_chster")->click();
        QCOMPARE(m_prompter.questions().last(), QStringLiteral("Die Sektions-Nummer 1 existiert beim aktuellen Hieb bereits.\n\n"
                                                               "Soll die Nummer automatisch vergeben werden?"));
        QCOMPARE(value(QStringLiteral("SELECT group_concat(Sektions_Nr) FROM Schichtholz WHERE Kennung = ?")), QStringLiteral("1,2"));
        QCOMPARE(d.field(0)->text(), QStringLiteral("3"));
        QCOMPARE(d.field(2)->text(), QStringLiteral("0,0")); // dimensions reset for the next section
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
        LogForm f = logForm(QStringLiteral("35"), QStringLiteral("4,5"), QStringLiteral("B"));
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

TARVIK_TEST_MAIN(TestLogDialog)
#include "tst_logdialog.moc"
