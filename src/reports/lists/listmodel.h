#pragma once
// The rows of the list grid `gridli`: fetched from the open statement as the grid scrolls, never all at once,
// and shown as the list's text form shows them.
#include "reports/lists/formats.h"

#include <QSqlQueryModel>

namespace tarvik {

class ListModel : public QSqlQueryModel {
    Q_OBJECT
public:
    using QSqlQueryModel::QSqlQueryModel;

    // Runs the statement and shows its first rows; false with the driver's text on failure.
    bool show(const QSqlDatabase& db, const lists::ListQuery& query, const QList<lists::ColumnFormat>& formats, QString* error);
    const QList<lists::ColumnFormat>& formats() const { return m_formats; }
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;

private:
    QList<lists::ColumnFormat> m_formats;
};

} // namespace tarvik
