#pragma once
// The transfer question of every log import: the logs as they came from the source in the grid
// `fmrgrid`, each one that will not be stored marked with its reason, and the question below
// the grid, so the grid can be read and scrolled while the user decides.
#include "devices/logimport.h"

#include <QDialog>
#include <optional>

class QTableView;

namespace tarvik {

class ImportGridDialog : public QDialog {
    Q_OBJECT
public:
    ImportGridDialog(const QList<ImportedLog>& logs, std::optional<qint32> formLot, const QStringList& reasons, const QString& question,
                     QWidget* parent = nullptr);
    QTableView* grid() const { return m_grid; }

private:
    QTableView* m_grid;
};

// The question for importLogs: the grid dialog, modal over parent; true on [Ja].
TransferQuestion gridTransferQuestion(QWidget* parent, std::optional<qint32> formLot);

} // namespace tarvik
