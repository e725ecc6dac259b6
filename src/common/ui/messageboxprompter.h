#pragma once
#include "common/prompter.h"

class QWidget;

namespace tarvik {

// Prompter of the desktop program: modal message boxes and file dialogs.
class MessageBoxPrompter final : public Prompter {
public:
    explicit MessageBoxPrompter(QWidget* parent = nullptr) : m_parent(parent) {}
    void setParent(QWidget* parent) { m_parent = parent; }

    void inform(const QString& text, Icon icon) override;
    bool askYesNo(const QString& text) override;
    bool askOkCancel(const QString& text) override;
    std::optional<QString> askText(const QString& prompt, const QString& proposal) override;
    QString chooseOpenFile(const QString& caption, const QString& folder, const QString& filter) override;
    QString chooseSaveFile(const QString& caption, const QString& proposal, const QString& filter) override;
    QString chooseFolder(const QString& caption, const QString& folder) override;

private:
    QWidget* m_parent;
};

} // namespace tarvik
