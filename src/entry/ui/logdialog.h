#pragma once
// EF_Eingabe_Staemme: measured logs typed one after another; every change recomputes the
// deduction, volume, classes and prices at once.
#include "devices/logimport.h"
#include "entry/logentry.h"
#include "rules/masterdatalookup.h"

#include <QDialog>
#include <QHash>
#include <optional>

class QButtonGroup;
class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QSqlQueryModel;
class QTableView;

namespace tarvik {

class LogDialog : public QDialog {
    Q_OBJECT
public:
    // Without a log id the window starts in mode "Neu" (on the given lot, if any).
    LogDialog(const AppContext& context, qint32 harvestId, std::optional<qint32> logId,
              std::optional<qint32> lotNr = std::nullopt, QWidget* parent = nullptr);

    QLineEdit* field(int index) const { return m_fields.value(index); }
    int storedRows() const { return m_storedRows; }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void build();
    void fillLists();
    LogForm read() const;
    void showForm(const LogForm& form);
    void recompute();
    void chooseLot();
    bool store();
    void onImport(ImportSource source);
    void onOk();
    void onOkNext();
    void onBarkRecompute();
    void onPriceRecompute();
    void refreshLot();
    std::optional<qint32> lotNumber() const;
    void quickEntry(int fieldIndex);

    AppContext m_context;
    qint32 m_harvestId;
    std::optional<qint32> m_editedId;
    MasterDataLookup m_masterData;
    bool m_filling = false;
    int m_storedRows = 0;

    QHash<int, QLineEdit*> m_fields;   // tz(n)
    QHash<int, QComboBox*> m_lists;    // kom(n)
    QButtonGroup* m_barkModes = nullptr;  // optirinde
    QButtonGroup* m_priceKinds = nullptr; // optipreis
    QCheckBox* m_beetle = nullptr;        // konkäfer
    QLabel* m_summary = nullptr;
    QSqlQueryModel* m_lotLogs = nullptr;
    QTableView* m_grid = nullptr;
    QPushButton* m_ok = nullptr;
    QPushButton* m_okNext = nullptr;
};

} // namespace tarvik
