#pragma once
// OF_Datenimport_Pocket: the exchange files of the data folder with new or changed content,
// ticked by the user and taken over by `startimport`; `daten_kopieren` fetches them from the
// handheld first.
#include "store/context.h"

#include <QDialog>

class QLabel;
class QListWidget;

namespace tarvik {

class ImportDialog : public QDialog {
    Q_OBJECT
public:
    // fromHandheld: opened by the handheld entry, which offers the copy from the device.
    ImportDialog(const AppContext& context, bool fromHandheld, QWidget* parent = nullptr);

    // Whether any harvest was taken over (the main list must be filled again).
    bool imported() const { return m_imported; }

private:
    void fillList();
    void onCopy();
    void onImport();

    AppContext m_context;
    QListWidget* m_files = nullptr;
    QLabel* m_state = nullptr;
    bool m_imported = false;
};

} // namespace tarvik
