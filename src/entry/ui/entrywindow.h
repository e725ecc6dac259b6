#pragma once
// What the log, pole and stacked-wood windows share: the harvest they work in, the row being
// changed, the lot, species, class and remark lists, the grid of the harvest's rows, the
// OK/OK+Nächster/Abbrechen buttons and the flow of choosing a lot and storing an entry.
#include "common/openerrows.h"
#include "rules/masterdatalookup.h"
#include "store/context.h"
#include "store/gridquery.h"

#include <QDialog>
#include <QHash>
#include <optional>

class QComboBox;
class QFormLayout;
class QHBoxLayout;
class QLayout;
class QLineEdit;
class QPushButton;
class QTableView;

namespace tarvik {

class EntryWindow : public QDialog {
    Q_OBJECT
public:
    QLineEdit* field(int index) const { return m_fields.value(index); }
    // Mode "Ändern": OK stores the row shown and shows the next of the opener's list (after the
    // last the first) instead of closing; Abbrechen closes.
    void stepThrough(OpenerRows rows);
    // The stored row shown now (in "Ändern"), so the opener can stand on it afterwards.
    std::optional<qint32> editedId() const { return m_editedId; }

protected:
    struct Setup {
        QString objectName;
        QString title;      // "Eingabe Stämme"; the mode is added
        QString sorting;    // the lots' assortment: "Stämme", "Pfähle" or "Schichtholz"
        QString table;      // the rows' table
        QString classTable; // the class list's table
        int classList;      // kom(n) of the class list
        int remarkList;     // kom(n) of the remark list
    };
    EntryWindow(const AppContext& context, qint32 harvestId, std::optional<qint32> editedId, Setup setup, QWidget* parent);

    // Building blocks for the subclass's constructor: the lists and buttons exist from the start.
    QLineEdit* makeField(int index, int maxLength, bool readOnly = false);
    QLineEdit* addFormField(QFormLayout* form, int index, const QString& caption, int maxLength, bool readOnly = false);
    // Diameters are whole centimetres: the field takes digits only.
    static void takeWholeCentimetres(QLineEdit* field);
    // Lot, species, the subclass's fields (addFields), class and remark in one form above the
    // grid and the buttons: the pole and stacked-wood windows.
    void layOutAsForm();
    // The row of buttons: the given ones, help, then OK, OK+Nächster and Abbrechen.
    QHBoxLayout* buttonRow(const QList<QPushButton*>& leading = {});
    // Fills the lists and shows the edited row or a new entry; once, at the end of the subclass's
    // constructor.
    void start(std::optional<qint32> lotNr);

    QComboBox* lotList() const { return m_lot; }
    QComboBox* speciesList() const { return m_species; }
    QComboBox* classList() const { return m_class; }
    QComboBox* remarkList() const { return m_remark; }
    QTableView* grid() const { return m_grid; }
    QPushButton* okButton() const { return m_ok; }
    QPushButton* okNextButton() const { return m_okNext; }
    std::optional<qint32> lotNumber() const;
    void selectClass(const QString& cls);

    virtual void addFields(QFormLayout*) {}
    virtual void loadEntry(qint32 id) = 0;
    virtual void afterLoad() {}                               // a stored row is shown (m_filling off)
    virtual void startNew() {}                                // a new entry was opened
    virtual void lotChosen(std::optional<qint32>) {}          // after the species of the lot
    virtual HarvestRows gridRows() const = 0;                 // what the grid lists, from the core
    virtual bool storeEntry() = 0;                            // true when stored
    virtual void afterNext() = 0;                             // fields for the next entry
    virtual void refreshRows();                               // the grid (and what goes with it)

    void chooseLot();
    // Marks the row of that ID in the grid (the newest without one) and scrolls to it.
    void showRow(std::optional<qint32> id);

    AppContext m_context;
    qint32 m_harvestId;
    MasterDataLookup m_masterData;
    bool m_filling = false;

private:
    bool store();
    void updateTitle();
    void onOk();
    void onOkNext();

    Setup m_setup;
    std::optional<qint32> m_editedId;
    OpenerRows m_opener;
    QHash<int, QLineEdit*> m_fields;
    QComboBox* m_lot = nullptr;
    QComboBox* m_species = nullptr;
    QComboBox* m_class = nullptr;
    QComboBox* m_remark = nullptr;
    HarvestRowsModel* m_rows = nullptr;
    QTableView* m_grid = nullptr;
    QPushButton* m_ok = nullptr;
    QPushButton* m_okNext = nullptr;
    QPushButton* m_cancel = nullptr;
    QPushButton* m_help = nullptr;
};

} // namespace tarvik
