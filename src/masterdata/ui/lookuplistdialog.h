#pragma once
// OF_Stichworte: the entries of the drop-down lists, to add, put right and remove.
#include "masterdata/lookuplists.h"

#include <QDialog>

class QComboBox;
class QLabel;
class QLineEdit;
class QTableWidget;

namespace tarvik {

class LookupListDialog : public QDialog {
    Q_OBJECT
public:
    explicit LookupListDialog(const AppContext& context, QWidget* parent = nullptr);

    QString table() const;
    void refresh();
    void onAdd();
    void onChange();
    void onDelete();

private:
    void build();
    void showFields();
    void fillFields();
    std::optional<qint64> markedRow() const;
    QStringList typed() const;

    AppContext m_context;
    QComboBox* m_lists = nullptr;   // kom
    QTableWidget* m_grid = nullptr; // li
    QList<QLabel*> m_labels;
    QList<QLineEdit*> m_fields;     // tz(i)
    QList<LookupEntry> m_entries;
};

} // namespace tarvik
