#include "store/gridquery.h"

#include "common/text.h"
#include "store/sql.h"

#include "common/storeerror.h"

#include <QSqlError>

namespace tarvik {

QSqlQuery gridQuery(const QSqlDatabase& db, const QString& sql, const QVariantList& values)
{
    QSqlQuery query = prepareSql(db, sql);
    execPrepared(query, values);
    return query;
}

void HarvestRowsModel::setSource(const QSqlDatabase& db, HarvestRows source)
{
    beginResetModel();
    m_db = db;
    m_source = std::move(source);
    m_rows.clear();
    m_more = false;
    try {
        m_rows = readPage();
        m_more = m_rows.size() == PageSize;
    } catch (...) {
        endResetModel();
        throw;
    }
    endResetModel();
}

void HarvestRowsModel::clear()
{
    beginResetModel();
    m_rows.clear();
    m_more = false;
    endResetModel();
}

QString harvestRowsPageSql(const HarvestRows& source, bool afterId, int pageSize)
{
    QStringList columns;
    for (const QString& c : source.columns)
        columns << quoted(c);
    columns << QStringLiteral("\"ID\"");
    return QStringLiteral("SELECT %1 FROM %2 WHERE \"Kennung\" = ?%3 ORDER BY \"ID\" DESC LIMIT %4")
        .arg(columns.join(QStringLiteral(", ")), quoted(source.table), afterId ? QStringLiteral(" AND \"ID\" < ?") : QString())
        .arg(pageSize);
}

QList<QVariantList> HarvestRowsModel::readPage() const
{
    QVariantList values{m_source.harvestId};
    if (!m_rows.isEmpty())
        values << m_rows.last().last();
    QSqlQuery query = execSql(m_db, harvestRowsPageSql(m_source, !m_rows.isEmpty(), PageSize), values);
    QList<QVariantList> page;
    const int count = int(m_source.columns.size()) + 1;
    while (query.next()) {
        QVariantList row;
        row.reserve(count);
        for (int i = 0; i < count; ++i)
            row << query.value(i);
        page << row;
    }
    return page;
}

qint32 HarvestRowsModel::idAt(int row) const
{
    return row >= 0 && row < m_rows.size() ? m_rows.at(row).last().toInt() : 0;
}

int HarvestRowsModel::rowOfId(qint32 id)
{
    for (int row = 0;; ++row) {
        if (row == m_rows.size()) {
            if (!canFetchMore())
                return -1;
            fetchMore();
            if (row == m_rows.size())
                return -1;
        }
        if (idAt(row) == id)
            return row;
    }
}

int HarvestRowsModel::rowCount(const QModelIndex& parent) const { return parent.isValid() ? 0 : int(m_rows.size()); }

int HarvestRowsModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() || m_source.table.isEmpty() ? 0 : int(m_source.columns.size()) + 1;
}

QVariant HarvestRowsModel::data(const QModelIndex& index, int role) const
{
    if ((role != Qt::DisplayRole && role != Qt::EditRole) || !index.isValid() || index.row() >= m_rows.size())
        return {};
    return m_rows.at(index.row()).value(index.column());
}

QVariant HarvestRowsModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (role != Qt::DisplayRole || orientation != Qt::Horizontal)
        return QAbstractTableModel::headerData(section, orientation, role);
    return section < m_source.columns.size() ? m_source.columns.at(section) : QStringLiteral("ID");
}

bool HarvestRowsModel::canFetchMore(const QModelIndex& parent) const { return !parent.isValid() && m_more; }

void HarvestRowsModel::fetchMore(const QModelIndex& parent)
{
    if (parent.isValid() || !m_more)
        return;
    QList<QVariantList> page;
    try {
        page = readPage();
    } catch (const StoreError&) {
        m_more = false; // the grid keeps what it has; the next store reads it afresh
        return;
    }
    m_more = page.size() == PageSize;
    if (page.isEmpty())
        return;
    beginInsertRows({}, int(m_rows.size()), int(m_rows.size() + page.size()) - 1);
    m_rows += page;
    endInsertRows();
}

QString lastValueOfLot(const QSqlDatabase& db, const QString& table, const QString& column, qint32 harvestId, qint32 lotNr)
{
    return readText(scalar(db, QStringLiteral("SELECT %1 FROM %2 WHERE \"Kennung\" = ? AND \"Los_Nr\" = ? ORDER BY \"ID\" DESC LIMIT 1")
                                   .arg(quoted(column), quoted(table)),
                           {harvestId, lotNr}));
}

} // namespace tarvik
