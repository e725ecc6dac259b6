#include "masterdata/ui/editors.h"

#include "common/ui/guarded.h"
#include "store/sql.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRegularExpressionValidator>
#include <QVBoxLayout>

namespace tarvik {

MasterEditor::MasterEditor(const AppContext& context, EditMode mode, QList<qint32> ids, std::optional<qint32> start,
                           QWidget* parent)
    : QDialog(parent), m_context(context), m_mode(mode), m_rows(std::move(ids), start.value_or(0))
{
    setModal(true);
    m_form = new QFormLayout;
}

std::optional<qint32> MasterEditor::currentId() const
{
    if (m_mode != EditMode::Aendern)
        return std::nullopt;
    return m_rows.current();
}

QLineEdit* MasterEditor::addField(int index, const QString& caption, int maxLength, bool numeric)
{
    auto* edit = new QLineEdit;
    edit->setObjectName(QStringLiteral("tz(%1)").arg(index));
    edit->setMaxLength(maxLength);
    if (numeric) {
        // Whole numbers, or money with a decimal comma; a minus sign for the checks to refuse.
        edit->setValidator(new QRegularExpressionValidator(QRegularExpression(QStringLiteral("-?\\d{0,5}([,.]\\d{0,2})?")), edit));
        edit->setMaximumWidth(110);
    } else {
        // As wide as the longest text it takes, not stretched over the window.
        edit->setMaximumWidth(std::max(110, edit->fontMetrics().averageCharWidth() * (maxLength + 4)));
    }
    m_form->addRow(caption, edit);
    if (m_fields.size() <= index)
        m_fields.resize(index + 1);
    m_fields[index] = edit;
    return edit;
}

void MasterEditor::finish(const QString& objectName, const QString& title)
{
    setObjectName(objectName);
    setWindowTitle(title + (m_mode == EditMode::Neu ? QStringLiteral(" – Neu") : QStringLiteral(" – Ändern")));
    auto* ok = new QPushButton(QStringLiteral("&OK"));
    ok->setObjectName(QStringLiteral("ok"));
    ok->setDefault(true);
    auto* cancel = new QPushButton(QStringLiteral("&Abbrechen"));
    cancel->setObjectName(QStringLiteral("abbrechen"));
    connect(ok, &QPushButton::clicked, this, &MasterEditor::onOk);
    connect(cancel, &QPushButton::clicked, this, &QDialog::reject);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(ok);
    buttons->addWidget(cancel);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(m_form);
    layout->addStretch();
    layout->addLayout(buttons);
    setMinimumWidth(420);
    if (const auto id = currentId())
        load(*id);
    else
        clearForNext();
}

void MasterEditor::onOk()
{
    const bool stored = runGuarded(m_context.prompter, [&] { return store(currentId()); });
    if (!stored)
        return; // the input stays for correction
    if (m_mode == EditMode::Neu) {
        clearForNext();
    } else if (const auto next = m_rows.advance()) {
        load(*next);
    }
    if (!m_fields.isEmpty() && m_fields.first())
        m_fields.first()->setFocus();
}

// ---- species

SpeciesEditor::SpeciesEditor(const AppContext& context, EditMode mode, QList<qint32> ids, std::optional<qint32> start,
                             QWidget* parent)
    : MasterEditor(context, mode, std::move(ids), start, parent)
{
    addField(0, QStringLiteral("Baumart (Kürzel und Name)"), 22, false);
    m_broadleaf = new QCheckBox(QStringLiteral("Laubholz"));
    m_broadleaf->setObjectName(QStringLiteral("kon(0)"));
    m_form->addRow(QString(), m_broadleaf);
    finish(QStringLiteral("SF_Stammdaten_Baumarten"), QStringLiteral("Stammdaten Baumarten"));
}

void SpeciesEditor::load(qint32 id)
{
    const SpeciesForm f = loadSpecies(m_context.db, id);
    field(0)->setText(f.baumart);
    m_broadleaf->setChecked(f.laubwald);
}

void SpeciesEditor::clearForNext()
{
    field(0)->clear();
    m_broadleaf->setChecked(false);
}

bool SpeciesEditor::store(std::optional<qint32> id)
{
    return storeSpecies(m_context, mode(), id, {field(0)->text(), m_broadleaf->isChecked()});
}

// ---- quality classes

QualityEditor::QualityEditor(const AppContext& context, EditMode mode, QList<qint32> ids, std::optional<qint32> start,
                             QWidget* parent)
    : MasterEditor(context, mode, std::move(ids), start, parent)
{
    addField(0, QStringLiteral("Güteklasse"), 5, false);
    finish(QStringLiteral("SF_Stammdaten_Gueteklassen"), QStringLiteral("Stammdaten Güteklassen"));
}

void QualityEditor::load(qint32 id) { field(0)->setText(loadQuality(m_context.db, id)); }

void QualityEditor::clearForNext() { field(0)->clear(); }

bool QualityEditor::store(std::optional<qint32> id) { return storeQuality(m_context, mode(), id, field(0)->text()); }

// ---- class tables

QString ClassEditor::windowName(ClassTable table)
{
    switch (table) {
    case ClassTable::Staemme: return QStringLiteral("SF_Stammdaten_SKStaemme");
    case ClassTable::Heilbronn: return QStringLiteral("SF_Stammdaten_SKHeilbronn");
    case ClassTable::Pfaehle: return QStringLiteral("SF_Stammdaten_SKPfaehle");
    case ClassTable::Schichtholz: return QStringLiteral("SF_Stammdaten_SKSchichtholz");
    }
    return {};
}

ClassEditor::ClassEditor(const AppContext& context, ClassTable table, EditMode mode, QList<qint32> ids,
                         std::optional<qint32> start, QWidget* parent)
    : MasterEditor(context, mode, std::move(ids), start, parent), m_table(table)
{
    const QStringList captions = classCaptions(table);
    for (int i = 0; i < captions.size(); ++i)
        addField(i, captions[i], i == 0 ? (table == ClassTable::Heilbronn ? 5 : 6) : 8, i > 0);
    static const char* const titles[] = {"Stärkeklassen Stämme", "Stärkeklassen Heilbronner Sortierung", "Stärkeklassen Pfähle",
                                         "Stärkeklassen Schichtholz"};
    finish(windowName(table), QString::fromUtf8(titles[int(table)]));
}

void ClassEditor::load(qint32 id)
{
    const ClassForm f = loadClass(m_context.db, m_table, id);
    field(0)->setText(f.klasse);
    for (int i = 0; i < f.values.size(); ++i)
        if (QLineEdit* e = field(i + 1))
            e->setText(f.values[i]);
}

void ClassEditor::clearForNext()
{
    for (int i = 0; field(i); ++i)
        field(i)->clear();
}

bool ClassEditor::store(std::optional<qint32> id)
{
    ClassForm f{field(0)->text(), {}};
    for (int i = 1; field(i); ++i)
        f.values << field(i)->text();
    return storeClass(m_context, m_table, mode(), id, f);
}

// ---- freely defined bark deductions

BarkRangeEditor::BarkRangeEditor(const AppContext& context, EditMode mode, QList<qint32> ids, std::optional<qint32> start,
                                 QWidget* parent)
    : MasterEditor(context, mode, std::move(ids), start, parent)
{
    m_species = new QComboBox;
    m_species->setObjectName(QStringLiteral("kombaumart"));
    m_species->addItem(QString());
    m_species->addItems(speciesNames(m_context.db));
    m_form->addRow(QStringLiteral("Baumart"), m_species);
    addField(0, QStringLiteral("Stärke von (cm)"), 5, true);
    addField(1, QStringLiteral("Stärke bis (cm)"), 5, true);
    addField(2, QStringLiteral("Abzug (cm)"), 5, true);
    finish(QStringLiteral("SF_Stammdaten_Rindenabzug2"), QStringLiteral("Rindenabzug frei definiert"));
}

BarkRangeForm BarkRangeEditor::form() const
{
    return {m_species->currentText(), field(0)->text(), field(1)->text(), field(2)->text()};
}

void BarkRangeEditor::load(qint32 id)
{
    const BarkRangeForm f = loadBarkRange(m_context.db, id);
    m_species->setCurrentIndex(std::max(0, m_species->findText(f.baumart)));
    field(0)->setText(f.staerkeVon);
    field(1)->setText(f.staerkeBis);
    field(2)->setText(f.abzugCm);
}

void BarkRangeEditor::clearForNext()
{
    if (m_stored.baumart.isEmpty()) {
        for (int i = 0; i < 3; ++i)
            field(i)->clear();
        return;
    }
    // The species stays; its next range starts right after the one just stored.
    const BarkRangeForm next = nextBarkRange(m_stored);
    m_species->setCurrentIndex(std::max(0, m_species->findText(next.baumart)));
    field(0)->setText(next.staerkeVon);
    field(1)->setText(next.staerkeBis);
    field(2)->setText(next.abzugCm);
}

bool BarkRangeEditor::store(std::optional<qint32> id)
{
    const BarkRangeForm f = form();
    if (!storeBarkRange(m_context, mode(), id, f))
        return false;
    m_stored = f;
    return true;
}

} // namespace tarvik
