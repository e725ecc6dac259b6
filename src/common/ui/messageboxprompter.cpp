#include "common/ui/messageboxprompter.h"

#include "common/folders.h"
#include "common/ui/fileicons.h"

#include <QApplication>
#include <QDir>
#include <QFileDialog>
#include <QHeaderView>
#include <QTreeView>
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

// Qt's own dialog, so that its icons come from the names alone (a platform dialog would look
// into the files, the database among them).
QString runFileDialog(QWidget* parent, Prompter& prompter, const QString& caption, const QString& start, const QString& filter,
                      QFileDialog::FileMode mode, QFileDialog::AcceptMode accept)
{
    NameOnlyIconProvider icons; // outlives the dialog
    QString folder = start;
    for (;;) {
        QFileDialog dialog(parent, caption, folder, filter);
        dialog.setOption(QFileDialog::DontUseNativeDialog);
        dialog.setIconProvider(&icons);
        dialog.setFileMode(mode);
        dialog.setAcceptMode(accept);
        if (mode == QFileDialog::Directory)
            dialog.setOption(QFileDialog::ShowDirsOnly);
        // The detail columns as wide as their German texts (size, type, date).
        if (auto* details = dialog.findChild<QTreeView*>(QStringLiteral("treeView")))
            for (int column = 1; column < details->header()->count(); ++column)
                details->header()->setSectionResizeMode(column, QHeaderView::ResizeToContents);
        if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty())
            return {};
        const QString chosen = dialog.selectedFiles().constFirst();
        if (mode == QFileDialog::Directory || !isDatabaseFile(chosen))
            return chosen;
        // Read or written by anything but the engine, the database would lose its locks or its data.
        prompter.inform(QStringLiteral("Die Datei \"%1\" ist die Datenbank von TARVIK und kann hier nicht gewählt werden. "
                                       "Bitte wählen Sie eine andere Datei.")
                            .arg(QDir::toNativeSeparators(chosen)),
                        Prompter::Icon::Warning);
        folder = dialog.directory().absolutePath();
    }
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
    return runFileDialog(m_parent, *this, caption, folder, filter, QFileDialog::ExistingFile, QFileDialog::AcceptOpen);
}

QString MessageBoxPrompter::chooseSaveFile(const QString& caption, const QString& proposal, const QString& filter)
{
    return runFileDialog(m_parent, *this, caption, proposal, filter, QFileDialog::AnyFile, QFileDialog::AcceptSave);
}

QString MessageBoxPrompter::chooseFolder(const QString& caption, const QString& folder)
{
    return runFileDialog(m_parent, *this, caption, folder, QString(), QFileDialog::Directory, QFileDialog::AcceptOpen);
}

} // namespace tarvik
