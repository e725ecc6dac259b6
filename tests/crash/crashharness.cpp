// Kills each multi-row write with SIGKILL at a random moment and checks what is left: the file
// passes SQLite's integrity check, the program opens it, and the write is wholly there or wholly
// absent. The moments come from a seeded generator, so a run can be repeated.
//
//   tarvik-crashtest [--kills N] [--seed S] [--only NAME,...]   the driver
//   tarvik-crashtest --worker NAME FOLDER                       one write, killed by the driver
#include "common/consoleprompter.h"
#include "common/germanlocale.h"
#include "crash/operations.h"
#include "store/database.h"
#include "store/sql.h"
#include "store/upgrade.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QCryptographicHash>
#include <QDir>
#include <QElapsedTimer>
#include <QProcess>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QSqlRecord>
#include <QTemporaryDir>

#include <chrono>
#include <cstdio>
#include <csignal>
#include <map>
#include <random>
#include <thread>

using namespace tarvik;
using namespace tarvik::crash;

namespace {

constexpr char ReadyLine[] = "bereit";
constexpr char DoneLine[] = "fertig";

QString dbPath(const QString& folder) { return QDir(folder).filePath(QLatin1String(DatabaseFileName)); }

const Operation* findOperation(const QString& name)
{
    for (const Operation& op : operations())
        if (op.name == name)
            return &op;
    return nullptr;
}

int runWorker(const QString& name, const QString& folder)
{
    const Operation* op = findOperation(name);
    if (!op) {
        std::fprintf(stderr, "unbekannte Operation %s\n", qPrintable(name));
        return 2;
    }
    try {
        const auto write = op->prepare(folder);
        std::fputs(ReadyLine, stdout);
        std::fputc('\n', stdout);
        std::fflush(stdout);
        write();
        std::fputs(DoneLine, stdout);
        std::fputc('\n', stdout);
        std::fflush(stdout);
    } catch (const StoreError& e) {
        std::fprintf(stderr, "%s\n", qPrintable(e.message()));
        return 1;
    }
    return 0;
}

// A plain connection of the harness's own, closed again before the next check.
template <typename F>
auto withConnection(const QString& path, F&& use)
{
    static int counter = 0;
    const QString name = QStringLiteral("crash-%1").arg(++counter);
    struct Remove {
        QString name;
        ~Remove() { QSqlDatabase::removeDatabase(name); }
    } remove{name};
    QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), name);
    db.setDatabaseName(path);
    if (!db.open())
        throw StoreError(QStringLiteral("nicht zu öffnen"));
    return use(db);
}

QString integrity(const QString& path)
{
    return withConnection(path, [](QSqlDatabase& db) {
        QSqlQuery q(db);
        if (!q.exec(QStringLiteral("PRAGMA integrity_check")))
            return QStringLiteral("integrity_check lief nicht");
        QStringList lines;
        while (q.next())
            lines << q.value(0).toString();
        return lines.join(u'\n');
    });
}

// Every row of every table, in rowid order, hashed.
QByteArray snapshot(const QString& path)
{
    return withConnection(path, [](QSqlDatabase& db) {
        QCryptographicHash hash(QCryptographicHash::Sha256);
        // The schema too: a class added takes columns with it.
        QSqlQuery schema(db);
        schema.exec(QStringLiteral("SELECT type, name, sql FROM sqlite_master ORDER BY type, name"));
        while (schema.next())
            hash.addData((schema.value(0).toString() + schema.value(1).toString() + schema.value(2).toString()).toUtf8());
        QSqlQuery tables(db);
        tables.exec(QStringLiteral("SELECT name FROM sqlite_master WHERE type = 'table' ORDER BY name"));
        QStringList names;
        while (tables.next())
            names << tables.value(0).toString();
        for (const QString& t : names) {
            hash.addData(t.toUtf8());
            QSqlQuery q(db);
            q.exec(QStringLiteral("SELECT * FROM %1 ORDER BY rowid").arg(quoted(t)));
            while (q.next()) {
                const QSqlRecord r = q.record();
                for (int i = 0; i < r.count(); ++i) {
                    hash.addData(r.value(i).isNull() ? QByteArrayLiteral("\x01") : r.value(i).toString().toUtf8());
                    hash.addData(QByteArrayLiteral("\x1f"));
                }
                hash.addData(QByteArrayLiteral("\x1e"));
            }
        }
        return hash.result();
    });
}

bool copyFolder(const QString& from, const QString& to)
{
    QDir().mkpath(to);
    for (const QString& f : QDir(from).entryList(QDir::Files | QDir::Hidden)) {
        QFile::remove(QDir(to).filePath(f));
        if (!QFile::copy(QDir(from).filePath(f), QDir(to).filePath(f)))
            return false;
    }
    for (const QString& d : QDir(from).entryList(QDir::Dirs | QDir::NoDotAndDotDot | QDir::Hidden))
        if (!copyFolder(QDir(from).filePath(d), QDir(to).filePath(d)))
            return false;
    return true;
}

struct Baseline {
    QString templateFolder;
    QByteArray before, after;
    qint64 writeMicros = 0; // from the ready line to the worker's end, run to completion
};

struct Tally {
    int kills = 0, absent = 0, complete = 0, finishedFirst = 0;
    int integrityFailures = 0, openFailures = 0, halfOperations = 0;
};

class Driver {
public:
    Driver(QString exe, QString root) : m_exe(std::move(exe)), m_root(std::move(root)) {}

    bool baseline(const Operation& op, Baseline& b)
    {
        b.templateFolder = QDir(m_root).filePath(op.name + QStringLiteral("/vorlage"));
        QDir().mkpath(b.templateFolder);
        {
            auto database = Database::openOrCreate(dbPath(b.templateFolder));
            std::FILE* sink = std::fopen("/dev/null", "w");
            ConsolePrompter quiet(true, sink);
            upgradeDatabase(database->shared(), quiet);
            op.seed(database->shared(), b.templateFolder);
            std::fclose(sink);
        }
        b.before = snapshot(dbPath(b.templateFolder));
        // Twice to completion: the write must leave the same rows each time to be compared against.
        QByteArray first;
        for (int round = 0; round < 2; ++round) {
            const QString folder = QDir(m_root).filePath(op.name + QStringLiteral("/ganz"));
            QDir(folder).removeRecursively();
            copyFolder(b.templateFolder, folder);
            QProcess p;
            p.start(m_exe, {QStringLiteral("--worker"), op.name, folder});
            if (!p.waitForStarted() || !p.waitForReadyRead(60000)) {
                std::fprintf(stderr, "%s: Arbeiter meldet sich nicht\n", qPrintable(op.name));
                return false;
            }
            // The write's own time, up to its done line: the kills fall inside it, not in the
            // process's teardown.
            QElapsedTimer t;
            t.start();
            QByteArray out = p.readAllStandardOutput();
            while (!out.contains(DoneLine) && p.waitForReadyRead(120000))
                out += p.readAllStandardOutput();
            b.writeMicros = std::max<qint64>(b.writeMicros, t.nsecsElapsed() / 1000);
            p.waitForFinished(120000);
            if (op.atStart)
                op.atStart(folder);
            if (p.exitStatus() != QProcess::NormalExit || p.exitCode() != 0) {
                std::fprintf(stderr, "%s: Arbeiter scheiterte: %s\n", qPrintable(op.name), p.readAllStandardError().constData());
                return false;
            }
            b.after = snapshot(dbPath(folder));
            if (round == 1 && b.after != first) {
                std::fprintf(stderr, "%s: zwei vollständige Läufe hinterlassen verschiedene Zeilen\n", qPrintable(op.name));
                return false;
            }
            first = b.after;
        }
        // A compaction and a backup change no row: for them the rows must simply stay.
        if (b.after == b.before && op.name != QStringLiteral("komprimieren") && op.name != QStringLiteral("sicherung")) {
            std::fprintf(stderr, "%s: die Operation ändert nichts\n", qPrintable(op.name));
            return false;
        }
        return true;
    }

    void killOnce(const Operation& op, const Baseline& b, qint64 delayMicros, Tally& tally)
    {
        const QString folder = QDir(m_root).filePath(op.name + QStringLiteral("/lauf"));
        QDir(folder).removeRecursively();
        copyFolder(b.templateFolder, folder);
        QProcess p;
        p.start(m_exe, {QStringLiteral("--worker"), op.name, folder});
        if (!p.waitForStarted() || !p.waitForReadyRead(60000)) {
            std::fprintf(stderr, "%s: Arbeiter meldet sich nicht\n", qPrintable(op.name));
            ++tally.openFailures;
            return;
        }
        std::this_thread::sleep_for(std::chrono::microseconds(delayMicros));
        const bool ranToEnd = p.state() == QProcess::NotRunning;
        if (!ranToEnd)
            ::kill(static_cast<pid_t>(p.processId()), SIGKILL);
        p.waitForFinished(60000);
        ++tally.kills;
        if (ranToEnd || p.exitStatus() == QProcess::NormalExit)
            ++tally.finishedFirst;

        if (op.atStart)
            op.atStart(folder);
        const QString path = dbPath(folder);
        QString check;
        try {
            check = integrity(path);
        } catch (const StoreError&) {
            check = QStringLiteral("nicht zu öffnen");
        }
        if (check != QStringLiteral("ok")) {
            ++tally.integrityFailures;
            std::fprintf(stderr, "%s nach %lld µs: integrity_check: %s\n", qPrintable(op.name), delayMicros, qPrintable(check));
            keep(folder, op.name, tally.kills);
            return;
        }
        try {
            Database::openOrCreate(path);
        } catch (const StoreError& e) {
            ++tally.openFailures;
            std::fprintf(stderr, "%s nach %lld µs: %s\n", qPrintable(op.name), delayMicros, qPrintable(e.message()));
            keep(folder, op.name, tally.kills);
            return;
        }
        if (op.checkFiles) {
            if (const QString problem = op.checkFiles(folder); !problem.isEmpty()) {
                ++tally.halfOperations;
                std::fprintf(stderr, "%s nach %lld µs: %s\n", qPrintable(op.name), delayMicros, qPrintable(problem));
                keep(folder, op.name, tally.kills);
                return;
            }
        }
        const QByteArray now = snapshot(path);
        if (now == b.after)
            ++tally.complete;
        else if (now == b.before)
            ++tally.absent;
        else {
            ++tally.halfOperations;
            std::fprintf(stderr, "%s nach %lld µs: halbe Operation\n", qPrintable(op.name), delayMicros);
            keep(folder, op.name, tally.kills);
        }
    }

private:
    // A failing folder stays for a look, beside the working folders.
    void keep(const QString& folder, const QString& name, int n)
    {
        const QString target = QDir::temp().filePath(QStringLiteral("tarvik-crash-%1-%2").arg(name).arg(n));
        QDir(target).removeRecursively();
        copyFolder(folder, target);
        std::fprintf(stderr, "  Dateien aufbewahrt in %s\n", qPrintable(target));
    }

    QString m_exe, m_root;
};

int runDriver(int kills, quint32 seed, const QStringList& only)
{
    QTemporaryDir root;
    if (!root.isValid())
        return 2;
    std::vector<const Operation*> chosen;
    for (const Operation& op : operations())
        if (only.isEmpty() || only.contains(op.name))
            chosen.push_back(&op);
    if (chosen.empty()) {
        std::fprintf(stderr, "keine Operation gewählt\n");
        return 2;
    }
    Driver driver(QCoreApplication::applicationFilePath(), root.path());
    std::mt19937 random(seed);
    std::map<QString, Baseline> baselines;
    std::map<QString, Tally> tallies;
    for (const Operation* op : chosen) {
        if (!driver.baseline(*op, baselines[op->name]))
            return 1;
        std::printf("%-18s %s: Schreibdauer %lld µs\n", qPrintable(op->name), qPrintable(op->description),
                    baselines[op->name].writeMicros);
    }
    std::fflush(stdout);
    for (int i = 0; i < kills; ++i) {
        const Operation& op = *chosen[std::size_t(i) % chosen.size()];
        const Baseline& b = baselines[op.name];
        // Mostly inside the write, a few just after it, where the commit and the close are.
        std::uniform_int_distribution<qint64> moment(0, b.writeMicros + b.writeMicros / 4);
        driver.killOnce(op, b, moment(random), tallies[op.name]);
    }

    // Widths counted in characters, so the umlauts of the headings keep the columns straight.
    QStringList heading;
    for (const auto& [text, width] : std::initializer_list<std::pair<const char*, int>>{
             {"Operation", -18}, {"Kills", 6}, {"fehlt ganz", 11}, {"ganz da", 8}, {"vorher fertig", 14},
             {"Integrität", 11}, {"Öffnen scheitert", 17}, {"halbe Operation", 16}})
        heading << QStringLiteral("%1").arg(QString::fromUtf8(text), width);
    std::printf("\n%s\n", qPrintable(heading.join(QString())));
    Tally sum;
    for (const Operation* op : chosen) {
        const Tally& t = tallies[op->name];
        std::printf("%-18s%6d%11d%8d%14d%11d%17d%16d\n", qPrintable(op->name), t.kills, t.absent, t.complete,
                    t.finishedFirst, t.integrityFailures, t.openFailures, t.halfOperations);
        sum.kills += t.kills;
        sum.absent += t.absent;
        sum.complete += t.complete;
        sum.finishedFirst += t.finishedFirst;
        sum.integrityFailures += t.integrityFailures;
        sum.openFailures += t.openFailures;
        sum.halfOperations += t.halfOperations;
    }
    std::printf("%-18s%6d%11d%8d%14d%11d%17d%16d\n", "Summe", sum.kills, sum.absent, sum.complete,
                sum.finishedFirst, sum.integrityFailures, sum.openFailures, sum.halfOperations);
    std::printf("Startwert %u\n", seed);
    const int failures = sum.integrityFailures + sum.openFailures + sum.halfOperations;
    std::printf("%d passed, %d failed\n", sum.kills - failures, failures);
    return failures == 0 ? 0 : 1;
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    useGermanLocale();
    QCommandLineParser parser;
    parser.addHelpOption();
    const QCommandLineOption worker(QStringLiteral("worker"), QStringLiteral("Eine Operation ausführen."), QStringLiteral("name"));
    const QCommandLineOption kills(QStringLiteral("kills"), QStringLiteral("Anzahl der Abbrüche."), QStringLiteral("n"),
                                   QStringLiteral("500"));
    const QCommandLineOption seed(QStringLiteral("seed"), QStringLiteral("Startwert des Zufalls."), QStringLiteral("s"),
                                  QStringLiteral("20261123"));
    const QCommandLineOption only(QStringLiteral("only"), QStringLiteral("Nur diese Operationen (mit Komma)."),
                                  QStringLiteral("namen"));
    parser.addOptions({worker, kills, seed, only});
    parser.addPositionalArgument(QStringLiteral("ordner"), QStringLiteral("Datenordner des Arbeiters."));
    parser.process(app);
    if (parser.isSet(worker))
        return runWorker(parser.value(worker), parser.positionalArguments().value(0));
    return runDriver(parser.value(kills).toInt(), parser.value(seed).toUInt(),
                     parser.isSet(only) ? parser.value(only).split(u',') : QStringList());
}
