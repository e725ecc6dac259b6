#pragma once
// FH_Hiebeselektieren: select every harvest or none in one step.
#include "common/prompter.h"

#include <QDialog>
#include <QSqlDatabase>

namespace tarvik {

class SelectionDialog : public QDialog {
    Q_OBJECT
public:
    SelectionDialog(QSqlDatabase db, Prompter& prompter, QWidget* parent = nullptr);

private:
    void selectAllOrNone(bool all);

    QSqlDatabase m_db;
    Prompter& m_prompter;
};

} // namespace tarvik
