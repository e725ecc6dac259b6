#pragma once
// BF_Holzliste_listen: the timber list of the log lots ticked in it, handed to the text window.
#include "store/context.h"

#include <QDialog>

class QListWidget;

namespace tarvik {

class TimberListDialog : public QDialog {
    Q_OBJECT
public:
    TimberListDialog(const AppContext& context, qint32 harvestId, QWidget* parent = nullptr);

    // Builds the list of the ticked lots and shows it, as `ok` does.
    void build();

private:
    AppContext m_context;
    qint32 m_harvest;
    QListWidget* m_lots = nullptr; // liste
};

} // namespace tarvik
