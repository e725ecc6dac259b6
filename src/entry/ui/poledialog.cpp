#include "entry/ui/poledialog.h"

#include <QComboBox>
#include <QFormLayout>
#include <QLineEdit>

namespace tarvik {

PoleDialog::PoleDialog(const AppContext& context, qint32 harvestId, std::optional<qint32> poleId,
                       std::optional<qint32> lotNr, QWidget* parent)
    : EntryWindow(context, harvestId, poleId,
                  {QStringLiteral("EF_Eingabe_Pfaehle"), QStringLiteral("Eingabe Pfähle"), QStringLiteral("Pfähle"),
                   QStringLiteral("Pfähle"), QStringLiteral("Stärkeklassen_Pfähle"), 2, 3},
                  parent)
{
    layOutAsForm();
    start(lotNr);
}

void PoleDialog::addFields(QFormLayout* form)
{
    QLineEdit* diameter = addFormField(form, 0, QStringLiteral("Stärke m.R. (cm)"), 4);
    takeWholeCentimetres(diameter);
    QLineEdit* length = addFormField(form, 1, QStringLiteral("Länge (m)"), 8);
    QLineEdit* count = addFormField(form, 2, QStringLiteral("Anzahl Pfähle"), 7);
    QLineEdit* perPiece = addFormField(form, 3, QStringLiteral("Preis je Stück"), 12);
    addFormField(form, 4, QStringLiteral("Preis berechnet"), 14, true);
    for (QLineEdit* measure : {diameter, length})
        connect(measure, &QLineEdit::textEdited, this, [this] {
            if (m_filling)
                return;
            PoleForm f = read();
            poleMeasureChanged(f, m_masterData);
            showDerived(f);
        });
    for (QLineEdit* money : {count, perPiece})
        connect(money, &QLineEdit::textEdited, this, [this] {
            if (m_filling)
                return;
            PoleForm f = read();
            polePriceChanged(f);
            showDerived(f);
        });
}

PoleForm PoleDialog::read() const
{
    return {lotList()->currentText(), speciesList()->currentText(), field(0)->text(), field(1)->text(), field(2)->text(),
            classList()->currentText(), field(3)->text(), field(4)->text(), remarkList()->currentText()};
}

void PoleDialog::showDerived(const PoleForm& f)
{
    m_filling = true;
    selectClass(f.poleClass);
    field(3)->setText(f.pricePerPiece);
    field(4)->setText(f.price);
    m_filling = false;
}

void PoleDialog::loadEntry(qint32 id)
{
    const PoleForm f = loadPole(m_context.db, id);
    lotList()->setEditText(f.losNr);
    speciesList()->setEditText(f.species);
    field(0)->setText(f.diameter);
    field(1)->setText(f.length);
    field(2)->setText(f.count);
    remarkList()->setEditText(f.remark);
    showDerived(f);
}

HarvestRows PoleDialog::gridRows() const
{
    return poleGridRows(m_harvestId);
}

bool PoleDialog::storeEntry()
{
    PoleForm f = read();
    return storePole(m_context, m_harvestId, f, editedId());
}

void PoleDialog::afterNext()
{
    if (m_context.settings.zeroMeasuresAfterNext()) {
        field(0)->setText(QStringLiteral("0"));
        field(1)->setText(QStringLiteral("0"));
        selectClass(QString());
    }
    field(0)->setFocus();
    field(0)->selectAll();
}

} // namespace tarvik
