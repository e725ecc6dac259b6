#pragma once
// What the pole and stacked-wood windows share: the lot, species, class and remark lists,
// the grid of the lot's rows, the buttons and the keyboard habits of the entry windows.
#include "rules/masterdatalookup.h"
#include "store/context.h"

#include <QDialog>
#include <QHash>
#include <optional>

class QComboBox;
class QFormLayout;
class QLineEdit;
class QPushButton;
class QSqlQueryModel;
class QTableView;

namespace tarvik {

class SimpleEntryDialog : public QDialog {
    Q_OBJECT
public:
    QLineEdit* field(int index) const { return m_fields.value(index); }

protected:
    struct Setup {
        QString objectName;
        QString title;
        QString sorting;      // "Pfähle" or "Schichtholz"
        QString table;        // the rows' table
        QString classTable;   // the class list's table
        QString gridColumns;  // what the grid shows of the lot's rows
    };
    SimpleEntryDialog(const AppContext& context, qint32 harvestId, std::optional<qint32> editedId, Setup setup, QWidget* parent);

    // Called once from the subclass's constructor, after its own fields exist.
    void finish(std::optional<qint32> lotNr);

    QLineEdit* addField(QFormLayout* form, int index, const QString& caption, int maxLength, bool readOnly = false);
    QComboBox* lotList() const { return m_lot; }
    QComboBox* speciesList() const { return m_species; }
    QComboBox* classList() const { return m_class; }
    QComboBox* remarkList() const { return m_remark; }
    void selectClass(const QString& cls);

    virtual void addFields(QFormLayout* form) = 0;
    virtual void loadEntry(qint32 id) = 0;
    virtual bool storeEntry(std::optional<qint32> editedId) = 0; // true when stored
    virtual void afterNext() = 0;                                // fields for the next entry

    AppContext m_context;
    qint32 m_harvestId;
    MasterDataLookup m_masterData;
    bool m_filling = false;

private:
    void chooseLot();
    void refreshGrid();
    bool store();

    Setup m_setup;
    std::optional<qint32> m_editedId;
    QHash<int, QLineEdit*> m_fields;
    QComboBox* m_lot = nullptr;
    QComboBox* m_species = nullptr;
    QComboBox* m_class = nullptr;
    QComboBox* m_remark = nullptr;
    QSqlQueryModel* m_rows = nullptr;
    QTableView* m_grid = nullptr;
};

} // namespace tarvik
