#pragma once
// How each column of a list is shown: its kind from the schema (or from the figure it sums),
// its decimals and its width in the text form.
#include "reports/lists/listquery.h"

#include <QDate>
#include <QList>
#include <QSqlDatabase>
#include <QString>
#include <QVariant>

namespace tarvik::lists {

struct ColumnFormat {
    enum class Kind { Text, Integer, Decimal, Date };
    QString name;
    Kind kind = Kind::Text;
    int decimals = 0;
    int width = 0; // characters in the text form
    bool nullAsZero = false; // a group's sum over nothing is 0, not empty
};

QList<ColumnFormat> columnFormats(const MemberDef& def, const ListQuery& query);
// The same with widths from the query's rows: each figure column as wide as its widest value,
// so that the text form never drops a digit, each text column as wide as its longest value.
// One pass of the engine over the rows, nothing fetched.
QList<ColumnFormat> columnFormats(const QSqlDatabase& db, const MemberDef& def, const ListQuery& query);

// The cell as people read it: decimal comma, "dd.mm.yyyy", NULL as empty.
QString cellText(const ColumnFormat& format, const QVariant& value);
// A stored date (ISO text) as a date; invalid when empty.
QDate cellDate(const QVariant& value);

} // namespace tarvik::lists
