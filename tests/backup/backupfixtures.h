#pragma once
// For the backup tests: command-line tools run for real, and drives standing in for sticks.
#include "support/storefixture.h"
#include "fakedrives.h"

#include <QProcess>
#include <utility>

namespace tarvik::test {

// Exit code and output of a command-line tool.
inline std::pair<int, QString> run(const QString& program, const QStringList& arguments, const QString& folder = {})
{
    QProcess p;
    p.setWorkingDirectory(folder);
    p.setProcessChannelMode(QProcess::MergedChannels);
    p.start(program, arguments);
    if (!p.waitForFinished(120000))
        return {-1, QStringLiteral("timeout")};
    return {p.exitStatus() == QProcess::NormalExit ? p.exitCode() : -1, QString::fromLocal8Bit(p.readAll())};
}

inline bool unzipAccepts(const QString& archive) { return run(QStringLiteral("unzip"), {QStringLiteral("-tq"), archive}).first == 0; }

} // namespace tarvik::test
