#include "common/folders.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcessEnvironment>

namespace tarvik {
namespace {

QString withSlash(QString path)
{
    path = QDir::fromNativeSeparators(path);
    if (!path.endsWith(u'/'))
        path += u'/';
    return path;
}

} // namespace

QString programFolder() { return withSlash(QCoreApplication::applicationDirPath()); }

QString shareFolderFor(const QString& programFolder)
{
    return withSlash(QDir::cleanPath(withSlash(programFolder) + QStringLiteral("../share/tarvik")));
}

QString shareFolder() { return shareFolderFor(programFolder()); }

QString defaultDataFolder(const QString& programFolder, const QString& homeFolder, bool windows)
{
    if (windows) {
        const QString drive = QDir::fromNativeSeparators(programFolder).left(1).toUpper();
        return drive + QStringLiteral(":/Daten/Forstsoftware_TARVIK3/");
    }
    return withSlash(homeFolder) + QStringLiteral("Daten/Forstsoftware_TARVIK3/");
}

QString resolveDataFolder(const QString& option, const QString& environment,
                          const QString& programFolder, const QString& homeFolder, bool windows)
{
    if (!option.trimmed().isEmpty())
        return withSlash(QDir(option.trimmed()).absolutePath());
    if (!environment.trimmed().isEmpty())
        return withSlash(QDir(environment.trimmed()).absolutePath());
    return defaultDataFolder(programFolder, homeFolder, windows);
}

QString resolveDataFolder(const QString& option)
{
#ifdef Q_OS_WIN
    constexpr bool windows = true;
#else
    constexpr bool windows = false;
#endif
    return resolveDataFolder(option, QProcessEnvironment::systemEnvironment().value(QLatin1String(DataFolderEnv)),
                             programFolder(), QDir::homePath(), windows);
}

DataFolderResult prepareDataFolder(const QString& dataFolder, const QString& shareFolder)
{
    DataFolderResult result;
    QDir dir(dataFolder);
    if (!dir.exists()) {
        if (!QDir().mkpath(dataFolder)) {
            result.error = QStringLiteral("Der Datenordner \"%1\" kann nicht angelegt werden. "
                                          "Bitte prüfen Sie, ob Sie dort schreiben dürfen.")
                               .arg(QDir::toNativeSeparators(dataFolder));
            return result;
        }
        result.created = true;
        const QDir share(shareFolder);
        const QString self = QFileInfo(QCoreApplication::applicationFilePath()).fileName().toUpper();
        for (const QFileInfo& file : share.entryInfoList(QDir::Files)) {
            if (file.fileName().toUpper() == self)
                continue;
            QFile::copy(file.absoluteFilePath(), dir.filePath(file.fileName()));
        }
    }
    if (!QFileInfo(dataFolder).isWritable()) {
        result.error = QStringLiteral("Im Datenordner \"%1\" kann nicht geschrieben werden. "
                                      "Bitte prüfen Sie die Zugriffsrechte.")
                           .arg(QDir::toNativeSeparators(dataFolder));
        return result;
    }
    // Files copied from read-only media must become writable.
    for (const QFileInfo& file : dir.entryInfoList(QDir::Files)) {
        QFile f(file.absoluteFilePath());
        f.setPermissions(f.permissions() | QFileDevice::ReadOwner | QFileDevice::WriteOwner);
    }
    result.ok = true;
    return result;
}

bool isDatabaseFile(const QString& path)
{
    const QString name = QFileInfo(path).fileName();
    const QString database = QLatin1String(DatabaseFileName);
    return name.compare(database, Qt::CaseInsensitive) == 0 || name.startsWith(database + u'-', Qt::CaseInsensitive);
}

} // namespace tarvik
