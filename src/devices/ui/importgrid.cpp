#include "devices/ui/importgrid.h"

#include "common/ui/gridformat.h"

#include <QDialogButtonBox>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QStandardItemModel>
#include <QTableView>
#include <QVBoxLayout>

namespace tarvik {

ImportGridDialog::ImportGridDialog(const QList<ImportedLog>& logs, std::optional<qint32> formLot, const QStringList& reasons,
                                   const QString& question, QWidget* parent)
    : QDialog(parent), m_grid(new QTableView(this))
{
    setObjectName(QStringLiteral("FMR_Import"));
    setWindowTitle(QStringLiteral("Gefundene Stämme"));
    auto* model = new QStandardItemModel(0, 10, this);
    model->setHorizontalHeaderLabels({QStringLiteral("Los"), QStringLiteral("Lfd. Nr."), QStringLiteral("Baumart"), QStringLiteral("Güte"),
                                      QStringLiteral("Länge (m)"), QStringLiteral("Stärke (cm)"), QStringLiteral("Zopf (cm)"),
                                      QStringLiteral("Käferholz"), QStringLiteral("Bemerkung"), QStringLiteral("Wird nicht übernommen, weil")});
    const QBrush refusedBackground(QColor(255, 225, 220));
    int refused = 0;
    for (int i = 0; i < logs.size(); ++i) {
        const ImportedLog& l = logs[i];
        const qint32 lot = l.lot > 0 ? l.lot : formLot.value_or(0);
        const QString reason = reasons.value(i);
        QList<QStandardItem*> row;
        for (const QString& text : {lot > 0 ? QString::number(lot) : QString(), l.number > 0 ? QString::number(l.number) : QString(),
                                    l.species, l.quality, l.length, l.diameter, l.top,
                                    l.beetle ? QStringLiteral("J") : QStringLiteral("N"), l.remark, reason}) {
            auto* item = new QStandardItem(text);
            item->setEditable(false);
            if (!reason.isEmpty())
                item->setBackground(refusedBackground);
            row << item;
        }
        refused += reason.isEmpty() ? 0 : 1;
        model->appendRow(row);
    }
    m_grid->setObjectName(QStringLiteral("fmrgrid"));
    m_grid->setModel(model);
    formatGrid(m_grid);
    m_grid->setSelectionMode(QAbstractItemView::NoSelection);
    m_grid->verticalHeader()->hide();
    m_grid->horizontalHeader()->setStretchLastSection(true);
    fitColumnsToContent(m_grid);

    auto* summary = new QLabel(refused == 0
                                   ? QStringLiteral("Alle %1 Stämme können übernommen werden.").arg(logs.size())
                                   : QStringLiteral("%1 von %2 Stämmen werden nicht übernommen; sie sind rot hinterlegt, der Grund steht "
                                                    "in der letzten Spalte.")
                                         .arg(refused)
                                         .arg(logs.size()));
    summary->setObjectName(QStringLiteral("bezhinweis"));
    summary->setWordWrap(true);
    auto* ask = new QLabel(question);
    ask->setObjectName(QStringLiteral("bezfrage"));
    ask->setWordWrap(true);
    QFont bold = ask->font();
    bold.setBold(true);
    ask->setFont(bold);
    auto* buttons = new QDialogButtonBox;
    QPushButton* yes = buttons->addButton(QStringLiteral("&Ja"), QDialogButtonBox::YesRole);
    yes->setObjectName(QStringLiteral("comja"));
    QPushButton* no = buttons->addButton(QStringLiteral("&Nein"), QDialogButtonBox::NoRole);
    no->setObjectName(QStringLiteral("comnein"));
    yes->setDefault(true);
    connect(yes, &QPushButton::clicked, this, &QDialog::accept);
    connect(no, &QPushButton::clicked, this, &QDialog::reject);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(new QLabel(QStringLiteral("Diese Stämme wurden gelesen:")));
    layout->addWidget(m_grid, 1);
    layout->addWidget(summary);
    layout->addWidget(ask);
    layout->addWidget(buttons);
    resize(900, 480);
}

TransferQuestion gridTransferQuestion(QWidget* parent, std::optional<qint32> formLot)
{
    return [parent, formLot](const QString& question, const QList<ImportedLog>& logs, const QStringList& reasons) {
        ImportGridDialog dialog(logs, formLot, reasons, question, parent);
        return dialog.exec() == QDialog::Accepted;
    };
}

} // namespace tarvik
