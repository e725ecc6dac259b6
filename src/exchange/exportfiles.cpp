#include "exchange/exportfiles.h"

#include "common/numbers.h"
#include "common/prompter.h"
#include "common/textfile.h"
#include "exchange/exchangefile.h"
#include "store/sql.h"

#include <QDir>
#include <QFile>
#include <QSqlQuery>

namespace tarvik::exchange {

QList<qint32> selectedHarvestIds(const QSqlDatabase& db)
{
    QList<qint32> ids;
    QSqlQuery q = execSql(db, QStringLiteral("SELECT \"ID\" FROM \"Hiebe\" WHERE \"Selektiert\" = 'X' ORDER BY \"Hieb_Nr\", \"ID\""));
    while (q.next())
        ids << q.value(0).toInt();
    return ids;
}

ExportOutcome writeExportFiles(const QSqlDatabase& db, const QString& folder, Prompter& prompter, const QList<qint32>& harvestIds)
{
    if (harvestIds.isEmpty()) {
        prompter.inform(QStringLiteral("Bitte selektieren Sie zuerst die Hiebe, die für einen Export berücksichtigt werden sollen!"));
        return {};
    }
    if (!prompter.askYesNo(QStringLiteral("Sollen von den") + signedText(harvestIds.size()) +
                           QStringLiteral(" selektierten Hieben wirklich Export-Dateien angelegt werden?\n"
                                          "Falls bereits Exportdateien vorliegen, werden diese vorher gelöscht!")))
        return {};

    const QDir dir(folder);
    for (const QString& old : dir.entryList({QStringLiteral("*") + QString::fromLatin1(FileSuffix)}, QDir::Files)) {
        if (!QFile::remove(dir.filePath(old))) {
            prompter.inform(QStringLiteral("Die alte Exportdatei %1 kann nicht gelöscht werden. Es wurden keine Exportdateien angelegt.")
                                .arg(dir.filePath(old)),
                            Prompter::Icon::Warning);
            return {};
        }
    }

    ExportOutcome outcome;
    auto write = [&](const QString& name, const QStringList& lines) {
        const TextFileResult r = writeTextFile(dir.filePath(name), lines, TextEncoding::Cp1252Only);
        if (!r.ok) {
            prompter.inform(r.error, Prompter::Icon::Critical);
            return false;
        }
        outcome.files << name;
        return true;
    };
    try {
        for (qint32 id : harvestIds) {
            const QVariant number = scalar(db, QStringLiteral("SELECT \"Hieb_Nr\" FROM \"Hiebe\" WHERE \"ID\" = ?"), {id});
            if (!number.isValid())
                continue;
            const qint32 hiebNr = toLong(readNumber(number));
            // The file is named after the number: a second harvest of that number would replace the first.
            if (outcome.files.contains(harvestFileName(hiebNr))) {
                prompter.inform(QStringLiteral("Die Hieb_Nr %1 ist mehrfach selektiert. Es wurde nur der erste Hieb mit dieser Nummer exportiert.")
                                    .arg(hiebNr),
                                Prompter::Icon::Warning);
                continue;
            }
            if (!write(harvestFileName(hiebNr), harvestFileLines(db, id)))
                return outcome;
        }
        if (!write(QString::fromLatin1(MasterDataFileName), masterDataFileLines(db)))
            return outcome;
    } catch (const StoreError& error) {
        prompter.inform(error.message(), Prompter::Icon::Critical);
        return outcome;
    }
    outcome.written = true;
    return outcome;
}

ExportOutcome exportToInstallation(const QSqlDatabase& db, const QString& folder, Prompter& prompter, const QList<qint32>& harvestIds)
{
    ExportOutcome outcome = writeExportFiles(db, folder, prompter, harvestIds);
    if (outcome.written)
        prompter.inform(QStringLiteral("Die Exportdateien wurden erstellt unter den Dateinamen *Tarvik_Export.f10 und sind auf Ihrem Rechner im Ordner ") +
                        QDir::toNativeSeparators(folder) +
                        QStringLiteral(" abgelegt.\nDiese Dateien können Sie per Mail verschicken und in andere TARVIK3-Versionen importieren."));
    return outcome;
}

} // namespace tarvik::exchange
