#pragma once
// The lists that feed the entry windows' drop-downs: add, change and remove their entries,
// so a mistyped value can be put right. Rows are told apart by the engine's row number, as
// these tables have no `ID`.
#include "masterdata/editmode.h"

namespace tarvik {

struct LookupEntry {
    qint64 rowId = 0;
    QStringList values; // in column order, as shown
};

// The seven lists in the editor's order, and their captions.
const QStringList& lookupLists();
QString lookupListCaption(const QString& table);
QStringList lookupColumns(const QString& table);
QList<LookupEntry> lookupEntries(const QSqlDatabase& db, const QString& table);

// Gathered checks (a first value, the column widths, no second entry with the same values),
// then one statement. False when refused, with the reasons shown.
bool addLookupEntry(const AppContext& context, const QString& table, const QStringList& values);
bool changeLookupEntry(const AppContext& context, const QString& table, qint64 rowId, const QStringList& values);
// Asks first; false on No.
bool deleteLookupEntry(const AppContext& context, const QString& table, qint64 rowId);

} // namespace tarvik
