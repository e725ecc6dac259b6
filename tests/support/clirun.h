#pragma once
// tarvik-cli run in-process, its output and messages caught as text.
#include "cli/cli.h"

#include <QString>
#include <QStringList>
#include <cstdio>

namespace tarvik::test {

struct CliOutput {
    int code;
    QString out;
    QString err;
};

inline QString readAndClose(std::FILE* f)
{
    std::rewind(f);
    QByteArray bytes;
    char buf[4096];
    size_t n;
    while ((n = std::fread(buf, 1, sizeof buf, f)) > 0)
        bytes.append(buf, qsizetype(n));
    std::fclose(f);
    return QString::fromUtf8(bytes);
}

inline CliOutput runCli(const QStringList& args)
{
    std::FILE* out = std::tmpfile();
    std::FILE* err = std::tmpfile();
    const int code = cli::run(args, out, err);
    return {code, readAndClose(out), readAndClose(err)};
}

} // namespace tarvik::test
