#pragma once
// The folder window of the takeover from version 2: a drive, a folder, [Start].
#include "common/prompter.h"
#include "common/ui/fileicons.h"
#include "maintenance/takeover.h"

#include <QDialog>
#include <functional>

class QComboBox;
class QFileSystemModel;
class QLabel;
class QPushButton;
class QTreeView;

namespace tarvik {

class TakeoverDialog : public QDialog {
    Q_OBJECT
public:
    // run carries out the takeover for the chosen folder (confirmations included).
    TakeoverDialog(Prompter& prompter, std::function<TakeoverResult(const QString& folder)> run, QWidget* parent = nullptr);
    ~TakeoverDialog() override;

    QString currentFolder() const;
    void chooseFolder(const QString& folder);
    bool tookOver() const { return m_done; }

private:
    void onDrive(int index);
    void onFolder();
    void onStart();

    Prompter& m_prompter;
    std::function<TakeoverResult(const QString&)> m_run;
    NameOnlyIconProvider m_icons; // the model is deleted in the destructor, before it
    QComboBox* m_drives;
    QTreeView* m_folders;
    QFileSystemModel* m_model;
    QLabel* m_status;
    QPushButton* m_start = nullptr;
    bool m_done = false;
};

} // namespace tarvik
