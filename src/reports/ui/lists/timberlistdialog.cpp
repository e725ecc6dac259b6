#include "reports/ui/lists/timberlistdialog.h"

#include "common/text.h"
#include "common/textfile.h"
#include "common/ui/guarded.h"
#include "reports/lists/writers.h"
#include "reports/reportfile.h"
#include "reports/timberlist.h"
#include "reports/ui/textoutputwindow.h"

#include <QDesktopServices>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QListWidget>
#include <QPushButton>
#include <QUrl>
#include <QVBoxLayout>

namespace tarvik {

TimberListDialog::TimberListDialog(const AppContext& context, qint32 harvestId, QWidget* parent)
    : QDialog(parent), m_context(context), m_harvest(harvestId)
{
    setObjectName(QStringLiteral("BF_Holzliste_listen"));
    setWindowTitle(QStringLiteral("Holzliste erstellen"));
    setModal(true);
    resize(460, 480);
    auto button = [](const QString& name, const QString& caption) {
        auto* b = new QPushButton(caption);
        b->setObjectName(name);
        b->setAutoDefault(false);
        return b;
    };
    auto* frame = new QGroupBox(QStringLiteral("Lose (Stämme) für die Holzliste"));
    auto* frameLayout = new QVBoxLayout(frame);
    m_lots = new QListWidget;
    m_lots->setObjectName(QStringLiteral("liste"));
    const QList<TimberListLot> lots =
        runGuarded(m_context.prompter, [&] { return timberListLots(m_context.db, harvestId); }).value_or(QList<TimberListLot>());
    for (const TimberListLot& lot : lots) {
        auto* item = new QListWidgetItem(lot.label, m_lots);
        item->setData(Qt::UserRole, lot.number);
        item->setFlags(item->flags() | Qt::ItemIsUserCheckable);
        item->setCheckState(Qt::Checked);
    }
    QPushButton* all = button(QStringLiteral("alle(0)"), QStringLiteral("Alle"));
    QPushButton* none = button(QStringLiteral("alle(1)"), QStringLiteral("Keine"));
    auto tick = [this](Qt::CheckState state) {
        for (int i = 0; i < m_lots->count(); ++i)
            m_lots->item(i)->setCheckState(state);
    };
    connect(all, &QPushButton::clicked, this, [tick] { tick(Qt::Checked); });
    connect(none, &QPushButton::clicked, this, [tick] { tick(Qt::Unchecked); });
    auto* ticks = new QHBoxLayout;
    ticks->addWidget(all);
    ticks->addWidget(none);
    frameLayout->addWidget(m_lots, 1);
    frameLayout->addLayout(ticks);

    QPushButton* ok = button(QStringLiteral("ok"), QStringLiteral("&Liste erstellen"));
    ok->setDefault(true);
    QPushButton* help = button(QStringLiteral("hilfe"), QStringLiteral("&Hilfe"));
    help->setEnabled(false); // the help filter enables and wires it when the window shows
    QPushButton* close = button(QStringLiteral("beenden"), QStringLiteral("&Beenden"));
    connect(ok, &QPushButton::clicked, this, &TimberListDialog::build);
    connect(close, &QPushButton::clicked, this, &QDialog::reject);
    auto* buttons = new QHBoxLayout;
    buttons->addWidget(ok);
    buttons->addStretch();
    buttons->addWidget(help);
    buttons->addWidget(close);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(frame, 1);
    layout->addLayout(buttons);
}

void TimberListDialog::build()
{
    QList<qint32> lots;
    for (int i = 0; i < m_lots->count(); ++i)
        if (m_lots->item(i)->checkState() == Qt::Checked)
            lots << m_lots->item(i)->data(Qt::UserRole).toInt();
    if (lots.isEmpty()) {
        m_context.prompter.inform(QString::fromUtf8(NoLotsMarked));
        return;
    }
    QStringList lines;
    if (!runGuarded(m_context.prompter, [&] {
            lines = timberListOfLots(m_context.db, m_harvest, lots);
        })) {
        return;
    }
    const QString path = reportFilePath(m_context.dataFolder);
    const TextFileResult written = writeTextFile(path, lines);
    if (!written.ok) {
        m_context.prompter.inform(written.error, Prompter::Icon::Warning);
        return;
    }
    // The timber list is fixed-width text: the system's editor or the own window shows it.
    if (lists::targetFromSettings(m_context.settings) == lists::Target::SystemEditor &&
        QDesktopServices::openUrl(QUrl::fromLocalFile(path)))
        return;
    TextOutputWindow window(m_context, this);
    window.exec();
}

} // namespace tarvik
