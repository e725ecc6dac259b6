#include "reports/lists/listmodel.h"
#include "common/systemerror.h"

#include <QSqlError>
#include <QSqlQuery>

namespace tarvik {

bool ListModel::show(const QSqlDatabase& db, const lists::ListQuery& query, const QList<lists::ColumnFormat>& formats, QString* error)
{
    QSqlQuery q(db);
    q.setForwardOnly(false);
    if (!q.prepare(query.sql)) {
        *error = germanErrorText(q.lastError().text());
        return false;
    }
    for (int i = 0; i < query.values.size(); ++i)
        q.bindValue(i, query.values[i]);
    if (!q.exec()) {
        *error = germanErrorText(q.lastError().text());
        return false;
    }
    beginResetModel();
    m_formats = formats;
    endResetModel();
    setQuery(std::move(q)); // fetches the first rows only; the rest as the grid scrolls
    return true;
}

QVariant ListModel::data(const QModelIndex& index, int role) const
{
    if (index.column() >= m_formats.size())
        return QSqlQueryModel::data(index, role);
    const lists::ColumnFormat& f = m_formats[index.column()];
    if (role == Qt::DisplayRole)
        return lists::cellText(f, QSqlQueryModel::data(index, Qt::EditRole));
    if (role == Qt::TextAlignmentRole)
        return f.kind == lists::ColumnFormat::Kind::Text ? int(Qt::AlignLeft | Qt::AlignVCenter) : int(Qt::AlignRight | Qt::AlignVCenter);
    return QSqlQueryModel::data(index, role);
}

} // namespace tarvik
