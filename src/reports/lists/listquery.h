#pragma once
// Building and running an evaluation list: the statement of the user's choices with every value
// bound, the checks before it runs, and the distinct values of the filter lists.
#include "common/prompter.h"
#include "reports/lists/members.h"
#include "settings/settings.h"

#include <QHash>
#include <QSqlDatabase>
#include <QVariant>
#include <optional>

namespace tarvik::lists {

struct ListRequest {
    ListRequest() = default;
    explicit ListRequest(Member m) : member(m) {}
    Member member = Member::Lose;
    int scope = 0; // selection kind of the harvest filter; invoices have none
    std::optional<qint32> currentHarvest;
    bool harvestsMarked = false; // rows marked in the main list, for the scope "Selektierte Hiebe"
    QHash<QString, QVariant> filters; // filter column → value; a missing column lists all
    QStringList columns;              // ticked columns in list order; empty: all
    QString sortColumn;               // empty: the member's default
    bool descending = false;
    int grouping = -1;                // index into the member's groupings; -1 none
};

struct ListQuery {
    QString sql;
    QVariantList values;
    QStringList columns; // the result's column names in order
    int groupColumns = 0; // leading group columns of a grouped list
    QString countSql;     // the rows of sql, counted without sorting them
};

// The statement for the request. Unknown column or sort names are refused with StoreError so
// that nothing but the member's own names reaches SQL.
ListQuery buildListQuery(const ListRequest& request, const Einstellungen& settings);

// The checks before a list is built: the scope needs a harvest, the range must be usable.
// Shows the refusal and returns nothing when a check fails; no query has run then.
std::optional<ListQuery> prepareList(const ListRequest& request, const Einstellungen& settings, Prompter& prompter);

// Rows of the statement, for the status line and the page display.
qint64 countRows(const QSqlDatabase& db, const ListQuery& query);

// The values a filter list offers, sorted, without NULL.
QVariantList distinctValues(const QSqlDatabase& db, const MemberDef& def, const Filter& filter);

// The column names of the member's base query, read from an empty result.
QStringList baseColumns(const QSqlDatabase& db, const MemberDef& def);

} // namespace tarvik::lists
