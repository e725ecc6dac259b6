// EF_Eingabe_Staemme driven through its controls: typed logs, a girth measurement, a duplicate
// running number, the refusals, and the totals that follow.
#include "entry/ui/logdialog.h"
#include "store/records.h"
#include "store/sql.h"
#include "support/entryfixture.h"
#include "support/records.h"
#include "support/tempdatafolder.h"
#include "support/widgets.h"

#include <QApplication>
#include <QButtonGroup>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QHeaderView>
#include <QTableView>
#include <QRegularExpression>

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

private slots:
    void init()
    {
        resetDatabase(1);
        createLot(db(), m_harvest, 1, QStringLiteral("Stämme"));
    }

    void typedLogIsMeasuredAsItIsTyped()
    {
        LogDialog d(context(), m_harvest, std::nullopt, 1);
        d.show();
        QCOMPARE(tz(d, 0)->text(), QStringLiteral("1"));
        child<QComboBox>(d, ("kom(1)"))->setEditText(QStringLiteral("FI (Fichte)"));
        child<QComboBox>(d, ("kom(2)"))->setEditText(QStringLiteral("B"));
        typeLog(d, QStringLiteral("4,5"), QStringLiteral("35"));
        QCOMPARE(tz(d, 4)->text(), QStringLiteral("2"));
        QCOMPARE(tz(d, 5)->text(), QStringLiteral("33"));
        QCOMPARE(tz(d, 6)->text(), QStringLiteral("0,385"));
        QCOMPARE(child<QComboBox>(d, ("kom(3)"))->currentText(), QStringLiteral("L3a"));
        QCOMPARE(tz(d, 14)->text(), QStringLiteral("8,86")); // 23 × 0,385 Efm at index 100
        child<QRadioButton>(d, ("optirinde(1)"))->click();
        typeInto(tz(d, 4), QStringLiteral("5"));
        QCOMPARE(tz(d, 5)->text(), QStringLiteral("30"));
    }

    void tenLogsWithGirthMeasurementAndDuplicate()
    {
        LogDialog d(context(), m_harvest, std::nullopt, 1);
        d.show();
        child<QComboBox>(d, ("kom(1)"))->setEditText(QStringLiteral("FI (Fichte)"));
        child<QComboBox>(d, ("kom(2)"))->setEditText(QStringLiteral("B"));
        auto* next = child<QPushButton>(d, ("okn_chster"));
        const std::pair<const char*, const char*> logs[] = {{"4,5", "35"}, {"10", "55"}, {"5", "28"}, {"4", "22"}};
        for (const auto& [length, diameter] : logs) {
            typeLog(d, QString::fromUtf8(length), QString::fromUtf8(diameter));
            next->click();
        }
        QCOMPARE(tz(d, 0)->text(), QStringLiteral("5"));
        QVERIFY(m_prompter.messages().isEmpty());

        // Number 1 again: answered No, the log is booked a second time under 1 (a forked log).
        typeInto(tz(d, 0), QStringLiteral("1"));
        typeLog(d, QStringLiteral("6"), QStringLiteral("30"));
        m_prompter.answerNo();
        next->click();
        QVERIFY(m_prompter.questions().last().startsWith(QStringLiteral("Die Laufende Nummer 1 existiert beim aktuellen Hieb (ggf. Los) bereits.")));

        // A girth measurement of 5 logs takes the next free numbers.
        typeLog(d, QStringLiteral("3"), QStringLiteral("18"));
        typeInto(tz(d, 8), QStringLiteral("5"));
        m_prompter.answerYes();
        next->click();
        QCOMPARE(m_prompter.messages().last(), QStringLiteral("Die 5 Stämme wurden gebucht!"));
        QCOMPARE(tz(d, 8)->text(), QString());

        QCOMPARE(value(QStringLiteral("SELECT count(*) FROM Stämme WHERE Kennung = ?")), QStringLiteral("10"));
        QCOMPARE(value(QStringLiteral("SELECT count(*) FROM Stämme WHERE Kennung = ? AND Laufende_Nr = 1")), QStringLiteral("2"));
        QCOMPARE(value(QStringLiteral("SELECT group_concat(Laufende_Nr) FROM (SELECT Laufende_Nr FROM Stämme WHERE Kennung = ? "
                                      "AND Bemerkung = 'Mantelmessung (5 Stück)' ORDER BY Laufende_Nr)")),
                 QStringLiteral("5,6,7,8,9"));
        // Lot and harvest totals follow every store.
        const QString efm = value(QStringLiteral("SELECT round(sum(Efm_oR), 3) FROM Stämme WHERE Kennung = ?"));
        QCOMPARE(value(QStringLiteral("SELECT Anzahl_Stämme || '/' || Efm_oR FROM Lose WHERE Kennung = ?")), QStringLiteral("10/") + efm);
        QCOMPARE(value(QStringLiteral("SELECT Stämme_Anzahl || '/' || Stämme_Efm || '/' || Anzahl_Lose FROM Hiebe WHERE ID = ?")),
                 QStringLiteral("10/") + efm + QStringLiteral("/1"));
        QCOMPARE(child<QTableView>(d, ("gridli"))->model()->rowCount(), 10);
        QVERIFY(child<QLabel>(d, ("bezsumme"))->text().startsWith(QStringLiteral("Gesamt: 10 Stämme mit ")));
    }

    void heilbronnClassGoesWithTheTopDiameter()
    {
        LogDialog d(context(), m_harvest, std::nullopt, 1);
        d.show();
        child<QComboBox>(d, "kom(1)")->setEditText(QStringLiteral("FI (Fichte)"));
        child<QComboBox>(d, "kom(2)")->setEditText(QStringLiteral("B"));
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

    void refusals_data()
    {
        QTest::addColumn<QString>("species");
        QTest::addColumn<QString>("length");
        QTest::addColumn<QString>("diameter");
        QTest::addColumn<QString>("top");
        QTest::addColumn<QString>("girth");
        QTest::addColumn<QString>("reason");
        QTest::newRow("no species") << "" << "4" << "30" << "" << "" << "...die Baumart fehlt.";
        QTest::newRow("species not in the master data")
            << "XY (Unbekannt)" << "4" << "30" << "" << "" << "...die Baumart XY (Unbekannt) in den Stammdaten fehlt.";
        QTest::newRow("no diameter") << "FI (Fichte)" << "4" << "" << "" << "" << "...die Stärke ohne Rinde (Stamm-Mitte) größer als 0 sein muß.";
        QTest::newRow("no length") << "FI (Fichte)" << "" << "30" << "" << "" << "...die Länge fehlt.";
        QTest::newRow("top too large") << "FI (Fichte)" << "4" << "30" << "30" << "" << "...der Zopfdurchmesser kleiner als die Stärke sein muß.";
        QTest::newRow("girth of one") << "FI (Fichte)" << "4" << "30" << "" << "1" << "...für die Mantelmessung mehr als 1 Stamm eingetragen werden muß.";
    }
    void refusals()
    {
        QFETCH(QString, species);
        QFETCH(QString, length);
        QFETCH(QString, diameter);
        QFETCH(QString, top);
        QFETCH(QString, girth);
        QFETCH(QString, reason);
        LogDialog d(context(), m_harvest, std::nullopt, 1);
        d.show();
        child<QComboBox>(d, ("kom(1)"))->setEditText(species);
        typeLog(d, length, diameter);
        typeInto(tz(d, 3), top);
        typeInto(tz(d, 8), girth);
        child<QPushButton>(d, ("ok"))->click();
        QCOMPARE(m_prompter.messages(), QStringList{QStringLiteral("Die Eingabe kann nicht übernommen werden, weil...\n\n") + reason});
        QCOMPARE(value(QStringLiteral("SELECT count(*) FROM Stämme WHERE Kennung = ?")), QStringLiteral("0"));
        QCOMPARE(tz(d, 2)->text(), length); // every typed value stays
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

    void lotOfAnotherAssortmentIsRefused()
    {
        createLot(db(), m_harvest, 2, QStringLiteral("Pfähle"));
        LogDialog d(context(), m_harvest, std::nullopt, 2);
        d.show();
        child<QComboBox>(d, ("kom(1)"))->setEditText(QStringLiteral("FI (Fichte)"));
        typeLog(d, QStringLiteral("4"), QStringLiteral("30"));
        child<QPushButton>(d, ("ok"))->click();
        QCOMPARE(m_prompter.messages().last(), QStringLiteral("Die Eingabe kann nicht übernommen werden, weil...\n\n"
                                                              "...das Los 2 bereits mit der Sortierung Pfähle eingetragen ist."));
    }

    void missingLotIsCreatedOnYes()
    {
        LogDialog d(context(), m_harvest, std::nullopt, std::nullopt);
        d.show();
        child<QComboBox>(d, ("kom(0)"))->setEditText(QStringLiteral("7"));
        child<QComboBox>(d, ("kom(1)"))->setEditText(QStringLiteral("BU (Rotbuche)"));
        child<QComboBox>(d, ("kom(2)"))->setEditText(QStringLiteral("B"));
        typeLog(d, QStringLiteral("4"), QStringLiteral("30"));
        m_prompter.answerNo();
        child<QPushButton>(d, ("ok"))->click();
        QCOMPARE(m_prompter.messages().last(), QStringLiteral("Die Eingabe wurde nicht gespeichert!"));
        m_prompter.answerYes();
        child<QPushButton>(d, ("ok"))->click();
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
        d.show();
        QApplication::setActiveWindow(&d);
        child<QComboBox>(d, "kom(1)")->setEditText(QStringLiteral("FI (Fichte)"));
        child<QComboBox>(d, "kom(2)")->setEditText(QStringLiteral("B"));
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
        child<QComboBox>(d, ("kom(1)"))->setEditText(QStringLiteral("FI (Fichte)"));
        child<QComboBox>(d, ("kom(2)"))->setEditText(QStringLiteral("B"));
        typeLog(d, QStringLiteral("3"), QStringLiteral("18"));
        typeInto(tz(d, 8), QStringLiteral("3"));
        m_prompter.answerYes();
        child<QPushButton>(d, ("ok"))->click();
        QCOMPARE(value(QStringLiteral("SELECT count(*) FROM Stämme WHERE Kennung = ?")), QStringLiteral("1"));
        QVERIFY(m_prompter.messages().last().contains(QStringLiteral("999999")));
    }
};

TARVIK_TEST_MAIN(TestLogDialog)
#include "tst_logdialog.moc"
