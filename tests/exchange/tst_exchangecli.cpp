// tarvik-cli export and import, run in-process: files on stdout, counts on stdout, messages
// and questions on stderr, exit codes.
#include "cli/cli.h"
#include "support/clirun.h"
#include "common/textfile.h"
#include "store/database.h"
#include "store/sql.h"
#include "support/records.h"
#include "support/tempdatafolder.h"

#include <QDir>
#include <cstdio>

using namespace tarvik;

namespace {

using Output = test::CliOutput;
using test::runCli;

} // namespace

class TestExchangeCli : public QObject {
    Q_OBJECT
private slots:
    void exportThenImportElsewhere()
    {
        test::TempDataFolder office, home;
        QCOMPARE(runCli({"--daten", office.path(), "init"}).code, 0);
        QCOMPARE(runCli({"--daten", home.path(), "init"}).code, 0);
        {
            auto db = Database::openOrCreate(office.databasePath());
            for (qint32 number : {41, 42}) {
                const qint32 id = test::addHarvest(db->shared(), number);
                test::addLot(db->shared(), id, 1);
                test::addTypedLog(db->shared(), id, 1, 1, QStringLiteral("FI (Fichte)"), 35, 4.5, QStringLiteral("O"));
            }
        }

        const Output none = runCli({"--ja", "--daten", office.path(), "export"});
        QCOMPARE(none.code, 1);
        QVERIFY(none.err.contains("Bitte selektieren Sie zuerst die Hiebe"));

        const Output declined = runCli({"--daten", office.path(), "export", "42"});
        QCOMPARE(declined.code, 1);
        QVERIFY(declined.err.contains("Sollen von den 1 selektierten Hieben wirklich Export-Dateien angelegt werden?"));

        QCOMPARE(runCli({"--ja", "--daten", office.path(), "export", "99"}).code, 1);
        QCOMPARE(runCli({"--daten", office.path(), "export", "vier"}).code, 2);

        const Output exported = runCli({"--ja", "--daten", office.path(), "export", "42", "41"});
        QCOMPARE(exported.code, 0);
        QCOMPARE(exported.out, QDir(office.path()).filePath("42_Tarvik_Export.f10") + u'\n' +
                                   QDir(office.path()).filePath("41_Tarvik_Export.f10") + u'\n' +
                                   QDir(office.path()).filePath("Stammdaten_Tarvik_Export.f10") + u'\n');

        QVERIFY(writeTextFile(home.filePath("7_Tarvik_Export.f10"), {"#HIEBE#", "7\t2026"}).ok);
        const Output imported = runCli({"--daten", home.path(), "import", office.filePath("41_Tarvik_Export.f10"),
                                        home.filePath("7_Tarvik_Export.f10"), office.filePath("42_Tarvik_Export.f10")});
        QCOMPARE(imported.code, 1);
        QVERIFY(imported.out.startsWith("Der Import wurde abgeschlossen. Insgesamt wurden folgende Buchungen eingelesen:\n\n"
                                        "Hiebe: 2\nLose: 2\nStämme: 2\nPfähle: 0\nSchichtholz: 0\n\nWICHTIG!!!"));
        QVERIFY(imported.err.contains("Die Datei 7_Tarvik_Export.f10 kann nicht importiert werden (Zeile 2): "
                                      "Die Kennzeichnung #LOSE# fehlt: die Datei ist unvollständig."));

        QCOMPARE(runCli({"--daten", home.path(), "import"}).code, 2);
        auto db = Database::openOrCreate(home.databasePath());
        QCOMPARE(scalar(db->shared(), "SELECT group_concat(Hieb_Nr) FROM Hiebe").toString(), QStringLiteral("41,42"));
    }
};

TARVIK_TEST_CORE_MAIN(TestExchangeCli)
#include "tst_exchangecli.moc"
