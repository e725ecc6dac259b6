// Odd text: what a window writes takes apostrophes, quotes, umlauts, SQL wildcards and characters
// outside Windows-1252 without an SQL error and reads back as typed. (Over-wide texts are refused
// in the width tests; damaged files in each reader's own refusal table and the fuzz replays.)
#include "common/clock.h"
#include "entry/harvestentry.h"
#include "entry/logentry.h"
#include "entry/lotentry.h"
#include "invoices/invoice.h"
#include "rules/masterdatalookup.h"
#include "store/database.h"
#include "store/sql.h"
#include "support/records.h"
#include "support/tempdatafolder.h"

#include <QSqlRecord>

using namespace tarvik;

namespace {

enum class Store { Harvest, Lot, Log, Invoice };

struct Fixture {
    test::TempDataFolder folder;
    std::unique_ptr<Database> database = folder.openDatabase();
    QSqlDatabase db = database->shared();
    Einstellungen settings;
    test::ScriptedPrompter prompter;
    FixedClock clock{QDate(2026, 11, 23)};
    AppContext context{db, settings, folder.path(), prompter, clock};
    qint32 harvest = test::addHarvest(db, 1);
    int stores = 0; // each store takes a number of its own

    Fixture() { test::addLot(db, harvest, 1); }

    // Stores text through the core function of the store's window and returns the column read back.
    QString storeAndReadBack(Store store, const QString& text)
    {
        ++stores;
        switch (store) {
        case Store::Harvest: {
            HarvestForm f = proposeNewHarvest(db, clock, folder.path());
            f.waldname = f.bemerkung = f.besitzerName = text;
            const qint32 id = saveHarvest(db, f, std::nullopt);
            return both(QStringLiteral("SELECT Waldname, Bemerkung, Waldbesitzer_Name FROM Hiebe WHERE ID = ?"), {id});
        }
        case Store::Lot: {
            LotForm f = proposeNewLot(db, harvest, folder.path());
            f.losNr = QStringLiteral("2");
            f.sortierung = QStringLiteral("Stämme");
            f.losBezeichnung = f.abnehmer = f.bemerkung = f.lagerort = text;
            const qint32 id = saveLot(db, harvest, f, std::nullopt);
            return both(QStringLiteral("SELECT Los_Bezeichnung, Abnehmer, Bemerkung, Lagerort FROM Lose WHERE ID = ?"), {id});
        }
        case Store::Log: {
            MasterDataLookup lookup(db);
            LogForm f;
            f.losNr = QStringLiteral("1");
            f.laufendeNr = QString::number(stores);
            f.species = QStringLiteral("FI (Fichte)");
            f.quality = QStringLiteral("B"); // priced, so the store does not ask about a log worth nothing
            f.measuredDiameter = QStringLiteral("30");
            f.length = QStringLiteral("10");
            f.remark = text;
            if (!storeLog(context, lookup, harvest, f, std::nullopt))
                return QStringLiteral("<nicht gespeichert: %1>").arg(prompter.messages().join(u'|'));
            return both(QStringLiteral("SELECT Bemerkung, (SELECT Inhalt FROM Liste_Bemerkungen) FROM Stämme "
                                       "WHERE Kennung = ? AND Laufende_Nr = ?"),
                        {harvest, stores});
        }
        case Store::Invoice: {
            InvoiceInput in;
            in.buyer = in.name = in.street = in.town = text;
            in.number = QString::number(20260000 + stores);
            in.date = QStringLiteral("23.11.2026");
            in.lotIds << scalar(db, QStringLiteral("SELECT ID FROM Lose WHERE Kennung = ?"), {harvest}).toInt();
            const auto number = storeInvoice(context, in);
            if (!number)
                return QStringLiteral("<nicht gespeichert: %1>").arg(prompter.messages().join(u'|'));
            return both(QStringLiteral("SELECT Abnehmer, Vor_Nachname, Strasse, Wohnort FROM Rechnungen WHERE ReNr = ?"), {*number});
        }
        }
        return {};
    }

    // The columns of the row, which must all hold the same text; else every value, to see which differs.
    QString both(const QString& sql, const QVariantList& keys)
    {
        QSqlQuery q = execSql(db, sql, keys);
        if (!q.next())
            return QStringLiteral("<keine Zeile>");
        QStringList values;
        for (int i = 0; i < q.record().count(); ++i)
            values << q.value(i).toString();
        values.removeDuplicates();
        return values.join(QStringLiteral(" ≠ "));
    }

};

// The texts every store takes: each fits the narrowest column (Los_Bezeichnung, 15 characters).
const QList<QPair<const char*, QString>>& oddTexts()
{
    static const QList<QPair<const char*, QString>> texts = {
        {"apostrophe", QStringLiteral("O'Neill's Los")},
        {"quotes", QStringLiteral("\"Nord\" 'Süd';--")},
        {"umlauts", QStringLiteral("Jörg Müßig Äöü")},
        {"outside Windows-1252", QStringLiteral("Łódź ☃ 𝄞 € ő")},
        {"percent and backslash", QStringLiteral("50% \\ _x_ ?1")},
    };
    return texts;
}

} // namespace

Q_DECLARE_METATYPE(Store)

class TestBadInput : public QObject {
    Q_OBJECT

private slots:
    void oddTextStoredAsTyped_data()
    {
        QTest::addColumn<Store>("store");
        QTest::addColumn<QString>("text");
        const QList<QPair<const char*, Store>> stores = {
            {"harvest", Store::Harvest}, {"lot", Store::Lot}, {"log", Store::Log}, {"invoice", Store::Invoice}};
        for (const auto& [storeName, store] : stores)
            for (const auto& [textName, text] : oddTexts())
                QTest::addRow("%s, %s", storeName, textName) << store << text;
    }
    void oddTextStoredAsTyped()
    {
        QFETCH(Store, store);
        QFETCH(QString, text);
        Fixture f;
        QString stored;
        try {
            stored = f.storeAndReadBack(store, text);
        } catch (const StoreError& e) {
            QFAIL(qPrintable(e.message()));
        }
        QCOMPARE(stored, text);
        QVERIFY2(f.prompter.messages().isEmpty(), qPrintable(f.prompter.messages().join(u'\n')));
    }
};

TARVIK_TEST_CORE_MAIN(TestBadInput)
#include "tst_badinput.moc"
