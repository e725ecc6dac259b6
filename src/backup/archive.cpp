#include "backup/archive.h"
#include "common/systemerror.h"

#include "backup/dbsnapshot.h"
#include "backup/ziperror.h"
#include "common/replacefile.h"
#include "store/database.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QSet>
#include <QTemporaryDir>
#include <QUuid>

#include <algorithm>
#include <cerrno>
#include <zip.h>
#include <zlib.h>

namespace tarvik {
namespace {

constexpr qint64 Chunk = 1 << 20;

QString native(const QString& path) { return QDir::toNativeSeparators(path); }

// Unix file-type bits as the ZIP format stores them in an entry's external attributes.
constexpr zip_uint32_t UnixTypeMask = 0170000;
constexpr zip_uint32_t UnixLink = 0120000;

// Maps the progress of one stage onto a span of the whole.
struct Span {
    const ProgressFn& progress;
    int from;
    int to;
    QString stage;
    bool report(double fraction) const
    {
        if (!progress)
            return true;
        fraction = std::clamp(fraction, 0.0, 1.0);
        return progress(from + int((to - from) * fraction), stage);
    }
};

struct ZipCallbackState {
    const Span* span;
    bool cancelled = false;
};

void zipProgress(zip_t*, double fraction, void* state)
{
    auto* s = static_cast<ZipCallbackState*>(state);
    if (!s->span->report(fraction))
        s->cancelled = true;
}

int zipCancel(zip_t*, void* state) { return static_cast<ZipCallbackState*>(state)->cancelled ? 1 : 0; }

bool isLink(zip_t* archive, zip_uint64_t index)
{
    zip_uint8_t system = 0;
    zip_uint32_t attributes = 0;
    if (zip_file_get_external_attributes(archive, index, 0, &system, &attributes) != 0)
        return false;
    return system == ZIP_OPSYS_UNIX && ((attributes >> 16) & UnixTypeMask) == UnixLink;
}

QString notOurs(const QString& path, const QString& reason)
{
    return QStringLiteral("Die Datei \"%1\" ist keine gültige Datensicherung von TARVIK (%2).").arg(native(path), reason);
}

// Reads one entry to its end, comparing the CRC; writes it to `target` when given.
bool readEntry(zip_t* archive, zip_uint64_t index, const QString& name, const QString& target, const Span& span,
               QByteArray& buffer, qint64& done, qint64 total, QString& error, bool& cancelled)
{
    zip_stat_t stat;
    zip_stat_init(&stat);
    if (zip_stat_index(archive, index, 0, &stat) != 0) {
        error = germanZipError(archive);
        return false;
    }
    zip_file_t* entry = zip_fopen_index(archive, index, 0);
    if (!entry) {
        error = QStringLiteral("Eintrag \"%1\": %2").arg(name, germanZipError(archive));
        return false;
    }
    QFile out(target);
    if (!target.isEmpty() && !out.open(QIODevice::WriteOnly | QIODevice::Truncate)) {
        zip_fclose(entry);
        error = QStringLiteral("\"%1\" kann nicht geschrieben werden: %2").arg(native(target), germanFileError(out));
        return false;
    }
    uLong crc = crc32(0, nullptr, 0);
    qint64 length = 0;
    bool ok = true;
    for (;;) {
        const zip_int64_t n = zip_fread(entry, buffer.data(), zip_uint64_t(buffer.size()));
        if (n < 0) {
            error = QStringLiteral("Eintrag \"%1\": %2").arg(name, germanZipError(entry));
            ok = false;
            break;
        }
        if (n == 0)
            break;
        crc = crc32(crc, reinterpret_cast<const Bytef*>(buffer.constData()), uInt(n));
        length += n;
        done += n;
        if (out.isOpen() && out.write(buffer.constData(), n) != n) {
            error = QStringLiteral("\"%1\" kann nicht geschrieben werden: %2").arg(native(target), germanFileError(out));
            ok = false;
            break;
        }
        if (!span.report(total > 0 ? double(done) / double(total) : 1.0)) {
            cancelled = true;
            ok = false;
            break;
        }
    }
    zip_fclose(entry);
    if (ok && ((stat.valid & ZIP_STAT_CRC) && crc != stat.crc)) {
        error = QStringLiteral("Eintrag \"%1\": Prüfsumme stimmt nicht").arg(name);
        ok = false;
    }
    if (ok && (stat.valid & ZIP_STAT_SIZE) && zip_uint64_t(length) != stat.size) {
        error = QStringLiteral("Eintrag \"%1\": Länge stimmt nicht").arg(name);
        ok = false;
    }
    if (out.isOpen()) {
        if (ok && !out.flush()) {
            error = QStringLiteral("\"%1\" kann nicht geschrieben werden: %2").arg(native(target), germanFileError(out));
            ok = false;
        }
        out.close();
        if (ok && out.error() != QFileDevice::NoError) {
            error = QStringLiteral("\"%1\" kann nicht geschrieben werden: %2").arg(native(target), germanFileError(out));
            ok = false;
        }
    }
    return ok;
}

} // namespace

QString archiveName(const QDate& date)
{
    return QLatin1String(ArchivePrefix) + date.toString(QStringLiteral("yyyy_MM_dd")) + QStringLiteral(".zip");
}

std::optional<QDate> archiveDate(const QString& fileName)
{
    static const QRegularExpression pattern(QStringLiteral("^TARVIK30_backup_(\\d{4})_(\\d{2})_(\\d{2})\\.zip$"),
                                            QRegularExpression::CaseInsensitiveOption);
    const QRegularExpressionMatch m = pattern.match(fileName);
    if (!m.hasMatch())
        return std::nullopt;
    const QDate date(m.captured(1).toInt(), m.captured(2).toInt(), m.captured(3).toInt());
    if (!date.isValid())
        return std::nullopt;
    return date;
}

bool belongsInArchive(const QString& fileName)
{
    static const QSet<QString> left = {QStringLiteral("DLL"), QStringLiteral("EXE"), QStringLiteral("HLP"),
                                       QStringLiteral("TXT"), QStringLiteral("OCX"), QStringLiteral("VBX"),
                                       QStringLiteral("INI"), QStringLiteral("DOC"), QStringLiteral("ZIP"),
                                       QStringLiteral("PDF")};
    if (isDatabaseFile(fileName))
        return false; // captured through the engine, never copied while open
    if (fileName.contains(QLatin1String(".vor-Aktualisierung-"), Qt::CaseInsensitive))
        return false; // the copies kept before an upgrade: a restore would bring back old states beside the new one
    if (fileName.isEmpty() || fileName.startsWith(u'.'))
        return false; // temporary files of a running backup
    const int dot = fileName.lastIndexOf(u'.');
    const QString extension = dot < 0 ? QString() : fileName.mid(dot + 1).toUpper();
    return !(extension.size() == 3 && left.contains(extension));
}

QStringList filesToArchive(const QString& dataFolder)
{
    QStringList names;
    const QDir dir(dataFolder);
    for (const QString& name : dir.entryList(QDir::Files | QDir::NoSymLinks, QDir::Name))
        if (belongsInArchive(name))
            names << name;
    return names;
}

QString localArchiveFolder(const QString& dataFolder)
{
    return QDir(dataFolder).filePath(QLatin1String(LocalArchiveFolderName)) + u'/';
}

QByteArray zipPath(const QString& path)
{
#ifdef Q_OS_WIN
    return QDir::toNativeSeparators(path).toUtf8();
#else
    return QFile::encodeName(path);
#endif
}

bool isPlainEntryName(const QString& name)
{
    if (name.isEmpty() || name.size() > 255 || name.startsWith(u'.'))
        return false;
    for (const QChar c : name)
        if (c == u'/' || c == u'\\' || c == u':' || c.unicode() < 0x20)
            return false;
    return true;
}

ArchiveResult writeArchive(const QString& dataFolder, const QString& archivePath, const ProgressFn& progress)
{
    ArchiveResult result;
    const QFileInfo target(archivePath);
    if (!QDir().mkpath(target.absolutePath())) {
        result.error = QStringLiteral("Der Ordner \"%1\" kann nicht angelegt werden.").arg(native(target.absolutePath()));
        return result;
    }
    const QString unique = QUuid::createUuid().toString(QUuid::Id128).left(12);
    const QString snapshot = QDir(target.absolutePath()).filePath(QStringLiteral(".snapshot-%1.db").arg(unique));
    const QString temporary = QDir(target.absolutePath()).filePath(QStringLiteral(".%1-%2.tmp").arg(target.fileName(), unique));
    struct Cleanup {
        QString a, b;
        ~Cleanup() { QFile::remove(a); QFile::remove(b); }
    } cleanup{snapshot, temporary};

    const Span snapshotSpan{progress, 0, 30, QStringLiteral("Datenbank wird gesichert")};
    const SnapshotResult copied = snapshotDatabase(QDir(dataFolder).filePath(QLatin1String(DatabaseFileName)), snapshot,
                                                   [&](double f) { return snapshotSpan.report(f); });
    if (!copied.ok) {
        result.cancelled = copied.cancelled;
        result.error = copied.error;
        return result;
    }

    int code = 0;
    zip_t* archive = zip_open(zipPath(temporary).constData(), ZIP_CREATE | ZIP_TRUNCATE, &code);
    if (!archive) {
        result.error = QStringLiteral("Die Datensicherung \"%1\" kann nicht angelegt werden: %2").arg(native(archivePath), germanZipError(code, errno));
        return result;
    }
    QList<std::pair<QString, QString>> entries; // name in the archive, file on disk
    for (const QString& name : filesToArchive(dataFolder))
        entries.append({name, QDir(dataFolder).filePath(name)});
    entries.append({QLatin1String(DatabaseFileName), snapshot});
    for (const auto& [name, path] : entries) {
        zip_source_t* source = zip_source_file(archive, zipPath(path).constData(), 0, -1);
        const zip_int64_t index = source ? zip_file_add(archive, name.toUtf8().constData(), source, ZIP_FL_ENC_UTF_8 | ZIP_FL_OVERWRITE) : -1;
        if (index < 0) {
            if (source)
                zip_source_free(source);
            result.error = QStringLiteral("\"%1\" kann nicht in die Datensicherung aufgenommen werden: %2").arg(native(path), germanZipError(archive));
            zip_discard(archive);
            return result;
        }
        zip_set_file_compression(archive, zip_uint64_t(index), ZIP_CM_DEFLATE, 6);
        const QDateTime modified = QFileInfo(path).lastModified();
        if (modified.isValid())
            zip_file_set_mtime(archive, zip_uint64_t(index), time_t(modified.toSecsSinceEpoch()), 0);
    }
    const Span packSpan{progress, 30, 75, QStringLiteral("Dateien werden gepackt")};
    ZipCallbackState state{&packSpan};
    zip_register_progress_callback_with_state(archive, 0.005, zipProgress, nullptr, &state);
    zip_register_cancel_callback_with_state(archive, zipCancel, nullptr, &state);
    if (zip_close(archive) != 0) {
        result.cancelled = state.cancelled;
        result.error = state.cancelled ? QStringLiteral("Die Datensicherung wurde abgebrochen.")
                                       : QStringLiteral("Die Datensicherung \"%1\" kann nicht geschrieben werden: %2").arg(native(archivePath), germanZipError(archive));
        zip_discard(archive);
        return result;
    }
    QFile::remove(snapshot); // the check below needs the space more than we need the copy

    const ArchiveCheck check = checkArchive(temporary, [&](int percent, const QString&) {
        return Span{progress, 75, 100, QStringLiteral("Datensicherung wird geprüft")}.report(percent / 100.0);
    });
    if (!check.ok) {
        result.cancelled = check.cancelled;
        result.error = check.cancelled ? QStringLiteral("Die Datensicherung wurde abgebrochen.")
                                       : QStringLiteral("Die eben geschriebene Datensicherung ist fehlerhaft und wurde verworfen: %1").arg(check.error);
        return result;
    }
    QString reason;
    if (!replaceFile(temporary, archivePath, &reason)) {
        result.error = QStringLiteral("Die Datensicherung \"%1\" kann nicht abgelegt werden: %2").arg(native(archivePath), reason);
        return result;
    }
    result.ok = true;
    result.entries = int(check.names.size());
    result.size = QFileInfo(archivePath).size();
    return result;
}

ArchiveCheck checkArchive(const QString& archivePath, const ProgressFn& progress, const QString& extractTo)
{
    ArchiveCheck result;
    if (!QFileInfo(archivePath).isFile()) {
        result.error = QStringLiteral("Die Datei \"%1\" ist nicht vorhanden.").arg(native(archivePath));
        return result;
    }
    int code = 0;
    zip_t* archive = zip_open(zipPath(archivePath).constData(), ZIP_RDONLY | ZIP_CHECKCONS, &code);
    if (!archive) {
        result.error = QStringLiteral("Die Datei \"%1\" ist kein lesbares ZIP-Archiv oder sie ist beschädigt (%2).")
                           .arg(native(archivePath), germanZipError(code, errno));
        return result;
    }
    struct Closer {
        zip_t* a;
        ~Closer() { zip_discard(a); }
    } closer{archive};

    const zip_int64_t count = zip_get_num_entries(archive, 0);
    QSet<QString> seen;
    int databaseIndex = -1;
    for (zip_int64_t i = 0; i < count; ++i) {
        const char* raw = zip_get_name(archive, zip_uint64_t(i), ZIP_FL_ENC_GUESS);
        const QString name = raw ? QString::fromUtf8(raw) : QString();
        if (!isPlainEntryName(name)) {
            result.error = notOurs(archivePath, QStringLiteral("der Eintrag \"%1\" ist kein einfacher Dateiname").arg(name));
            return result;
        }
        if (isLink(archive, zip_uint64_t(i))) {
            result.error = notOurs(archivePath, QStringLiteral("der Eintrag \"%1\" ist eine Verknüpfung").arg(name));
            return result;
        }
        if (seen.contains(name.toUpper())) {
            result.error = notOurs(archivePath, QStringLiteral("der Eintrag \"%1\" kommt zweimal vor").arg(name));
            return result;
        }
        seen.insert(name.toUpper());
        zip_stat_t stat;
        zip_stat_init(&stat);
        if (zip_stat_index(archive, zip_uint64_t(i), 0, &stat) == 0 && (stat.valid & ZIP_STAT_SIZE))
            result.uncompressedSize += qint64(stat.size);
        if (name == QLatin1String(DatabaseFileName))
            databaseIndex = int(i);
        result.names << name;
    }
    if (databaseIndex < 0) {
        result.error = notOurs(archivePath, QStringLiteral("die Datenbank %1 fehlt darin").arg(QLatin1String(DatabaseFileName)));
        return result;
    }

    std::optional<QTemporaryDir> scratch;
    QString databaseCopy;
    if (extractTo.isEmpty()) {
        scratch.emplace(QDir::temp().filePath(QStringLiteral("tarvik-pruefung-XXXXXX")));
        if (!scratch->isValid()) {
            result.error = QStringLiteral("Für die Prüfung der Datensicherung kann kein Arbeitsordner angelegt werden.");
            return result;
        }
        databaseCopy = scratch->filePath(QLatin1String(DatabaseFileName));
    } else {
        databaseCopy = QDir(extractTo).filePath(QLatin1String(DatabaseFileName));
    }

    const Span readSpan{progress, 0, 85, QStringLiteral("Datensicherung wird gelesen")};
    QByteArray buffer(Chunk, Qt::Uninitialized); // one for all entries: an archive may hold many small ones
    qint64 done = 0;
    for (zip_int64_t i = 0; i < count; ++i) {
        const QString& name = result.names[int(i)];
        QString target;
        if (!extractTo.isEmpty())
            target = QDir(extractTo).filePath(name);
        else if (i == databaseIndex)
            target = databaseCopy;
        QString error;
        if (!readEntry(archive, zip_uint64_t(i), name, target, readSpan, buffer, done, result.uncompressedSize, error, result.cancelled)) {
            result.error = result.cancelled ? QStringLiteral("Die Prüfung wurde abgebrochen.")
                                            : QStringLiteral("Die Datensicherung \"%1\" ist beschädigt (%2).").arg(native(archivePath), error);
            return result;
        }
    }
    if (progress && !progress(85, QStringLiteral("Datenbank wird geprüft"))) {
        result.cancelled = true;
        result.error = QStringLiteral("Die Prüfung wurde abgebrochen.");
        return result;
    }
    const QString problem = databaseProblem(databaseCopy);
    if (!problem.isEmpty()) {
        result.error = QStringLiteral("Die Datenbank in der Datensicherung \"%1\" ist nicht in Ordnung (%2).").arg(native(archivePath), problem);
        return result;
    }
    if (progress)
        progress(100, QStringLiteral("Datensicherung ist in Ordnung"));
    result.ok = true;
    return result;
}

QList<ArchiveInfo> listArchives(const QString& folder)
{
    QList<ArchiveInfo> list;
    const QDir dir(folder);
    for (const QFileInfo& file : dir.entryInfoList(QDir::Files)) {
        const auto date = archiveDate(file.fileName());
        if (!date)
            continue;
        list.append({file.absoluteFilePath(), file.fileName(), *date, file.size(), file.lastModified()});
    }
    std::sort(list.begin(), list.end(), [](const ArchiveInfo& a, const ArchiveInfo& b) {
        if (a.date != b.date)
            return a.date > b.date;
        return a.modified > b.modified;
    });
    return list;
}

int removeOlderArchives(const QString& folder, int keep)
{
    const QList<ArchiveInfo> list = listArchives(folder);
    int removed = 0;
    for (int i = keep; i < list.size(); ++i)
        if (QFile::remove(list[i].path))
            ++removed;
    return removed;
}

CopyResult copyVerified(const QString& source, const QString& targetFolder, const ProgressFn& progress)
{
    CopyResult result;
    const QString name = QFileInfo(source).fileName();
    result.path = QDir(targetFolder).filePath(name);
    const QString temporary = QDir(targetFolder).filePath(QStringLiteral(".%1.tmp").arg(name));
    const Span span{progress, 0, 100, QStringLiteral("Datensicherung wird kopiert")};
    auto fail = [&](const QString& error) {
        QFile::remove(temporary);
        result.error = error;
        return result;
    };
    QFile in(source);
    if (!in.open(QIODevice::ReadOnly))
        return fail(QStringLiteral("\"%1\" kann nicht gelesen werden: %2").arg(native(source), germanFileError(in)));
    QFile out(temporary);
    if (!out.open(QIODevice::WriteOnly | QIODevice::Truncate))
        return fail(QStringLiteral("Auf \"%1\" kann nicht geschrieben werden: %2").arg(native(targetFolder), germanFileError(out)));
    QCryptographicHash written(QCryptographicHash::Sha256);
    const qint64 total = in.size();
    qint64 done = 0;
    while (!in.atEnd()) {
        const QByteArray block = in.read(Chunk);
        if (block.isEmpty() && in.error() != QFileDevice::NoError)
            return fail(QStringLiteral("\"%1\" kann nicht gelesen werden: %2").arg(native(source), germanFileError(in)));
        if (out.write(block) != block.size())
            return fail(QStringLiteral("Auf \"%1\" kann nicht geschrieben werden (Datenträger voll oder entfernt?): %2")
                            .arg(native(targetFolder), germanFileError(out)));
        written.addData(block);
        done += block.size();
        if (!span.report(total > 0 ? 0.9 * double(done) / double(total) : 0.9)) {
            result.cancelled = true;
            return fail(QStringLiteral("Das Kopieren wurde abgebrochen."));
        }
    }
    if (!out.flush() || out.error() != QFileDevice::NoError)
        return fail(QStringLiteral("Auf \"%1\" kann nicht geschrieben werden (Datenträger voll oder entfernt?): %2")
                        .arg(native(targetFolder), germanFileError(out)));
    out.close();
    QFile back(temporary);
    QCryptographicHash read(QCryptographicHash::Sha256);
    if (!back.open(QIODevice::ReadOnly) || !read.addData(&back) || read.result() != written.result())
        return fail(QStringLiteral("Die Kopie auf \"%1\" lässt sich nicht fehlerfrei zurücklesen.").arg(native(targetFolder)));
    back.close();
    QString reason;
    if (!replaceFile(temporary, result.path, &reason))
        return fail(QStringLiteral("Die Kopie \"%1\" kann nicht abgelegt werden: %2").arg(native(result.path), reason));
    span.report(1.0);
    result.ok = true;
    return result;
}

} // namespace tarvik
