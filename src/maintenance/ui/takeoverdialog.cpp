#include "maintenance/ui/takeoverdialog.h"


#include <QComboBox>
#include <QDir>
#include <QFileSystemModel>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QStorageInfo>
#include <QTreeView>
#include <QVBoxLayout>

namespace tarvik {

TakeoverDialog::TakeoverDialog(Prompter& prompter, std::function<TakeoverResult(const QString&)> run, QWidget* parent)
    : QDialog(parent), m_prompter(prompter), m_run(std::move(run))
{
    setObjectName(QStringLiteral("FH_Datenuebernahme"));
    setWindowTitle(QStringLiteral("Datenübernahme aus TARVIK 2.0"));
    auto* label = new QLabel(takeoverFolderLabel());
    label->setObjectName(QStringLiteral("bezauswahl"));
    m_drives = new QComboBox;
    m_drives->setObjectName(QStringLiteral("drive"));
    for (const QStorageInfo& volume : QStorageInfo::mountedVolumes()) {
        if (!volume.isValid() || volume.fileSystemType().startsWith("tmpfs") || volume.rootPath().startsWith(QLatin1String("/sys"))
            || volume.rootPath().startsWith(QLatin1String("/proc")) || volume.rootPath().startsWith(QLatin1String("/dev")))
            continue;
        const QString name = volume.displayName() == volume.rootPath() ? volume.rootPath()
                                                                        : QStringLiteral("%1 (%2)").arg(volume.rootPath(), volume.displayName());
        m_drives->addItem(name, volume.rootPath());
    }
    m_model = new QFileSystemModel(this);
    m_model->setIconProvider(&m_icons); // the data folder may be browsed too: names only
    m_model->setFilter(QDir::AllDirs | QDir::NoDotAndDotDot);
    m_model->setRootPath(QDir::rootPath());
    m_folders = new QTreeView;
    m_folders->setObjectName(QStringLiteral("dir"));
    m_folders->setModel(m_model);
    for (int column = 1; column < m_model->columnCount(); ++column)
        m_folders->hideColumn(column);
    m_folders->header()->hide();
    m_status = new QLabel;
    m_status->setObjectName(QStringLiteral("bezstatus"));
    m_status->setWordWrap(true);
    auto* start = m_start = new QPushButton(QStringLiteral("&Start"));
    start->setObjectName(QStringLiteral("start"));
    auto* close = new QPushButton(QStringLiteral("&Beenden"));
    close->setObjectName(QStringLiteral("beenden"));
    auto* help = new QPushButton(QStringLiteral("&Hilfe"));
    help->setObjectName(QStringLiteral("hilfe"));
    help->setEnabled(false); // the help filter opens the window's own topic
    auto* buttons = new QHBoxLayout;
    buttons->addWidget(start);
    buttons->addStretch();
    buttons->addWidget(help);
    buttons->addWidget(close);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(label);
    layout->addWidget(m_drives);
    layout->addWidget(m_folders, 1);
    layout->addWidget(m_status);
    layout->addLayout(buttons);
    resize(560, 480);

    connect(m_drives, &QComboBox::activated, this, &TakeoverDialog::onDrive);
    connect(m_folders->selectionModel(), &QItemSelectionModel::currentChanged, this, &TakeoverDialog::onFolder);
    connect(start, &QPushButton::clicked, this, &TakeoverDialog::onStart);
    connect(close, &QPushButton::clicked, this, &QDialog::reject);

    // The old program's usual places come first.
    const QStringList usual = usualVersion2Folders();
    chooseFolder(usual.isEmpty() ? QDir::homePath() : usual.first());
}

TakeoverDialog::~TakeoverDialog() { delete m_model; }

QString TakeoverDialog::currentFolder() const { return m_model->filePath(m_folders->currentIndex()); }

void TakeoverDialog::chooseFolder(const QString& folder)
{
    const QModelIndex index = m_model->index(folder);
    m_folders->setCurrentIndex(index);
    m_folders->scrollTo(index);
    onFolder();
}

void TakeoverDialog::onDrive(int index)
{
    const QString root = m_drives->itemData(index).toString();
    if (!QDir(root).isReadable()) {
        m_prompter.inform(driveUnreachableMessage());
        return;
    }
    chooseFolder(root);
}

void TakeoverDialog::onFolder()
{
    const bool found = !version2Database(currentFolder()).isEmpty();
    m_status->setText(found ? version2FoundMessage() : version2MissingMessage());
    m_start->setEnabled(found);
}

void TakeoverDialog::onStart()
{
    if (version2Database(currentFolder()).isEmpty()) {
        m_prompter.inform(version2MissingMessage());
        return;
    }
    const TakeoverResult result = m_run(currentFolder());
    if (result.done) {
        m_done = true;
        accept();
    }
}

} // namespace tarvik
