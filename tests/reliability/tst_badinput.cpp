// Odd text and bad files: what a window writes takes apostrophes, quotes, umlauts and characters
// outside Windows-1252 without an SQL error and reads back as typed; a text one character over
// its column's width is refused whole with the width in the message; Windows-1252 files replace
// what the code page lacks with '?'; every reader of a file says clearly what is wrong with an
// empty, a cut-off or a garbage file.
#include "backup/archive.h"
#include "common/clock.h"
#include "common/textfile.h"
#include "entry/harvestentry.h"
#include "exchange/exchangefile.h"
#include "entry/logentry.h"
#include "entry/lotentry.h"
#include "help/helpfile.h"
#include "invoices/invoice.h"
#include "rules/masterdatalookup.h"
#include "settings/settings.h"
#include "store/database.h"
#include "store/sql.h"
#include "support/records.h"
#include "support/reliabilityfiles.h"
#include "support/tempdatafolder.h"

#include <QFile>
#include <QSqlRecord>
#include <cmath>

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

    int rows(const char* table) { return scalar(db, QStringLiteral("SELECT count(*) FROM %1").arg(quoted(QString::fromUtf8(table)))).toInt(); }
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

    // A window's field cuts at the column's width; text that reaches the core longer than that
    // is refused as a whole, naming the width, and nothing of the store remains.
    void overWidthRefusedWhole_data()
    {
        QTest::addColumn<Store>("store");
        QTest::addColumn<int>("width");
        QTest::addColumn<QString>("table");
        QTest::newRow("harvest Waldname") << Store::Harvest << 30 << "Hiebe";
        QTest::newRow("lot Los_Bezeichnung") << Store::Lot << 15 << "Lose";
        QTest::newRow("log Bemerkung") << Store::Log << 30 << "Stämme";
        QTest::newRow("invoice Vor_Nachname") << Store::Invoice << 30 << "Rechnungen";
    }
    void overWidthRefusedWhole()
    {
        QFETCH(Store, store);
        QFETCH(int, width);
        QFETCH(QString, table);
        Fixture f;
        // Characters, not bytes: umlauts take two bytes each and still fit.
        const QString exact = QString(width, u'Ä');
        const int before = f.rows(table.toUtf8().constData());
        QCOMPARE(f.storeAndReadBack(store, exact).left(width), exact);
        const int afterOne = f.rows(table.toUtf8().constData());
        QCOMPARE(afterOne, before + 1);
        const int listRows = f.rows("Liste_Bemerkungen");
        try {
            const QString result = f.storeAndReadBack(store, exact + u'ß');
            // A store with its checks refuses in the core, before the engine sees the text.
            QVERIFY2(result.startsWith(QStringLiteral("<nicht gespeichert: ")) &&
                         result.contains(QStringLiteral("höchstens %1 Zeichen lang sein darf.").arg(width)),
                     qPrintable(QStringLiteral("gespeichert: ") + result));
        } catch (const StoreError& e) {
            QVERIFY2(e.message().contains(QStringLiteral("ist zu lang: es nimmt höchstens %1 Zeichen auf").arg(width)), qPrintable(e.message()));
        }
        QCOMPARE(f.rows(table.toUtf8().constData()), afterOne);
        QCOMPARE(f.rows("Liste_Bemerkungen"), listRows);
    }

    void windows1252FilesReplaceWhatTheCodePageLacks()
    {
        test::TempDataFolder folder;
        const QString path = folder.filePath(QStringLiteral("aus.txt"));
        QVERIFY(writeTextFile(path, {QStringLiteral("Łódź ☃ Müller € 𝄞"), QStringLiteral("O'Neill \"Nord\"")}).ok);
        QFile file(path);
        QVERIFY(file.open(QIODevice::ReadOnly));
        // Each UTF-16 unit the code page lacks becomes one '?': a character beyond the BMP gives two.
        QCOMPARE(file.readAll(), QByteArray("?\xF3" "d? ? M\xFCller \x80 ??\r\nO'Neill \"Nord\"\r\n"));
        QCOMPARE(readTextFile(path).lines, (QStringList{QStringLiteral("?ód? ? Müller € ??"), QStringLiteral("O'Neill \"Nord\"")}));
    }

    // Every reader of a file the user picks says what is wrong with an empty, a cut-off and a
    // garbage file, and takes nothing from it.
    void badFilesSaySo_data()
    {
        QTest::addColumn<QString>("reader");
        QTest::addColumn<QString>("kind");
        QTest::addColumn<QString>("message");
        const QString notOurs = QStringLiteral("ist keine Datenbank von TARVIK 3.0 oder sie ist beschädigt");
        QTest::newRow("database empty") << "database" << "empty" << notOurs + " (unbekanntes Dateiformat)";
        QTest::newRow("database cut off") << "database" << "truncated" << QString("ist beschädigt: die Datei ist unvollständig");
        QTest::newRow("database garbage") << "database" << "garbage" << notOurs + " (unbekanntes Dateiformat)";
        // The help reader shows what the file holds: a topic it cannot find has no text.
        for (const char* kind : {"empty", "truncated", "garbage"})
            QTest::addRow("help file %s", kind) << "help" << kind << "";
        const QString backup = QStringLiteral("ist kein lesbares ZIP-Archiv oder sie ist beschädigt");
        QTest::newRow("backup empty") << "backup" << "empty" << backup;
        QTest::newRow("backup cut off") << "backup" << "truncated" << backup;
        QTest::newRow("backup garbage") << "backup" << "garbage" << backup;
        const QString exchange = QStringLiteral("Die Datei 3_Tarvik_Export.f10 kann nicht importiert werden");
        QTest::newRow("exchange empty") << "exchange" << "empty" << exchange + ": Die Kennzeichnung #HIEBE# fehlt: die Datei ist unvollständig.";
        QTest::newRow("exchange cut off") << "exchange" << "truncated"
                                          << exchange + " (Zeile 8): Die Zeile endet ohne Zeilenende: die Datei ist unvollständig (abgeschnitten).";
        QTest::newRow("exchange garbage") << "exchange" << "garbage" << exchange + " (Zeile 1): Vor dieser Zeile fehlt die Kennzeichnung #HIEBE#.";
    }
    void badFilesSaySo()
    {
        QFETCH(QString, reader);
        QFETCH(QString, kind);
        QFETCH(QString, message);
        test::TempDataFolder folder;
        QString path;
        QByteArray good;
        if (reader == u"database" || reader == u"backup") {
            test::TempDataFolder data;
            {
                auto db = data.openDatabase();
                test::addHarvest(db->shared(), 1);
            }
            path = folder.filePath(reader == u"database" ? QStringLiteral("TARVIK3.db") : QStringLiteral("TARVIK30_backup_2026_11_23.zip"));
            if (reader == u"backup")
                QVERIFY(writeArchive(data.path(), path).ok);
            else
                QVERIFY(QFile::copy(data.databasePath(), path));
        } else if (reader == u"help") {
            path = folder.filePath(QLatin1String(HelpFileName));
            QVERIFY(QFile::copy(QStringLiteral(TARVIK_SHARE_DIR "/") + QLatin1String(HelpFileName), path));
        } else {
            path = folder.filePath(exchange::harvestFileName(3));
            QVERIFY(QFile::copy(QStringLiteral(TARVIK_FUZZ_CORPUS "/fuzz_exchange/hieb3"), path));
        }
        good = test::readBytes(path);
        QVERIFY(good.size() > 200);
        const QByteArray bytes = kind == u"empty" ? QByteArray() : kind == u"truncated" ? good.left(good.size() / 2 + 17) : test::garbage(8192);
        QFile::remove(path);
        test::writeBytes(path, bytes);

        QString said;
        if (reader == u"database") {
            try {
                Database::openOrCreate(path);
                QFAIL("geöffnet");
            } catch (const StoreError& e) {
                said = e.message();
            }
            QCOMPARE(test::readBytes(path), bytes); // left untouched
        } else if (reader == u"backup") {
            const ArchiveCheck check = checkArchive(path);
            QVERIFY(!check.ok);
            said = check.error;
        } else if (reader == u"exchange") {
            const exchange::ParseResult r = exchange::parseHarvestFile(path);
            QVERIFY(!r.file);
            said = exchange::refusalMessage(exchange::harvestFileName(3), r.error);
        } else {
            QVERIFY(readHelpTopic(folder.path(), QStringLiteral("gibt es nicht")).fileFound);
            QVERIFY(readHelpTopic(folder.path(), QStringLiteral("gibt es nicht")).text.isEmpty());
            for (const QString& key : helpTopicKeys(folder.path()))
                QVERIFY(readHelpTopic(folder.path(), key).fileFound);
            return;
        }
        QVERIFY2(said.contains(message), qPrintable(said));
    }

    // The settings file is the one reader that repairs instead of refusing: any bytes give
    // the defaults where nothing could be read.
    void settingsRepairWhatCannotBeRead_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::newRow("empty") << QByteArray();
        QTest::newRow("cut off") << QByteArray(" 1\r\n 0\r\n 3");
        QTest::newRow("garbage") << test::garbage(4096);
        QTest::newRow("not a number") << QByteArray("nan\r\ninf\r\n").repeated(60);
    }
    void settingsRepairWhatCannotBeRead()
    {
        QFETCH(QByteArray, bytes);
        test::TempDataFolder folder;
        const QString path = folder.filePath(QLatin1String(SettingsFileName));
        test::writeBytes(path, bytes);
        const Einstellungen s = EinstellungenLaden(path);
        QCOMPARE(s.zahl[17] >= 3, true);
        for (float d : s.dezimal)
            QVERIFY(std::isfinite(d));
        QVERIFY(s.dezimal[0] != 0.0f);
        QVERIFY(!s.text[10].trimmed().isEmpty());
    }
};

TARVIK_TEST_CORE_MAIN(TestBadInput)
#include "tst_badinput.moc"
