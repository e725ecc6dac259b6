#pragma once
// EF_Eingabe_Staemme: measured logs typed one after another; every change recomputes the
// deduction, volume, classes and prices at once. A stored log opened to be changed shows its
// stored values until something is typed.
#include "entry/logentry.h"
#include "entry/ui/entrywindow.h"
#include "entry/ui/logimports.h"

class QButtonGroup;
class QCheckBox;
class QLabel;

namespace tarvik {

class LogDialog : public EntryWindow {
    Q_OBJECT
public:
    // Without a log id the window starts in mode "Neu" (on the given lot, if any).
    LogDialog(const AppContext& context, qint32 harvestId, std::optional<qint32> logId,
              std::optional<qint32> lotNr = std::nullopt, QWidget* parent = nullptr);

    int storedRows() const { return m_storedRows; }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void loadEntry(qint32 id) override;
    void startNew() override;
    void lotChosen(std::optional<qint32> lot) override;
    HarvestRows gridRows() const override;
    bool storeEntry() override;
    void afterNext() override;
    void refreshRows() override;

private:
    void build();
    LogForm read() const;
    void showForm(const LogForm& form);
    void recompute();
    void onImport(const LogImportAction::Run& run);
    void onBarkRecompute();
    void onPriceRecompute();
    void quickEntry(int fieldIndex);

    void reloadShownLog();

    bool m_heilbronnComputed = false;
    // Prices of the stored log shown in "Ändern" until something typed recomputes it.
    std::optional<std::pair<float, float>> m_storedPrices;
    int m_storedRows = 0;

    QComboBox* m_quality = nullptr;       // kom(2)
    QComboBox* m_heilbronn = nullptr;     // kom(4)
    QButtonGroup* m_barkModes = nullptr;  // optirinde
    QButtonGroup* m_priceKinds = nullptr; // optipreis
    QCheckBox* m_beetle = nullptr;        // konkäfer
    QLabel* m_summary = nullptr;
};

} // namespace tarvik
