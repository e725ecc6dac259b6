#pragma once
// Reads an Access/Jet file of the previous major version (through mdbtools' libmdb) and writes
// every table, column and row into a new SQLite file: types mapped to this program's column
// types, text to Unicode, dates to the stored ISO form, NULLs kept.
#include <QString>
#include <QStringList>

namespace tarvik {

struct JetTableReport {
    QString name;
    qint64 rows = 0;
};

struct JetConversion {
    bool ok = false;
    QString message; // German, names the file, when not ok
    QList<JetTableReport> tables;
};

// The file is checked before libmdb sees it: a Jet 3 or Jet 4 header, whole pages. An Access
// 2007+ file, a foreign or a cut-off file is refused.
QString jetFileProblem(const QString& mdbPath);

// Writes target under a temporary name and puts it in place only when every table is complete;
// an existing target is replaced. Nothing is left behind on failure.
JetConversion convertJetToSqlite(const QString& mdbPath, const QString& targetPath);

} // namespace tarvik
