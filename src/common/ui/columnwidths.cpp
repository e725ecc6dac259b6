#include "common/ui/columnwidths.h"

#include <QAbstractItemModel>
#include <QSettings>
#include <QStringList>
#include <QTableView>

namespace tarvik {
namespace {

QString settingsKey(const QString& key) { return key + QStringLiteral("/ColWidths"); }

} // namespace

void saveColumnWidths(const QTableView* grid, const QString& key)
{
    const int columns = grid->model() ? grid->model()->columnCount() : 0;
    if (columns == 0)
        return; // an empty grid has nothing to remember and must not wipe what was
    QStringList widths;
    for (int c = 0; c < columns; ++c)
        widths << QString::number(grid->columnWidth(c));
    QSettings store(QStringLiteral("TARVIK"), QStringLiteral("TARVIK"));
    store.setValue(settingsKey(key), widths.join(u','));
}

bool restoreColumnWidths(QTableView* grid, const QString& key)
{
    const QSettings store(QStringLiteral("TARVIK"), QStringLiteral("TARVIK"));
    const QStringList widths = store.value(settingsKey(key)).toString().split(u',', Qt::SkipEmptyParts);
    const int columns = grid->model() ? grid->model()->columnCount() : 0;
    bool any = false;
    for (int c = 0; c < widths.size() && c < columns; ++c) {
        if (const int w = widths[c].toInt(); w > 0) {
            grid->setColumnWidth(c, w);
            any = true;
        }
    }
    return any;
}

} // namespace tarvik
