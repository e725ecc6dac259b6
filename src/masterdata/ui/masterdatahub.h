#pragma once
// SF_Stammdaten: one master data table at a time in the grid `li`, the single entry point for
// new, change, copy, delete and the printed list of master data.
#include "masterdata/masterlists.h"

#include <QDialog>
#include <optional>

class QButtonGroup;
class QMenu;
class QPushButton;
class QTableView;

namespace tarvik {

class MasterListModel;

class MasterDataHub : public QDialog {
    Q_OBJECT
public:
    // Without a list the hub shows the one chosen last while the program runs.
    MasterDataHub(const AppContext& context, std::optional<MasterList> list = std::nullopt, QWidget* parent = nullptr);

    MasterList list() const;
    void refresh();
    // The marked row's ID.
    std::optional<qint32> markedId() const;
    // The IDs of the grid's rows in their order, which "Ändern" steps through.
    QList<qint32> rowIds() const;

    void onNew();
    void onChange();
    void onCopy();
    void onDelete();
    void onPrint();
    void onOwnData();

protected:
    void done(int result) override;

private:
    void build();
    void updateButtons();
    void openEditor(bool change, std::optional<qint32> id);
    bool editCell(int row, int column, const QString& typed);
    void selectId(std::optional<qint32> id);
    void saveWidths() const;
    void restoreWidths();

    AppContext m_context;
    QButtonGroup* m_lists = nullptr; // opti
    MasterListModel* m_model = nullptr;
    QTableView* m_grid = nullptr;    // li
    QPushButton* m_new = nullptr;    // neu
    QPushButton* m_change = nullptr; // control7
    QPushButton* m_copy = nullptr;   // kopie
    QMenu* m_popup = nullptr;        // popzeile
    int m_shownList = -1;
};

} // namespace tarvik
