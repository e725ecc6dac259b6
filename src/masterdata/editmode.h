#pragma once
// What every master data editor shares: its mode, the gathered refusal, the name checks that
// keep class names fit to be column names, and the after-change step.
#include "store/context.h"
#include "store/textwidth.h" // widthReason

#include <QStringList>
#include <optional>

namespace tarvik {

enum class EditMode { Neu, Aendern };

// "Die Eingabe kann nicht übernommen werden, weil..." and one line per reason.
QString gatheredRefusal(const QStringList& reasons);

// A class name that names columns ("SK_" + class, "GK_" + class): ASCII letters, digits and '_'
// only, so that no name can ever break a statement. nullopt when fit; else the reason line.
std::optional<QString> columnNameReason(const QString& name, const QString& subject);
// A class name that is only ever a value (Heilbronn, pole, stacked-wood classes): the characters
// above and '.', as "P2.1" has it; quotes, blanks and semicolons are refused all the same.
std::optional<QString> valueNameReason(const QString& name, const QString& subject);

// Every master data change ends here, after its commit: the rules reread the tables.
void masterDataChanged();

// Whether the table has a row with the value in the column (bound, whatever the text holds).
bool valueUsed(const QSqlDatabase& db, const QString& table, const QString& column, const QString& value,
               std::optional<qint32> exceptId = std::nullopt);

} // namespace tarvik
