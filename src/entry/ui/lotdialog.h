#pragma once
// EF_Eingabe_Lose: a lot with its storage place, buyer and price settings; the second page
// changes a range of the lot's logs.
#include "common/openerrows.h"
#include "entry/lotentry.h"

#include <QDialog>
#include <array>
#include <optional>

class QButtonGroup;
class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;

namespace tarvik {

class LotDialog : public QDialog {
    Q_OBJECT
public:
    LotDialog(const AppContext& context, qint32 harvestId, std::optional<qint32> lotId, QWidget* parent = nullptr);
    // With the opener's lot list (IDs in its order): in mode "Ändern" OK and [OK+Nächster]
    // store the shown lot and show the next one of that list instead of closing.
    LotDialog(const AppContext& context, qint32 harvestId, std::optional<qint32> lotId, QList<qint32> openerIds,
              QWidget* parent = nullptr);

    // The lot the opener's list should stand on afterwards: the one shown last in mode
    // "Ändern", the one stored last in mode "Neu".
    std::optional<qint32> lastId() const { return m_editedId ? m_editedId : m_storedId; }

private:
    QWidget* buildLotPage();
    QWidget* buildChangesPage();
    void fillLists();
    LotForm read() const;
    void showForm(const LotForm& form);
    PriceSettings prices() const;
    void showLot(qint32 id);
    void startNew();
    bool store();
    bool stepToNext();
    void onOk();
    void onOkNext();
    void onPlaceChosen(const QString& place);
    void onRecomputePrices();
    void onPriceDefaults();
    void onRangeChange();
    void onSpeciesChange();
    void updateChangesHeading();
    void selectSorting(const QString& sorting);

    AppContext m_context;
    qint32 m_harvestId;
    std::optional<qint32> m_editedId;
    std::optional<qint32> m_storedId;
    OpenerRows m_openerRows;
    QPushButton* m_ok = nullptr;
    QPushButton* m_okNext = nullptr;    // okn_chster
    // Lot page
    QComboBox* m_lotNr = nullptr;       // kom(0)
    QComboBox* m_sorting = nullptr;     // kom(1)
    QLineEdit* m_name = nullptr;        // t(0)
    QComboBox* m_place = nullptr;       // kom(2)
    QLineEdit* m_directions = nullptr;  // t(1)
    QLineEdit* m_gpsB = nullptr;        // t(2)
    QLineEdit* m_gpsL = nullptr;        // t(3)
    QComboBox* m_buyer = nullptr;       // kom(3)
    QComboBox* m_remark = nullptr;      // kom(4)
    QComboBox* m_measuring = nullptr;   // kom(5)
    QComboBox* m_quality = nullptr;     // kom(6)
    QLineEdit* m_fixLength = nullptr;   // t(4)
    QLineEdit* m_overLength = nullptr;  // t(5)
    QLineEdit* m_received = nullptr;    // t(6)
    QCheckBox* m_settled = nullptr;     // konabgerechnet
    QButtonGroup* m_priceKinds = nullptr;   // optipreis
    std::array<QLineEdit*, 6> m_priceFields{}; // tp(0) ... tp(5)
    QButtonGroup* m_priceMemory = nullptr;  // remember / forget
    std::array<QLineEdit*, 8> m_totals{};   // tsumme(0) ... tsumme(7)
    // Changes page
    QLabel* m_changesHeading = nullptr;
    QLineEdit* m_rangeLot = nullptr;    // tr(0)
    QLineEdit* m_rangeFrom = nullptr;   // tr(1)
    QLineEdit* m_rangeTo = nullptr;     // tr(2)
    QLineEdit* m_targetLot = nullptr;   // tr(3)
    QButtonGroup* m_changeKind = nullptr; // quality / species / lot number
    QComboBox* m_newQuality = nullptr;  // kom(7)
    QComboBox* m_newSpecies = nullptr;  // kom(8)
    QComboBox* m_fromSpecies = nullptr; // kom(9)
    QComboBox* m_toSpecies = nullptr;   // kom(10)
    QString m_reNr; // the invoice that billed the lot, kept as it is
};

} // namespace tarvik
