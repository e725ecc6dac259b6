#include "exchange/ui/importdialog.h"

#include "exchange/handheld.h"
#include "exchange/importfiles.h"

#include <QApplication>
#include <QDir>
#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>

namespace tarvik {

ImportDialog::ImportDialog(const AppContext& context, bool fromHandheld, QWidget* parent)
    : QDialog(parent), m_context(context)
{
    setObjectName(QStringLiteral("OF_Datenimport_Pocket"));
    setWindowTitle(fromHandheld ? QStringLiteral("Datenimport von PDA (Pocket-PC)")
                                : QStringLiteral("Datenimport von anderer TARVIK-Installation"));
    setModal(true);
    resize(620, 420);

    auto* intro = new QLabel(QStringLiteral("Exportdateien im Ordner %1 mit neuen oder geänderten Hieben.\n"
                                            "Haken Sie die Dateien an, die importiert werden sollen.")
                                 .arg(QDir::toNativeSeparators(m_context.dataFolder)));
    intro->setWordWrap(true);
    m_files = new QListWidget;
    m_files->setObjectName(QStringLiteral("liste"));
    m_state = new QLabel;
    m_state->setObjectName(QStringLiteral("bezanzahl"));

    auto* copy = new QPushButton(QStringLiteral("Daten vom &Pocket-PC holen"));
    copy->setObjectName(QStringLiteral("daten_kopieren"));
    copy->setVisible(fromHandheld);
    auto* start = new QPushButton(QStringLiteral("&Import starten"));
    start->setObjectName(QStringLiteral("startimport"));
    auto* close = new QPushButton(QStringLiteral("&Schließen"));
    close->setObjectName(QStringLiteral("abbrechen"));
    auto* help = new QPushButton(QStringLiteral("&Hilfe"));
    help->setObjectName(QStringLiteral("hilfe"));
    help->setAutoDefault(false);
    help->setEnabled(false); // the help filter enables and wires it when the window shows
    for (QPushButton* b : {copy, start, close})
        b->setAutoDefault(false);

    auto* buttons = new QHBoxLayout;
    buttons->addWidget(copy);
    buttons->addStretch();
    buttons->addWidget(start);
    buttons->addWidget(help);
    buttons->addWidget(close);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(intro);
    layout->addWidget(m_files, 1);
    layout->addWidget(m_state);
    layout->addLayout(buttons);

    connect(copy, &QPushButton::clicked, this, &ImportDialog::onCopy);
    connect(start, &QPushButton::clicked, this, &ImportDialog::onImport);
    connect(close, &QPushButton::clicked, this, &QDialog::reject);
    fillList();
}

void ImportDialog::fillList()
{
    m_files->clear();
    for (const QString& name : exchange::candidateFiles(m_context.dataFolder)) {
        auto* item = new QListWidgetItem(name, m_files);
        item->setFlags(Qt::ItemIsEnabled | Qt::ItemIsUserCheckable);
        item->setCheckState(Qt::Unchecked);
    }
    m_state->setText(m_files->count() == 0 ? QStringLiteral("Es liegen keine Dateien mit neuen Inhalten vor.")
                                           : QStringLiteral("%1 Dateien mit neuen Inhalten.").arg(m_files->count()));
}

void ImportDialog::onCopy()
{
    exchange::copyFromHandheld(m_context.dataFolder, m_context.settings, m_context.prompter);
    fillList();
}

void ImportDialog::onImport()
{
    QStringList ticked, offered;
    for (int i = 0; i < m_files->count(); ++i) {
        offered << m_files->item(i)->text();
        if (m_files->item(i)->checkState() == Qt::Checked)
            ticked << m_files->item(i)->text();
    }
    if (offered.isEmpty()) {
        m_context.prompter.inform(QStringLiteral("Im Ordner %1 liegen keine Exportdateien mit neuen oder geänderten Hieben.")
                                      .arg(QDir::toNativeSeparators(m_context.dataFolder)));
        return;
    }
    const std::optional<QStringList> chosen = exchange::filesToImport(m_context.prompter, ticked, offered);
    if (!chosen)
        return;
    QStringList paths;
    for (const QString& name : *chosen)
        paths << QDir(m_context.dataFolder).filePath(name);
    QApplication::setOverrideCursor(Qt::WaitCursor);
    const exchange::ImportReport report = exchange::importFiles(m_context.db, m_context.settings, paths);
    QApplication::restoreOverrideCursor();
    m_imported = m_imported || !report.harvestIds.isEmpty();
    exchange::showImportReport(m_context.prompter, report);
    fillList();
}

} // namespace tarvik
