#include "devices/collect.h"

#include "common/textfile.h"
#include "devices/apparchive.h"
#include "devices/fmr1.h"
#include "devices/logimport.h"
#include "devices/logtable.h"

#include <QDir>
#include <QFile>
#include <QUrlQuery>

namespace tarvik {
namespace {

std::optional<QList<ImportedLog>> tableLogs(const AppContext& ctx, const LogTable& table)
{
    if (!table.error.isEmpty()) {
        ctx.prompter.inform(table.error, Prompter::Icon::Warning);
        return std::nullopt;
    }
    QList<ImportedLog> logs = table.logs;
    // A line that could not be read counts as a log not imported: a record without species.
    for (int i = 0; i < table.unreadableLines; ++i)
        logs << ImportedLog{};
    return logs;
}

QString readFileError(const QString& path)
{
    return QStringLiteral("Die Datei \"%1\" kann nicht gelesen werden.").arg(QDir::toNativeSeparators(path));
}

} // namespace

QString serialPortName(const Einstellungen& settings)
{
    const QString device = settings.text[SerialDeviceSlot].trimmed();
    if (!device.isEmpty())
        return device;
    return QStringLiteral("COM%1").arg(qBound(0, int(settings.zahl[ComPortSlot]), 8) + 1);
}

std::optional<QList<ImportedLog>> collectFromTransfer(const AppContext& ctx, const QByteArray& received)
{
    const Fmr1Conversion c = convertFmr1Transfer(received);
    // A transfer broken off in its last record still holds every record before it whole.
    if (c.cutOffBytes > 0)
        ctx.prompter.inform(QStringLiteral("Die Übertragung vom FMR1 endete mitten in einem Stamm: von seinem Datensatz kamen nur %1 von %2 "
                                           "Zeichen an. Dieser Rest wird nicht übernommen; die %3 vollständig übertragenen Stämme werden "
                                           "eingelesen. Bitte übertragen Sie den letzten Stamm gegebenenfalls nochmals.")
                                .arg(c.cutOffBytes)
                                .arg(Fmr1RecordBytes)
                                .arg(c.lines.size() - 2),
                            Prompter::Icon::Warning);
    // The lines go through "FMR1.TXT" so the last transfer can be looked at afterwards.
    const QString path = QDir(ctx.dataFolder).filePath(QString::fromLatin1(Fmr1FileName));
    const TextFileResult written = writeTextFile(path, c.lines);
    if (!written.ok) {
        ctx.prompter.inform(written.error, Prompter::Icon::Warning);
        return std::nullopt;
    }
    const TextFileResult read = readTextFile(path);
    if (!read.ok) {
        ctx.prompter.inform(read.error, Prompter::Icon::Warning);
        return std::nullopt;
    }
    return parseFmr1Lines(read.lines);
}

std::optional<QList<ImportedLog>> collectFromDevice(const AppContext& ctx, ByteSource& port)
{
    const QString name = serialPortName(ctx.settings);
    const QString shown = name.startsWith(QStringLiteral("COM")) ? name : name + u' ';
    if (!ctx.prompter.askOkCancel(QStringLiteral("Bitte verbinden Sie jetzt den FMR1 mit der seriellen Schnittstelle %1 an Ihrem Rechner. "
                                                 "Welche COM Sie verwenden, können Sie in den Einstellungen in Tarvik festlegen. "
                                                 "Danach klicken Sie auf [OK].").arg(shown.trimmed())))
        return std::nullopt;
    const QString failure = port.open(name);
    if (!failure.isEmpty()) {
        ctx.prompter.inform(QStringLiteral("Die serielle Schnittstelle %1 kann nicht geöffnet werden.\n\n%2\n\n"
                                           "Bitte prüfen Sie die Verbindung und die Schnittstelle in den Einstellungen.").arg(name, failure),
                            Prompter::Icon::Warning);
        return std::nullopt;
    }
    ctx.prompter.inform(QStringLiteral("Klicken Sie jetzt auf Ihrem FRM1 auf OK + 9 (OK-Taste dabei gedrückt halten). Sie sehen an Ihrem "
                                       "FRM1, wie die Daten übertragen werden. Warten Sie, bis alle Daten übertragen wurden und bestätigen "
                                       "Sie dann dieses Fenster mit [OK]."));
    return collectFromTransfer(ctx, port.finish());
}

std::optional<QList<ImportedLog>> collectFromApp(const AppContext& ctx, const QString& given)
{
    const QString path = given.isEmpty() ? ctx.prompter.chooseOpenFile(QStringLiteral("Datei der App Holzliste öffnen"), ctx.dataFolder,
                                                                       QStringLiteral("Datei von App Holzliste (holzliste_*.zip)"))
                                         : given;
    if (path.isEmpty())
        return std::nullopt;
    const auto logs = tableLogs(ctx, readAppArchive(path, ctx.dataFolder));
    if (!logs || !confirmFileImport(ctx, ImportSource::App))
        return std::nullopt;
    return logs;
}

std::optional<QList<ImportedLog>> logsOfOnlineExport(const AppContext& ctx, const QByteArray& bytes)
{
    const auto logs = tableLogs(ctx, parseLogTable(bytes));
    if (!logs || !confirmFileImport(ctx, ImportSource::Online))
        return std::nullopt;
    return logs;
}

std::optional<QList<ImportedLog>> collectFromOnlineFile(const AppContext& ctx, const QString& given)
{
    const QString path = given.isEmpty() ? ctx.prompter.chooseOpenFile(QStringLiteral("Exportdatei von Online-TARVIK öffnen"),
                                                                       ctx.dataFolder,
                                                                       QStringLiteral("Datei von Online-TARVIK (Export_*_TARVIK.DAT)"))
                                         : given;
    if (path.isEmpty())
        return std::nullopt;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        ctx.prompter.inform(readFileError(path), Prompter::Icon::Warning);
        return std::nullopt;
    }
    return logsOfOnlineExport(ctx, file.readAll());
}

QUrl onlineBaseUrl(const QString& host)
{
    const QString h = host.trimmed();
    if (h.isEmpty())
        return QUrl();
    return QUrl::fromUserInput(h.contains(QStringLiteral("://")) ? h : QStringLiteral("https://") + h);
}

QUrl onlinePrepareUrl(const QUrl& base, const QString& user)
{
    QUrl url = base;
    url.setPath(QStringLiteral("/otarvik/export_tarvik_direkt.php"));
    QUrlQuery query;
    query.addQueryItem(QStringLiteral("benutzertk"), QString::fromLatin1(QUrl::toPercentEncoding(user)));
    url.setQuery(query);
    return url;
}

QUrl onlineExportUrl(const QUrl& base, const QString& user)
{
    QUrl url = base;
    url.setPath(QStringLiteral("/otarvik/exporttarvik/Export_") + user + QStringLiteral("_TARVIK.DAT"));
    return url;
}

std::optional<QList<ImportedLog>> collectFromOnline(const AppContext& ctx, const BrowserOpener& openBrowser, const Downloader& download)
{
    const bool direct = ctx.prompter.askYesNo(joinLines({
        QStringLiteral("Klicken Sie [Ja], wenn Sie die Stämme direkt aus Online-TARVIK importieren möchten. Dazu müssen Sie..."),
        QStringLiteral("...die Benutzerkennung für Online-TARVIK wissen."),
        QStringLiteral("...mit dem Internet verbunden sein."),
        QString(),
        QStringLiteral("Klicken Sie [Nein], wenn Sie die Daten über die heruntergeladene Datei aus Online-TARVIK importieren möchten. "
                       "Dazu müssen Sie..."),
        QStringLiteral("...die Exportdatei in Online-TARVIK erstellt haben."),
        QStringLiteral("...die Exportdatei auf Ihren Rechner oder auf einen Datenstick heruntergeladen haben."),
    }));
    if (!direct)
        return collectFromOnlineFile(ctx);

    const QUrl base = onlineBaseUrl(ctx.settings.text[OnlineHostSlot]);
    if (!base.isValid() || base.host().isEmpty()) {
        ctx.prompter.inform(QStringLiteral("Bitte legen Sie zuerst in den Einstellungen den Server von Online-TARVIK fest."));
        return std::nullopt;
    }
    const auto answer = ctx.prompter.askText(QStringLiteral("Bitte geben Sie jetzt Ihren Benutzernamen für Online-TARVIK ein."), QString());
    if (!answer || answer->trimmed().isEmpty())
        return std::nullopt;
    const QString user = answer->trimmed();
    openBrowser(onlinePrepareUrl(base, user));
    ctx.prompter.inform(QStringLiteral("Nun sollte sich ein Fenster an Ihrem Internet-Explorer geöffnet haben. Sobald Sie dort einen "
                                       "Hinweis erhalten, dass der Export erfolgreich war, bestätigen Sie diese Meldung mit [OK]"));
    // A download of an earlier day must not pass for today's.
    const QString savedPath = QDir(ctx.dataFolder).filePath(QString::fromLatin1(OnlineDownloadName));
    QFile::remove(savedPath);
    const Download d = download(onlineExportUrl(base, user));
    if (!d.error.isEmpty()) {
        ctx.prompter.inform(QStringLiteral("Der Server von Online-TARVIK (%1) ist nicht erreichbar:\n\n%2").arg(base.host(), d.error),
                            Prompter::Icon::Warning);
        return std::nullopt;
    }
    if (d.status != 200 || d.body.trimmed().isEmpty() || looksLikeHtml(d.body)) {
        ctx.prompter.inform(QStringLiteral("Unter der Benutzerkennung %1 konnte keine Exportdatei gefunden werden!").arg(user),
                            Prompter::Icon::Warning);
        return std::nullopt;
    }
    QFile saved(savedPath);
    if (!saved.open(QIODevice::WriteOnly) || saved.write(d.body) != d.body.size()) {
        ctx.prompter.inform(QStringLiteral("Die Datei \"%1\" kann nicht geschrieben werden.").arg(QDir::toNativeSeparators(saved.fileName())),
                            Prompter::Icon::Warning);
        return std::nullopt;
    }
    saved.close();
    return logsOfOnlineExport(ctx, d.body);
}

} // namespace tarvik
