#include "backup.h"

#include "backup/archive.h"
#include "store/database.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <cstdio>

namespace tarvik::bench {
namespace {

bool tool(const QString& program, const QStringList& arguments, const QString& folder)
{
    QProcess p;
    p.setWorkingDirectory(folder);
    p.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    p.setStandardOutputFile(QProcess::nullDevice());
    p.start(program, arguments);
    return p.waitForFinished(-1) && p.exitStatus() == QProcess::NormalExit && p.exitCode() == 0;
}

} // namespace

std::vector<Result> backupScenarios(const QString& dataFolder, const QString& scratchFolder, int runs)
{
    QDir().mkpath(scratchFolder);
    const QString ours = QDir(scratchFolder).filePath(QStringLiteral("TARVIK30_backup_2026_01_01.zip"));
    const QString theirs = QDir(scratchFolder).filePath(QStringLiteral("zip-tool.zip"));
    // The same files: those the program chooses, and the database file itself (checkpointed).
    QStringList files = filesToArchive(dataFolder);
    files << QLatin1String(DatabaseFileName);

    Result backup;
    backup.scenario = QStringLiteral("backup archive (write + check)");
    bool ok = true;
    backup.program = measure(runs, [&] { ok = writeArchive(dataFolder, ours).ok && ok; });
    backup.raw = measure(runs, [&] {
        QFile::remove(theirs);
        ok = tool(QStringLiteral("zip"), QStringList{QStringLiteral("-q"), QStringLiteral("-6"), theirs} + files, dataFolder) && ok;
    });

    Result check;
    check.scenario = QStringLiteral("restore check (CRC + integrity)");
    check.program = measure(runs, [&] { ok = checkArchive(ours).ok && ok; });
    check.raw = measure(runs, [&] { ok = tool(QStringLiteral("unzip"), {QStringLiteral("-tq"), theirs}, dataFolder) && ok; });

    std::printf("backup archive %.1f MB (zip tool %.1f MB) of %.1f MB database%s\n", QFileInfo(ours).size() / 1048576.0,
                QFileInfo(theirs).size() / 1048576.0, QFileInfo(QDir(dataFolder).filePath(QLatin1String(DatabaseFileName))).size() / 1048576.0,
                ok ? "" : "  (A RUN FAILED)");
    return {backup, check};
}

} // namespace tarvik::bench
