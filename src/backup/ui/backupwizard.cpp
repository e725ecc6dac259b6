#include "backup/ui/backupwizard.h"

#include "common/sqldate.h"

#include <QCheckBox>
#include <QCloseEvent>
#include <QComboBox>
#include <QCoreApplication>
#include <QDir>
#include <QEventLoop>
#include <QFileInfo>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPixmap>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QTabBar>
#include <QTabWidget>
#include <QThread>
#include <QTimer>
#include <QVBoxLayout>

namespace tarvik {
namespace {

QLabel* textLabel(const QString& text, const QString& name = {})
{
    auto* label = new QLabel(text);
    label->setWordWrap(true);
    if (!name.isEmpty())
        label->setObjectName(name);
    return label;
}

QString sizeText(qint64 bytes)
{
    if (bytes < 1024 * 1024)
        return QLocale().toString(double(bytes) / 1024.0, 'f', 0) + QStringLiteral(" kB");
    if (bytes >= qint64(1) << 30)
        return QLocale().toString(double(bytes) / (1024.0 * 1024.0 * 1024.0), 'f', 1) + QStringLiteral(" GB");
    return QLocale().toString(double(bytes) / (1024.0 * 1024.0), 'f', 1) + QStringLiteral(" MB");
}

QString dateOrNever(const QDate& date) { return date.isValid() ? formatGermanDate(date) : QStringLiteral("noch nie"); }

} // namespace

BackupWizard::BackupWizard(const AppContext& context, const DriveSource& drives, const QString& imagesFolder, QWidget* parent)
    : QDialog(parent), m_context(context), m_drives(drives), m_imagesFolder(imagesFolder), m_tabs(new QTabWidget)
{
    setObjectName(QStringLiteral("FH_Datensicherung_neu"));
    setWindowTitle(QStringLiteral("Datensicherung"));
    setModal(true);
    resize(700, 500);

    m_tabs->setObjectName(QStringLiteral("tabsicherung"));
    m_tabs->addTab(buildStartPage(), QStringLiteral("Start"));
    m_tabs->addTab(buildDrivePage(), QStringLiteral("Laufwerk"));
    m_tabs->addTab(buildCreatePage(), QStringLiteral("Backup erstellen"));
    m_tabs->addTab(buildCloudPage(), QStringLiteral("Cloud"));
    m_tabs->addTab(buildEndPage(), QStringLiteral("Ende"));
    m_tabs->addTab(buildRestorePage(), QStringLiteral("Backup einlesen"));
    m_tabs->tabBar()->hide(); // the pages are walked with [Weiter] and [Zurück]

    m_progress = new QProgressBar;
    m_progress->setObjectName(QStringLiteral("fortschritt"));
    m_progress->setRange(0, 100);
    m_progressText = textLabel(QString(), QStringLiteral("bezfortschritt"));
    m_cancelButton = new QPushButton(QStringLiteral("Abbrechen"));
    m_cancelButton->setObjectName(QStringLiteral("abbv"));
    m_cancelButton->setAutoDefault(false); // Enter never cancels, whatever has the focus while the work runs
    connect(m_cancelButton, &QPushButton::clicked, this, [this] {
        if (m_busy)
            m_cancel = true; // the work stops at its next step and cleans up after itself
        else
            reject();
    });

    auto* bottom = new QHBoxLayout;
    auto* progress = new QVBoxLayout;
    progress->addWidget(m_progressText);
    progress->addWidget(m_progress);
    bottom->addLayout(progress, 1);
    auto* help = new QPushButton(QStringLiteral("&Hilfe"));
    help->setObjectName(QStringLiteral("hilfe"));
    help->setAutoDefault(false);
    help->setEnabled(false); // the help filter enables and wires it when the window shows
    bottom->addWidget(help, 0, Qt::AlignBottom);
    bottom->addWidget(m_cancelButton, 0, Qt::AlignBottom);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(m_tabs, 1);
    layout->addLayout(bottom);
    m_progress->hide();

    const BackupChoices choices = loadBackupChoices(m_context.dataFolder);
    m_rotation->setChecked(choices.rotation);
    m_lastMonthly->setText(dateOrNever(choices.lastMonthly));
    m_lastYearly->setText(dateOrNever(choices.lastYearly));
    m_cloudFolder->setText(QDir::toNativeSeparators(choices.cloudFolder));
    showPage(Start);
}

BackupWizard::~BackupWizard() = default;

std::pair<QPushButton*, QPushButton*> BackupWizard::navigation(QWidget*, QLayout* layout, Page page)
{
    auto* back = new QPushButton(QStringLiteral("< Zurück"));
    back->setObjectName(QStringLiteral("comzurueck(%1)").arg(int(page)));
    auto* next = new QPushButton(QStringLiteral("Weiter >"));
    next->setObjectName(QStringLiteral("comweiter(%1)").arg(int(page)));
    // Enter goes to the page's [Weiter] alone (showPage), never to a button that has the focus.
    back->setAutoDefault(false);
    next->setAutoDefault(false);
    auto* row = new QHBoxLayout;
    row->addStretch();
    row->addWidget(back);
    row->addWidget(next);
    static_cast<QVBoxLayout*>(layout)->addLayout(row);
    m_navigation << back << next;
    return {back, next};
}

QWidget* BackupWizard::buildStartPage()
{
    auto* page = new QWidget;
    page->setObjectName(QStringLiteral("startseite"));
    auto* layout = new QVBoxLayout(page);
    auto* title = textLabel(QStringLiteral("Datensicherung und Rücksicherung der TARVIK-Daten"));
    QFont big = title->font();
    big.setPointSize(big.pointSize() + 3);
    big.setBold(true);
    title->setFont(big);
    layout->addWidget(title);
    layout->addWidget(textLabel(QStringLiteral("Die Datensicherung packt alle Daten in eine ZIP-Datei je Tag, legt sie auf der Festplatte ab und "
                                               "kopiert sie auf einen externen Datenträger (am besten einen von drei USB-Sticks im Wechsel).")));

    auto* conceptRow = new QHBoxLayout;
    m_rotation = new QCheckBox(QStringLiteral("Backup-Konzept für hohe Datensicherheit nutzen (drei USB-Sticks: grün, blau, rot)"));
    m_rotation->setObjectName(QStringLiteral("kon_backupkonzept"));
    auto* info = new QPushButton(QStringLiteral("Info"));
    info->setObjectName(QStringLiteral("cominfo"));
    connect(info, &QPushButton::clicked, this, [this] { m_context.prompter.inform(rotationInfoText()); });
    conceptRow->addWidget(m_rotation, 1);
    conceptRow->addWidget(info);
    layout->addLayout(conceptRow);

    auto* dates = new QFormLayout;
    m_lastMonthly = new QLabel;
    m_lastMonthly->setObjectName(QStringLiteral("letztmonatsbackup"));
    m_lastYearly = new QLabel;
    m_lastYearly->setObjectName(QStringLiteral("letztjahresbackup"));
    dates->addRow(QStringLiteral("Letztes Monatsbackup (blauer Stick):"), m_lastMonthly);
    dates->addRow(QStringLiteral("Letztes Jahresbackup (roter Stick):"), m_lastYearly);
    layout->addLayout(dates);
    layout->addStretch();

    auto* backup = new QPushButton(QStringLiteral("Datensicherung erstellen"));
    backup->setObjectName(QStringLiteral("start_sicherung"));
    auto* restore = new QPushButton(QStringLiteral("Datensicherung einlesen (Rücksicherung)"));
    restore->setObjectName(QStringLiteral("start_rettung"));
    for (QPushButton* b : {backup, restore}) {
        b->setMinimumHeight(40);
        layout->addWidget(b);
    }
    connect(backup, &QPushButton::clicked, this, &BackupWizard::startBackup);
    connect(restore, &QPushButton::clicked, this, &BackupWizard::startRestore);
    return page;
}

QWidget* BackupWizard::buildDrivePage()
{
    auto* page = new QWidget;
    page->setObjectName(QStringLiteral("laufwerkwahl"));
    auto* layout = new QVBoxLayout(page);
    auto* stick = new QHBoxLayout;
    m_stickPicture = new QLabel;
    m_stickPicture->setObjectName(QStringLiteral("bildstick"));
    m_stickText = textLabel(QString(), QStringLiteral("bezstick"));
    stick->addWidget(m_stickPicture);
    stick->addWidget(m_stickText, 1);
    layout->addLayout(stick);
    for (const QString& line : drivePageLines())
        layout->addWidget(textLabel(line));
    m_driveWidget = new QListWidget;
    m_driveWidget->setObjectName(QStringLiteral("laufwerke"));
    layout->addWidget(m_driveWidget, 1);
    connect(m_driveWidget, &QListWidget::itemClicked, this, &BackupWizard::driveSelected);
    auto* refresh = new QPushButton(QStringLiteral("Laufwerke neu einlesen"));
    refresh->setObjectName(QStringLiteral("comaktualisieren"));
    connect(refresh, &QPushButton::clicked, this, &BackupWizard::fillDrives);
    layout->addWidget(refresh, 0, Qt::AlignLeft);
    const auto [back, next] = navigation(page, layout, Laufwerk);
    connect(back, &QPushButton::clicked, this, [this] { showPage(Start); });
    connect(next, &QPushButton::clicked, this, &BackupWizard::driveChosen);
    return page;
}

QWidget* BackupWizard::buildCreatePage()
{
    auto* page = new QWidget;
    page->setObjectName(QStringLiteral("backuperstellen"));
    auto* layout = new QVBoxLayout(page);
    m_createText = textLabel(QString(), QStringLiteral("bezerstellen"));
    layout->addWidget(m_createText);
    layout->addStretch();
    const auto [back, next] = navigation(page, layout, Erstellen);
    connect(back, &QPushButton::clicked, this, [this] { showPage(Cloud); });
    connect(next, &QPushButton::clicked, this, [this] {
        m_summary->setPlainText(m_backup->summary().join(u'\n'));
        showPage(Ende);
    });
    return page;
}

QWidget* BackupWizard::buildCloudPage()
{
    auto* page = new QWidget;
    page->setObjectName(QStringLiteral("cloud"));
    auto* layout = new QVBoxLayout(page);
    layout->addWidget(textLabel(QStringLiteral("Sie können die Datensicherung zusätzlich in eine Cloud speichern. TARVIK legt die Datei dabei in "
                                               "dem Ordner der Cloud ab, der regelmäßig ins Internet hochgeladen wird. Wenn Sie diese zusätzliche "
                                               "Sicherheit wünschen, dann wählen Sie den Ordner aus, der durch Ihr Cloud-Programm gesichert wird.")));
    auto* row = new QHBoxLayout;
    m_cloudFolder = new QLineEdit;
    m_cloudFolder->setObjectName(QStringLiteral("tcloud"));
    m_cloudFolder->setPlaceholderText(QStringLiteral("leer lassen, wenn nicht in die Cloud gesichert werden soll"));
    auto* choose = new QPushButton(QStringLiteral("Ordner wählen..."));
    choose->setObjectName(QStringLiteral("comcloudwahl"));
    connect(choose, &QPushButton::clicked, this, [this] {
        const QString folder = m_context.prompter.chooseFolder(QStringLiteral("Cloud-Ordner wählen"), m_cloudFolder->text());
        if (!folder.isEmpty())
            m_cloudFolder->setText(QDir::toNativeSeparators(folder));
    });
    row->addWidget(m_cloudFolder, 1);
    row->addWidget(choose);
    layout->addLayout(row);
    layout->addStretch();
    const auto [back, next] = navigation(page, layout, Cloud);
    connect(back, &QPushButton::clicked, this, [this] { showPage(Laufwerk); });
    connect(next, &QPushButton::clicked, this, &BackupWizard::cloudChosen);
    return page;
}

QWidget* BackupWizard::buildEndPage()
{
    auto* page = new QWidget;
    page->setObjectName(QStringLiteral("endebackup"));
    auto* layout = new QVBoxLayout(page);
    layout->addWidget(textLabel(QStringLiteral("Zusammenfassung der Datensicherung:")));
    m_summary = new QPlainTextEdit;
    m_summary->setObjectName(QStringLiteral("zusammenfassung"));
    m_summary->setReadOnly(true);
    layout->addWidget(m_summary, 1);
    const auto [back, next] = navigation(page, layout, Ende);
    next->setText(QStringLiteral("Fertig"));
    connect(back, &QPushButton::clicked, this, [this] { showPage(Erstellen); });
    connect(next, &QPushButton::clicked, this, &QDialog::accept);
    return page;
}

QWidget* BackupWizard::buildRestorePage()
{
    auto* page = new QWidget;
    page->setObjectName(QStringLiteral("backuprettung"));
    auto* layout = new QVBoxLayout(page);
    layout->addWidget(textLabel(QStringLiteral("Wählen Sie das Laufwerk, auf dem die Datensicherung liegt. Markieren Sie dann die neueste "
                                               "Datensicherung: ihr Name endet mit dem Datum als Jahr_Monat_Tag.")));
    m_restoreDrive = new QComboBox;
    m_restoreDrive->setObjectName(QStringLiteral("laufwerkrettung"));
    connect(m_restoreDrive, &QComboBox::currentIndexChanged, this, &BackupWizard::fillArchives);
    layout->addWidget(m_restoreDrive);
    m_archiveWidget = new QListWidget;
    m_archiveWidget->setObjectName(QStringLiteral("backups"));
    layout->addWidget(m_archiveWidget, 1);
    const auto [back, next] = navigation(page, layout, Rettung);
    next->setText(QStringLiteral("Einlesen >"));
    connect(back, &QPushButton::clicked, this, [this] { showPage(Start); });
    connect(next, &QPushButton::clicked, this, &BackupWizard::restoreChosen);
    return page;
}

void BackupWizard::showPage(Page page)
{
    m_tabs->setCurrentIndex(int(page));
    if (auto* next = m_tabs->widget(int(page))->findChild<QPushButton*>(QStringLiteral("comweiter(%1)").arg(int(page))))
        next->setDefault(true); // Return goes on, never to [Abbrechen]
}

QString BackupWizard::driveText(const Drive& drive) const
{
    QString text = drive.displayText();
    if (drive.bytesAvailable)
        text += QStringLiteral("   – %1 frei").arg(sizeText(*drive.bytesAvailable));
    const std::optional<Drive> data = m_drives.driveOf(QFileInfo(m_context.dataFolder).absoluteFilePath());
    if (data && sameDevice(drive, *data))
        text += QStringLiteral("   (Laufwerk der Daten)");
    return text;
}

void BackupWizard::showProgress(int percent, const QString& stage)
{
    m_progress->setValue(percent);
    m_progressText->setText(stage);
}

void BackupWizard::run(const std::function<void(const ProgressFn&)>& work)
{
    m_busy = true;
    m_cancel = false;
    m_tabs->setEnabled(false);
    m_progress->setValue(0);
    m_progress->show();
    // The worker reports through queued calls; the window keeps drawing meanwhile.
    QThread* thread = QThread::create([this, &work] {
        work([this](int percent, const QString& stage) {
            QMetaObject::invokeMethod(this, [this, percent, stage] { showProgress(percent, stage); }, Qt::QueuedConnection);
            return !m_cancel.load();
        });
    });
    QEventLoop loop;
    connect(thread, &QThread::finished, &loop, &QEventLoop::quit);
    thread->start();
    loop.exec();
    thread->wait();
    delete thread;
    QCoreApplication::sendPostedEvents(this, QEvent::MetaCall);
    m_progress->hide();
    m_progressText->clear();
    m_tabs->setEnabled(true);
    m_busy = false;
}

void BackupWizard::startBackup()
{
    m_backup = std::make_unique<BackupSteps>(m_context, m_drives, runner());
    if (!m_backup->begin(m_rotation->isChecked())) {
        m_backup.reset();
        reject();
        return;
    }
    if (const auto stick = m_backup->requestedStick()) {
        m_stickPicture->setPixmap(QPixmap(QDir(m_imagesFolder).filePath(stickImageFile(*stick))));
        m_stickText->setText(QStringLiteral("Gewünscht: der USB-Stick mit dem Namen %1.").arg(stickVolumeName(*stick)));
        m_stickPicture->show();
    } else {
        m_stickPicture->hide();
        m_stickText->setText(QStringLiteral("Externer Datenträger (USB-Stick oder externe Festplatte)."));
    }
    fillDrives();
    showPage(Laufwerk);
}

void BackupWizard::fillDrives()
{
    if (!m_backup)
        return;
    m_driveList = m_backup->drives();
    m_driveWidget->clear();
    for (const Drive& d : m_driveList)
        m_driveWidget->addItem(driveText(d));
    const int proposed = m_backup->proposedDrive(m_driveList);
    if (proposed >= 0)
        m_driveWidget->setCurrentRow(proposed);
}

void BackupWizard::driveSelected()
{
    const int row = m_driveWidget->currentRow();
    if (m_backup && row >= 0 && row < m_driveList.size())
        m_backup->checkReachable(m_driveList[row]);
}

void BackupWizard::driveChosen()
{
    const int row = m_driveWidget->currentRow();
    std::optional<Drive> drive;
    if (row >= 0 && row < m_driveList.size() && m_driveWidget->currentItem() && m_driveWidget->currentItem()->isSelected())
        drive = m_driveList[row];
    if (!m_backup->chooseDrive(drive))
        return;
    showPage(Cloud); // every choice before the work: the archive holds them
}

void BackupWizard::createBackup()
{
    m_backup->createArchive();
    m_backup->copyToDrive();
    m_backup->copyToCloud();
    for (const char* name : {"comzurueck(2)", "comweiter(2)"})
        findChild<QPushButton*>(QString::fromLatin1(name))->setEnabled(true);
    m_createText->setText(m_backup->summary().mid(3).join(u'\n') + QStringLiteral("\n\nKlicken Sie auf [Weiter]."));
}

void BackupWizard::cloudChosen()
{
    m_backup->chooseCloudFolder(QDir::fromNativeSeparators(m_cloudFolder->text()));
    m_createText->setText(QStringLiteral("Die Datensicherung wird erstellt, geprüft und kopiert. Bitte warten Sie..."));
    showPage(Erstellen);
    for (const char* name : {"comzurueck(2)", "comweiter(2)"})
        findChild<QPushButton*>(QString::fromLatin1(name))->setEnabled(false);
    QTimer::singleShot(0, this, &BackupWizard::createBackup);
}

void BackupWizard::startRestore()
{
    m_restore = std::make_unique<RestoreSteps>(m_context, m_drives, runner());
    m_restore->begin();
    m_restoreDrives = m_restore->drives();
    const QSignalBlocker block(m_restoreDrive);
    m_restoreDrive->clear();
    for (const Drive& d : m_restoreDrives)
        m_restoreDrive->addItem(driveText(d));
    m_restoreDrive->setCurrentIndex(m_restoreDrives.isEmpty() ? -1 : 0);
    fillArchives();
    showPage(Rettung);
}

void BackupWizard::fillArchives()
{
    m_archiveWidget->clear();
    m_archives.clear();
    const int index = m_restoreDrive->currentIndex();
    if (!m_restore || index < 0 || index >= m_restoreDrives.size())
        return;
    m_archives = m_restore->archivesOn(m_restoreDrives[index]);
    for (const ArchiveInfo& a : m_archives)
        m_archiveWidget->addItem(QStringLiteral("%1   (%2, %3)").arg(a.fileName, formatGermanDate(a.date), sizeText(a.size)));
}

void BackupWizard::restoreChosen()
{
    std::optional<ArchiveInfo> chosen;
    const int row = m_archiveWidget->currentRow();
    if (row >= 0 && row < m_archives.size() && m_archiveWidget->currentItem()->isSelected())
        chosen = m_archives[row];
    if (!m_restore->restore(chosen))
        return;
    m_restoreStaged = true;
    accept();
}

void BackupWizard::done(int result)
{
    if (m_busy)
        return;
    if (m_backup && m_backup->archiveCreated()) {
        m_backup->closing();
        m_backup.reset();
    }
    QDialog::done(result);
}

void BackupWizard::closeEvent(QCloseEvent* event)
{
    if (m_busy) {
        m_cancel = true;
        event->ignore();
        return;
    }
    QDialog::closeEvent(event);
}

} // namespace tarvik
