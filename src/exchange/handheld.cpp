#include "exchange/handheld.h"

#include "common/prompter.h"
#include "exchange/exchangefile.h"
#include "settings/corrections.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

namespace tarvik::exchange {
namespace {

const QString CopyWithExplorer = QStringLiteral(
    "Sie können die Daten auch mit dem Dateimanager in das Installationsverzeichnis von Pocket-Tarvik kopieren.");

// Why the folder cannot be used, in the words of the missing copier's message.
QString unreachableText(const QString& folder, bool toHandheld)
{
    const QString direction = toHandheld ? QStringLiteral("zum") : QStringLiteral("vom");
    if (folder.isEmpty())
        return QStringLiteral("Es ist noch kein Ordner des Pocket-PC eingestellt (Optionen -> Einstellungen -> \"Ordner des Pocket-PC\"). "
                              "Dieser ist für das übertragen der Daten %1 Pocket-PC zwingend erforderlich.")
            .arg(direction);
    return QStringLiteral("Der Ordner des Pocket-PC %1 ist nicht erreichbar. Bitte prüfen Sie, ob der Pocket-PC angeschlossen ist. "
                          "Der Ordner ist für das übertragen der Daten %2 Pocket-PC zwingend erforderlich.")
        .arg(QDir::toNativeSeparators(folder), direction);
}

// The copy goes to a temporary file beside the target, which replaces the target only when whole.
bool copyFile(const QString& from, const QString& to)
{
    QFile in(from);
    QSaveFile out(to);
    if (!in.open(QIODevice::ReadOnly) || !out.open(QIODevice::WriteOnly))
        return false;
    QByteArray chunk;
    while (!(chunk = in.read(1 << 20)).isEmpty())
        if (out.write(chunk) != chunk.size())
            return false; // the temporary file goes, the target stays as it was
    return in.error() == QFileDevice::NoError && out.commit();
}

// The copy report, with the files that could not be copied and those that were their own target.
QString copyReport(QString text, const CopyResult& copy)
{
    if (!copy.failed.isEmpty())
        text += QStringLiteral("\nFolgende Dateien konnten nicht kopiert werden: ") + copy.failed.join(QStringLiteral(", "));
    if (!copy.already.isEmpty())
        text += QStringLiteral("\nFolgende Dateien liegen bereits im Zielordner und wurden nicht kopiert: ") +
                copy.already.join(QStringLiteral(", "));
    return text;
}

} // namespace

QString handheldFolder(const Einstellungen& settings) { return settings.text[HandheldFolderSlot].trimmed(); }

bool handheldReachable(const QString& folder)
{
    if (folder.isEmpty())
        return false;
    const QFileInfo info(folder);
    return info.isDir() && info.isReadable() && info.isWritable();
}

CopyResult copyExchangeFiles(const QString& from, const QString& to)
{
    CopyResult result;
    const QDir source(from), target(to);
    const QStringList names = source.entryList({QStringLiteral("*Tarvik_Export.f10")}, QDir::Files, QDir::Name | QDir::IgnoreCase);
    for (const QString& name : names) {
        const QString origin = source.filePath(name);
        const QString destination = target.filePath(name);
        const QString existing = QFileInfo(destination).canonicalFilePath();
        if (!existing.isEmpty() && existing == QFileInfo(origin).canonicalFilePath()) {
            result.already << name;
            continue;
        }
        if (copyFile(origin, destination))
            ++result.copied;
        else
            result.failed << name;
    }
    return result;
}

ExportOutcome exportToHandheld(const QSqlDatabase& db, const QString& dataFolder, const Einstellungen& settings, Prompter& prompter,
                               const QList<qint32>& harvestIds)
{
    ExportOutcome outcome = writeExportFiles(db, dataFolder, prompter, harvestIds);
    if (!outcome.written)
        return outcome;
    if (!prompter.askYesNo(
            QStringLiteral("Die Exportdateien wurden erstellt unter den Dateinamen *Tarvik_Export.f10 und sind auf Ihrem Rechner im Ordner ") +
            QDir::toNativeSeparators(dataFolder) +
            QStringLiteral(" abgelegt. Bitte klicken Sie JA, wenn Sie die Daten jetzt auf den Pocket-PC kopieren möchten. Sie können die "
                           "Datei auch mit dem Windwos-Explorer auf den Pocket-PC in das Installationsverzeichnis von Pocket-Tarvik kopieren.\n"
                           "WICHTIG!!! Der Pocket-PC muß mit AktivSync mit dem Rechner verbunden sein, damit die Daten übertragen werden können.")))
        return outcome;

    const QString folder = handheldFolder(settings);
    if (!handheldReachable(folder)) {
        prompter.inform(unreachableText(folder, true) + u' ' + CopyWithExplorer, Prompter::Icon::Warning);
        return outcome;
    }
    if (const auto refusal = settingsrules::handheldFolderRefusal(folder, dataFolder)) {
        prompter.inform(*refusal + u' ' + CopyWithExplorer, Prompter::Icon::Warning);
        return outcome;
    }
    const CopyResult copy = copyExchangeFiles(dataFolder, folder);
    QString text = copyReport(QStringLiteral("Es wurden %1 Exportdateien in den Ordner des Pocket-PC %2 kopiert.")
                                  .arg(copy.copied)
                                  .arg(QDir::toNativeSeparators(folder)),
                              copy);
    text += QStringLiteral("\nFalls Pocket-Tarvik nicht in diesem Ordner installiert wurde, müssen Sie die Exportdateien mit dem "
                           "Dateimanager kopieren.");
    prompter.inform(text, copy.failed.isEmpty() ? Prompter::Icon::Information : Prompter::Icon::Warning);
    return outcome;
}

CopyResult copyFromHandheld(const QString& dataFolder, const Einstellungen& settings, Prompter& prompter)
{
    CopyResult copy;
    const QString folder = handheldFolder(settings);
    if (!handheldReachable(folder)) {
        prompter.inform(unreachableText(folder, false) +
                            QStringLiteral(" Sie können die Daten auch mit dem Dateimanager aus dem Installationsverzeichnis des "
                                           "Pocket-PC's in den Datenordner %1 kopieren.\nDer Import wird jetzt trotzdem weiter ausgeführt.")
                                .arg(QDir::toNativeSeparators(dataFolder)),
                        Prompter::Icon::Warning);
    } else if (const auto refusal = settingsrules::handheldFolderRefusal(folder, dataFolder)) {
        prompter.inform(*refusal + QStringLiteral("\nDer Import wird jetzt trotzdem weiter ausgeführt."), Prompter::Icon::Warning);
    } else if (prompter.askYesNo(QStringLiteral("Sollen die Daten jetzt automatisch vom Pocket-PC auf dem Home-PC übertragen werden? Hierzu muß "
                                                "Pocket-Tarvik standardmäßig installiert sein und der Pocket-PC muß mit dem Home-PC verbunden sein."))) {
        copy = copyExchangeFiles(folder, dataFolder);
        const QString text = copyReport(QStringLiteral("Es wurden %1 Dateien aus dem Ordner des Pocket-PC %2 in den Datenordner kopiert.")
                                            .arg(copy.copied)
                                            .arg(QDir::toNativeSeparators(folder)),
                                        copy);
        prompter.inform(text, copy.failed.isEmpty() ? Prompter::Icon::Information : Prompter::Icon::Warning);
    }
    prompter.inform(QStringLiteral("Es wird jetzt geprüft, ob die Daten neue Inhalte haben. Nur solche Datensätze werden für den Import "
                                   "zugelassen und in die Liste für die Import-Dateien aufgeführt."));
    return copy;
}

} // namespace tarvik::exchange
