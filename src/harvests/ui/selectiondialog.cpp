#include "harvests/ui/selectiondialog.h"

#include "common/ui/guarded.h"
#include "harvests/filter.h"
#include "store/sql.h"

#include <QGroupBox>
#include <QHBoxLayout>
#include <QPushButton>
#include <QVBoxLayout>

namespace tarvik {

SelectionDialog::SelectionDialog(QSqlDatabase db, Prompter& prompter, QWidget* parent)
    : QDialog(parent), m_db(std::move(db)), m_prompter(prompter)
{
    setObjectName(QStringLiteral("FH_Hiebeselektieren"));
    setWindowTitle(QStringLiteral("Hiebe selektieren"));
    setModal(true);
    auto button = [](const QString& name, const QString& caption) {
        auto* b = new QPushButton(caption);
        b->setObjectName(name);
        b->setAutoDefault(false);
        return b;
    };
    auto* frame = new QGroupBox(QStringLiteral("Gesamtselektion"));
    auto* frameLayout = new QVBoxLayout(frame);
    QPushButton* none = button(QStringLiteral("entselekt(0)"), QStringLiteral("Alle Hiebe &entselektieren"));
    QPushButton* all = button(QStringLiteral("entselekt(1)"), QStringLiteral("&Alle Hiebe selektieren"));
    frameLayout->addWidget(none);
    frameLayout->addWidget(all);
    connect(none, &QPushButton::clicked, this, [this] { selectAllOrNone(false); });
    connect(all, &QPushButton::clicked, this, [this] { selectAllOrNone(true); });

    QPushButton* help = button(QStringLiteral("hilfe"), QStringLiteral("&Hilfe"));
    help->setEnabled(false); // the help filter enables and wires it when the window shows
    QPushButton* close = button(QStringLiteral("abbv"), QStringLiteral("&Schließen"));
    close->setDefault(true);
    connect(close, &QPushButton::clicked, this, &QDialog::accept);
    auto* buttons = new QHBoxLayout;
    buttons->addWidget(help);
    buttons->addStretch();
    buttons->addWidget(close);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(frame);
    layout->addLayout(buttons);
    setMinimumWidth(360);
}

void SelectionDialog::selectAllOrNone(bool all)
{
    runGuarded(m_prompter, [&] { selectAll(m_db, all); });
}

} // namespace tarvik
