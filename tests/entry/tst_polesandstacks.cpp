// EF_Eingabe_Pfaehle and EF_Eingabe_Schichtholz through their controls: classes, volumes,
// prices, refusals, section numbers, and the totals that follow.
#include "entry/ui/logdialog.h"
#include "entry/ui/poledialog.h"
#include "entry/ui/stackdialog.h"
#include "store/records.h"
#include "store/sql.h"
#include "support/entryfixture.h"
#include "support/records.h"
#include "support/tempdatafolder.h"
#include "support/widgets.h"

#include <QApplication>
#include <QComboBox>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTableView>

using namespace tarvik;
using test::child;
using test::typeInto;

class TestPolesAndStacks : public QObject, protected test::EntryFixture {
    Q_OBJECT

    static void setLotAndSpecies(QDialog& d, const QString& lot, const QString& species)
    {
        child<QComboBox>(d, "kom(0)")->setEditText(lot);
        child<QComboBox>(d, "kom(1)")->setEditText(species);
    }
    QString refusal(const char* reason) const
    {
        return QStringLiteral("Die Eingabe kann nicht übernommen werden, weil...\n\n") + QString::fromUtf8(reason);
    }

private slots:
    void init()
    {
        resetDatabase(1);
        execSql(db(), QStringLiteral("UPDATE Stärkeklassen_Pfähle SET Schätzpreis_je_St = 2.5 WHERE Klasse = 'P2.11'"));
        execSql(db(), QStringLiteral("UPDATE Stärkeklassen_Schichtholz SET Schätzpreis_je_m3 = 12.5 WHERE Klasse = 'S2.1'"));
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
        std::unique_ptr<EntryWindow> d;
        if (window == u"Stämme")
            d = std::make_unique<LogDialog>(context(), m_harvest, std::nullopt, 1);
        else if (window == u"Pfähle")
            d = std::make_unique<PoleDialog>(context(), m_harvest, std::nullopt);
        else
            d = std::make_unique<StackDialog>(context(), m_harvest, std::nullopt);
        d->show();
        if (auto* fixed = d->findChild<QRadioButton*>(QStringLiteral("optirinde(1)")))
            fixed->click(); // the bark deduction is typed with a fixed deduction only
        typeInto(d->field(field), QStringLiteral("3a5,5.-"));
        QCOMPARE(d->field(field)->text(), QStringLiteral("355"));
    }

    void polesByClassAndCount()
    {
        PoleDialog d(context(), m_harvest, std::nullopt);
        d.show();
        setLotAndSpecies(d, QStringLiteral("3"), QStringLiteral("FI (Fichte)"));
        typeInto(d.field(0), QStringLiteral("8"));
        typeInto(d.field(1), QStringLiteral("8"));
        QCOMPARE(child<QComboBox>(d, "kom(2)")->currentText(), QStringLiteral("P2.11"));
        QCOMPARE(d.field(3)->text(), QStringLiteral("2,50"));
        typeInto(d.field(2), QStringLiteral("10"));
        QCOMPARE(d.field(4)->text(), QStringLiteral("25,00"));
        m_prompter.answerYes(); // lot 3 is new
        child<QPushButton>(d, "ok")->click();
        QCOMPARE(m_prompter.questions(), QStringList{QStringLiteral("Die Los_Nr 3 existiert noch nicht. Soll diese jetzt angelegt werden?")});
        QCOMPARE(value(QStringLiteral("SELECT Sortierung || '/' || Anzahl_Pfähle || '/' || Preis_berechnet FROM Lose WHERE Kennung = ?")),
                 QStringLiteral("Pfähle/10/25.0"));
        QCOMPARE(value(QStringLiteral("SELECT Pfähle_Anzahl || '/' || Anzahl_Lose FROM Hiebe WHERE ID = ?")), QStringLiteral("10/1"));
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

    void poleRefusals_data()
    {
        QTest::addColumn<QString>("lot");
        QTest::addColumn<QString>("diameter");
        QTest::addColumn<QString>("length");
        QTest::addColumn<QString>("count");
        QTest::addColumn<QString>("reason");
        QTest::newRow("length outside every range") << "3" << "14" << "5" << "4" << "...die Stärkeklasse fehlt.";
        QTest::newRow("no count") << "3" << "8" << "8" << "" << "...die Anzahl Pfähle fehlt.";
        QTest::newRow("count 0") << "3" << "8" << "8" << "0" << "...die Anzahl Pfähle fehlt.";
        QTest::newRow("no diameter") << "3" << "" << "8" << "4" << "...die Stärke inkl. Rinde größer als 0 sein muß.";
        QTest::newRow("lot of logs") << "1" << "8" << "8" << "4" << "...das Los 1 bereits mit der Sortierung Stämme eingetragen ist.";
    }
    void poleRefusals()
    {
        QFETCH(QString, lot);
        QFETCH(QString, diameter);
        QFETCH(QString, length);
        QFETCH(QString, count);
        QFETCH(QString, reason);
        createLot(db(), m_harvest, 1, QStringLiteral("Stämme"));
        PoleDialog d(context(), m_harvest, std::nullopt);
        d.show();
        setLotAndSpecies(d, lot, QStringLiteral("FI (Fichte)"));
        typeInto(d.field(0), diameter);
        typeInto(d.field(1), length);
        typeInto(d.field(2), count);
        child<QPushButton>(d, "ok")->click();
        QCOMPARE(m_prompter.messages(), QStringList{refusal("") + reason});
        QCOMPARE(value(QStringLiteral("SELECT count(*) FROM Pfähle WHERE Kennung = ?")), QStringLiteral("0"));
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
        QCOMPARE(value(QStringLiteral("SELECT m3_Schichtholz FROM Lose WHERE Kennung = ?")).toDouble(), 30.0);
        QCOMPARE(value(QStringLiteral("SELECT Efm_Schichtholz FROM Lose WHERE Kennung = ?")).toDouble(), std::round(storedEfm * 100) / 100);
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

    void missingHeightGivesTheDimensionMessage()
    {
        StackDialog d(context(), m_harvest, std::nullopt, 2);
        d.show();
        child<QComboBox>(d, "kom(1)")->setEditText(QStringLiteral("BU (Rotbuche)"));
        typeInto(d.field(1), QStringLiteral("8"));
        typeInto(d.field(2), QStringLiteral("10"));
        typeInto(d.field(3), QStringLiteral("2"));
        child<QPushButton>(d, "ok")->click();
        QCOMPARE(m_prompter.messages(), QStringList{refusal("...die Sektionslänge, Sektionstiefe und Sektionshöhe angegeben werden muß.")});
    }
};

TARVIK_TEST_MAIN(TestPolesAndStacks)
#include "tst_polesandstacks.moc"
