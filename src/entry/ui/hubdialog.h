#pragma once
// EF_Eingabe: the records of one harvest, from which lots and logs are entered, copied,
// deleted, and invoices marked as paid.
#include "entry/hub.h"

#include <QDialog>
#include <optional>

class QButtonGroup;
class QCheckBox;
class QComboBox;
class QLabel;
class QPushButton;
class QSqlQueryModel;
class QTableView;

namespace tarvik {

class EntryWindow;

class HubDialog : public QDialog {
    Q_OBJECT
public:
    HubDialog(const AppContext& context, qint32 harvestId, HubList list, QWidget* parent = nullptr);

    qint32 harvestId() const { return m_harvestId; }
    HubList list() const;
    void refresh();

private:
    void build();
    void fillHarvests();
    void updateButtons();
    std::optional<qint32> markedId() const;
    void onNew();
    void onChange();
    void onCopy();
    void onDelete();
    void onPaid();
    void onEldat();
    void onNextHarvest();
    void openWindow(std::optional<qint32> id);
    // Runs a log, pole or stacked-wood window; in "Ändern" it steps through the listed rows and
    // the ID it showed last is returned.
    std::optional<qint32> stepped(EntryWindow& window, std::optional<qint32> id);
    void selectId(qint32 id);
    void done(int result) override;

    AppContext m_context;
    qint32 m_harvestId;
    QLabel* m_header = nullptr;
    QButtonGroup* m_lists = nullptr; // opti
    QCheckBox* m_openOnly = nullptr; // konoffen
    QSqlQueryModel* m_model = nullptr;
    QTableView* m_grid = nullptr;
    int m_shownList = -1; // the list whose column widths the grid holds
    QComboBox* m_harvests = nullptr; // komhieb
    QPushButton* m_new = nullptr;
    QPushButton* m_change = nullptr;
    QPushButton* m_copy = nullptr;
    QPushButton* m_paid = nullptr;
    QPushButton* m_eldat = nullptr; // the marked lots as an .eldat offer
};

} // namespace tarvik
