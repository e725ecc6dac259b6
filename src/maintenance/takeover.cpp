#include "maintenance/takeover.h"

#include "common/replacefile.h"
#include "maintenance/jetconvert.h"
#include "store/exclusiveuse.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace tarvik {

QString takeoverFolderLabel() { return QStringLiteral("Auswahl (In welchem Ordner befindes sich die Datei TARVIK.MDB)"); }

QString version2FoundMessage()
{
    return QStringLiteral("TARVIK 2.0 wurde gefunden! Sie können die Datenübernahme jetzt mit [Start] starten!");
}

QString version2MissingMessage() { return QStringLiteral("Im aktuellen Ordner ist TARVIK 2.0 nicht installiert!"); }

QString driveUnreachableMessage()
{
    return QStringLiteral("Das Laufwerk ist nicht ansprechbar! Bitte wählen Sie ein korrektes Laufwerk aus!");
}

QStringList usualVersion2Folders()
{
    QStringList folders;
    for (const QString& candidate : {QStringLiteral("c:/programme/TARVIK2"), QStringLiteral("c:/Daten/Forstsoftware_TARVIK2"),
                                     QDir::home().filePath(QStringLiteral("Daten/Forstsoftware_TARVIK2"))})
        if (!version2Database(candidate).isEmpty())
            folders << candidate;
    return folders;
}

QString version2Database(const QString& folder)
{
    const QDir dir(folder);
    if (folder.isEmpty() || !dir.exists())
        return {};
    for (const QString& name : dir.entryList(QDir::Files))
        if (name.compare(QLatin1String(Version2DatabaseName), Qt::CaseInsensitive) == 0)
            return dir.filePath(name);
    return {};
}

namespace {

struct CopyStep {
    const char* from;
    const char* to;
};
// Settings and remembered choices of the old program, under the names this one reads.
constexpr CopyStep FileCopies[] = {
    {"Einstellungen.tk2", "Einstellungen.tk3"},
    {"EF_Eingabe_Lose_Preisberechnung.TK2", "EF_Eingabe_Lose_Preisberechnung.TK3"},
    {"Rechnungsinhalte.TK2", "Rechnungsinhalte.TK3"},
};

QString fileInFolder(const QString& folder, const QString& name)
{
    const QDir dir(folder);
    for (const QString& entry : dir.entryList(QDir::Files))
        if (entry.compare(name, Qt::CaseInsensitive) == 0)
            return dir.filePath(entry);
    return {};
}

} // namespace

TakeoverResult takeOverVersion2(const QString& oldFolder, const QString& dataFolder, const QString& databasePath,
                                bool currentHasHarvests, Prompter& prompter, const std::function<void()>& beforeReplace)
{
    TakeoverResult result;
    const QString oldDatabase = version2Database(oldFolder);
    if (oldDatabase.isEmpty()) {
        result.message = version2MissingMessage();
        prompter.inform(result.message);
        return result;
    }
    if (!prompter.askYesNo(QStringLiteral("ACHTUNG!!!\nDurch die Datenübernahme von TARVIK 2.0 wird die Datenbasis in TARVIK 3.0 "
                                          "komplett gelöscht. Soll die Datenübernahme wirklich ausgeführt werden?"))) {
        return result;
    }
    if (currentHasHarvests) {
        if (!prompter.askTypedWord(QStringLiteral("Es sind bereits Hiebe in TARVIK 3.0 eingetragen. Deshalb werden die Daten "
                                                  "aus Tarvik 2.0 nur übernommen, wenn Sie diese Abfrage mit  JA  bestätigen."),
                                   QStringLiteral("JA"))) {
            result.message = QStringLiteral("Falsche Eingabe - Der Import wird nicht ausgeführt!");
            prompter.inform(result.message);
            return result;
        }
    }

    // The database first: if it cannot be converted, no other file is touched either.
    const QString converted = databasePath + QStringLiteral(".übernahme");
    const JetConversion conversion = convertJetToSqlite(oldDatabase, converted);
    if (!conversion.ok) {
        result.message = conversion.message;
        prompter.inform(result.message, Prompter::Icon::Critical);
        return result;
    }
    bool hasHarvestTable = false;
    for (const JetTableReport& table : conversion.tables)
        hasHarvestTable = hasHarvestTable || table.name == u"Hiebe";
    if (!hasHarvestTable) {
        QFile::remove(converted);
        result.message = QStringLiteral("Die Datei %1 enthält keine Hiebe und ist keine Datenbank von TARVIK 2.0. "
                                        "Es wurde nichts übernommen.")
                             .arg(QDir::toNativeSeparators(oldDatabase));
        prompter.inform(result.message, Prompter::Icon::Critical);
        return result;
    }
    // Every file is staged beside its target first; only when all are there do the renames run.
    const QDir data(dataFolder);
    QList<std::pair<QString, QString>> staged{{converted, databasePath}};
    auto dropStaged = [&staged] {
        for (const auto& [from, to] : staged)
            QFile::remove(from);
    };
    for (const CopyStep& step : FileCopies) {
        const QString source = fileInFolder(oldFolder, QString::fromLatin1(step.from));
        if (source.isEmpty())
            continue;
        const QString target = data.filePath(QString::fromLatin1(step.to));
        const QString copy = target + QStringLiteral(".übernahme");
        QFile::remove(copy);
        if (!QFile::copy(source, copy)) {
            dropStaged();
            QFile::remove(copy);
            result.message = QStringLiteral("Die Datei %1 kann nicht nach %2 kopiert werden. Es wurde nichts übernommen.")
                                 .arg(QDir::toNativeSeparators(source), QDir::toNativeSeparators(target));
            prompter.inform(result.message, Prompter::Icon::Critical);
            return result;
        }
        staged.append({copy, target});
    }
    if (beforeReplace)
        beforeReplace();
    // The write-ahead log goes with the old file; while another program has the file open, that
    // log is still its own.
    if (!databaseIsFree(databasePath)) {
        dropStaged();
        result.message = QStringLiteral("Die Datenbank %1 ist gerade durch ein anderes Programm geöffnet. Bitte beenden Sie das andere "
                                        "Programm und starten Sie die Datenübernahme dann noch einmal. Es wurde nichts übernommen.")
                             .arg(QDir::toNativeSeparators(databasePath));
        prompter.inform(result.message, Prompter::Icon::Critical);
        return result;
    }
    QFile::remove(databasePath + QStringLiteral("-wal"));
    QFile::remove(databasePath + QStringLiteral("-shm"));
    for (const auto& [from, to] : staged) {
        if (!replaceFile(from, to)) {
            dropStaged();
            result.message = QStringLiteral("Die Datei %1 kann nicht ersetzt werden.").arg(QDir::toNativeSeparators(to));
            prompter.inform(result.message, Prompter::Icon::Critical);
            return result;
        }
        result.copied << QFileInfo(to).fileName();
    }
    result.done = true;
    result.message = QStringLiteral("Die Daten wurden erforgreich von TARVIK 2.0 nach TARVIK 3.0 übernommen. Das Programm wird jetzt "
                                    "beendet. Bitte starten Sie die Forstsoftware dann nochmals an, um die Datenübernahme "
                                    "abzuschließen.");
    prompter.inform(result.message);
    return result;
}

} // namespace tarvik
