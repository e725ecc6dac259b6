#include "help/ui/helpwindow.h"

#include "common/folders.h"
#include "help/helpfile.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace tarvik {

HelpWindow::HelpWindow(const QString& title, const QString& text, QWidget* parent)
    : QDialog(parent)
{
    setObjectName(QStringLiteral("FH_Hilfe"));
    setWindowTitle(QStringLiteral("Hilfe"));
    auto* heading = new QLabel(title);
    heading->setObjectName(QStringLiteral("titel"));
    QFont bold = heading->font();
    bold.setBold(true);
    bold.setPointSizeF(bold.pointSizeF() * 1.2);
    heading->setFont(bold);
    heading->setWordWrap(true);
    auto* body = new QPlainTextEdit(text);
    body->setObjectName(QStringLiteral("text"));
    body->setReadOnly(true);
    body->setWordWrapMode(QTextOption::WordWrap);
    auto* ok = new QPushButton(QStringLiteral("OK"));
    ok->setObjectName(QStringLiteral("ok"));
    ok->setDefault(true);
    connect(ok, &QPushButton::clicked, this, &QDialog::accept);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(ok);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(heading);
    layout->addWidget(body, 1);
    layout->addLayout(buttons);
    resize(640, 520);
}

void showHelp(QWidget* parent, Prompter& prompter, const QString& key)
{
    const HelpTopic topic = readHelpTopic(shareFolder(), key);
    if (!topic.fileFound) {
        prompter.inform(topic.missingFileMessage, Prompter::Icon::Information);
        return;
    }
    HelpWindow window(topic.title, topic.text, parent);
    window.exec();
}

} // namespace tarvik
