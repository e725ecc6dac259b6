#include "entry/ui/stackdialog.h"

#include "store/records.h"

#include <QComboBox>
#include <QFormLayout>
#include <QLineEdit>

namespace tarvik {

StackDialog::StackDialog(const AppContext& context, qint32 harvestId, std::optional<qint32> sectionId,
                         std::optional<qint32> lotNr, QWidget* parent)
    : EntryWindow(context, harvestId, sectionId,
                  {QStringLiteral("EF_Eingabe_Schichtholz"), QStringLiteral("Eingabe Schichtholz"), QStringLiteral("Schichtholz"),
                   QStringLiteral("Schichtholz"), QStringLiteral("Stärkeklassen_Schichtholz"), 2, 3},
                  parent)
{
    layOutAsForm();
    start(lotNr);
}

void StackDialog::addFields(QFormLayout* form)
{
    addFormField(form, 0, QStringLiteral("Sektions-Nr"), 7);
    QLineEdit* diameter = addFormField(form, 1, QStringLiteral("Durchschnittliche Stärke (cm)"), 4);
    takeWholeCentimetres(diameter);
    QLineEdit* length = addFormField(form, 2, QStringLiteral("Sektionslänge (m)"), 8);
    QLineEdit* depth = addFormField(form, 3, QStringLiteral("Sektionstiefe (m) = Holzlänge"), 8);
    QLineEdit* height = addFormField(form, 4, QStringLiteral("Sektionshöhe (m)"), 8);
    addFormField(form, 5, QStringLiteral("m3 (Ster)"), 12, true);
    addFormField(form, 6, QStringLiteral("Efm"), 12, true);
    QLineEdit* perSter = addFormField(form, 7, QStringLiteral("Preis je Ster"), 12);
    addFormField(form, 8, QStringLiteral("Preis berechnet"), 14, true);
    for (QLineEdit* dimension : {length, depth, height})
        connect(dimension, &QLineEdit::textEdited, this, [this] {
            if (m_filling)
                return;
            StackForm f = read();
            stackDimensionsChanged(f, StackedFactors::from(m_context.settings));
            showDerived(f);
        });
    connect(diameter, &QLineEdit::textEdited, this, [this] {
        if (m_filling)
            return;
        StackForm f = read();
        stackDiameterChanged(f, m_masterData);
        showDerived(f);
    });
    connect(perSter, &QLineEdit::textEdited, this, [this] {
        if (m_filling)
            return;
        StackForm f = read();
        stackPriceChanged(f);
        showDerived(f);
    });
}

StackForm StackDialog::read() const
{
    return {lotList()->currentText(), field(0)->text(), speciesList()->currentText(), field(1)->text(), field(2)->text(),
            field(3)->text(), field(4)->text(), field(5)->text(), field(6)->text(), classList()->currentText(),
            field(7)->text(), field(8)->text(), remarkList()->currentText()};
}

void StackDialog::showDerived(const StackForm& f)
{
    m_filling = true;
    selectClass(f.stackClass);
    field(5)->setText(f.m3);
    field(6)->setText(f.efm);
    field(7)->setText(f.pricePerSter);
    field(8)->setText(f.price);
    m_filling = false;
}

void StackDialog::proposeSection()
{
    field(0)->setText(QString::number(nextSectionNumber(m_context.db, m_harvestId)));
}

void StackDialog::loadEntry(qint32 id)
{
    const StackForm f = loadStack(m_context.db, id);
    lotList()->setEditText(f.losNr);
    speciesList()->setEditText(f.species);
    field(0)->setText(f.sectionNr);
    field(1)->setText(f.diameter);
    field(2)->setText(f.length);
    field(3)->setText(f.depth);
    field(4)->setText(f.height);
    remarkList()->setEditText(f.remark);
    showDerived(f);
}

HarvestRows StackDialog::gridRows() const
{
    return stackGridRows(m_harvestId);
}

bool StackDialog::storeEntry()
{
    StackForm f = read();
    const bool stored = storeStack(m_context, m_harvestId, f, editedId());
    if (stored)
        field(0)->setText(f.sectionNr); // a renumbered section shows its number
    return stored;
}

void StackDialog::afterNext()
{
    proposeSection();
    if (m_context.settings.zeroMeasuresAfterNext()) {
        for (int i : {2, 3, 4})
            field(i)->setText(QStringLiteral("0,0"));
        field(5)->setText(QStringLiteral("0,000"));
        field(6)->setText(QStringLiteral("0,000"));
        field(8)->setText(QStringLiteral("0,00"));
    }
    field(1)->setFocus();
    field(1)->selectAll();
}

} // namespace tarvik
