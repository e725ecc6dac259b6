#include "devices/ui/importgrid.h"

#include "common/ui/gridformat.h"

#include <QHeaderView>
#include <QLabel>
#include <QStandardItemModel>
#include <QTableView>
#include <QVBoxLayout>

namespace tarvik {

ImportGridDialog::ImportGridDialog(const QList<ImportedLog>& logs, std::optional<qint32> formLot, QWidget* parent)
    : QDialog(parent), m_grid(new QTableView(this))
{
    setObjectName(QStringLiteral("FMR_Import"));
    setWindowTitle(QStringLiteral("Gefundene Stämme"));
    auto* model = new QStandardItemModel(0, 9, this);
    model->setHorizontalHeaderLabels({QStringLiteral("Los"), QStringLiteral("Lfd. Nr."), QStringLiteral("Baumart"), QStringLiteral("Güte"),
                                      QStringLiteral("Länge (m)"), QStringLiteral("Stärke (cm)"), QStringLiteral("Zopf (cm)"),
                                      QStringLiteral("Käferholz"), QStringLiteral("Bemerkung")});
    for (const ImportedLog& l : logs) {
        const qint32 lot = l.lot > 0 ? l.lot : formLot.value_or(0);
        QList<QStandardItem*> row;
        for (const QString& text : {lot > 0 ? QString::number(lot) : QString(), l.number > 0 ? QString::number(l.number) : QString(),
                                    l.species, l.quality, l.length, l.diameter, l.top,
                                    l.beetle ? QStringLiteral("J") : QStringLiteral("N"), l.remark}) {
            auto* item = new QStandardItem(text);
            item->setEditable(false);
            row << item;
        }
        model->appendRow(row);
    }
    m_grid->setObjectName(QStringLiteral("fmrgrid"));
    m_grid->setModel(model);
    formatGrid(m_grid);
    m_grid->setSelectionMode(QAbstractItemView::NoSelection);
    m_grid->verticalHeader()->hide();
    m_grid->horizontalHeader()->setStretchLastSection(true);
    fitColumnsToContent(m_grid);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(new QLabel(QStringLiteral("Diese Stämme wurden gelesen:")));
    layout->addWidget(m_grid);
    resize(760, 420);
}

} // namespace tarvik
