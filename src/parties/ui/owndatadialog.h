#pragma once
// EF_Eigene_Angaben: the owner's name, address, contact, tax and bank data and tax regime, as
// invoices, e-invoices and lot offers print them; stored on "Speichern" after the checks.
#include "parties/parties.h"

#include <QDialog>

class QComboBox;
class QLineEdit;

namespace tarvik {

class OwnDataDialog : public QDialog {
    Q_OBJECT
public:
    explicit OwnDataDialog(const AppContext& context, QWidget* parent = nullptr);

private:
    parties::OwnData typed() const;
    void onStore();

    AppContext m_context;
    QList<QLineEdit*> m_fields; // t(0) … t(13), in the order of parties::ownDataFields()
    QComboBox* m_regime = nullptr; // kom(0)
};

} // namespace tarvik
