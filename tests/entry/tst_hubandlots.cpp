// The harvest window, the entry hub and the lot window: numbers, refusals, listing, copying,
// deleting, paying, stepping through the opener's list, lots and their bulk changes.
#include "common/ui/gridformat.h"
#include "entry/hub.h"
#include "entry/lotentry.h"
#include "entry/ui/harvestdialog.h"
#include "entry/ui/hubdialog.h"
#include "entry/ui/lotdialog.h"
#include "store/records.h"
#include "store/sql.h"
#include "support/entryfixture.h"
#include "support/records.h"
#include "support/tempdatafolder.h"
#include "support/widgets.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSettings>
#include <QStandardPaths>
#include <QTabWidget>
#include <QTableView>
#include <QTimer>

using namespace tarvik;
using test::child;

class TestHubAndLots : public QObject, protected test::EntryFixture {
    Q_OBJECT

    static void type(QDialog& d, const char* name, const QString& text) { child<QLineEdit>(d, name)->setText(text); }
    static void choose(QDialog& d, const char* name, const QString& text) { child<QComboBox>(d, name)->setEditText(text); }
    static void press(QDialog& d, const char* name) { child<QPushButton>(d, name)->click(); }
    int count(const QString& sql) const { return scalar(db(), sql).toInt(); }
    std::unique_ptr<QDialog> newEntry(const QString& window)
    {
        if (window == u"Hieb")
            return std::make_unique<HarvestDialog>(context(), std::nullopt);
        return std::make_unique<LotDialog>(context(), m_harvest, std::nullopt);
    }

private slots:
    // The harvest window's tests start without any harvest, the others in harvest 41.
    void init()
    {
        const bool harvestWindow = QByteArray(QTest::currentTestFunction()).startsWith("harvest");
        resetDatabase(harvestWindow ? std::nullopt : std::optional<qint32>(41),
                      {QLatin1String(HarvestDefaultsFile), QLatin1String(LotPriceDefaultsFile)});
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
        const QString h = QStringLiteral("Hieb"), l = QStringLiteral("Los");
        QTest::newRow("Hieb-Nr") << h << 0 << "tz(0)" << "999999" << true;
        QTest::newRow("Jahr") << h << 0 << "tz(1)" << "2026" << true;
        QTest::newRow("Waldname") << h << 0 << "komwaldname" << "Großer Eichwald am Hang" << false;
        QTest::newRow("Waldort") << h << 0 << "t(0)" << "Oberhausen-Rheinhausen" << false;
        QTest::newRow("Hiebfläche") << h << 0 << "tz(2)" << "1234,5678" << true;
        QTest::newRow("Hiebgrund") << h << 0 << "komhiebgrund" << "Käferbefall" << false;
        QTest::newRow("Hiebdatum von") << h << 0 << "tdat(0)" << "31.12.2026" << true;
        QTest::newRow("Bemerkung") << h << 0 << "t(1)" << "Sturmholz nach Orkan" << false;
        QTest::newRow("Waldbesitzer") << h << 0 << "komwaldbesitzer" << "Gemeinde Musterstadt" << false;
        QTest::newRow("Stämme Efm") << h << 0 << "tsumme(2)" << "12.345,678" << true;
        QTest::newRow("Los-Nr") << l << 0 << "kom(0)" << "123456789" << true;
        QTest::newRow("Sortierung") << l << 0 << "kom(1)" << "Schichtholz" << false;
        QTest::newRow("Los-Bezeichnung") << l << 0 << "t(0)" << "Abteilung 12a/b" << false;
        QTest::newRow("Lagerort") << l << 0 << "kom(2)" << "Waldweg an der Hütte 12" << false;
        QTest::newRow("Anfahrt") << l << 0 << "t(1)" << "Über die Brücke, dann links" << false;
        QTest::newRow("GPS Breite") << l << 0 << "t(2)" << "48,1234567" << true;
        QTest::newRow("Abnehmer") << l << 0 << "kom(3)" << "Sägewerk Müller GmbH & Co. KG" << false;
        QTest::newRow("Vermessungsart") << l << 0 << "kom(5)" << "Mittenstärke o.R." << false;
        QTest::newRow("Fixlänge") << l << 0 << "t(4)" << "12,50" << true;
        QTest::newRow("Preis erhalten") << l << 0 << "t(6)" << "123.456,78" << true;
        QTest::newRow("Pauschalpreis") << l << 0 << "tp(1)" << "12.345,00" << true;
        QTest::newRow("Efm o.R.") << l << 0 << "tsumme(1)" << "12.345,678" << true;
        QTest::newRow("Stamm-Nr von") << l << 1 << "tr(1)" << "123456" << true;
        QTest::newRow("Neue Los-Nr") << l << 1 << "tr(3)" << "123456789" << true;
        QTest::newRow("auf Baumart") << l << 1 << "kom(10)" << "DGL (Douglasie)" << false;
    }
    void fieldWidths()
    {
        QFETCH(QString, window);
        QFETCH(int, page);
        QFETCH(QString, name);
        QFETCH(QString, text);
        QFETCH(bool, number);
        const std::unique_ptr<QDialog> d = newEntry(window);
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

    // The access key of [OK+Nächster] acts at once: digits typed right after it belong to the
    // next harvest or lot, not to the one being stored.
    void accessKeyActsAtOnce_data()
    {
        QTest::addColumn<QString>("window");
        QTest::addColumn<QString>("number");
        QTest::addColumn<QString>("stored");
        QTest::newRow("Hieb") << "Hieb" << "tz(0)" << "SELECT group_concat(Hieb_Nr) FROM Hiebe WHERE Waldname = 'Hochwald'";
        QTest::newRow("Los") << "Los" << "kom(0)" << "SELECT group_concat(Los_Nr) FROM Lose";
    }
    void accessKeyActsAtOnce()
    {
        QFETCH(QString, window);
        QFETCH(QString, number);
        QFETCH(QString, stored);
        const std::unique_ptr<QDialog> d = newEntry(window);
        if (auto* woodland = d->findChild<QComboBox*>(QStringLiteral("komwaldname")))
            woodland->setEditText(QStringLiteral("Hochwald"));
        d->show();
        QVERIFY(QTest::qWaitForWindowActive(d.get()));
        QWidget* field = d->findChild<QWidget*>(number);
        field->setFocus();
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_N, Qt::AltModifier);
        QTest::keyClicks(QApplication::focusWidget(), QStringLiteral("77"));
        QTest::qWait(150); // longer than a button's click animation
        QVERIFY2(m_prompter.messages().isEmpty(), qPrintable(m_prompter.messages().join(u'|')));
        QCOMPARE(scalar(db(), stored).toString(), window == u"Hieb" ? QStringLiteral("42") : QStringLiteral("1"));
        auto* box = qobject_cast<QComboBox*>(field);
        QCOMPARE(box ? box->currentText() : qobject_cast<QLineEdit*>(field)->text(), QStringLiteral("77"));
    }

    void hubListsTheHarvestsRecords()
    {
        createLot(db(), m_harvest, 1, QStringLiteral("Stämme"));
        test::addTypedLog(db(), m_harvest, 1, 1, QStringLiteral("FI (Fichte)"), 30, 4, QStringLiteral("O"));
        const qint32 other = test::addHarvest(db(), 42);
        createLot(db(), other, 1, QStringLiteral("Stämme"));
        HubDialog hub(context(), m_harvest, HubList::Lose);
        QCOMPARE(child<QLabel>(hub, "bezhieb")->text(), QStringLiteral("Eingabe für den Hieb:  41 / Eichwald / "));
        auto* grid = child<QTableView>(hub, "gridli");
        QCOMPARE(grid->model()->rowCount(), 1);
        child<QRadioButton>(hub, "opti(1)")->click();
        QCOMPARE(grid->model()->rowCount(), 1);
        QCOMPARE(grid->model()->headerData(1, Qt::Horizontal).toString(), QStringLiteral("Laufende_Nr"));
        QVERIFY(child<QPushButton>(hub, "kopieren")->isEnabled());
        child<QRadioButton>(hub, "opti(4)")->click();
        QVERIFY(child<QPushButton>(hub, "neu")->isEnabled());
        QVERIFY(!child<QPushButton>(hub, "kopieren")->isEnabled());
        QVERIFY(child<QPushButton>(hub, "bezahlt")->isEnabled());

        child<QPushButton>(hub, "löschen")->click();
        QCOMPARE(m_prompter.messages().last(), QStringLiteral("Bitte markieren Sie zuerst den Datensatz, den Sie löschen möchten."));
        child<QPushButton>(hub, "comnächster")->click();
        QCOMPARE(hub.harvestId(), other);
    }

    // "Ändern" from the hub: OK (for lots OK+Nächster as well) stores the row shown and goes on
    // down the hub's list, after the last back to the first; Abbrechen closes, and the hub's
    // list then stands on the row shown last.
    void changeStepsThroughTheList_data()
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
    void changeStepsThroughTheList()
    {
        QFETCH(int, list);
        QFETCH(QString, remark);
        QFETCH(QString, column);
        QFETCH(QString, button);
        createLot(db(), m_harvest, 1, QStringLiteral("Stämme"));
        createLot(db(), m_harvest, 2, QStringLiteral("Pfähle"));
        createLot(db(), m_harvest, 3, QStringLiteral("Schichtholz"));
        for (int n = 1; n <= 3; ++n) {
            test::addTypedLog(db(), m_harvest, 1, n, QStringLiteral("FI (Fichte)"), 30 + n, 4, QStringLiteral("O"));
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
                QWidget* field = window->findChild<QWidget*>(remark);
                auto* box = qobject_cast<QComboBox*>(field);
                shownRemarks << (box ? box->currentText() : qobject_cast<QLineEdit*>(field)->text());
                const QString typed = QStringLiteral("geprüft %1").arg(step);
                box ? box->setEditText(typed) : qobject_cast<QLineEdit*>(field)->setText(typed);
                child<QPushButton>(*window, qPrintable(button))->click();
            }
            titles << window->windowTitle();
            child<QPushButton>(*window, "cmdabbrechen")->click();
        });
        child<QPushButton>(hub, "ändern")->click();

        const QString title = titles.value(0).section(u' ', 0, 1);
        QCOMPARE(titles, (QStringList{title + QStringLiteral(" - Ändern (2 von 3)"), title + QStringLiteral(" - Ändern (3 von 3)"),
                                      title + QStringLiteral(" - Ändern (1 von 3)"), title + QStringLiteral(" - Ändern (2 von 3)"),
                                      title + QStringLiteral(" - Ändern (3 von 3)")}));
        QCOMPARE(shownRemarks, (QStringList{QString(), QString(), QString(), QStringLiteral("geprüft 0")}));
        QVERIFY2(m_prompter.messages().isEmpty(), qPrintable(m_prompter.messages().join(u'|')));
        // Each row got the remark of its last visit, in the hub's order: rows 2, 3, 1, 2.
        const QString table = hubTable(static_cast<HubList>(list));
        QStringList remarks;
        for (int row = 0; row < 3; ++row) {
            const qint32 id = grid->model()->index(row, grid->model()->columnCount() - 1).data().toInt();
            remarks << scalar(db(), QStringLiteral("SELECT \"%1\" FROM \"%2\" WHERE ID = ?").arg(column, table), {id}).toString();
        }
        QCOMPARE(remarks, (QStringList{QStringLiteral("geprüft 2"), QStringLiteral("geprüft 3"), QStringLiteral("geprüft 1")}));
        QCOMPARE(value(QStringLiteral("SELECT count(*) FROM \"%1\" WHERE Kennung = ?").arg(table)), QStringLiteral("3"));
        QCOMPARE(grid->currentIndex().row(), 2);
        QVERIFY(grid->selectionModel()->isRowSelected(2, QModelIndex()));
    }

    // The hub's grid reads as a paper list: money with two decimals, figures right, names left.
    void hubGridReadsLikeAPaperList_data()
    {
        QTest::addColumn<QString>("column");
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("alignment");
        const int right = int(Qt::AlignRight | Qt::AlignVCenter), left = int(Qt::AlignLeft | Qt::AlignVCenter);
        QTest::newRow("Holzpreis") << "Holzpreis" << "2,50" << right;
        QTest::newRow("Preis_berechnet") << "Preis_berechnet" << "110,00" << right;
        QTest::newRow("Länge_m") << "Länge_m" << "5,20" << right;
        QTest::newRow("Efm_oR") << "Efm_oR" << "0,412" << right;
        QTest::newRow("Stärke_gemessen") << "Stärke_gemessen" << "30" << right;
        QTest::newRow("Baumart") << "Baumart" << "FI (Fichte)" << left;
    }
    void hubGridReadsLikeAPaperList()
    {
        QFETCH(QString, column);
        createLot(db(), m_harvest, 1, QStringLiteral("Stämme"));
        test::addTypedLog(db(), m_harvest, 1, 1, QStringLiteral("FI (Fichte)"), 30, double(5.2f), QStringLiteral("O"));
        execSql(db(), QStringLiteral("UPDATE Stämme SET Holzpreis = 2.5, Preis_berechnet = 110, Efm_oR = 0.41234 WHERE Kennung = ?"),
                {m_harvest});
        HubDialog hub(context(), m_harvest, HubList::Staemme);
        const QAbstractItemModel* m = child<QTableView>(hub, "gridli")->model();
        int c = 0;
        while (c < m->columnCount() && m->headerData(c, Qt::Horizontal).toString() != column)
            ++c;
        QVERIFY(c < m->columnCount());
        QTEST(m->index(0, c).data(Qt::DisplayRole).toString(), "text");
        QTEST(m->index(0, c).data(Qt::TextAlignmentRole).toInt(), "alignment");
    }

    // Each list keeps its own widths: a width the user gave a column of the lots is not put on
    // the column of the logs that happens to have the same place.
    void eachListKeepsItsOwnWidths()
    {
        QStandardPaths::setTestModeEnabled(true);
        QSettings(QStringLiteral("TARVIK"), QStringLiteral("TARVIK")).remove(QStringLiteral("eingabe"));
        createLot(db(), m_harvest, 1, QStringLiteral("Stämme"));
        test::addTypedLog(db(), m_harvest, 1, 1, QStringLiteral("FI (Fichte)"), 30, 4, QStringLiteral("O"));
        HubDialog hub(context(), m_harvest, HubList::Lose);
        auto* grid = child<QTableView>(hub, "gridli");
        grid->setColumnWidth(2, 217);
        child<QRadioButton>(hub, "opti(1)")->click();
        QCOMPARE(grid->model()->headerData(2, Qt::Horizontal).toString(), QStringLiteral("Baumart"));
        QVERIFY(grid->columnWidth(2) != 217);
        grid->setColumnWidth(2, 150);
        child<QRadioButton>(hub, "opti(0)")->click();
        QCOMPARE(grid->columnWidth(2), 217);
        hub.accept();
        HubDialog again(context(), m_harvest, HubList::Staemme);
        QCOMPARE(child<QTableView>(again, "gridli")->columnWidth(2), 150); // and they survive closing
    }

    void copyTakesTheNextFreeNumber()
    {
        createLot(db(), m_harvest, 1, QStringLiteral("Stämme"));
        test::addTypedLog(db(), m_harvest, 1, 3, QStringLiteral("FI (Fichte)"), 30, 4, QStringLiteral("O"));
        test::addTypedLog(db(), m_harvest, 1, 4, QStringLiteral("FI (Fichte)"), 30, 4, QStringLiteral("O"));
        QVERIFY(copyRecord(context(), HubList::Staemme, m_harvest, idOf(QStringLiteral("SELECT ID FROM Stämme WHERE Kennung = ? AND Laufende_Nr = 3"))));
        QCOMPARE(value(QStringLiteral("SELECT group_concat(Laufende_Nr) FROM Stämme WHERE Kennung = ?")), QStringLiteral("3,4,5"));
        QCOMPARE(value(QStringLiteral("SELECT Anzahl_Stämme FROM Lose WHERE Kennung = ?")), QStringLiteral("3"));

        execSql(db(), QStringLiteral("INSERT INTO Schichtholz(Los_Nr, Sektions_Nr, Kennung) VALUES (2, 999999, ?)"), {m_harvest});
        QVERIFY(!copyRecord(context(), HubList::Schichtholz, m_harvest, idOf(QStringLiteral("SELECT ID FROM Schichtholz WHERE Kennung = ?"))));
        QCOMPARE(m_prompter.messages().last(),
                 QStringLiteral("Die Suche nach der nächsten freien Sektions-Nummer ist auf über 999999. Deshalb kann die Kopie nicht ausgeführt werden!"));
    }

    void deletingALotAsksOncePerTableWithRows()
    {
        createLot(db(), m_harvest, 1, QStringLiteral("Stämme"));
        test::addTypedLog(db(), m_harvest, 1, 1, QStringLiteral("FI (Fichte)"), 30, 4, QStringLiteral("O"));
        test::addTypedLog(db(), m_harvest, 1, 2, QStringLiteral("FI (Fichte)"), 30, 4, QStringLiteral("O"));
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

    void payingAnInvoiceSettlesItsLots()
    {
        createLot(db(), m_harvest, 1, QStringLiteral("Stämme"));
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
        QCOMPARE(child<QComboBox>(d, "kom(0)")->currentText(), QStringLiteral("5"));
        auto* place = child<QComboBox>(d, "kom(2)");
        place->setEditText(QStringLiteral("Weg 7"));
        emit place->textActivated(QStringLiteral("Weg 7"));
        QCOMPARE(child<QLineEdit>(d, "t(1)")->text(), QStringLiteral("Über die Brücke"));
        child<QComboBox>(d, "kom(3)")->setEditText(QStringLiteral("Säge O'Neill"));
        child<QRadioButton>(d, "optipreis(2)")->click();
        child<QLineEdit>(d, "tp(0)")->setText(QStringLiteral("45,50"));
        child<QPushButton>(d, "ok")->click();
        QVERIFY2(m_prompter.messages().isEmpty(), qPrintable(m_prompter.messages().join(u'|')));
        QCOMPARE(value(QStringLiteral("SELECT Sortierung || '|' || Abnehmer || '|' || Preis_Art || '|' || Pauschalpreis_efm || '|' || GPS_B || '|' || Abgerechnet "
                                      "FROM Lose WHERE Kennung = ? AND Los_Nr = 5")),
                 QStringLiteral("Stämme|Säge O'Neill|2|45.5|48.1|N"));
        QCOMPARE(value(QStringLiteral("SELECT count(*) FROM Liste_Abnehmer WHERE ? > 0")), QStringLiteral("1"));
    }

    // New lots from the hub: the list then stands on the lot stored last.
    void hubStandsOnTheNewLotStoredLast()
    {
        createLot(db(), m_harvest, 1, QStringLiteral("Stämme"));
        HubDialog hub(context(), m_harvest, HubList::Lose);
        QTimer::singleShot(0, this, [] {
            auto* d = qobject_cast<LotDialog*>(QApplication::activeModalWidget());
            QVERIFY(d);
            child<QPushButton>(*d, "okn_chster")->click();
            child<QPushButton>(*d, "okn_chster")->click();
            child<QPushButton>(*d, "cmdabbrechen")->click();
        });
        child<QPushButton>(hub, "neu")->click();
        auto* grid = child<QTableView>(hub, "gridli");
        QCOMPARE(grid->model()->rowCount(), 3);
        QCOMPARE(grid->currentIndex().row(), 2);
        QCOMPARE(grid->model()->index(2, 0).data().toString(), QStringLiteral("3"));
    }

    // Lots entered one after another: [OK+Nächster] stores and proposes the next free number.
    void okNextEntersLotsOneAfterAnother()
    {
        createLot(db(), m_harvest, 4, QStringLiteral("Stämme"));
        LotDialog d(context(), m_harvest, std::nullopt);
        QStringList proposals;
        for (const char* name : {"Erstes", "Zweites"}) {
            child<QLineEdit>(d, "t(0)")->setText(QString::fromUtf8(name));
            child<QComboBox>(d, "kom(3)")->setEditText(QStringLiteral("Säge Nord"));
            child<QPushButton>(d, "okn_chster")->click();
            proposals << child<QComboBox>(d, "kom(0)")->currentText() + u'/' + child<QLineEdit>(d, "t(0)")->text() + u'/' +
                             child<QComboBox>(d, "kom(3)")->currentText();
        }
        QVERIFY2(m_prompter.messages().isEmpty(), qPrintable(m_prompter.messages().join(u'|')));
        QCOMPARE(proposals, (QStringList{"6//", "7//"}));
        QCOMPARE(d.windowTitle(), QStringLiteral("Eingabe Lose - Neu"));
        QVERIFY(d.result() != QDialog::Accepted);
        QCOMPARE(child<QComboBox>(d, "kom(0)")->findText(QStringLiteral("6")), 2);  // the lot list grew
        QCOMPARE(child<QComboBox>(d, "kom(3)")->findText(QStringLiteral("Säge Nord")), 0);
        child<QPushButton>(d, "ok")->click();
        QCOMPARE(d.result(), int(QDialog::Accepted));
        QCOMPARE(value(QStringLiteral("SELECT group_concat(Los_Nr || ':' || coalesce(Los_Bezeichnung, '')) FROM "
                                      "(SELECT * FROM Lose WHERE Kennung = ? ORDER BY Los_Nr)")),
                 QStringLiteral("4:,5:Erstes,6:Zweites,7:"));
        QCOMPARE(d.lastId(), idOf(QStringLiteral("SELECT ID FROM Lose WHERE Kennung = ? AND Los_Nr = 7")));
    }

    void defaultButtonFollowsTheSetting_data()
    {
        QTest::addColumn<int>("setting");
        QTest::addColumn<QString>("defaultButton");
        QTest::newRow("OK") << 0 << "ok";
        QTest::newRow("OK+Nächster") << 1 << "okn_chster";
    }
    void defaultButtonFollowsTheSetting()
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

    void mapLinkOfTheLotChecksItsCoordinates()
    {
        LotDialog d(context(), m_harvest, std::nullopt);
        auto* map = child<QPushButton>(d, "googlelink");
        QVERIFY(map->isEnabled());
        child<QLineEdit>(d, "t(2)")->setText(QStringLiteral("39,999999"));
        child<QLineEdit>(d, "t(3)")->setText(QStringLiteral("10"));
        map->click();
        QVERIFY(m_prompter.messages().last().startsWith(QStringLiteral("Im aktuellen Los müssen die Breidegrade")));
    }

    void renumberingALotTakesItsRowsAlong()
    {
        createLot(db(), m_harvest, 1, QStringLiteral("Stämme"));
        createLot(db(), m_harvest, 2, QStringLiteral("Stämme"));
        test::addTypedLog(db(), m_harvest, 1, 1, QStringLiteral("FI (Fichte)"), 30, 4, QStringLiteral("O"));
        test::addTypedLog(db(), m_harvest, 1, 2, QStringLiteral("FI (Fichte)"), 32, 4, QStringLiteral("O"));
        const qint32 lot1 = idOf(QStringLiteral("SELECT ID FROM Lose WHERE Kennung = ? AND Los_Nr = 1"));
        {
            LotDialog d(context(), m_harvest, lot1);
            child<QComboBox>(d, "kom(0)")->setEditText(QStringLiteral("2"));
            child<QPushButton>(d, "ok")->click();
            QCOMPARE(m_prompter.messages().last(),
                     QStringLiteral("Die Eingabe kann nicht übernommen werden, weil...\n\n...die Los-Nummer 2 bereits existiert."));
            QVERIFY(d.result() != QDialog::Accepted);
        }
        QCOMPARE(value(QStringLiteral("SELECT group_concat(Los_Nr) FROM (SELECT Los_Nr FROM Lose WHERE Kennung = ? ORDER BY Los_Nr)")), QStringLiteral("1,2"));
        {
            LotDialog d(context(), m_harvest, lot1);
            child<QComboBox>(d, "kom(0)")->setEditText(QStringLiteral("3"));
            child<QPushButton>(d, "ok")->click();
            QCOMPARE(d.result(), int(QDialog::Accepted));
        }
        QCOMPARE(value(QStringLiteral("SELECT count(*) FROM Stämme WHERE Kennung = ? AND Los_Nr = 3")), QStringLiteral("2"));
        QCOMPARE(value(QStringLiteral("SELECT Anzahl_Stämme FROM Lose WHERE Kennung = ? AND Los_Nr = 3")), QStringLiteral("2"));
        QCOMPARE(value(QStringLiteral("SELECT Stämme_Anzahl FROM Hiebe WHERE ID = ?")), QStringLiteral("2"));
    }

    void unknownSortingIsShownAndEmptyIsRefused()
    {
        createLot(db(), m_harvest, 1, QStringLiteral("Brennholz"));
        const qint32 lot = idOf(QStringLiteral("SELECT ID FROM Lose WHERE Kennung = ? AND Los_Nr = 1"));
        {
            LotDialog d(context(), m_harvest, lot);
            QCOMPARE(child<QComboBox>(d, "kom(1)")->currentText(), QStringLiteral("Brennholz"));
            child<QPushButton>(d, "ok")->click();
            QCOMPARE(d.result(), int(QDialog::Accepted));
        }
        QCOMPARE(value(QStringLiteral("SELECT Sortierung FROM Lose WHERE Kennung = ?")), QStringLiteral("Brennholz"));
        execSql(db(), QStringLiteral("UPDATE Lose SET Sortierung = '' WHERE Kennung = ?"), {m_harvest});
        LotDialog d(context(), m_harvest, lot);
        child<QPushButton>(d, "ok")->click();
        QCOMPARE(m_prompter.messages().last(), QStringLiteral("Die Eingabe kann nicht übernommen werden, weil...\n\n...die Sortierung fehlt."));
    }

    void rememberedPricesStartNewLots()
    {
        {
            LotDialog d(context(), m_harvest, std::nullopt);
            child<QRadioButton>(d, "optipreis(3)")->click();
            child<QLineEdit>(d, "tp(1)")->setText(QStringLiteral("1500"));
            child<QLineEdit>(d, "tp(2)")->setText(QStringLiteral("12,5"));
            m_prompter.answerYes();
            child<QPushButton>(d, "preisstandard")->click();
        }
        const auto remembered = rememberedPrices(m_folder.path());
        QVERIFY(remembered);
        QCOMPARE(remembered->preisArt, qint16(3));
        QCOMPARE(remembered->pauschalpreisG, 1500.0f);
        LotDialog next(context(), m_harvest, std::nullopt);
        QVERIFY(child<QRadioButton>(next, "optipreis(3)")->isChecked());
        QCOMPARE(child<QLineEdit>(next, "tp(2)")->text(), QStringLiteral("12,50"));

        child<QRadioButton>(next, "optimerken(1)")->click();
        m_prompter.answerYes();
        child<QPushButton>(next, "preisstandard")->click();
        QCOMPARE(m_prompter.messages().last(), QStringLiteral("Die gemerkte Preisberechnung wurde gelöscht!"));
        child<QPushButton>(next, "preisstandard")->click();
        QCOMPARE(m_prompter.messages().last(), QStringLiteral("Es ist keine Preisberechnung gemerkt!"));
    }

    void bulkChangesOfARange()
    {
        createLot(db(), m_harvest, 1, QStringLiteral("Stämme"));
        createLot(db(), m_harvest, 2, QStringLiteral("Pfähle"));
        for (int n = 1; n <= 5; ++n)
            test::addTypedLog(db(), m_harvest, 1, n, QStringLiteral("FI (Fichte)"), 30, 4, QStringLiteral("O"));

        QVERIFY(!moveRangeToLot(context(), m_harvest, {QStringLiteral("1"), QStringLiteral("4"), QStringLiteral("2")}, QStringLiteral("3")));
        QCOMPARE(m_prompter.messages().last(), QStringLiteral("Die Stammnummer von... darf nicht höher sein als die Stammnummer bis..."));
        QVERIFY(!moveRangeToLot(context(), m_harvest, {QStringLiteral("1"), QStringLiteral("1"), QStringLiteral("2")}, QStringLiteral("2")));
        QVERIFY(m_prompter.messages().last().startsWith(QStringLiteral("Dieses Los existiert bereits in einer anderen Sortierung")));

        m_prompter.answerYes();
        QVERIFY(moveRangeToLot(context(), m_harvest, {QStringLiteral("1"), QStringLiteral("4"), QStringLiteral("5")}, QStringLiteral("3")));
        QCOMPARE(m_prompter.questions().last(), QStringLiteral("Soll die Losnummer für das Los 1 und die Stämme 4 bis 5 geändert werden in die Losnummer 3"));
        QCOMPARE(value(QStringLiteral("SELECT Sortierung || Anzahl_Stämme FROM Lose WHERE Kennung = ? AND Los_Nr = 3")), QStringLiteral("Stämme2"));

        m_prompter.answerYes();
        QVERIFY(changeQualityOfRange(context(), m_harvest, {QStringLiteral("1"), QStringLiteral("1"), QStringLiteral("2")}, QStringLiteral("A")));
        QCOMPARE(m_prompter.questions().last(), QStringLiteral("Soll die Güteklasse für das Los 1 und die Stämme 1 bis 2 geändert werden in die Güteklasse A"));
        QVERIFY(m_prompter.messages().last().startsWith(QStringLiteral("WICHTIG!!! Es wurde nur die Güteklasse geändert.")));
        QCOMPARE(value(QStringLiteral("SELECT group_concat(Güteklasse) FROM Stämme WHERE Kennung = ? AND Los_Nr = 1")), QStringLiteral("A,A,B"));

        QVERIFY(!changeSpeciesOfLot(context(), m_harvest, QStringLiteral("1"), QStringLiteral("FI (Fichte)"), QStringLiteral("FI (Fichte)")));
        m_prompter.answerYes();
        QVERIFY(changeSpeciesOfLot(context(), m_harvest, QStringLiteral("1"), QStringLiteral("FI (Fichte)"), QStringLiteral("TA (Tanne)")));
        QCOMPARE(value(QStringLiteral("SELECT count(*) FROM Stämme WHERE Kennung = ? AND Baumart = 'TA (Tanne)'")), QStringLiteral("3"));
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
        QTEST(child<QLineEdit>(d, "tz(0)")->text(), "expected");
        QCOMPARE(child<QLineEdit>(d, "tz(1)")->text(), QStringLiteral("2026"));
        QCOMPARE(child<QLineEdit>(d, "tz(2)")->text(), QStringLiteral("0,0000"));
        QCOMPARE(child<QLineEdit>(d, "tsumme(7)")->text(), QStringLiteral("N"));
    }

    void harvestRefusals_data()
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
    void harvestRefusals()
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

    void harvestStoresEveryColumnAndGrowsTheLists()
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

    void harvestEmptyDateStoresNull()
    {
        HarvestDialog d(context(), std::nullopt);
        choose(d, "komwaldname", QStringLiteral("Eichwald"));
        press(d, "ok");
        QCOMPARE(count(QStringLiteral("SELECT count(*) FROM Hiebe WHERE Hiebdatum_von IS NULL AND Hiebdatum_bis IS NULL")), 1);
    }

    void harvestChangingKeepsItsOwnNumber()
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

    void harvestOkNextBeginsTheNextHarvest()
    {
        HarvestDialog d(context(), std::nullopt);
        choose(d, "komwaldname", QStringLiteral("Eichwald"));
        press(d, "okn_chster");
        QCOMPARE(child<QLineEdit>(d, "tz(0)")->text(), QStringLiteral("2"));
        QVERIFY(d.isVisible() || d.result() != QDialog::Accepted);
        QCOMPARE(child<QComboBox>(d, "komwaldname")->findText(QStringLiteral("Eichwald")), 0);
    }

    void harvestDefaultsAreRememberedForTheNextNewHarvest()
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
        QTEST(child<QLineEdit>(d, "tz(0)")->text(), "number");
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
};

TARVIK_TEST_MAIN(TestHubAndLots)
#include "tst_hubandlots.moc"
