#pragma once
// What the report tests share: a written file against its golden copy in tests/data, and the
// output of poppler's tools.
#include "common/textfile.h"

#include <QFile>
#include <QProcess>
#include <QtTest>

namespace tarvik::test {

// The written file byte for byte against tests/data/<name>, naming the first line that differs
// (a changed line end counts). TARVIK_UPDATE_GOLDEN=1 writes the golden file anew.
inline void compareWithGolden(const QString& written, const QString& name)
{
    QFile file(written);
    QVERIFY2(file.open(QIODevice::ReadOnly), qPrintable(written));
    const QByteArray actual = file.readAll();
    QFile golden(QStringLiteral(TARVIK_TEST_DATA "/") + name);
    if (qEnvironmentVariableIsSet("TARVIK_UPDATE_GOLDEN")) {
        QVERIFY(golden.open(QIODevice::WriteOnly));
        golden.write(actual);
        return;
    }
    QVERIFY2(golden.open(QIODevice::ReadOnly), qPrintable(golden.fileName()));
    const QList<QByteArray> want = golden.readAll().split('\n');
    const QList<QByteArray> got = actual.split('\n');
    for (qsizetype i = 0; i < std::max(want.size(), got.size()); ++i)
        QVERIFY2(want.value(i) == got.value(i), qPrintable(QStringLiteral("Zeile %1:\n- %2\n+ %3")
                                                               .arg(i + 1)
                                                               .arg(decodeCp1252(want.value(i)), decodeCp1252(got.value(i)))));
}

// What a command-line tool (pdftotext, pdfinfo, pdffonts) prints.
inline QString toolOutput(const QString& program, const QStringList& args)
{
    QProcess p;
    p.start(program, args);
    if (!p.waitForFinished(60000))
        return {};
    return QString::fromUtf8(p.readAllStandardOutput());
}

// The PDF's text as pdftotext lays it out, pages separated by form feeds.
inline QString pdfText(const QString& pdf, const QStringList& options = {QStringLiteral("-layout")})
{
    return toolOutput(QStringLiteral("pdftotext"), options + QStringList{pdf, QStringLiteral("-")});
}

} // namespace tarvik::test
