#pragma once
// Column widths of a grid remembered per user under a key ("datali", "eingabe"), so every
// list opens as the user left it.
#include <QString>

class QTableView;

namespace tarvik {

void saveColumnWidths(const QTableView* grid, const QString& key);
// Applies the remembered widths; false when there are none (first start: fit the content).
bool restoreColumnWidths(QTableView* grid, const QString& key);

} // namespace tarvik
