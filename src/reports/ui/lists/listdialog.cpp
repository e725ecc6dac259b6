#include "reports/ui/lists/listdialog.h"

#include "common/ui/gridformat.h"
#include "common/ui/guarded.h"
#include "harvests/filter.h"
#include "reports/lists/choices.h"
#include "reports/lists/listmodel.h"
#include "reports/lists/writers.h"
#include "reports/reportfile.h"
#include "reports/ui/lists/chartwindow.h"
#include "reports/ui/textoutputwindow.h"
#include "store/sql.h"

#include <QApplication>
#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QDesktopServices>
#include <QDialogButtonBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QScrollBar>
#include <QSettings>
#include <QSqlRecord>
#include <QTableView>
#include <QUrl>
#include <QVBoxLayout>

namespace tarvik {
namespace {

const QString AllValues = QStringLiteral("<alle>");

QPushButton* button(const QString& name, const QString& caption)
{
    auto* b = new QPushButton(caption);
    b->setObjectName(name);
    b->setAutoDefault(false);
    return b;
}

} // namespace

ListDialog::ListDialog(const AppContext& context, lists::Member member, std::optional<qint32> currentHarvest, bool harvestsMarked,
                       QWidget* parent)
    : QDialog(parent), m_context(context), m_def(lists::member(member)), m_current(currentHarvest), m_marked(harvestsMarked),
      m_model(new ListModel(this))
{
    setObjectName(m_def.windowName);
    setWindowTitle(m_def.title);
    setModal(true);
    resize(1280, 700);
    buildControls();
    fillFilters();
    restoreChoices();
}

void ListDialog::buildControls()
{
    auto* left = new QVBoxLayout;

    auto* scopeBox = new QGroupBox(QStringLiteral("Hiebe"));
    auto* scopeLayout = new QGridLayout(scopeBox);
    m_scope = new QComboBox;
    m_scope->setObjectName(QStringLiteral("komhieb"));
    m_scope->addItems(lists::scopeCaptions());
    scopeLayout->addWidget(m_scope, 0, 0, 1, 3);
    m_range = new QButtonGroup(this);
    const char* ranges[] = {"Alle Zeiträume", "Hieb-Jahre", "Hiebdatum"};
    for (int i = 0; i < 3; ++i) {
        auto* r = new QRadioButton(QString::fromUtf8(ranges[i]));
        r->setObjectName(QStringLiteral("optizeitraum(%1)").arg(i));
        m_range->addButton(r, i);
        scopeLayout->addWidget(r, 1, i);
    }
    m_rangeFrom = new QLineEdit;
    m_rangeFrom->setObjectName(QStringLiteral("tzeitraum(0)"));
    m_rangeTo = new QLineEdit;
    m_rangeTo->setObjectName(QStringLiteral("tzeitraum(1)"));
    scopeLayout->addWidget(new QLabel(QStringLiteral("von")), 2, 0);
    scopeLayout->addWidget(m_rangeFrom, 2, 1, 1, 2);
    scopeLayout->addWidget(new QLabel(QStringLiteral("bis")), 3, 0);
    scopeLayout->addWidget(m_rangeTo, 3, 1, 1, 2);
    connect(m_range, &QButtonGroup::idClicked, this, [this](int mode) {
        // The fields show the years or the dates of the settings, whichever the mode uses.
        m_rangeFrom->setEnabled(mode != 0);
        m_rangeTo->setEnabled(mode != 0);
        m_rangeFrom->setText(mode == 2 ? m_context.settings.text[DateFromSlot] : mode == 1 ? m_context.settings.text[YearFromSlot] : QString());
        m_rangeTo->setText(mode == 2 ? m_context.settings.text[DateToSlot] : mode == 1 ? m_context.settings.text[YearToSlot] : QString());
    });
    scopeBox->setVisible(m_def.joinsHarvests);
    left->addWidget(scopeBox);

    if (!m_def.filters.isEmpty()) {
        auto* filterBox = new QGroupBox(QStringLiteral("Filter"));
        auto* filterLayout = new QGridLayout(filterBox);
        int row = 0;
        for (const lists::Filter& f : m_def.filters) {
            auto* combo = new QComboBox;
            combo->setObjectName(f.objectName());
            combo->setMinimumContentsLength(14);
            combo->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
            filterLayout->addWidget(new QLabel(f.label), row, 0);
            filterLayout->addWidget(combo, row++, 1);
            m_filters << combo;
        }
        left->addWidget(filterBox);
    }

    auto* sortBox = new QGroupBox(QStringLiteral("Sortierung"));
    auto* sortLayout = new QHBoxLayout(sortBox);
    m_sort = new QComboBox;
    m_sort->setObjectName(QStringLiteral("komsort"));
    m_sort->addItems(m_def.columns);
    m_sort->setCurrentText(m_def.defaultSort);
    m_descending = new QCheckBox(QStringLiteral("absteigend"));
    m_descending->setObjectName(QStringLiteral("komsortdesc"));
    sortLayout->addWidget(m_sort, 1);
    sortLayout->addWidget(m_descending);
    left->addWidget(sortBox);

    auto* columnBox = new QGroupBox(QStringLiteral("Zu listende Datenfelder"));
    auto* columnLayout = new QGridLayout(columnBox);
    m_columns = new QListWidget;
    m_columns->setObjectName(QStringLiteral("liste"));
    QStringList names;
    if (!runGuarded(m_context.prompter, [&] {
            names = lists::baseColumns(m_context.db, m_def);
        })) {
        names = m_def.columns;
    }
    for (const QString& name : names) {
        auto* item = new QListWidgetItem(name, m_columns);
        item->setFlags(item->flags() | Qt::ItemIsUserCheckable);
        item->setCheckState(Qt::Checked);
    }
    QPushButton* all = button(QStringLiteral("alle(0)"), QStringLiteral("Alle"));
    QPushButton* none = button(QStringLiteral("alle(1)"), QStringLiteral("Keine"));
    auto tick = [this](Qt::CheckState state) {
        for (int i = 0; i < m_columns->count(); ++i)
            m_columns->item(i)->setCheckState(state);
    };
    connect(all, &QPushButton::clicked, this, [tick] { tick(Qt::Checked); });
    connect(none, &QPushButton::clicked, this, [tick] { tick(Qt::Unchecked); });
    columnLayout->addWidget(m_columns, 0, 0, 1, 2);
    columnLayout->addWidget(all, 1, 0);
    columnLayout->addWidget(none, 1, 1);
    left->addWidget(columnBox, 1);

    auto* groupBox = new QGroupBox(QStringLiteral("Daten gruppiert listen"));
    auto* groupLayout = new QGridLayout(groupBox);
    groupLayout->setVerticalSpacing(2);
    m_grouping = new QButtonGroup(this);
    const int options = int(m_def.groupings.size()) + 1;
    const int perColumn = (options + 1) / 2; // two columns leave the grid its height
    for (int i = 0; i < options; ++i) {
        const QString caption = i < m_def.groupings.size() ? m_def.groupings[i].caption : QString::fromUtf8(lists::NoGrouping);
        auto* r = new QRadioButton(caption);
        r->setObjectName(QStringLiteral("optigruppe(%1)").arg(i));
        m_grouping->addButton(r, i);
        groupLayout->addWidget(r, i % perColumn, i / perColumn);
    }
    m_grouping->button(options - 1)->setChecked(true);
    auto* note = new QLabel(QString::fromUtf8(lists::GroupingNote));
    note->setObjectName(QStringLiteral("bezhinweis"));
    note->setWordWrap(true);
    groupLayout->addWidget(note, perColumn, 0, 1, 2);
    connect(m_grouping, &QButtonGroup::idClicked, this, &ListDialog::onGroupingChanged);

    auto* leftPanel = new QWidget;
    leftPanel->setLayout(left);
    leftPanel->setFixedWidth(360);

    m_grid = new QTableView;
    m_grid->setObjectName(QStringLiteral("gridli"));
    m_grid->setModel(m_model);
    formatGrid(m_grid);
    m_grid->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_grid->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_grid->setAlternatingRowColors(true);
    m_grid->verticalHeader()->setDefaultSectionSize(m_grid->fontMetrics().height() + 6);
    m_grid->horizontalHeader()->setSectionsMovable(true);
    connect(m_grid->verticalScrollBar(), &QScrollBar::valueChanged, this, &ListDialog::updatePage);
    connect(m_grid->verticalScrollBar(), &QScrollBar::rangeChanged, this, &ListDialog::updatePage);
    m_count = new QLabel(QStringLiteral("Anzahl Datensätze: 0"));
    m_count->setObjectName(QStringLiteral("bezanzahl"));
    m_page = new QLabel;
    m_page->setObjectName(QStringLiteral("bezseite"));
    m_meter = new QProgressBar;
    m_meter->setObjectName(QStringLiteral("meter"));
    m_meter->setVisible(false);

    m_ok = button(QStringLiteral("ok"), QStringLiteral("&Liste erstellen"));
    m_ok->setDefault(true);
    m_stop = button(QStringLiteral("comabbrechen"), QStringLiteral("Abbre&chen"));
    m_stop->setEnabled(false);
    QPushButton* settings = button(QStringLiteral("comeinstell"), QStringLiteral("&Spalten einstellen"));
    m_chart = button(QStringLiteral("comdiagramm"), QStringLiteral("&Diagramm"));
    m_chart->setEnabled(false);
    QPushButton* help = button(QStringLiteral("hilfe"), QStringLiteral("&Hilfe"));
    help->setEnabled(false); // the help filter enables and wires it when the window shows
    QPushButton* close = button(QStringLiteral("beenden"), QStringLiteral("&Beenden"));
    connect(m_ok, &QPushButton::clicked, this, &ListDialog::build);
    connect(m_stop, &QPushButton::clicked, this, &ListDialog::cancel);
    connect(settings, &QPushButton::clicked, this, &ListDialog::openColumnSettings);
    connect(m_chart, &QPushButton::clicked, this, &ListDialog::showChart);
    connect(close, &QPushButton::clicked, this, &QDialog::reject);

    auto* status = new QHBoxLayout;
    status->addWidget(m_count);
    status->addStretch();
    status->addWidget(m_page);
    auto* buttons = new QHBoxLayout;
    buttons->addWidget(m_meter, 1);
    for (QPushButton* b : {m_ok, m_stop, settings, m_chart, help, close})
        buttons->addWidget(b);
    auto* right = new QVBoxLayout;
    right->addWidget(m_grid, 1);
    right->addLayout(status);
    right->addWidget(groupBox);
    right->addLayout(buttons);

    auto* layout = new QHBoxLayout(this);
    layout->addWidget(leftPanel);
    layout->addLayout(right, 1);
}

void ListDialog::fillFilters()
{
    for (int i = 0; i < m_filters.size(); ++i) {
        QComboBox* combo = m_filters[i];
        combo->addItem(AllValues);
        if (!runGuarded(m_context.prompter, [&] {
                for (const QVariant& v : lists::distinctValues(m_context.db, m_def, m_def.filters[i]))
                    combo->addItem(v.toString(), v);
            })) {
            return;
        }
    }
}

void ListDialog::restoreChoices()
{
    const int mode = std::clamp<int>(m_context.settings.zahl[RangeModeSlot], 0, 2);
    m_range->button(mode)->click();
    const std::optional<lists::ListChoices> kept = lists::loadListChoices(m_context.settings, m_def.member);
    if (!kept) {
        m_scope->setCurrentIndex(m_current ? int(HarvestScope::Aktuell) : int(HarvestScope::Alle));
        return;
    }
    if (kept->scope < m_scope->count())
        m_scope->setCurrentIndex(kept->scope);
    for (int i = 0; i < m_filters.size(); ++i) {
        // A value no row holds any more lists all again.
        const int at = m_filters[i]->findText(kept->filters.value(m_def.filters[i].column));
        m_filters[i]->setCurrentIndex(std::max(at, 0));
    }
    if (m_sort->findText(kept->sortColumn) >= 0)
        m_sort->setCurrentText(kept->sortColumn);
    m_descending->setChecked(kept->descending);
    for (int i = 0; i < m_columns->count(); ++i)
        m_columns->item(i)->setCheckState(kept->columnsLeftOut.contains(m_columns->item(i)->text()) ? Qt::Unchecked : Qt::Checked);
    if (QAbstractButton* option = m_grouping->button(kept->groupingOption)) {
        option->setChecked(true);
        onGroupingChanged();
    }
}

void ListDialog::storeChoices()
{
    const int mode = m_range->checkedId();
    m_context.settings.zahl[RangeModeSlot] = qint16(mode);
    if (mode == 1) {
        m_context.settings.text[YearFromSlot] = m_rangeFrom->text().trimmed();
        m_context.settings.text[YearToSlot] = m_rangeTo->text().trimmed();
    } else if (mode == 2) {
        m_context.settings.text[DateFromSlot] = m_rangeFrom->text().trimmed();
        m_context.settings.text[DateToSlot] = m_rangeTo->text().trimmed();
    }
    lists::ListChoices c;
    c.scope = m_scope->currentIndex();
    c.groupingOption = m_grouping->checkedId();
    c.sortColumn = m_sort->currentText();
    c.descending = m_descending->isChecked();
    for (int i = 0; i < m_columns->count(); ++i)
        if (m_columns->item(i)->checkState() != Qt::Checked)
            c.columnsLeftOut << m_columns->item(i)->text();
    for (int i = 0; i < m_filters.size(); ++i)
        if (m_filters[i]->currentIndex() > 0)
            c.filters.insert(m_def.filters[i].column, m_filters[i]->currentText());
    lists::storeListChoices(m_context.settings, m_def.member, c);
}

lists::ListRequest ListDialog::request() const
{
    lists::ListRequest r(m_def.member);
    r.scope = m_scope->currentIndex();
    r.currentHarvest = m_current;
    r.harvestsMarked = m_marked;
    for (int i = 0; i < m_filters.size(); ++i)
        if (m_filters[i]->currentIndex() > 0)
            r.filters[m_def.filters[i].column] = m_filters[i]->currentData();
    for (int i = 0; i < m_columns->count(); ++i)
        if (m_columns->item(i)->checkState() == Qt::Checked)
            r.columns << m_columns->item(i)->text();
    r.sortColumn = m_sort->currentText();
    r.descending = m_descending->isChecked();
    const int g = m_grouping->checkedId();
    r.grouping = g < m_def.groupings.size() ? g : -1;
    return r;
}

void ListDialog::onGroupingChanged()
{
    // Grouping decides the columns itself.
    const bool grouped = m_grouping->checkedId() < m_def.groupings.size();
    m_columns->setEnabled(!grouped);
    m_sort->setEnabled(!grouped);
    m_descending->setEnabled(!grouped);
}

void ListDialog::build()
{
    if (m_busy)
        return;
    storeChoices();
    lists::ListRequest r = request();
    if (r.columns.isEmpty() && r.grouping < 0) {
        m_context.prompter.inform(QStringLiteral("Die Liste kann nicht erstellt werden, weil kein Datenfeld zum Listen ausgewählt ist."));
        return;
    }
    std::optional<lists::ListQuery> query;
    qint64 rows = 0;
    try {
        query = lists::prepareList(r, m_context.settings, m_context.prompter);
        if (!query)
            return;
        QApplication::setOverrideCursor(Qt::WaitCursor);
        rows = lists::countRows(m_context.db, *query);
        QApplication::restoreOverrideCursor();
    } catch (const StoreError& error) {
        QApplication::restoreOverrideCursor();
        m_context.prompter.inform(error.message(), Prompter::Icon::Critical);
        return;
    }
    saveGridState();
    if (rows == 0) {
        m_model->clear();
        m_rows = 0;
        m_count->setText(QStringLiteral("Anzahl Datensätze: 0"));
        m_chart->setEnabled(false);
        m_context.prompter.inform(m_def.noRowsMessage());
        return;
    }
    QString error;
    if (!m_model->show(m_context.db, *query, lists::columnFormats(m_def, *query), &error)) {
        m_context.prompter.inform(error, Prompter::Icon::Critical);
        return;
    }
    m_rows = rows;
    m_shownGrouping = r.grouping;
    m_count->setText(QStringLiteral("Anzahl Datensätze: %1").arg(rows));
    restoreGridState();
    updatePage();
    m_chart->setEnabled(r.grouping >= 0);
    handOn(*query, rows);
}

bool ListDialog::handOn(const lists::ListQuery& query, qint64 rows)
{
    using lists::Target;
    const Target target = lists::targetFromSettings(m_context.settings);
    QString path;
    switch (target) {
    case Target::OwnWindow:
    case Target::SystemEditor:
        path = reportFilePath(m_context.dataFolder);
        break;
    case Target::Spreadsheet:
        path = lists::spreadsheetPath(m_context.dataFolder);
        break;
    case Target::Browser:
        path = lists::nextReportPagePath(m_context.dataFolder);
        break;
    }
    m_busy = true;
    m_cancelled = false;
    m_ok->setEnabled(false);
    m_stop->setEnabled(true);
    m_meter->setRange(0, int(std::min<qint64>(rows, std::numeric_limits<int>::max())));
    m_meter->setValue(0);
    m_meter->setVisible(true);
    // The window keeps answering while a long list is written, and Abbrechen stops it.
    const lists::Progress progress = [this](qint64 done) {
        m_meter->setValue(int(done));
        QApplication::processEvents();
        return !m_cancelled;
    };
    lists::WriteResult written;
    const QString title = m_shownGrouping >= 0 ? m_def.title + QStringLiteral(" – ") + m_def.groupings[m_shownGrouping].caption : m_def.title;
    const lists::TextOptions options = lists::TextOptions::from(m_context.settings, title, m_context.clock.today());
    const auto formats = lists::columnFormats(m_context.db, m_def, query);
    try {
        QSqlQuery rowsQuery = execSql(m_context.db, query.sql, query.values);
        rowsQuery.setForwardOnly(true);
        if (target == Target::Spreadsheet)
            written = lists::writeSpreadsheet(path, rowsQuery, formats, m_def.title, rows, progress);
        else if (target == Target::Browser)
            written = lists::writeHtml(path, rowsQuery, formats, options, progress);
        else
            written = lists::writeText(path, rowsQuery, formats, options, rows, progress);
    } catch (const StoreError& error) {
        written.error = error.message();
    }
    m_busy = false;
    m_meter->setVisible(false);
    m_ok->setEnabled(true);
    m_stop->setEnabled(false);
    if (written.cancelled)
        return false;
    if (!written.ok) {
        m_context.prompter.inform(written.error, Prompter::Icon::Warning);
        return false;
    }
    if (target == Target::OwnWindow) {
        TextOutputWindow window(m_context, this);
        window.exec();
    } else if (!QDesktopServices::openUrl(QUrl::fromLocalFile(path))) {
        m_context.prompter.inform(QStringLiteral("Die Datei %1 wurde geschrieben, ließ sich aber mit keinem Programm öffnen.").arg(path),
                                  Prompter::Icon::Warning);
    }
    return true;
}

void ListDialog::updatePage()
{
    if (m_rows == 0) {
        m_page->clear();
        return;
    }
    const int rowHeight = std::max(1, m_grid->verticalHeader()->defaultSectionSize());
    const qint64 perPage = std::max(1, m_grid->viewport()->height() / rowHeight);
    const qint64 top = std::max(0, m_grid->rowAt(0));
    const qint64 pages = (m_rows + perPage - 1) / perPage;
    m_page->setText(QStringLiteral("Seite %1 von %2").arg(std::min(pages, top / perPage + 1)).arg(pages));
}

void ListDialog::showChart()
{
    if (m_shownGrouping < 0 || m_model->columnCount() == 0)
        return;
    while (m_model->canFetchMore())
        m_model->fetchMore(); // a grouped list is short
    const int keys = int(m_def.groupings[m_shownGrouping].columns.size());
    QList<int> decimals;
    for (int c = keys; c < m_model->formats().size(); ++c)
        decimals << (m_model->formats()[c].kind == lists::ColumnFormat::Kind::Integer ? 0 : m_model->formats()[c].decimals);
    ChartData data = groupChartData(*m_model, keys, m_def.title + QStringLiteral(" – ") + m_def.groupings[m_shownGrouping].caption, decimals);
    ChartWindow window(std::move(data), m_context.prompter, this);
    window.exec();
}

QString ListDialog::gridKey() const
{
    QStringList names;
    for (int c = 0; c < m_model->columnCount(); ++c)
        names << m_model->headerData(c, Qt::Horizontal).toString();
    return m_def.windowName + QStringLiteral("/gridli/") + QString::number(qHash(names.join(u',')), 16);
}

void ListDialog::saveGridState() const
{
    if (m_model->columnCount() == 0)
        return;
    QSettings store(QStringLiteral("TARVIK"), QStringLiteral("TARVIK"));
    store.setValue(gridKey(), m_grid->horizontalHeader()->saveState());
}

void ListDialog::restoreGridState()
{
    const QSettings store(QStringLiteral("TARVIK"), QStringLiteral("TARVIK"));
    const QByteArray state = store.value(gridKey()).toByteArray();
    if (state.isEmpty() || !m_grid->horizontalHeader()->restoreState(state))
        fitColumnsToContent(m_grid);
}

void ListDialog::openColumnSettings()
{
    // Widths and order are set on the grid's header itself; this window shows or hides columns.
    QDialog settings(this);
    settings.setObjectName(QStringLiteral("gridli_einstellungen"));
    settings.setWindowTitle(QStringLiteral("Spalten einstellen"));
    auto* list = new QListWidget;
    list->setObjectName(QStringLiteral("spalten"));
    QHeaderView* header = m_grid->horizontalHeader();
    for (int visual = 0; visual < header->count(); ++visual) {
        const int logical = header->logicalIndex(visual);
        auto* item = new QListWidgetItem(m_model->headerData(logical, Qt::Horizontal).toString(), list);
        item->setData(Qt::UserRole, logical);
        item->setFlags(item->flags() | Qt::ItemIsUserCheckable);
        item->setCheckState(header->isSectionHidden(logical) ? Qt::Unchecked : Qt::Checked);
    }
    auto* fit = button(QStringLiteral("combreite"), QStringLiteral("Spaltenbreiten an Inhalt anpassen"));
    connect(fit, &QPushButton::clicked, m_grid, [this] { fitColumnsToContent(m_grid); });
    auto* box = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    box->button(QDialogButtonBox::Ok)->setText(QStringLiteral("OK"));
    box->button(QDialogButtonBox::Cancel)->setText(QStringLiteral("Abbrechen"));
    connect(box, &QDialogButtonBox::accepted, &settings, &QDialog::accept);
    connect(box, &QDialogButtonBox::rejected, &settings, &QDialog::reject);
    auto* layout = new QVBoxLayout(&settings);
    layout->addWidget(new QLabel(QStringLiteral("Angezeigte Spalten (Breite und Reihenfolge direkt im Spaltenkopf ziehen):")));
    layout->addWidget(list, 1);
    layout->addWidget(fit);
    layout->addWidget(box);
    if (settings.exec() != QDialog::Accepted)
        return;
    for (int i = 0; i < list->count(); ++i)
        header->setSectionHidden(list->item(i)->data(Qt::UserRole).toInt(), list->item(i)->checkState() != Qt::Checked);
    saveGridState();
}

void ListDialog::done(int result)
{
    if (m_busy) {
        m_cancelled = true; // closing while a list is written stops the writing first
        return;
    }
    storeChoices();
    saveGridState();
    QDialog::done(result);
}

} // namespace tarvik
