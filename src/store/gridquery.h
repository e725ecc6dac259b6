#pragma once
// Queries that fill a grid: bound, checked, and scrollable so a QSqlQueryModel can page
// through them. A window gets the query from its core and never writes SQL itself.
#include <QAbstractTableModel>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QString>
#include <QVariantList>

namespace tarvik {

// Runs the statement with its bound values; throws StoreError on failure.
QSqlQuery gridQuery(const QSqlDatabase& db, const QString& sql, const QVariantList& values = {});

// All rows of a harvest in a detail table (logs, poles, sections), newest first; the last
// column is the row's "ID".
struct HarvestRows {
    QString table;
    QStringList columns; // without "ID"
    qint32 harvestId = 0;
};

// The statement that reads a page: harvest ID bound first, then (with afterId) the last ID read.
QString harvestRowsPageSql(const HarvestRows& source, bool afterId, int pageSize);

// A grid model over HarvestRows that reads a page at a time as the grid scrolls, each page its
// own finished query ("ID" below the last one read, along the Kennung index): no statement
// stays open between pages, so no read snapshot is held against other writers, and a store in
// a harvest of 10,000 logs reads only the first page again.
class HarvestRowsModel : public QAbstractTableModel {
public:
    static constexpr int PageSize = 256;

    explicit HarvestRowsModel(QObject* parent = nullptr) : QAbstractTableModel(parent) {}

    // Shows the rows from the first page; throws StoreError when it cannot be read.
    void setSource(const QSqlDatabase& db, HarvestRows source);
    void clear();

    qint32 idAt(int row) const;
    // The row showing that ID, reading further pages until it is found; -1 when it is not listed.
    int rowOfId(qint32 id);

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;
    bool canFetchMore(const QModelIndex& parent = {}) const override;
    void fetchMore(const QModelIndex& parent = {}) override;

private:
    QList<QVariantList> readPage() const;

    QSqlDatabase m_db;
    HarvestRows m_source;
    QList<QVariantList> m_rows; // the ID last
    bool m_more = false;
};

// The value of a column in the lot's newest row ("" when the lot has none): the likely value of
// the next row.
QString lastValueOfLot(const QSqlDatabase& db, const QString& table, const QString& column, qint32 harvestId, qint32 lotNr);

} // namespace tarvik
