#include "devices/apparchive.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>

#include <sys/stat.h>
#include <zip.h>

namespace tarvik {
namespace {

struct ArchiveCloser {
    zip_t* archive;
    ~ArchiveCloser()
    {
        if (archive)
            zip_discard(archive);
    }
};

// Removes the folder's contents on every way out, as it was cleared on the way in.
struct FolderClearer {
    QString folder;
    ~FolderClearer() { QDir(folder).removeRecursively(); }
};

bool clearFolder(const QString& folder)
{
    QDir dir(folder);
    if (dir.exists() && !dir.removeRecursively())
        return false;
    return QDir().mkpath(folder);
}

// Why an entry may not be unpacked, or "" when it may.
QString entryRefusal(zip_t* archive, zip_uint64_t index, const zip_stat_t& st)
{
    const QString name = QString::fromUtf8(st.name);
    if (name.isEmpty() || name.startsWith(u'/') || name.startsWith(u'\\') || (name.size() > 1 && name.at(1) == u':'))
        return QStringLiteral("Der Eintrag \"%1\" hat einen absoluten Pfad.").arg(name);
    for (const QString& part : name.split(QRegularExpression(QStringLiteral("[/\\\\]"))))
        if (part == QStringLiteral(".."))
            return QStringLiteral("Der Eintrag \"%1\" zeigt aus dem Entpackordner hinaus.").arg(name);
    zip_uint8_t system = 0;
    zip_uint32_t attributes = 0;
    if (zip_file_get_external_attributes(archive, index, 0, &system, &attributes) == 0 && system == ZIP_OPSYS_UNIX
        && S_ISLNK(attributes >> 16))
        return QStringLiteral("Der Eintrag \"%1\" ist eine Verknüpfung.").arg(name);
    if (!(st.valid & ZIP_STAT_SIZE) || st.size > zip_uint64_t(AppEntryLimit))
        return QStringLiteral("Der Eintrag \"%1\" ist zu groß.").arg(name);
    return QString();
}

LogTable refusal(const QString& zipPath, const QString& reason)
{
    LogTable t;
    t.error = QStringLiteral("Die Datei \"%1\" kann nicht eingelesen werden.\n\n%2").arg(QFileInfo(zipPath).fileName(), reason);
    return t;
}

} // namespace

QString appUnpackFolder(const QString& dataFolder) { return QDir(dataFolder).filePath(QStringLiteral("tmp")); }

LogTable readAppArchive(const QString& zipPath, const QString& dataFolder)
{
    const QString folder = appUnpackFolder(dataFolder);
    if (!clearFolder(folder))
        return refusal(zipPath, QStringLiteral("Der Ordner \"%1\" kann nicht geleert werden.").arg(QDir::toNativeSeparators(folder)));
    FolderClearer clearer{folder};

    int error = 0;
    ArchiveCloser archive{zip_open(QFile::encodeName(zipPath).constData(), ZIP_RDONLY, &error)};
    if (!archive.archive)
        return refusal(zipPath, QStringLiteral("Sie ist kein gültiges ZIP-Archiv."));
    const zip_int64_t count = zip_get_num_entries(archive.archive, 0);
    if (count < 0 || count > AppEntryCountLimit)
        return refusal(zipPath, QStringLiteral("Sie enthält zu viele Einträge."));

    // Every entry is checked before the first byte is written.
    QList<zip_stat_t> entries;
    qint64 total = 0;
    for (zip_int64_t i = 0; i < count; ++i) {
        zip_stat_t st;
        zip_stat_init(&st);
        if (zip_stat_index(archive.archive, zip_uint64_t(i), 0, &st) != 0)
            return refusal(zipPath, QStringLiteral("Ein Eintrag ist beschädigt."));
        const QString why = entryRefusal(archive.archive, zip_uint64_t(i), st);
        if (!why.isEmpty())
            return refusal(zipPath, why);
        total += qint64(st.size);
        if (total > AppTotalLimit)
            return refusal(zipPath, QStringLiteral("Der entpackte Inhalt wäre zu groß."));
        entries << st;
    }

    const QDir target(folder);
    for (const zip_stat_t& st : entries) {
        const QString name = QString::fromUtf8(st.name);
        const QString path = QDir::cleanPath(target.filePath(name));
        if (!path.startsWith(QDir::cleanPath(folder) + u'/'))
            return refusal(zipPath, QStringLiteral("Der Eintrag \"%1\" zeigt aus dem Entpackordner hinaus.").arg(name));
        if (name.endsWith(u'/')) {
            QDir().mkpath(path);
            continue;
        }
        QDir().mkpath(QFileInfo(path).absolutePath());
        zip_file_t* in = zip_fopen_index(archive.archive, st.index, 0);
        if (!in)
            return refusal(zipPath, QStringLiteral("Der Eintrag \"%1\" kann nicht gelesen werden.").arg(name));
        QFile out(path);
        if (!out.open(QIODevice::WriteOnly)) {
            zip_fclose(in);
            return refusal(zipPath, QStringLiteral("\"%1\" kann nicht geschrieben werden.").arg(QDir::toNativeSeparators(path)));
        }
        char buffer[16384];
        zip_int64_t read = 0;
        qint64 written = 0;
        while ((read = zip_fread(in, buffer, sizeof buffer)) > 0) {
            written += read;
            if (written > qint64(st.size)) // more than declared: refused as the declared size would be
                break;
            out.write(buffer, read);
        }
        zip_fclose(in);
        out.close();
        if (read < 0 || written != qint64(st.size))
            return refusal(zipPath, QStringLiteral("Der Eintrag \"%1\" ist beschädigt.").arg(name));
    }

    QFile table(target.filePath(QString::fromLatin1(AppLogTableName)));
    if (!table.open(QIODevice::ReadOnly))
        return refusal(zipPath, QStringLiteral("Sie enthält keine Stammliste \"%1\" der App Holzliste.").arg(QLatin1String(AppLogTableName)));
    LogTable result = parseLogTable(table.readAll());
    if (!result.error.isEmpty())
        result.error = refusal(zipPath, result.error).error;
    return result;
}

} // namespace tarvik
