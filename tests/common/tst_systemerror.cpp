// What the system and the libraries report in English reaches the user as a German sentence:
// real failures of real files, the texts of SQLite and of the spreadsheet library, and nothing
// the spreadsheet library prints on the terminal.
#include "common/systemerror.h"
#include "reports/lists/writers.h"
#include "support/tempdatafolder.h"

#include <QFile>
#include <QRegularExpression>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTemporaryFile>
#include <QtTest>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <unistd.h>

using namespace tarvik;

namespace {

// English words a German sentence never holds.
bool soundsEnglish(const QString& text)
{
    static const QRegularExpression english(QStringLiteral("\\b(the|such|file|directory|denied|error|space|left|device|is|not)\\b"),
                                            QRegularExpression::CaseInsensitiveOption);
    return english.match(text).hasMatch();
}

// What the code writes to the standard error stream while it runs.
QByteArray standardErrorOf(const std::function<void()>& code)
{
    QTemporaryFile sink;
    if (!sink.open())
        return "kein Auffangfile";
    std::fflush(stderr);
    const int saved = ::dup(STDERR_FILENO);
    ::dup2(sink.handle(), STDERR_FILENO);
    code();
    std::fflush(stderr);
    ::dup2(saved, STDERR_FILENO);
    ::close(saved);
    sink.seek(0);
    return sink.readAll();
}

} // namespace

class TestSystemError : public QObject {
    Q_OBJECT
    test::TempDataFolder m_dir;

private slots:
    // Real files that cannot be opened or written, each with the sentence the user reads.
    void realFileFailures_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<bool>("write");
        QTest::addColumn<QString>("sentence");
        QTest::newRow("missing file") << m_dir.filePath(QStringLiteral("gibtsnicht.txt")) << false
                                      << QStringLiteral("Die Datei oder der Ordner existiert nicht.");
        QTest::newRow("missing folder") << m_dir.filePath(QStringLiteral("weg/Daten.txt")) << true
                                        << QStringLiteral("Die Datei oder der Ordner existiert nicht.");
        QTest::newRow("a folder, not a file") << m_dir.path() << true << QStringLiteral("Der Name bezeichnet einen Ordner, keine Datei.");
        QTest::newRow("disk full") << QStringLiteral("/dev/full") << true << QStringLiteral("Der Datenträger ist voll.");
    }
    void realFileFailures()
    {
        QFETCH(QString, path);
        QFETCH(bool, write);
        QFETCH(QString, sentence);
        QFile file(path);
        bool failed = !file.open(write ? QIODevice::WriteOnly : QIODevice::ReadOnly);
        if (!failed) {
            failed = file.write(QByteArray(64 * 1024, 'x')) < 0;
            failed = !file.flush() || failed;
        }
        QVERIFY(failed);
        QVERIFY2(soundsEnglish(file.errorString()) || file.errorString() == sentence, qPrintable(file.errorString()));
        QCOMPARE(germanFileError(file), sentence);
    }

    void texts_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("sentence");
        QTest::newRow("no permission") << QString::fromLocal8Bit(std::strerror(EACCES))
                                       << QStringLiteral("Sie haben keine Berechtigung für diese Datei oder diesen Ordner.");
        QTest::newRow("read-only disk") << QString::fromLocal8Bit(std::strerror(EROFS)) << QStringLiteral("Der Datenträger ist schreibgeschützt.");
        QTest::newRow("SQLite: locked") << QStringLiteral("database is locked Unable to fetch row")
                                        << QStringLiteral("Die Datenbank wird gerade von einem anderen Programm benutzt.");
        QTest::newRow("SQLite: full") << QStringLiteral("database or disk is full") << QStringLiteral("Der Datenträger ist voll.");
        QTest::newRow("spreadsheet: cannot create") << QStringLiteral("Error creating output xlsx file. Usually a permissions error.")
                                                    << QStringLiteral("Die Tabellendatei kann nicht angelegt werden; meist fehlt die Schreibberechtigung.");
        QTest::newRow("network: host") << QStringLiteral("Host online.example not found")
                                       << QStringLiteral("Der Server ist nicht bekannt; bitte prüfen Sie die Internetverbindung.");
        QTest::newRow("unknown English") << QStringLiteral("Frobnication failed unexpectedly")
                                         << QStringLiteral("Das System meldet einen Fehler, der sich nicht näher bestimmen lässt.");
        QTest::newRow("German stays") << QStringLiteral("Die Datei ist gesperrt.") << QStringLiteral("Die Datei ist gesperrt.");
    }
    void texts()
    {
        QFETCH(QString, text);
        QFETCH(QString, sentence);
        QCOMPARE(germanErrorText(text), sentence);
    }

    // A spreadsheet that cannot be written: a German reason, and the terminal stays quiet.
    void spreadsheetFailureIsGermanAndSilent()
    {
        QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("tabelle"));
        db.setDatabaseName(QStringLiteral(":memory:"));
        QVERIFY(db.open());
        {
            QSqlQuery rows(db);
            QVERIFY(rows.exec(QStringLiteral("SELECT 'Fichte' AS Baumart, 12 AS Anzahl")));
            lists::ColumnFormat species, count;
            species.name = QStringLiteral("Baumart");
            count.name = QStringLiteral("Anzahl");
            count.kind = lists::ColumnFormat::Kind::Integer;
            lists::WriteResult result;
            const QByteArray printed = standardErrorOf([&] {
                result = lists::writeSpreadsheet(m_dir.filePath(QStringLiteral("fehlt/Daten.xlsx")), rows, {species, count},
                                                 QStringLiteral("Stämme"), 1);
            });
            QVERIFY(!result.ok);
            QVERIFY2(printed.isEmpty(), printed.constData());
            QVERIFY2(result.error.startsWith(QStringLiteral("Die Datei ")), qPrintable(result.error));
            QVERIFY2(!soundsEnglish(result.error.section(u':', 1)), qPrintable(result.error));
        }
        db.close();
        db = QSqlDatabase();
        QSqlDatabase::removeDatabase(QStringLiteral("tabelle"));
        // The terminal works again afterwards.
        QVERIFY(standardErrorOf([] { std::fputs("danach", stderr); }) == "danach");
    }
};

TARVIK_TEST_CORE_MAIN(TestSystemError)
#include "tst_systemerror.moc"
