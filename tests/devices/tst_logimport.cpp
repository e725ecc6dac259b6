// Collected logs stored in a harvest: lots created where missing, duplicates and unknown
// species skipped and counted, bracket logs, bark by the window's mode, prices and totals,
// every message in its wording, and nothing stored when the database refuses one row.
#include "devices/logimport.h"
#include "store/records.h"
#include "store/sql.h"
#include "support/records.h"
#include "support/entryfixture.h"


using namespace tarvik;

Q_DECLARE_METATYPE(QList<tarvik::ImportedLog>)

namespace {

ImportedLog log(qint32 lot, qint32 number, const char* species, const char* diameter, const char* length,
                const char* quality = "B", const char* remark = "")
{
    ImportedLog l;
    l.lot = lot;
    l.number = number;
    l.species = QString::fromUtf8(species);
    l.diameter = QString::fromLatin1(diameter);
    l.length = QString::fromLatin1(length);
    l.quality = QString::fromLatin1(quality);
    l.remark = QString::fromUtf8(remark);
    return l;
}

const QString Done = QStringLiteral("Der Import wurde erforgreich abgeschlossen!");
const QString Attention = QStringLiteral("ACHTUNG!!!\n\nDa Sie die Stämme automatisch eingelesen haben, müssen Sie dieses Modul mit "
                                         "[Abbrechen] schließen. Nur wenn Sie weitere Stämme zusätzliche Stämme eingeben, können Sie "
                                         "diese wie gewohnt mit [OK] buchen!");

} // namespace

class TestLogImport : public QObject, protected test::EntryFixture {
    Q_OBJECT

    QVariant value(const QString& sql, const QVariantList& values = {}) const { return scalar(db(), sql, values); }
    int logCount() const { return value(QStringLiteral("SELECT count(*) FROM Stämme")).toInt(); }

private slots:
    void init()
    {
        resetDatabase(1);
        createLot(db(), m_harvest, 1, QStringLiteral("Stämme"));
    }

    void deviceLogsAreMeasuredPricedAndTotalled()
    {
        execSql(db(), QStringLiteral("UPDATE Lose SET Preis_Art = 2, Pauschalpreis_efm = 50 WHERE Los_Nr = 1"));
        test::addTypedLog(db(), m_harvest, 1, 7, QStringLiteral("FI (Fichte)"), 30, 4, QStringLiteral("O"));
        const QList<ImportedLog> logs{
            log(0, 1, "Fi", "35", "4"),       // into the window's lot
            log(0, 2, "Kie", "28", "4,5", "A"),
            log(3, 3, "Bu", "40", "5", "C"),  // the device keeps lot 3, which is missing
            log(0, 7, "Fi", "30", "4"),       // number taken in the harvest
            log(0, 8, "Hb", "30", "4"),       // species the device does not know
            log(0, 9, "", "30", "4"),         // species code without species
            log(0, 10, "Fi", "0", "4"),       // no diameter: the log window would refuse it
        };
        m_prompter.answerYes();
        const auto outcome = importLogs(context(), m_harvest, 1, ImportSource::Fmr1, logs, {BarkMode::Tabelle, {}});
        QVERIFY(outcome);
        QCOMPARE(outcome->found, 7);
        QCOMPARE(outcome->stored, 3);
        QCOMPARE(outcome->skipped, 4);
        QCOMPARE(outcome->createdLots, QList<qint32>{3});
        QCOMPARE(m_prompter.questions().first(), QStringLiteral("Es wurden 7 Stämme gefunden. Sollen diese jetzt übertragen werden?"));
        QCOMPARE(m_prompter.messages(),
                 (QStringList{QStringLiteral("Der FMR1 hat Sämme aus einem Los gespeichert, welches im aktuellen Hieb noch nicht "
                                             "angelegt ist. Das Los 3 wird deshalb jetzt angelegt."),
                              QStringLiteral("Von den 7 Stämmen wurden 4 nicht importiert. Das kann damit zusammenhängen, dass z.B. "
                                             "die Baumart in Tarvik nicht auffindbar ist oder die laufende Nummer im aktuellen Hieb "
                                             "bereits vergeben ist."),
                              Done, Attention}));

        // Bark by table: spruce 27–50 cm loses 2 cm; 0,33 × 0,33 × 3.14159 ÷ 4 × 4 = 0,342.
        QCOMPARE(value(QStringLiteral("SELECT Baumart || '|' || Rindenabzugsart || '|' || Rindenabzug || '|' || Stärke_oR || '|' || "
                                      "printf('%.3f', Efm_oR) || '|' || Stärkeklasse || '|' || Güteklasse || '|' || "
                                      "printf('%.2f', Holzpreis) || '|' || Los_Nr FROM Stämme WHERE Laufende_Nr = 1")).toString(),
                 QStringLiteral("FI (Fichte)|T|2|33|0.342|L3a|B|17.10|1")); // flat 50 per Efm of the lot
        QCOMPARE(value(QStringLiteral("SELECT group_concat(Laufende_Nr || ':' || Baumart || ':' || Los_Nr) FROM Stämme WHERE Laufende_Nr IN (2, 3)")).toString(),
                 QStringLiteral("2:KI (Kiefer):1,3:BU (Rotbuche):3"));
        QCOMPARE(value(QStringLiteral("SELECT Sortierung FROM Lose WHERE Los_Nr = 3")).toString(), QStringLiteral("Stämme"));

        // Totals of the lots and of the harvest follow at once.
        QCOMPARE(value(QStringLiteral("SELECT Anzahl_Stämme FROM Lose WHERE Los_Nr = 1")).toInt(), 3);
        QCOMPARE(value(QStringLiteral("SELECT Anzahl_Stämme FROM Lose WHERE Los_Nr = 3")).toInt(), 1);
        QCOMPARE(value(QStringLiteral("SELECT Stämme_Anzahl FROM Hiebe WHERE ID = ?"), {m_harvest}).toInt(), 4);
        QCOMPARE(value(QStringLiteral("SELECT Anzahl_Lose FROM Hiebe WHERE ID = ?"), {m_harvest}).toInt(), 2);
        QVERIFY(value(QStringLiteral("SELECT Holzpreis FROM Lose WHERE Los_Nr = 1")).toDouble() > 17.1);
    }

    void barkFollowsTheWindowsMode_data()
    {
        QTest::addColumn<int>("mode");
        QTest::addColumn<QString>("fixed");
        QTest::addColumn<int>("underBark");
        QTest::newRow("ohne") << int(BarkMode::Ohne) << QString() << 35;
        QTest::newRow("fest 3") << int(BarkMode::Fest) << QStringLiteral("3") << 32;
        QTest::newRow("tabelle") << int(BarkMode::Tabelle) << QString() << 33;
    }
    void barkFollowsTheWindowsMode()
    {
        QFETCH(int, mode);
        QFETCH(QString, fixed);
        QFETCH(int, underBark);
        m_prompter.answerYes();
        QVERIFY(importLogs(context(), m_harvest, 1, ImportSource::App, {log(1, 1, "Fi", "35", "4")}, {BarkMode(mode), fixed}));
        QCOMPARE(value(QStringLiteral("SELECT Stärke_oR FROM Stämme")).toInt(), underBark);
    }

    void bracketLogsBelongToTheirMainLog()
    {
        const QList<ImportedLog> logs{log(4, 5, "Fi", "35", "4"), log(4, 10005, "Fi", "22", "4", "C", "Zwiesel"),
                                      log(4, 10006, "Fi", "20", "3")};
        m_prompter.answerYes().answerYes();
        const auto outcome = importLogs(context(), m_harvest, std::nullopt, ImportSource::Online, logs, {});
        QVERIFY(outcome);
        QCOMPARE(outcome->stored, 3);
        QCOMPARE(m_prompter.questions().at(1),
                 QStringLiteral("Es wurden Stämme mit einer Stammnummer über 10000 gefunden. Hier könnte es sich auch um Klammerstämme "
                                "handeln, die zu den Stämmen 'Aktuelle Stammnummer - 10.000' gehören. Sollen die Stämme mit einer "
                                "Stammnummer > 10.000 als Klammerstämme gespeichert werden?"));
        QCOMPARE(m_prompter.messages().first(),
                 QStringLiteral("Das Los 4 ist im aktuellen Hieb noch nicht angelegt ist. Das Los 4 wird deshalb jetzt angelegt."));
        QCOMPARE(value(QStringLiteral("SELECT count(*) FROM Stämme WHERE Laufende_Nr = 5")).toInt(), 2);
        QCOMPARE(value(QStringLiteral("SELECT Bemerkung FROM Stämme WHERE Laufende_Nr = 5 AND Stärke_gemessen = 22")).toString(),
                 QStringLiteral("Klammerstamm zu 5 Zwiesel"));
        QCOMPARE(value(QStringLiteral("SELECT Bemerkung FROM Stämme WHERE Laufende_Nr = 6")).toString(), QStringLiteral("Klammerstamm zu 6"));

        // The same file again: main and bracket logs are all found and skipped.
        m_prompter.clear();
        m_prompter.answerYes().answerYes();
        const auto again = importLogs(context(), m_harvest, std::nullopt, ImportSource::Online, logs, {});
        QVERIFY(again);
        QCOMPARE(again->stored, 0);
        QCOMPARE(again->skipped, 3);
        QCOMPARE(logCount(), 3);
    }

    void bracketLogsDeclinedKeepTheirNumber()
    {
        m_prompter.answerYes().answerNo();
        QVERIFY(importLogs(context(), m_harvest, 1, ImportSource::Online, {log(1, 10005, "Fi", "22", "4")}, {}));
        QCOMPARE(value(QStringLiteral("SELECT Laufende_Nr FROM Stämme")).toInt(), 10005);
        QVERIFY(value(QStringLiteral("SELECT Bemerkung FROM Stämme")).toString().isEmpty());
    }

    void nothingStored_data()
    {
        QTest::addColumn<int>("source");
        QTest::addColumn<bool>("empty");
        QTest::addColumn<QString>("message");
        QTest::newRow("device, nothing found") << int(ImportSource::Fmr1) << true
                                               << QStringLiteral("Es wurden keine Daten gefunden. Bitte prüfen Sie ggf. nochmals die COM-Schnittstelle.");
        QTest::newRow("service, nothing found") << int(ImportSource::Online) << true << QStringLiteral("Es wurden keine Stämme gefunden.");
        QTest::newRow("transfer declined") << int(ImportSource::App) << false << QString();
    }
    void nothingStored()
    {
        QFETCH(int, source);
        QFETCH(bool, empty);
        QFETCH(QString, message);
        if (!empty)
            m_prompter.answerNo();
        QVERIFY(!importLogs(context(), m_harvest, 1, ImportSource(source), empty ? QList<ImportedLog>{} : QList<ImportedLog>{log(9, 1, "Fi", "35", "4")}, {}));
        QCOMPARE(m_prompter.messages(), message.isEmpty() ? QStringList{} : QStringList{message});
        QCOMPARE(logCount(), 0);
        QVERIFY(!value(QStringLiteral("SELECT 1 FROM Lose WHERE Los_Nr = 9")).isValid());
    }

    // The question shows each log with what will become of it, and the import keeps to it:
    // the logs marked without a reason are stored, the others are not, and when none is
    // stored the closing message says so.
    void refusedLogsAreMarkedWithTheirReason_data()
    {
        QTest::addColumn<int>("source");
        QTest::addColumn<QList<ImportedLog>>("logs");
        QTest::addColumn<QStringList>("reasons");
        const int app = int(ImportSource::App);
        QTest::newRow("lot of another assortment") << app << QList<ImportedLog>{log(5, 1, "Fi", "35", "4"), log(1, 2, "Fi", "35", "4")}
                                                   << QStringList{"Los 5 ist ein Los der Sortierung Pfähle", ""};
        QTest::newRow("number taken in the lot") << app << QList<ImportedLog>{log(1, 7, "Fi", "35", "4"), log(2, 7, "Fi", "35", "4")}
                                                 << QStringList{"Stammnummer 7 im Los 1 bereits vergeben", ""};
        // The device's numbers are unique in the harvest, the app's and the service's in their lot.
        QTest::newRow("device: number taken in the harvest")
            << int(ImportSource::Fmr1) << QList<ImportedLog>{log(2, 7, "Fi", "35", "4")} << QStringList{"Stammnummer 7 im Hieb bereits vergeben"};
        QTest::newRow("service: number of another lot") << int(ImportSource::Online) << QList<ImportedLog>{log(2, 7, "Fi", "35", "4")}
                                                        << QStringList{""};
        QTest::newRow("twice in one transfer") << int(ImportSource::Online)
                                               << QList<ImportedLog>{log(1, 8, "Fi", "35", "4"), log(1, 8, "Ta", "30", "4")}
                                               << QStringList{"", "Stammnummer 8 im Los 1 bereits vergeben"};
        QTest::newRow("unknown and missing species") << app << QList<ImportedLog>{log(1, 8, "Hb", "35", "4"), log(1, 9, "", "35", "4")}
                                                     << QStringList{"Baumart Hb unbekannt", "keine Baumart"};
        QTest::newRow("nothing measured, in a new lot") << app << QList<ImportedLog>{log(9, 1, "Fi", "0", "4"), log(9, 2, "Fi", "30", "0")}
                                                        << QStringList{"Stärke oder Länge fehlt", "Stärke oder Länge fehlt"};
    }
    void refusedLogsAreMarkedWithTheirReason()
    {
        QFETCH(int, source);
        QFETCH(QList<ImportedLog>, logs);
        QFETCH(QStringList, reasons);
        createLot(db(), m_harvest, 5, QStringLiteral("Pfähle"));
        test::addTypedLog(db(), m_harvest, 1, 7, QStringLiteral("FI (Fichte)"), 30, 4, QStringLiteral("O"));
        QStringList shown;
        QString question;
        const auto outcome = importLogs(context(), m_harvest, 1, ImportSource(source), logs, {},
                                        [&](const QString& q, const QList<ImportedLog>& asked, const QStringList& r) {
                                            question = q;
                                            shown = r;
                                            return asked.size() == logs.size();
                                        });
        QCOMPARE(question, QStringLiteral("Es wurden %1 Stämme gefunden. Sollen diese jetzt übertragen werden?").arg(logs.size()));
        QCOMPARE(shown, reasons);
        QVERIFY(outcome);
        const int stored = int(reasons.count(QString()));
        QCOMPARE(outcome->stored, stored);
        QCOMPARE(outcome->skipped, int(logs.size()) - stored);
        QCOMPARE(logCount(), 1 + stored);
        QVERIFY(m_prompter.questions().isEmpty());
        const QStringList messages = m_prompter.messages();
        if (stored == 0) {
            QCOMPARE(messages.last(), QString::fromUtf8(NothingStoredMessage));
            QVERIFY(!messages.contains(Done));
            QVERIFY(!value(QStringLiteral("SELECT 1 FROM Lose WHERE Los_Nr = 9")).isValid()); // no lot for logs that do not come
        } else {
            QCOMPARE(messages.mid(messages.size() - 2), (QStringList{Done, Attention}));
        }
    }

    // Logs of the app and the service that bring no lot, with none in the window, stop the
    // import with the device import's message; with a lot in the window they go there.
    void logsWithoutLotNeedTheFormsLot_data()
    {
        QTest::addColumn<int>("source");
        QTest::addColumn<bool>("formLot");
        QTest::newRow("app, no lot") << int(ImportSource::App) << false;
        QTest::newRow("service, no lot") << int(ImportSource::Online) << false;
        QTest::newRow("app, the window's lot") << int(ImportSource::App) << true;
        QTest::newRow("service, the window's lot") << int(ImportSource::Online) << true;
    }
    void logsWithoutLotNeedTheFormsLot()
    {
        QFETCH(int, source);
        QFETCH(bool, formLot);
        const QList<ImportedLog> logs{log(1, 1, "Fi", "35", "4"), log(0, 2, "Fi", "35", "4")};
        if (formLot)
            m_prompter.answerYes();
        const auto outcome = importLogs(context(), m_harvest, formLot ? std::optional<qint32>(1) : std::nullopt, ImportSource(source), logs, {});
        QCOMPARE(bool(outcome), formLot);
        if (formLot) {
            QCOMPARE(value(QStringLiteral("SELECT count(*) FROM Stämme WHERE Los_Nr = 1")).toInt(), 2);
            return;
        }
        QCOMPARE(m_prompter.questions(), QStringList{});
        QCOMPARE(m_prompter.messages(), QStringList{QStringLiteral("Der Datenimport ist nur möglich, wenn die LOS-Nummer angegeben wird!")});
        QCOMPARE(logCount(), 0);
    }

    void aRefusedRowLeavesNothingStored()
    {
        // The database refuses the third log: the two before it and the new lot go as well.
        execSql(db(), QStringLiteral("CREATE TRIGGER refuse BEFORE INSERT ON Stämme WHEN NEW.Laufende_Nr = 3 "
                                     "BEGIN SELECT RAISE(ABORT, 'kaputt'); END"));
        m_prompter.answerYes();
        const QList<ImportedLog> logs{log(6, 1, "Fi", "35", "4"), log(6, 2, "Fi", "35", "4"), log(6, 3, "Fi", "35", "4")};
        QVERIFY(!importLogs(context(), m_harvest, 1, ImportSource::App, logs, {}));
        QCOMPARE(logCount(), 0);
        QVERIFY(!value(QStringLiteral("SELECT 1 FROM Lose WHERE Los_Nr = 6")).isValid());
        QVERIFY(m_prompter.messages().last().startsWith(QStringLiteral("Der Import konnte nicht gespeichert werden")));
    }

    void deviceQuestionNeedsALot()
    {
        QVERIFY(!confirmFmr1Import(context(), std::nullopt));
        QCOMPARE(m_prompter.messages(), QStringList{QStringLiteral("Der Datenimport ist nur möglich, wenn die LOS-Nummer angegeben wird!")});
        m_prompter.answerYes();
        QVERIFY(confirmFmr1Import(context(), 1));
        QVERIFY(m_prompter.questions().last().startsWith(QStringLiteral("Möchten Sie wirklich die Daten vom Festmeterrechner FMR 1 importieren.")));
    }
};

TARVIK_TEST_CORE_MAIN(TestLogImport)
#include "tst_logimport.moc"
