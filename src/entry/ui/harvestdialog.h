#pragma once
// FH_Hiebeingabe: a new harvest or a change of the current one.
#include "common/openerrows.h"
#include "entry/harvestentry.h"
#include "store/context.h"

#include <QDialog>
#include <array>
#include <optional>

class QComboBox;
class QLineEdit;
class QPlainTextEdit;
class QPushButton;

namespace tarvik {

class DateEdit;

class HarvestDialog : public QDialog {
    Q_OBJECT
public:
    // Without an id the window starts in mode "Neu", with one in mode "Ändern".
    HarvestDialog(const AppContext& context, std::optional<qint32> harvestId, QWidget* parent = nullptr);
    // Mode "Ändern" with the opener's harvest list (IDs in its order): OK and [OK+Nächster]
    // store the shown harvest and show the next one of that list instead of closing.
    HarvestDialog(const AppContext& context, qint32 harvestId, QList<qint32> openerIds, QWidget* parent = nullptr);

    // The harvest stored last (for the main list to select it).
    std::optional<qint32> storedId() const { return m_storedId; }
    // The harvest shown last in mode "Ändern" (the opener's current row follows it).
    std::optional<qint32> shownId() const { return m_editedId; }

private:
    void build();
    void fillLists();
    void showHarvest(qint32 id);
    void showChangeTitle();
    bool stepToNext();
    void showForm(const HarvestForm& form);
    HarvestForm read() const;
    bool store();
    void startNew();
    void onOk();
    void onOkNext();
    void onStandard();
    void fillWoodland(const QString& name);
    void woodlandLeft();
    void fillOwner(const QString& name);

    AppContext m_context;
    std::optional<qint32> m_editedId;
    std::optional<qint32> m_storedId;
    OpenerRows m_openerRows;
    QString m_filledWoodland; // the name whose place and area the fields show

    QLineEdit* m_number = nullptr;     // tz(0)
    QLineEdit* m_year = nullptr;       // tz(1)
    QLineEdit* m_area = nullptr;       // tz(2)
    QComboBox* m_woodland = nullptr;   // komwaldname
    QComboBox* m_reason = nullptr;     // komhiebgrund
    QComboBox* m_kind = nullptr;       // komhiebart
    QComboBox* m_owner = nullptr;      // komwaldbesitzer
    std::array<QLineEdit*, 6> m_texts{}; // t(0) ... t(5)
    QPlainTextEdit* m_harvester = nullptr; // t(6)
    std::array<DateEdit*, 2> m_dates{};    // tdat(0), tdat(1)
    std::array<QLineEdit*, 9> m_totals{};  // read-only
    QPushButton* m_ok = nullptr;
    QPushButton* m_okNext = nullptr;
};

} // namespace tarvik
