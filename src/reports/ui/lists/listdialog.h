#pragma once
// The evaluation list dialogs BF_Hiebe_listen … BF_Rechnungen_listen: one window built from the
// member's definition. It collects the choices, lets the core build the statement, shows the
// rows in a grid that fetches as it scrolls, and hands the list on to the target of the settings.
#include "reports/lists/listquery.h"
#include "store/context.h"

#include <QDialog>
#include <optional>

class QButtonGroup;
class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QListWidget;
class QProgressBar;
class QPushButton;
class QTableView;

namespace tarvik {

class ListModel;

class ListDialog : public QDialog {
    Q_OBJECT
public:
    ListDialog(const AppContext& context, lists::Member member, std::optional<qint32> currentHarvest, bool harvestsMarked,
               QWidget* parent = nullptr);

    // The choices as they stand in the controls.
    lists::ListRequest request() const;
    ListModel* model() const { return m_model; }
    // Builds and hands on the list, as the button `ok` does.
    void build();
    // The grouped result as bars; nothing when the list is not grouped.
    void showChart();
    // A build in progress stops at its next step.
    void cancel() { m_cancelled = true; }

protected:
    void done(int result) override;

private:
    void buildControls();
    void fillFilters();
    void restoreChoices();
    void storeChoices();
    void updatePage();
    void onGroupingChanged();
    void openColumnSettings();
    void saveGridState() const;
    void restoreGridState();
    bool handOn(const lists::ListQuery& query, qint64 rows);
    QString gridKey() const;

    AppContext m_context;
    const lists::MemberDef& m_def;
    std::optional<qint32> m_current;
    bool m_marked;
    ListModel* m_model;
    QComboBox* m_scope = nullptr;      // komhieb
    QList<QComboBox*> m_filters;       // kom<column>
    QComboBox* m_sort = nullptr;       // komsort
    QCheckBox* m_descending = nullptr; // komsortdesc
    QListWidget* m_columns = nullptr;  // liste
    QButtonGroup* m_grouping = nullptr; // optigruppe(i)
    QButtonGroup* m_range = nullptr;   // optizeitraum(i)
    QLineEdit* m_rangeFrom = nullptr;  // tzeitraum(0)
    QLineEdit* m_rangeTo = nullptr;    // tzeitraum(1)
    QTableView* m_grid = nullptr;      // gridli
    QLabel* m_count = nullptr;         // bezanzahl
    QLabel* m_page = nullptr;          // bezseite
    QProgressBar* m_meter = nullptr;   // meter
    QPushButton* m_ok = nullptr;
    QPushButton* m_stop = nullptr;     // comabbrechen
    QPushButton* m_chart = nullptr;    // comdiagramm
    qint64 m_rows = 0;
    int m_shownGrouping = -1;
    bool m_cancelled = false;
    bool m_busy = false;
};

} // namespace tarvik
