// OF_Datenimport_Pocket through its controls: the offered files, ticking, the select-all
// question, the report, the copy from a handheld folder. The import itself is proven in the
// exchange tests.
#include "common/textfile.h"
#include "exchange/exportfiles.h"
#include "exchange/ui/importdialog.h"
#include "store/sql.h"
#include "support/records.h"
#include "support/tempdatafolder.h"
#include "support/widgets.h"

#include <QDir>
#include <QListWidget>
#include <QPushButton>
#include <QTemporaryDir>

using namespace tarvik;
using namespace tarvik::test;

namespace {

// Two harvest files with new content, one without, and the master data file.
void writeFiles(const QString& folder)
{
    TempDataFolder origin;
    auto db = origin.openDatabase();
    for (qint32 number : {31, 32})
        addLot(db->shared(), addHarvest(db->shared(), number), 1);
    execSql(db->shared(), QStringLiteral("UPDATE Hiebe SET Selektiert = 'X'"));
    ScriptedPrompter yes;
    yes.answerYes();
    QVERIFY(exchange::writeExportFiles(db->shared(), folder, yes, exchange::selectedHarvestIds(db->shared())).written);
    QVERIFY(writeTextFile(QDir(folder).filePath("40_Tarvik_Export.f10"), {"#HIEBE#", "40\t2026\tW\t\t\t\t"}).ok);
}

QStringList listed(const QListWidget* list)
{
    QStringList names;
    for (int i = 0; i < list->count(); ++i)
        names << list->item(i)->text();
    return names;
}

} // namespace

class TestImportDialog : public QObject {
    Q_OBJECT

    FixedClock m_clock{QDate(2026, 11, 23)};

private slots:
    // The ticked file only; then nothing ticked: the question, and all of them (32 again, renumbered).
    void importsTheTickedFiles()
    {
        TempDataFolder folder;
        writeFiles(folder.path());
        auto db = folder.openDatabase();
        Einstellungen settings;
        settings.repair();
        ScriptedPrompter prompter;
        ImportDialog dialog({db->shared(), settings, folder.path(), prompter, m_clock}, false);
        auto* list = child<QListWidget>(dialog, "liste");
        QCOMPARE(listed(list), (QStringList{"31_Tarvik_Export.f10", "32_Tarvik_Export.f10"}));
        QVERIFY(child<QPushButton>(dialog, "daten_kopieren")->isHidden());

        list->item(1)->setCheckState(Qt::Checked);
        child<QPushButton>(dialog, "startimport")->click();
        QCOMPARE(prompter.questions(), QStringList());
        QVERIFY(prompter.messages().last().startsWith("Der Import wurde abgeschlossen."));
        QCOMPARE(scalar(db->shared(), "SELECT group_concat(Hieb_Nr) FROM Hiebe").toString(), QStringLiteral("32"));
        QVERIFY(dialog.imported());

        prompter.clear();
        prompter.answerYes().answerNo();
        child<QPushButton>(dialog, "startimport")->click();
        QCOMPARE(prompter.questions(),
                 QStringList{"Es sind noch keine zu importierende Dateien ausgewählt. Sollen jetzt alle ausgewählt werden?"});
        QCOMPARE(prompter.messages()[0], QStringLiteral("Die Hieb_Nr 32 existiert bereits. Tarvik hat automatisch die Hieb_Nr 33 vergeben!"));
        QCOMPARE(scalar(db->shared(), "SELECT group_concat(Hieb_Nr) FROM (SELECT Hieb_Nr FROM Hiebe ORDER BY ID)").toString(),
                 QStringLiteral("32,31,33"));
        child<QPushButton>(dialog, "startimport")->click(); // "Nein": nothing more
        QCOMPARE(scalar(db->shared(), "SELECT count(*) FROM Hiebe").toInt(), 3);
    }

    void fetchesFromTheHandheldFolder()
    {
        TempDataFolder folder;
        QTemporaryDir device;
        writeFiles(device.path());
        auto db = folder.openDatabase();
        Einstellungen settings;
        settings.repair();
        settings.text[HandheldFolderSlot] = device.path();
        ScriptedPrompter prompter;
        ImportDialog dialog({db->shared(), settings, folder.path(), prompter, m_clock}, true);
        auto* list = child<QListWidget>(dialog, "liste");
        QCOMPARE(list->count(), 0);
        prompter.answerYes();
        child<QPushButton>(dialog, "daten_kopieren")->click();
        QCOMPARE(listed(list), (QStringList{"31_Tarvik_Export.f10", "32_Tarvik_Export.f10"}));
    }
};

TARVIK_TEST_MAIN(TestImportDialog)
#include "tst_importdialog.moc"
