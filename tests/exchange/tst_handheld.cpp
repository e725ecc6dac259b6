// The handheld route with a temporary folder standing in for the device: out, back in, and
// without a device at all.
#include "common/textfile.h"
#include "exchange/handheld.h"
#include "exchange/importfiles.h"
#include "store/sql.h"
#include "support/records.h"
#include "support/tempdatafolder.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

using namespace tarvik;
using namespace tarvik::test;
using namespace tarvik::exchange;

namespace {

const QString CopyQuestionStart = QStringLiteral(
    "Die Exportdateien wurden erstellt unter den Dateinamen *Tarvik_Export.f10 und sind auf Ihrem Rechner im Ordner ");

void selectTwoHarvests(const QSqlDatabase& db)
{
    for (qint32 number : {3, 8}) {
        const qint32 id = addHarvest(db, number);
        addLot(db, id, 1);
        addTypedLog(db, id, 1, 1, QStringLiteral("FI (Fichte)"), 30, 10, QStringLiteral("O"));
    }
    execSql(db, QStringLiteral("UPDATE Hiebe SET Selektiert = 'X'"));
}

QStringList exchangeFiles(const QString& folder)
{
    return QDir(folder).entryList({QStringLiteral("*Tarvik_Export.f10")}, QDir::Files, QDir::Name);
}

Einstellungen withDevice(const QString& folder)
{
    Einstellungen s;
    s.repair();
    s.text[HandheldFolderSlot] = folder;
    return s;
}

} // namespace

class TestHandheld : public QObject {
    Q_OBJECT

private slots:
    void exportCopiesToTheDevice()
    {
        TempDataFolder data;
        QTemporaryDir device;
        auto db = data.openDatabase();
        selectTwoHarvests(db->shared());
        ScriptedPrompter prompter;
        prompter.answerYes().answerYes();
        QVERIFY(exportToHandheld(db->shared(), data.path(), withDevice(device.path()), prompter, {1, 2}).written);
        QVERIFY(prompter.questions()[1].startsWith(CopyQuestionStart));
        QVERIFY(prompter.questions()[1].endsWith(
            "WICHTIG!!! Der Pocket-PC muß mit AktivSync mit dem Rechner verbunden sein, damit die Daten übertragen werden können."));
        const QStringList expected{"3_Tarvik_Export.f10", "8_Tarvik_Export.f10", "Stammdaten_Tarvik_Export.f10"};
        QCOMPARE(exchangeFiles(device.path()), expected);
        QCOMPARE(exchangeFiles(data.path()), expected);
        QVERIFY(prompter.messages().last().startsWith(
            QStringLiteral("Es wurden 3 Exportdateien in den Ordner des Pocket-PC %1 kopiert.").arg(QDir::toNativeSeparators(device.path()))));
    }

    void exportWithoutDeviceLeavesTheFilesHere_data()
    {
        QTest::addColumn<QString>("folder");
        QTest::addColumn<QString>("start");
        QTest::newRow("none chosen") << "" << "Es ist noch kein Ordner des Pocket-PC eingestellt";
        QTest::newRow("not connected") << "/nicht/angeschlossen" << "Der Ordner des Pocket-PC /nicht/angeschlossen ist nicht erreichbar.";
    }

    void exportWithoutDeviceLeavesTheFilesHere()
    {
        QFETCH(QString, folder);
        QFETCH(QString, start);
        TempDataFolder data;
        auto db = data.openDatabase();
        selectTwoHarvests(db->shared());
        ScriptedPrompter prompter;
        prompter.answerYes().answerYes();
        QVERIFY(exportToHandheld(db->shared(), data.path(), withDevice(folder), prompter, {1, 2}).written);
        QCOMPARE(prompter.messages().size(), 1);
        QVERIFY2(prompter.messages()[0].startsWith(start), qPrintable(prompter.messages()[0]));
        QVERIFY(prompter.messages()[0].contains("zum Pocket-PC zwingend erforderlich"));
        QVERIFY(prompter.messages()[0].endsWith("in das Installationsverzeichnis von Pocket-Tarvik kopieren."));
        QCOMPARE(exchangeFiles(data.path()).size(), 3);
    }

    void declinedCopyKeepsTheDeviceUntouched()
    {
        TempDataFolder data;
        QTemporaryDir device;
        auto db = data.openDatabase();
        selectTwoHarvests(db->shared());
        ScriptedPrompter prompter;
        prompter.answerYes().answerNo();
        exportToHandheld(db->shared(), data.path(), withDevice(device.path()), prompter, {1, 2});
        QCOMPARE(exchangeFiles(device.path()), QStringList());
        QCOMPARE(prompter.messages(), QStringList());
    }

    void importCopiesFromTheDevice()
    {
        TempDataFolder data;
        QTemporaryDir device;
        QVERIFY(writeTextFile(QDir(device.path()).filePath("12_Tarvik_Export.f10"), {"#HIEBE#", "12\t2026\tW\t\t\tN\t"}).ok);
        QVERIFY(writeTextFile(QDir(device.path()).filePath("13_Tarvik_Export.f10"), {"#HIEBE#", "13\t2026\tW\t\t\tX\t"}).ok);
        QVERIFY(writeTextFile(QDir(device.path()).filePath("notizen.txt"), {"nicht kopieren"}).ok);
        ScriptedPrompter prompter;
        prompter.answerYes();
        const CopyResult copy = copyFromHandheld(data.path(), withDevice(device.path()), prompter);
        QCOMPARE(copy.copied, 2);
        QCOMPARE(prompter.questions(),
                 QStringList{"Sollen die Daten jetzt automatisch vom Pocket-PC auf dem Home-PC übertragen werden? Hierzu muß "
                             "Pocket-Tarvik standardmäßig installiert sein und der Pocket-PC muß mit dem Home-PC verbunden sein."});
        QCOMPARE(prompter.messages().last(),
                 QStringLiteral("Es wird jetzt geprüft, ob die Daten neue Inhalte haben. Nur solche Datensätze werden für den Import "
                                "zugelassen und in die Liste für die Import-Dateien aufgeführt."));
        QVERIFY(!QFile::exists(data.filePath("notizen.txt")));
        // Only the file with new content is offered.
        QCOMPARE(candidateFiles(data.path()), QStringList{"12_Tarvik_Export.f10"});
    }

    void importWithoutDeviceGoesOnWithWhatIsHere()
    {
        TempDataFolder data;
        QVERIFY(writeTextFile(data.filePath("21_Tarvik_Export.f10"), {"#HIEBE#", "21\t2026\tW\t\t\tA\t"}).ok);
        ScriptedPrompter prompter;
        const CopyResult copy = copyFromHandheld(data.path(), withDevice(QString()), prompter);
        QCOMPARE(copy.copied, 0);
        QCOMPARE(prompter.messages().size(), 2);
        QVERIFY(prompter.messages()[0].contains("vom Pocket-PC zwingend erforderlich"));
        QVERIFY(prompter.messages()[0].endsWith("Der Import wird jetzt trotzdem weiter ausgeführt."));
        QCOMPARE(candidateFiles(data.path()), QStringList{"21_Tarvik_Export.f10"});
    }

    // The device folder reached a second way (another spelling, a link) is the data folder
    // itself: no file is copied onto itself, and the files keep their content.
    void noFileIsCopiedOntoItself_data()
    {
        QTest::addColumn<QString>("spelling"); // relative to the data folder; "@link" a link to it
        QTest::newRow("dot") << "/.";
        QTest::newRow("up and back") << "/../" + QStringLiteral("@name");
        QTest::newRow("linked folder") << "@link";
    }
    void noFileIsCopiedOntoItself()
    {
        QFETCH(QString, spelling);
        TempDataFolder data;
        QTemporaryDir elsewhere;
        const QStringList content{"#HIEBE#", "12\t2026\tW\t\t\tN\t"};
        QVERIFY(writeTextFile(data.filePath("12_Tarvik_Export.f10"), content).ok);
        QString device = data.path() + spelling;
        device.replace(QStringLiteral("@name"), QDir(data.path()).dirName());
        if (spelling == u"@link") {
            device = QDir(elsewhere.path()).filePath(QStringLiteral("geraet"));
            QVERIFY(QFile::link(data.path(), device));
        }
        const CopyResult copy = copyExchangeFiles(data.path(), device);
        QCOMPARE(copy.copied, 0);
        QCOMPARE(copy.already, QStringList{"12_Tarvik_Export.f10"});
        QCOMPARE(readTextFile(data.filePath("12_Tarvik_Export.f10")).lines, content);

        // The handheld steps refuse the folder before they copy.
        ScriptedPrompter prompter;
        QCOMPARE(copyFromHandheld(data.path(), withDevice(device), prompter).copied, 0);
        QVERIFY2(prompter.messages().first().contains(QStringLiteral("ist der Datenordner von TARVIK")), qPrintable(prompter.messages().first()));
        QVERIFY(prompter.questions().isEmpty());
        QCOMPARE(readTextFile(data.filePath("12_Tarvik_Export.f10")).lines, content);
    }

    // A copy that breaks off leaves the old file on the device whole.
    void brokenCopyKeepsTheOldFile()
    {
        TempDataFolder data;
        QTemporaryDir device;
        const QStringList old{"#HIEBE#", "12\t2026\tAlt\t\t\tN\t"};
        QVERIFY(writeTextFile(QDir(device.path()).filePath("12_Tarvik_Export.f10"), old).ok);
        // Reading the process's own memory file at its start fails with an input/output error.
        QVERIFY(QFile::link(QStringLiteral("/proc/self/mem"), data.filePath("12_Tarvik_Export.f10")));
        QVERIFY(writeTextFile(data.filePath("13_Tarvik_Export.f10"), {"#HIEBE#", "13\t2026\tNeu\t\t\tN\t"}).ok);
        const CopyResult copy = copyExchangeFiles(data.path(), device.path());
        QCOMPARE(copy.failed, QStringList{"12_Tarvik_Export.f10"});
        QCOMPARE(copy.copied, 1);
        QCOMPARE(readTextFile(QDir(device.path()).filePath("12_Tarvik_Export.f10")).lines, old);
        QCOMPARE(exchangeFiles(device.path()), (QStringList{"12_Tarvik_Export.f10", "13_Tarvik_Export.f10"})); // no temporary left
    }

    void roundTripThroughTheDevice()
    {
        // Out to the device from one installation, in from it on another.
        TempDataFolder office, home;
        QTemporaryDir device;
        auto source = office.openDatabase();
        selectTwoHarvests(source->shared());
        ScriptedPrompter out;
        out.answerYes().answerYes();
        exportToHandheld(source->shared(), office.path(), withDevice(device.path()), out, {1, 2});

        auto target = home.openDatabase();
        ScriptedPrompter in;
        in.answerYes();
        copyFromHandheld(home.path(), withDevice(device.path()), in);
        const QStringList offered = candidateFiles(home.path());
        QCOMPARE(offered, (QStringList{"3_Tarvik_Export.f10", "8_Tarvik_Export.f10"}));
        QStringList paths;
        for (const QString& name : offered)
            paths << home.filePath(name);
        const ImportReport report = importFiles(target->shared(), withDevice(device.path()), paths);
        QCOMPARE(report.counts.harvests, 2);
        QCOMPARE(report.counts.logs, 2);
        QCOMPARE(scalar(target->shared(), "SELECT group_concat(Hieb_Nr) FROM Hiebe").toString(), QStringLiteral("3,8"));
    }
};

TARVIK_TEST_CORE_MAIN(TestHandheld)
#include "tst_handheld.moc"
