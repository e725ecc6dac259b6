// Odd text and bad files: what a window writes takes apostrophes, quotes, umlauts and characters
// outside Windows-1252 without an SQL error and reads back as typed; a text one character over
// its column's width is refused whole with the width in the message; Windows-1252 files replace
// what the code page lacks with '?'; every reader of a file says clearly what is wrong with an
// empty, a cut-off or a garbage file.
#include "backup/archive.h"
#include "common/clock.h"
#include "devices/apparchive.h"
#include "devices/logtable.h"
#include "common/textfile.h"
#include "entry/harvestentry.h"
#include "exchange/exchangefile.h"
#include "entry/logentry.h"
#include "entry/lotentry.h"
#include "help/helpfile.h"
#include "invoices/invoice.h"
#include "maintenance/jetconvert.h"
#include "rules/masterdatalookup.h"
#include "settings/settings.h"
#include "store/database.h"
#include "store/sql.h"
#include "support/records.h"
#include "support/tempdatafolder.h"

#include <QFile>
#include <QRandomGenerator>
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

QByteArray garbage(int size)
{
    QByteArray b(size, Qt::Uninitialized);
    QRandomGenerator random(4711);
    for (char& c : b)
        c = static_cast<char>(random.bounded(256));
    return b;
}

void writeBytes(const QString& path, const QByteArray& bytes)
{
    QFile f(path);
    QVERIFY(f.open(QIODevice::WriteOnly | QIODevice::Truncate));
    f.write(bytes);
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

    void badFilesSaySo_data()
    {
        QTest::addColumn<QString>("reader");
        QTest::addColumn<QString>("kind");
        QTest::addColumn<QString>("message");
        const QString notOurs = QStringLiteral("ist keine Datenbank von TARVIK 3.0 oder sie ist beschädigt");
        QTest::newRow("database empty") << "database" << "empty" << notOurs + " (unbekanntes Dateiformat)";
        QTest::newRow("database cut off") << "database" << "truncated" << QString("ist beschädigt: die Datei ist unvollständig");
        QTest::newRow("database garbage") << "database" << "garbage" << notOurs + " (unbekanntes Dateiformat)";
        QTest::newRow("version-2 file empty") << "jet" << "empty" << "ist keine Datenbank von TARVIK 2.0 (keine Access/Jet-Datei).";
        QTest::newRow("version-2 file cut off") << "jet" << "truncated" << "ist unvollständig (abgeschnitten) und kann nicht übernommen werden.";
        QTest::newRow("version-2 file garbage") << "jet" << "garbage" << "ist keine Datenbank von TARVIK 2.0 (keine Access/Jet-Datei).";
        QTest::newRow("help file empty") << "help" << "empty" << "";
        QTest::newRow("help file cut off") << "help" << "truncated" << "";
        QTest::newRow("help file garbage") << "help" << "garbage" << "";
    }
    void badFilesSaySo()
    {
        QFETCH(QString, reader);
        QFETCH(QString, kind);
        QFETCH(QString, message);
        test::TempDataFolder folder;
        QByteArray good;
        QString path;
        if (reader == QLatin1String("database")) {
            path = folder.databasePath();
            {
                auto db = folder.openDatabase();
                test::addHarvest(db->shared(), 1);
            }
            QFile f(path);
            QVERIFY(f.open(QIODevice::ReadOnly));
            good = f.readAll();
        } else if (reader == QLatin1String("jet")) {
            path = folder.filePath(QStringLiteral("tarvik2.mdb"));
            QFile f(QStringLiteral(TARVIK_TEST_DATA "/jet/nwind.mdb"));
            QVERIFY(f.open(QIODevice::ReadOnly));
            good = f.readAll();
        } else {
            path = folder.filePath(QLatin1String(HelpFileName));
            QFile f(QStringLiteral(TARVIK_SHARE_DIR "/") + QLatin1String(HelpFileName));
            QVERIFY(f.open(QIODevice::ReadOnly));
            good = f.readAll();
        }
        QVERIFY(good.size() > 8192);
        const QByteArray bytes = kind == QLatin1String("empty") ? QByteArray()
                                 : kind == QLatin1String("truncated") ? good.left(good.size() / 2 + 17)
                                                                      : garbage(8192);
        writeBytes(path, bytes);

        if (reader == QLatin1String("database")) {
            try {
                Database::openOrCreate(path);
                QFAIL("geöffnet");
            } catch (const StoreError& e) {
                QVERIFY2(e.message().contains(message), qPrintable(e.message()));
            }
            QFile f(path);
            QVERIFY(f.open(QIODevice::ReadOnly));
            QCOMPARE(f.readAll(), bytes); // left untouched
        } else if (reader == QLatin1String("jet")) {
            const QString problem = jetFileProblem(path);
            QVERIFY2(problem.endsWith(message), qPrintable(problem));
        } else {
            // The help reader shows what the file holds: a topic it cannot find has no text,
            // and the window says so; what it finds ends where the file ends.
            const HelpTopic topic = readHelpTopic(folder.path(), QStringLiteral("gibt es nicht"));
            QVERIFY(topic.fileFound);
            QVERIFY(topic.text.isEmpty());
            for (const QString& key : helpTopicKeys(folder.path()))
                QVERIFY(readHelpTopic(folder.path(), key).fileFound);
        }
    }

    // The readers of the import and backup files: an empty, a cut-off and a garbage file each
    // give a message, and no log is taken from them.
    void importAndBackupFilesSaySo_data()
    {
        QTest::addColumn<QString>("reader");
        QTest::addColumn<QString>("kind");
        QTest::addColumn<QString>("message");
        for (const char* reader : {"app archive", "backup archive", "online file", "exchange file"})
            for (const char* kind : {"empty", "truncated", "garbage"})
                QTest::addRow("%s %s", reader, kind) << reader << kind << QString();
    }
    void importAndBackupFilesSaySo()
    {
        QFETCH(QString, reader);
        QFETCH(QString, kind);
        QFETCH(QString, message);
        test::TempDataFolder folder;
        QByteArray good;
        const QString table = QString::fromLatin1(LogTableHeader) + QStringLiteral("\r\n1;1;Fi;B;4,5;35;;N;\r\n1;2;Kie;A;5;30;20;J;Sturm\r\n");
        if (reader == QLatin1String("online file")) {
            good = table.toUtf8();
        } else if (reader == QLatin1String("exchange file")) {
            QFile f(QStringLiteral(TARVIK_FUZZ_CORPUS "/fuzz_exchange/hieb3"));
            QVERIFY(f.open(QIODevice::ReadOnly));
            good = f.readAll();
        } else {
            // A real archive of a data folder, written by the backup itself.
            test::TempDataFolder data;
            {
                auto db = data.openDatabase();
                test::addHarvest(db->shared(), 1);
            }
            if (reader == QLatin1String("app archive"))
                QVERIFY(writeTextFile(data.filePath(QLatin1String(AppLogTableName)), {}).ok);
            const QString archive = folder.filePath(QStringLiteral("quelle.zip"));
            QVERIFY(writeArchive(data.path(), archive).ok);
            QFile f(archive);
            QVERIFY(f.open(QIODevice::ReadOnly));
            good = f.readAll();
        }
        const QByteArray bytes = kind == QLatin1String("empty") ? QByteArray()
                                 : kind == QLatin1String("truncated") ? good.left(reader == QLatin1String("online file") ? good.size() - 20 : good.size() / 2 + 17)
                                                                      : garbage(8192);
        QString said;
        int logs = 0;
        if (reader == QLatin1String("exchange file")) {
            const QString name = exchange::harvestFileName(3);
            const exchange::ParseResult r = exchange::parseHarvestBytes(name, bytes);
            QVERIFY(!r.file);
            said = exchange::refusalMessage(name, r.error);
        } else if (reader == QLatin1String("online file")) {
            const LogTable t = parseLogTable(bytes);
            said = t.error;
            logs = int(t.logs.size());
            // A table cut inside its second log keeps the first whole and counts the cut one.
            if (kind == QLatin1String("truncated")) {
                QVERIFY2(t.error.isEmpty(), qPrintable(t.error));
                QCOMPARE(t.logs.size(), 1);
                QCOMPARE(t.unreadableLines, 1);
            }
        } else {
            const QString path = folder.filePath(reader == QLatin1String("app archive") ? QStringLiteral("holzliste_1.zip")
                                                                                       : QStringLiteral("TARVIK30_backup_2026_11_23.zip"));
            writeBytes(path, bytes);
            if (reader == QLatin1String("app archive")) {
                const LogTable t = readAppArchive(path, folder.path());
                said = t.error;
                logs = int(t.logs.size());
            } else {
                const ArchiveCheck check = checkArchive(path);
                QVERIFY(!check.ok);
                said = check.error;
            }
        }
        if (!(reader == QLatin1String("online file") && kind == QLatin1String("truncated"))) {
            QVERIFY2(!said.isEmpty(), "kein Wort zur Datei");
            QCOMPARE(logs, 0);
        }
        if (!message.isEmpty())
            QVERIFY2(said.contains(message), qPrintable(said));
    }

    // The settings file is the one reader that repairs instead of refusing: any bytes give
    // the defaults where nothing could be read.
    void settingsRepairWhatCannotBeRead_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::newRow("empty") << QByteArray();
        QTest::newRow("cut off") << QByteArray(" 1\r\n 0\r\n 3");
        QTest::newRow("garbage") << garbage(4096);
        QTest::newRow("not a number") << QByteArray("nan\r\ninf\r\n").repeated(60);
    }
    void settingsRepairWhatCannotBeRead()
    {
        QFETCH(QByteArray, bytes);
        test::TempDataFolder folder;
        const QString path = folder.filePath(QLatin1String(SettingsFileName));
        writeBytes(path, bytes);
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
