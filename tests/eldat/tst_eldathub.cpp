// The entry hub's "Lose als .eldat-Angebot": the marked lots, in the list's order, into the
// file chosen; the button belongs to the lot list only.
#include "common/sqldate.h"
#include "common/textfile.h"
#include "entry/ui/hubdialog.h"
#include "invoices/invoice.h"
#include "store/records.h"
#include "store/sql.h"
#include "store/totals.h"
#include "support/entryfixture.h"
#include "support/widgets.h"

#include <QApplication>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QPushButton>
#include <QRadioButton>
#include <QTableView>

using namespace tarvik;

class TestEldatHub : public QObject, protected test::EntryFixture {
    Q_OBJECT

private slots:
    // Harvest 12 with lot 1 (one log), lot 2 (empty) and lot 3 (poles); the sender as the invoice window remembers it.
    void init()
    {
        resetDatabase(12);
        execSql(db(), QStringLiteral("UPDATE Hiebe SET Hiebdatum_bis = ? WHERE ID = ?"), {sqlDateValue(QStringLiteral("15.10.2026")), m_harvest});
        QVERIFY(writeTextFile(m_folder.filePath(QString::fromUtf8(RememberedInvoiceFile)),
                              {"0", "19", "0", "Hans Mustermann", "Waldweg 3", "12345 Holzhausen", "01234 5678", "hm@example.de", "", "", ""})
                    .ok);
        createLot(db(), m_harvest, 1, QStringLiteral("Stämme"));
        createLot(db(), m_harvest, 2, QStringLiteral("Stämme"));
        createLot(db(), m_harvest, 3, QStringLiteral("Pfähle"));
        execSql(db(), QStringLiteral("INSERT INTO Stämme(Los_Nr, Laufende_Nr, Baumart, Stärke_gemessen, Stärke_oR, Länge_m, Efm_oR, "
                                     "Stärkeklasse, Güteklasse, Kennung) VALUES (1, 1, 'FI (Fichte)', 35, 33, 4.5, 0.385, 'L3a', 'B', ?)"),
                {m_harvest});
        execSql(db(), QStringLiteral("INSERT INTO Pfähle(Los_Nr, Baumart, Stärke_mR, Länge_m, Anzahl, Kennung) VALUES (3, 'KI (Kiefer)', 9, 8, 6, ?)"),
                {m_harvest});
        recomputeTotals(db(), m_harvest);
    }

    // The hub offers the marked lots in the list's order, after asking where to save.
    void hubOffersMarkedLots()
    {
        HubDialog hub(context(), m_harvest, HubList::Lose);
        hub.show();
        auto* grid = test::child<QTableView>(hub, "gridli");
        auto* button = test::child<QPushButton>(hub, "comeldat");
        QVERIFY(button->isEnabled());
        button->click();
        QCOMPARE(m_prompter.messages(), QStringList{QStringLiteral("Bitte markieren Sie zuerst die Lose, die angeboten werden sollen.")});

        grid->selectionModel()->select(grid->model()->index(2, 0), QItemSelectionModel::Select | QItemSelectionModel::Rows);
        grid->selectionModel()->select(grid->model()->index(0, 0), QItemSelectionModel::Select | QItemSelectionModel::Rows);
        m_prompter.clear();
        m_prompter.answerText(m_folder.filePath(QStringLiteral("Hub"))); // the suffix is added
        button->click();
        QCOMPARE(m_prompter.questions(), QStringList{QStringLiteral("Lose als .eldat-Angebot speichern")});
        const QString written = m_folder.filePath(QStringLiteral("Hub.eldat"));
        QFile file(written);
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QJsonObject doc = QJsonDocument::fromJson(file.readAll()).object();
        const QJsonArray piles = doc["document"]["eldat"]["wood_allocation"]["wood_data"]["allocated_pile"].toArray();
        QCOMPARE(piles.size(), 2);
        QCOMPARE(piles[0].toObject()["wood_id"][0]["wood_id_no"].toString(), QStringLiteral("1"));
        QCOMPARE(piles[1].toObject()["wood_id"][0]["wood_id_no"].toString(), QStringLiteral("3"));

        test::child<QRadioButton>(hub, "opti(1)")->setChecked(true);
        QVERIFY(!button->isEnabled());
        QCOMPARE(grid->selectionMode(), QAbstractItemView::SingleSelection);
    }
};

TARVIK_TEST_MAIN(TestEldatHub)
#include "tst_eldathub.moc"
