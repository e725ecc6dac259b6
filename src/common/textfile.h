#pragma once
// Every text file the program writes is Windows-1252 with CR LF line ends, written so that
// a power cut leaves either the old or the new file, never half of one.
#include <QByteArray>
#include <QString>
#include <QStringList>

namespace tarvik {

QByteArray encodeCp1252(const QString& text); // characters outside the code page become '?'
QString decodeCp1252(const QByteArray& bytes);

struct TextFileResult {
    bool ok = false;
    QStringList lines; // for reading
    QString error;     // German, names the file
};

// Each line is written followed by CR LF.
TextFileResult writeTextFile(const QString& path, const QStringList& lines);
// Text as it stands: line breaks inside it are normalised to CR LF.
TextFileResult writeTextFileRaw(const QString& path, const QString& text);
// Lines split at CR LF or LF; a missing file is ok == false with an error text.
TextFileResult readTextFile(const QString& path);

} // namespace tarvik
