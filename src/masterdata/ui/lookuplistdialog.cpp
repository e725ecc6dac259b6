#include "masterdata/ui/lookuplistdialog.h"

#include "common/ui/gridformat.h"

#include "common/ui/guarded.h"
#include "store/schema.h"
#include "store/sql.h"

#include <QComboBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTableWidget>
#include <QVBoxLayout>

namespace tarvik {
namespace {
constexpr int MaxFields = 5; // `Waldbesitzer` has the most columns
}

LookupListDialog::LookupListDialog(const AppContext& context, QWidget* parent) : QDialog(parent), m_context(context)
{
    setObjectName(QStringLiteral("OF_Stichworte"));
    setWindowTitle(QStringLiteral("Stichworte der Auswahllisten"));
    setModal(true);
    build();
    refresh();
}

void LookupListDialog::build()
{
    m_lists = new QComboBox;
    m_lists->setObjectName(QStringLiteral("kom"));
    for (const QString& t : lookupLists())
        m_lists->addItem(lookupListCaption(t), t);

    m_grid = new QTableWidget;
    m_grid->setObjectName(QStringLiteral("li"));
    m_grid->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_grid->setSelectionMode(QAbstractItemView::SingleSelection);
    m_grid->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_grid->verticalHeader()->hide();
    m_grid->horizontalHeader()->setStretchLastSection(true);

    auto* form = new QFormLayout;
    for (int i = 0; i < MaxFields; ++i) {
        auto* label = new QLabel;
        auto* edit = new QLineEdit;
        edit->setObjectName(QStringLiteral("tz(%1)").arg(i));
        // Enter adds what is typed, as a list of words is typed one after the other.
        connect(edit, &QLineEdit::returnPressed, this, &LookupListDialog::onAdd);
        form->addRow(label, edit);
        m_labels << label;
        m_fields << edit;
    }

    auto button = [this](const char* name, const char* caption, void (LookupListDialog::*slot)()) {
        auto* b = new QPushButton(QString::fromUtf8(caption));
        b->setObjectName(QString::fromUtf8(name));
        b->setAutoDefault(false);
        connect(b, &QPushButton::clicked, this, slot);
        return b;
    };
    auto* buttons = new QHBoxLayout;
    buttons->addWidget(button("neu", "&Hinzufügen", &LookupListDialog::onAdd));
    buttons->addWidget(button("control7", "Ä&ndern", &LookupListDialog::onChange));
    buttons->addWidget(button("löschen", "&Löschen", &LookupListDialog::onDelete));
    buttons->addStretch();
    auto* help = new QPushButton(QStringLiteral("&Hilfe"));
    help->setObjectName(QStringLiteral("hilfe"));
    help->setAutoDefault(false);
    help->setEnabled(false); // switched on by the program's help buttons
    buttons->addWidget(help);
    auto* close = new QPushButton(QStringLiteral("Schl&ießen"));
    close->setObjectName(QStringLiteral("abbrechen"));
    close->setAutoDefault(false);
    connect(close, &QPushButton::clicked, this, &QDialog::accept);
    buttons->addWidget(close);

    auto* top = new QHBoxLayout;
    top->addWidget(new QLabel(QStringLiteral("Liste:")));
    top->addWidget(m_lists, 1);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(top);
    layout->addWidget(m_grid, 1);
    layout->addWidget(new QLabel(QStringLiteral("Markierten Eintrag ändern oder neuen Eintrag hinzufügen:")));
    layout->addLayout(form);
    layout->addLayout(buttons);
    resize(760, 560);

    connect(m_lists, &QComboBox::currentIndexChanged, this, [this] {
        refresh();
        for (QLineEdit* e : m_fields)
            e->clear();
    });
    connect(m_grid, &QTableWidget::itemSelectionChanged, this, &LookupListDialog::fillFields);
}

QString LookupListDialog::table() const { return m_lists->currentData().toString(); }

void LookupListDialog::showFields()
{
    const schema::Table& t = schema::table(table());
    for (int i = 0; i < MaxFields; ++i) {
        const bool shown = i < t.columns.size();
        m_labels[i]->setVisible(shown);
        m_fields[i]->setVisible(shown);
        if (!shown)
            continue;
        const schema::Column& c = t.columns[i];
        m_labels[i]->setText(c.name + u':');
        m_fields[i]->setMaxLength(c.type == schema::ColumnType::Text ? c.width : 12);
    }
}

void LookupListDialog::refresh()
{
    const std::optional<qint64> marked = markedRow();
    showFields();
    if (!runGuarded(m_context.prompter, [&] {
            m_entries = lookupEntries(m_context.db, table());
        })) {
        m_entries.clear();
    }
    const QStringList columns = lookupColumns(table());
    m_grid->clearSelection();
    m_grid->clear();
    m_grid->setColumnCount(int(columns.size()));
    m_grid->setHorizontalHeaderLabels(columns);
    m_grid->setRowCount(int(m_entries.size()));
    for (int r = 0; r < m_entries.size(); ++r)
        for (int c = 0; c < columns.size(); ++c)
            m_grid->setItem(r, c, new QTableWidgetItem(m_entries[r].values.value(c)));
    formatTableItems(m_grid);
    fitColumnsToContent(m_grid);
    if (marked)
        for (int r = 0; r < m_entries.size(); ++r)
            if (m_entries[r].rowId == *marked)
                m_grid->selectRow(r);
}

std::optional<qint64> LookupListDialog::markedRow() const
{
    const QList<QTableWidgetSelectionRange> ranges = m_grid->selectedRanges();
    if (ranges.isEmpty() || ranges.first().topRow() >= m_entries.size())
        return std::nullopt;
    return m_entries[ranges.first().topRow()].rowId;
}

void LookupListDialog::fillFields()
{
    const QList<QTableWidgetSelectionRange> ranges = m_grid->selectedRanges();
    if (ranges.isEmpty() || ranges.first().topRow() >= m_entries.size())
        return;
    const QStringList values = m_entries[ranges.first().topRow()].values;
    for (int i = 0; i < MaxFields; ++i)
        m_fields[i]->setText(values.value(i));
}

QStringList LookupListDialog::typed() const
{
    QStringList values;
    for (int i = 0; i < lookupColumns(table()).size(); ++i)
        values << m_fields[i]->text();
    return values;
}

void LookupListDialog::onAdd()
{
    runGuarded(m_context.prompter, [&] {
        if (!addLookupEntry(m_context, table(), typed()))
            return;
        refresh();
        m_grid->clearSelection();
        for (QLineEdit* e : m_fields)
            e->clear();
        m_fields.first()->setFocus();
    });
}

void LookupListDialog::onChange()
{
    const auto row = markedRow();
    if (!row) {
        m_context.prompter.inform(QStringLiteral("Bitte markieren Sie zuerst den Datensatz, den Sie ändern möchten."));
        return;
    }
    runGuarded(m_context.prompter, [&] {
        if (changeLookupEntry(m_context, table(), *row, typed()))
            refresh();
    });
}

void LookupListDialog::onDelete()
{
    const auto row = markedRow();
    if (!row) {
        m_context.prompter.inform(QStringLiteral("Bitte markieren Sie zuerst den Datensatz, den Sie löschen möchten."));
        return;
    }
    runGuarded(m_context.prompter, [&] {
        if (deleteLookupEntry(m_context, table(), *row)) {
            refresh();
            for (QLineEdit* e : m_fields)
                e->clear();
        }
    });
}

} // namespace tarvik
