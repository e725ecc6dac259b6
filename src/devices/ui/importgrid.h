#pragma once
// The collected logs as they came from the source, shown while the user decides.
#include "devices/importedlog.h"

#include <QDialog>
#include <optional>

class QTableView;

namespace tarvik {

class ImportGridDialog : public QDialog {
    Q_OBJECT
public:
    ImportGridDialog(const QList<ImportedLog>& logs, std::optional<qint32> formLot, QWidget* parent = nullptr);
    QTableView* grid() const { return m_grid; }

private:
    QTableView* m_grid;
};

} // namespace tarvik
