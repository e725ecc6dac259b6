#include "cli/cli.h"

#include "app/main/harvestlist.h"
#include "common/consoleprompter.h"
#include "common/textfile.h"
#include "reports/print.h"
#include "reports/reportfile.h"
#include "reports/timberlist.h"
#include "common/folders.h"
#include "common/germanlocale.h"
#include "rules/lotrecompute.h"
#include "rules/masterdatalookup.h"
#include "store/records.h"
#include "store/sql.h"
#include "store/totals.h"
#include "store/startup.h"

#include <QDir>
#include <QFileInfo>
#include <functional>
#include <map>

namespace tarvik::cli {
namespace {

const char* const UsageText =
    "Aufruf: tarvik-cli [--daten ORDNER] [--ja | --nein] BEFEHL [ARGUMENTE]\n"
    "\n"
    "Globale Optionen:\n"
    "  --daten ORDNER  Datenordner (sonst TARVIK_DATEN oder der Standardordner)\n"
    "  --ja            Rückfragen mit Ja beantworten\n"
    "  --nein          Rückfragen mit Nein beantworten (Voreinstellung)\n"
    "  --help          diese Hilfe\n"
    "\n"
    "Befehle:\n"
    "  init            Datenbank anlegen oder öffnen und auf den aktuellen Stand bringen\n"
    "  hiebe           die Hiebliste ausgeben (Tabulator-getrennt, mit Kopfzeile)\n"
    "  holzliste HIEB_NR [--datei PFAD]\n"
    "                  die Holzliste des Hiebs ausgeben (mit --datei als Listendatei,\n"
    "                  Windows-1252 mit CR LF)\n"
    "  drucken DATEI --pdf AUSGABE.pdf [--quer] [--rand N] [--schrift N]\n"
    "                  eine Listendatei wie 'Datei drucken' in eine PDF-Datei drucken\n"
    "  neuberechnen HIEB_NR LOS_NR [--rinde O|F|T]\n"
    "                  Rindenabzüge und Preise aller Stämme des Loses neu berechnen,\n"
    "                  danach die Summen des Loses und des Hiebs\n"
    "\n"
    "Rückgabewert: 0 erfolgreich, 1 abgelehnt oder fehlgeschlagen, 2 falscher Aufruf.\n";

struct Invocation {
    QString dataFolder;
    bool answerYes = false;
    QString command;
    QStringList arguments;
};

struct Io {
    std::FILE* out;
    std::FILE* err;
    void print(const QString& text) const
    {
        std::fputs(text.toUtf8().constData(), out);
        std::fputc('\n', out);
    }
    void usageError(const QString& text) const
    {
        std::fputs((text + u'\n').toUtf8().constData(), err);
        std::fputs(UsageText, err);
    }
};

using Command = std::function<int(Session&, const QStringList&, const Io&, Prompter&)>;

int initCommand(Session& session, const QStringList& args, const Io& io, Prompter& prompter)
{
    if (!args.isEmpty()) {
        io.usageError(QStringLiteral("init erwartet keine Argumente."));
        return Usage;
    }
    const QString path = QDir::toNativeSeparators(session.database->path());
    io.print(session.database->newlyCreated() ? QStringLiteral("Datenbank angelegt: %1").arg(path)
                                              : QStringLiteral("Datenbank geöffnet: %1").arg(path));
    const UpgradeReport report = upgradeDatabase(session.database->shared(), prompter);
    for (const QString& change : report.changes)
        io.print(change);
    if (report.changes.isEmpty())
        io.print(QStringLiteral("Der Aufbau der Datenbank ist aktuell; nichts geändert."));
    return Success;
}

int recomputeCommand(Session& session, const QStringList& args, const Io& io, Prompter& prompter)
{
    QStringList positional;
    std::optional<BarkMode> mode;
    for (int i = 0; i < args.size(); ++i) {
        if (args[i] == u"--rinde" && i + 1 < args.size()) {
            mode = barkModeFromLetter(args[++i]);
            if (!mode) {
                io.usageError(QStringLiteral("--rinde erwartet O, F oder T."));
                return Usage;
            }
        } else {
            positional << args[i];
        }
    }
    bool hiebOk = false, losOk = false;
    const qint32 hiebNr = positional.value(0).toInt(&hiebOk);
    const qint32 losNr = positional.value(1).toInt(&losOk);
    if (positional.size() != 2 || !hiebOk || !losOk) {
        io.usageError(QStringLiteral("neuberechnen erwartet die Hieb-Nr und die Los-Nr."));
        return Usage;
    }

    const QSqlDatabase db = session.database->shared();
    const auto harvestId = harvestIdByNumber(db, hiebNr);
    if (!harvestId) {
        prompter.inform(QStringLiteral("Einen Hieb mit der Nr. %1 gibt es nicht.").arg(hiebNr));
        return Refused;
    }
    const auto prices = loadLotPriceSettings(db, *harvestId, losNr);
    if (!prices) {
        prompter.inform(QStringLiteral("Das Los %1 gibt es beim Hieb %2 nicht.").arg(losNr).arg(hiebNr));
        return Refused;
    }

    // Bark, prices and totals land together or not at all.
    TransactionGuard guard(db);
    MasterDataLookup masterData(db);
    const auto bark = recomputeLotBark(db, masterData, *harvestId, losNr, mode, *prices, prompter);
    if (!bark)
        return Refused;
    if (!recomputeLotPrices(db, masterData, *harvestId, losNr, *prices, prompter))
        return Refused;
    recomputeTotals(db, *harvestId, losNr); // only this lot's logs changed
    recomputeSaleState(db, *harvestId);
    guard.commit();
    io.print(QStringLiteral("%1 von %2 Stämmen geändert.").arg(bark->changed).arg(bark->logs));
    return Success;
}

int harvestsCommand(Session& session, const QStringList& args, const Io& io, Prompter&)
{
    if (!args.isEmpty()) {
        io.usageError(QStringLiteral("hiebe erwartet keine Argumente."));
        return Usage;
    }
    for (const QString& line : harvestListLines(session.database->shared()))
        io.print(line);
    return Success;
}

int timberListCommand(Session& session, const QStringList& args, const Io& io, Prompter& prompter)
{
    QString file;
    QStringList positional;
    for (int i = 0; i < args.size(); ++i) {
        if (args[i] == u"--datei" && i + 1 < args.size())
            file = args[++i];
        else
            positional << args[i];
    }
    bool ok = false;
    const qint32 hiebNr = positional.value(0).toInt(&ok);
    if (positional.size() != 1 || !ok) {
        io.usageError(QStringLiteral("holzliste erwartet die Hieb-Nr."));
        return Usage;
    }
    const auto harvestId = harvestIdByNumber(session.database->shared(), hiebNr);
    if (!harvestId) {
        prompter.inform(QStringLiteral("Einen Hieb mit der Nr. %1 gibt es nicht.").arg(hiebNr));
        return Refused;
    }
    const QStringList lines = timberList(session.database->shared(), *harvestId);
    if (file.isEmpty()) {
        for (const QString& line : lines)
            io.print(line);
        return Success;
    }
    const TextFileResult written = writeTextFile(file, lines);
    if (!written.ok) {
        prompter.inform(written.error, Prompter::Icon::Critical);
        return Refused;
    }
    return Success;
}

const std::map<QString, Command>& commands()
{
    static const std::map<QString, Command> all{
        {QStringLiteral("init"), initCommand},
        {QStringLiteral("hiebe"), harvestsCommand},
        {QStringLiteral("holzliste"), timberListCommand},
        {QStringLiteral("neuberechnen"), recomputeCommand},
    };
    return all;
}

// Global options come before the command; false on wrong usage.
bool parse(const QStringList& args, Invocation& inv, const Io& io, bool& helpOnly)
{
    helpOnly = false;
    bool yes = false, no = false;
    int i = 0;
    for (; i < args.size(); ++i) {
        const QString& a = args[i];
        if (a == u"--help" || a == u"-h") {
            helpOnly = true;
            return true;
        } else if (a == u"--ja") {
            yes = true;
        } else if (a == u"--nein") {
            no = true;
        } else if (a == u"--daten") {
            if (i + 1 >= args.size()) {
                io.usageError(QStringLiteral("--daten erwartet einen Ordner."));
                return false;
            }
            inv.dataFolder = args[++i];
        } else if (a.startsWith(QLatin1String("--daten="))) {
            inv.dataFolder = a.mid(8);
        } else if (a.startsWith(u'-')) {
            io.usageError(QStringLiteral("Unbekannte Option: %1").arg(a));
            return false;
        } else {
            break;
        }
    }
    if (yes && no) {
        io.usageError(QStringLiteral("--ja und --nein schließen einander aus."));
        return false;
    }
    if (i >= args.size()) {
        io.usageError(QStringLiteral("Es fehlt der Befehl."));
        return false;
    }
    inv.answerYes = yes;
    inv.command = args[i];
    inv.arguments = args.mid(i + 1);
    return true;
}

// Prints a report file into a PDF; needs no database.
int printCommand(const QStringList& args, const Io& io)
{
    PrintJob job;
    job.fontFamily = QStringLiteral("Courier New");
    QStringList positional;
    for (int i = 0; i < args.size(); ++i) {
        const QString& a = args[i];
        if (a == u"--pdf" && i + 1 < args.size())
            job.pdfPath = args[++i];
        else if (a == u"--quer")
            job.settings.landscape = true;
        else if (a == u"--rand" && i + 1 < args.size())
            job.settings.marginChars = std::clamp(args[++i].toInt(), 0, 20);
        else if (a == u"--schrift" && i + 1 < args.size())
            job.settings.fontSize = std::clamp(args[++i].toInt(), 4, 48);
        else
            positional << a;
    }
    if (positional.size() != 1 || job.pdfPath.isEmpty()) {
        io.usageError(QStringLiteral("drucken erwartet eine Listendatei und --pdf AUSGABE.pdf."));
        return Usage;
    }
    if (!QFileInfo::exists(positional[0])) {
        std::fputs((missingReportMessage(positional[0]) + u'\n').toUtf8().constData(), io.err);
        return Refused;
    }
    const PrintResult result = printFile(positional[0], job);
    if (!result.ok) {
        std::fputs((result.message + u'\n').toUtf8().constData(), io.err);
        return Refused;
    }
    io.print(QStringLiteral("%1 Seiten gedruckt: %2").arg(result.pages).arg(QDir::toNativeSeparators(job.pdfPath)));
    return Success;
}

} // namespace

bool needsGui(const QStringList& args) { return args.contains(QStringLiteral("drucken")); }

int run(const QStringList& args, std::FILE* out, std::FILE* err)
{
    const Io io{out, err};
    Invocation inv;
    bool helpOnly = false;
    if (!parse(args, inv, io, helpOnly))
        return Usage;
    if (helpOnly) {
        std::fputs(UsageText, out);
        return Success;
    }
    if (inv.command == u"drucken")
        return printCommand(inv.arguments, io);
    const auto command = commands().find(inv.command);
    if (command == commands().end()) {
        io.usageError(QStringLiteral("Unbekannter Befehl: %1").arg(inv.command));
        return Usage;
    }

    ConsolePrompter prompter(inv.answerYes, err);
    StartupOptions options;
    options.dataFolder = resolveDataFolder(inv.dataFolder);
    options.shareFolder = shareFolder();
    options.locale = QLocale();
    options.singleInstance = false; // scripts may run beside the desktop program; the engine serialises writes
    std::unique_ptr<Session> session = startSession(options, prompter);
    if (!session)
        return Refused;
    try {
        return command->second(*session, inv.arguments, io, prompter);
    } catch (const StoreError& e) {
        prompter.inform(e.message(), Prompter::Icon::Critical);
        return Refused;
    }
}

} // namespace tarvik::cli
