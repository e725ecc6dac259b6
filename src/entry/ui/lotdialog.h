#pragma once
// EF_Eingabe_Lose: a lot with its storage place, buyer and price settings; the second page
// changes a range of the lot's logs.
#include "entry/lotentry.h"

#include <QDialog>
#include <QHash>
#include <optional>

class QButtonGroup;
class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;

namespace tarvik {

class LotDialog : public QDialog {
    Q_OBJECT
public:
    LotDialog(const AppContext& context, qint32 harvestId, std::optional<qint32> lotId, QWidget* parent = nullptr);

private:
    QWidget* buildLotPage();
    QWidget* buildChangesPage();
    void fillLists();
    LotForm read() const;
    void showForm(const LotForm& form);
    PriceSettings prices() const;
    void onOk();
    void onPlaceChosen(const QString& place);
    void onRecomputePrices();
    void onPriceDefaults();
    void onRangeChange();
    void onSpeciesChange();
    void updateChangesHeading();
    QLineEdit* edit(const QString& name, int maxLength);
    QComboBox* combo(const QString& name, int maxLength, bool editable = true);

    AppContext m_context;
    qint32 m_harvestId;
    std::optional<qint32> m_editedId;
    QHash<QString, QLineEdit*> m_edits;
    QHash<QString, QComboBox*> m_combos;
    QButtonGroup* m_priceKinds = nullptr;   // optipreis
    QButtonGroup* m_priceMemory = nullptr;  // remember / forget
    QButtonGroup* m_changeKind = nullptr;   // quality / species / lot number
    QCheckBox* m_settled = nullptr;         // konabgerechnet
    QLabel* m_changesHeading = nullptr;
    QString m_reNr; // the invoice that billed the lot, kept as it is
};

} // namespace tarvik
