#include "common/ui/messageboxprompter.h"

#include <QApplication>
#include <QFileDialog>
#include <QInputDialog>
#include <QMessageBox>
#include <QPushButton>

namespace tarvik {
namespace {

const QString Caption = QStringLiteral("TARVIK");

QMessageBox::Icon toIcon(Prompter::Icon icon)
{
    switch (icon) {
    case Prompter::Icon::Warning: return QMessageBox::Warning;
    case Prompter::Icon::Critical: return QMessageBox::Critical;
    case Prompter::Icon::Question: return QMessageBox::Question;
    case Prompter::Icon::Information: break;
    }
    return QMessageBox::Information;
}

} // namespace

void MessageBoxPrompter::inform(const QString& text, Icon icon)
{
    QMessageBox box(toIcon(icon), Caption, text, QMessageBox::Ok, m_parent);
    box.exec();
}

bool MessageBoxPrompter::askYesNo(const QString& text)
{
    QMessageBox box(QMessageBox::Question, Caption, text, QMessageBox::Yes | QMessageBox::No, m_parent);
    box.button(QMessageBox::Yes)->setText(QStringLiteral("&Ja"));
    box.button(QMessageBox::No)->setText(QStringLiteral("&Nein"));
    // Enter after a question that deletes or overwrites must never say Yes by accident.
    box.setDefaultButton(QMessageBox::No);
    box.setEscapeButton(QMessageBox::No);
    return box.exec() == QMessageBox::Yes;
}

bool MessageBoxPrompter::askOkCancel(const QString& text)
{
    QMessageBox box(QMessageBox::Question, Caption, text, QMessageBox::Ok | QMessageBox::Cancel, m_parent);
    box.button(QMessageBox::Cancel)->setText(QStringLiteral("Abbrechen"));
    return box.exec() == QMessageBox::Ok;
}

std::optional<QString> MessageBoxPrompter::askText(const QString& prompt, const QString& proposal)
{
    bool ok = false;
    const QString text = QInputDialog::getText(m_parent, Caption, prompt, QLineEdit::Normal, proposal, &ok);
    if (!ok)
        return std::nullopt;
    return text;
}

QString MessageBoxPrompter::chooseOpenFile(const QString& caption, const QString& folder, const QString& filter)
{
    return QFileDialog::getOpenFileName(m_parent, caption, folder, filter);
}

QString MessageBoxPrompter::chooseSaveFile(const QString& caption, const QString& proposal, const QString& filter)
{
    return QFileDialog::getSaveFileName(m_parent, caption, proposal, filter);
}

QString MessageBoxPrompter::chooseFolder(const QString& caption, const QString& folder)
{
    return QFileDialog::getExistingDirectory(m_parent, caption, folder);
}

} // namespace tarvik
