// The help file reader, and every window of the program that has a help button opens a topic of
// its own, naming only controls the window has. The keys come from the windows themselves: each
// window class is built and shown, and the help button the program's filter switched on is clicked.
#include "app/main/mainwindow.h"
#include "backup/fakedrives.h"
#include "backup/ui/backupwizard.h"
#include "common/folders.h"
#include "common/textfile.h"
#include "devices/ui/logwindowimports.h"
#include "entry/ui/harvestdialog.h"
#include "entry/ui/hubdialog.h"
#include "entry/ui/logdialog.h"
#include "entry/ui/lotdialog.h"
#include "entry/ui/poledialog.h"
#include "entry/ui/stackdialog.h"
#include "exchange/ui/importdialog.h"
#include "harvests/ui/selectiondialog.h"
#include "help/helpfile.h"
#include "help/ui/helpbuttons.h"
#include "invoices/ui/invoicedialog.h"
#include "maintenance/ui/takeoverdialog.h"
#include "masterdata/ui/lookuplistdialog.h"
#include "masterdata/ui/masterdatahub.h"
#include "reports/lists/members.h"
#include "reports/reportfile.h"
#include "reports/ui/lists/listdialog.h"
#include "reports/ui/lists/timberlistdialog.h"
#include "reports/ui/lotmapdialog.h"
#include "reports/ui/textoutputwindow.h"
#include "settings/ui/settingsdialog.h"
#include "support/records.h"
#include "support/tempdatafolder.h"

#include <QAction>
#include <QApplication>
#include <QDialog>
#include <QDirIterator>
#include <QGroupBox>
#include <QLabel>
#include <QMenu>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRegularExpression>
#include <QTabWidget>
#include <QTimer>
#include <QtTest>
#include <functional>
#include <memory>

using namespace tarvik;

using WindowMaker = std::function<std::unique_ptr<QDialog>()>;
Q_DECLARE_METATYPE(WindowMaker)

namespace {

struct Shown {
    QString window; // objectName of the window the help was opened in
    QString title;
    QString text;
};

// Clicks the trigger and reads the help window it opens; empty when none opened.
Shown openedHelp(const std::function<void()>& trigger)
{
    Shown shown;
    QTimer::singleShot(0, [&shown] {
        auto* help = qobject_cast<QDialog*>(QApplication::activeModalWidget());
        if (!help || help->objectName() != u"FH_Hilfe")
            return;
        shown.window = help->objectName();
        shown.title = help->findChild<QLabel*>(QStringLiteral("titel"))->text();
        shown.text = help->findChild<QPlainTextEdit*>(QStringLiteral("text"))->toPlainText();
        help->findChild<QPushButton*>(QStringLiteral("ok"))->click();
    });
    trigger();
    return shown;
}

QString plainCaption(QString caption)
{
    caption.remove(u'&');
    caption = caption.trimmed();
    while (caption.endsWith(u'.') || caption.endsWith(u':'))
        caption.chop(1);
    return caption.trimmed();
}

// What a user reads on a window's controls: buttons, boxes, labels, frames, tabs, menu items.
QSet<QString> captionsOf(const QWidget& window)
{
    QSet<QString> captions;
    auto add = [&captions](const QString& text) {
        for (const QString& line : text.split(u'\n'))
            if (!plainCaption(line).isEmpty())
                captions << plainCaption(line);
    };
    for (auto* b : window.findChildren<QAbstractButton*>())
        add(b->text());
    for (auto* l : window.findChildren<QLabel*>())
        add(l->text());
    for (auto* g : window.findChildren<QGroupBox*>())
        add(g->title());
    for (auto* t : window.findChildren<QTabWidget*>())
        for (int i = 0; i < t->count(); ++i)
            add(t->tabText(i));
    for (auto* a : window.findChildren<QAction*>())
        add(a->text());
    return captions;
}

// Controls are written "[Caption]" in the help file; each must be a control of the window.
QStringList unknownControls(const QString& text, const QSet<QString>& captions)
{
    QStringList unknown;
    static const QRegularExpression control(QStringLiteral("\\[([^\\]]+)\\]"));
    for (const QRegularExpressionMatch& m : control.globalMatch(text))
        if (!captions.contains(plainCaption(m.captured(1))))
            unknown << m.captured(1);
    return unknown;
}

// The classes whose source files build a help button, read from the sources.
QStringList classesWithHelpButtons()
{
    QStringList classes;
    static const QRegularExpression constructor(QStringLiteral("^(\\w+)::\\1\\("), QRegularExpression::MultilineOption);
    QDirIterator it(QStringLiteral(TARVIK_SOURCE_DIR), {QStringLiteral("*.cpp")}, QDir::Files, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        QFile file(it.next());
        if (!file.open(QIODevice::ReadOnly))
            qFatal("%s cannot be read", qPrintable(file.fileName()));
        const QString source = QString::fromUtf8(file.readAll());
        if (!source.contains(QLatin1String("QStringLiteral(\"hilfe\")")) && !source.contains(QLatin1String("QStringLiteral(\"comhilfe\")")))
            continue;
        for (const QRegularExpressionMatch& m : constructor.globalMatch(source))
            classes << QStringLiteral("tarvik::") + m.captured(1);
    }
    return classes;
}

} // namespace

class TestHelpTopics : public QObject {
    Q_OBJECT
    test::TempDataFolder m_folder;
    test::ScriptedPrompter m_prompter;
    std::unique_ptr<Session> m_session;
    FixedClock m_clock{QDate(2026, 11, 21)};
    qint32 m_harvest = 0;
    QSet<QString> m_coveredClasses;
    QHash<QString, QString> m_windowOfTopic; // topic text → the window that showed it
    HelpButtons m_helpButtons{m_prompter};

    AppContext context() { return {m_session->database->shared(), m_session->settings, m_folder.path(), m_prompter, m_clock}; }

    static void addWindow(const WindowMaker& make)
    {
        const std::unique_ptr<QDialog> probe = make();
        QTest::newRow(qPrintable(probe->objectName())) << QVariant::fromValue(make);
    }

private slots:
    void initTestCase()
    {
        offerLogImports(deviceLogImports()); // as the desktop program starts
        m_session = m_folder.start(m_prompter);
        m_harvest = test::addHarvest(m_session->database->shared(), 7);
        test::addLot(m_session->database->shared(), m_harvest, 1);
        m_prompter.clear();
        qApp->installEventFilter(&m_helpButtons);
    }

    void topics_data()
    {
        QTest::addColumn<QString>("key");
        QTest::addColumn<QString>("title");
        QTest::addColumn<QString>("text");
        QTest::newRow("first topic") << QStringLiteral("Hilfe_Hiebe") << QStringLiteral("Hiebe") << QStringLiteral("Zeile 1\nZeile 2\n");
        QTest::newRow("title only") << QStringLiteral("FH_Hilfe") << QStringLiteral("Nur Titel") << QString();
        QTest::newRow("unknown key shows an empty window") << QStringLiteral("Hilfe_Gibtsnicht") << QString() << QString();
        QTest::newRow("key must match the whole line") << QStringLiteral("Hilfe") << QString() << QString();
        QTest::newRow("an empty key is no blank line's topic") << QString() << QString() << QString();
        QTest::newRow("without #ende# to the end of the file") << QStringLiteral("Hilfe_Letzte") << QStringLiteral("Letzte")
                                                              << QStringLiteral("bis zum Schluss\nÄußerst wichtig\n");
    }
    void topics()
    {
        QFETCH(QString, key);
        QVERIFY(writeTextFile(m_folder.filePath(QLatin1String(HelpFileName)),
                              {QStringLiteral("vorher"), QStringLiteral("Hilfe_Hiebe"), QStringLiteral("Hiebe"), QStringLiteral("Zeile 1"),
                               QStringLiteral("Zeile 2"), QStringLiteral("#ende#"), QString(), QStringLiteral("FH_Hilfe"), QStringLiteral("Nur Titel"),
                               QStringLiteral("#ende#"), QStringLiteral("Hilfe_Letzte"), QStringLiteral("Letzte"),
                               QStringLiteral("bis zum Schluss"), QStringLiteral("Äußerst wichtig")})
                    .ok);
        const HelpTopic topic = readHelpTopic(m_folder.path(), key);
        QVERIFY(topic.fileFound);
        QTEST(topic.title, "title");
        QTEST(topic.text, "text");
    }

    void aMissingFileIsSaid()
    {
        QTemporaryDir empty;
        const HelpTopic topic = readHelpTopic(empty.path(), QStringLiteral("Hilfe_Hiebe"));
        QVERIFY(!topic.fileFound);
        QCOMPARE(topic.missingFileMessage,
                 QStringLiteral("Die Hilfedatei %1%2HILFETARVIK.HLP existiert nicht!").arg(QDir::toNativeSeparators(empty.path()), QDir::separator()));
    }

    // Each item of the menu "Hilfe" opens its topic, and the topic names only what the main
    // window shows.
    void mainMenuTopics()
    {
        MainWindow w(*m_session, m_prompter, m_clock);
        const QSet<QString> captions = captionsOf(w);
        const QList<QAction*> items = w.findChild<QMenu*>(QStringLiteral("H_Hilfe"))->actions();
        QVERIFY(items.size() >= 8);
        for (QAction* item : items) {
            const Shown shown = openedHelp([item] { item->trigger(); });
            QVERIFY2(!shown.title.isEmpty() && shown.text.size() > 200, qPrintable(item->text()));
            const QStringList unknown = unknownControls(shown.text, captions);
            QVERIFY2(unknown.isEmpty(), qPrintable(item->text() + QStringLiteral(": ") + unknown.join(QStringLiteral(", "))));
        }
        QVERIFY(m_prompter.messages().isEmpty());
    }

    void windowTopics_data()
    {
        QTest::addColumn<QVariant>("make");
        using Ptr = std::unique_ptr<QDialog>;
        addWindow([this]() -> Ptr { return std::make_unique<HarvestDialog>(context(), std::nullopt); });
        addWindow([this]() -> Ptr { return std::make_unique<HubDialog>(context(), m_harvest, HubList::Lose); });
        addWindow([this]() -> Ptr { return std::make_unique<LotDialog>(context(), m_harvest, std::nullopt); });
        addWindow([this]() -> Ptr { return std::make_unique<LogDialog>(context(), m_harvest, std::nullopt, 1); });
        addWindow([this]() -> Ptr { return std::make_unique<PoleDialog>(context(), m_harvest, std::nullopt); });
        addWindow([this]() -> Ptr { return std::make_unique<StackDialog>(context(), m_harvest, std::nullopt); });
        addWindow([this]() -> Ptr { return std::make_unique<InvoiceDialog>(context(), InvoiceDialog::Mode::Neu); });
        addWindow([this]() -> Ptr { return std::make_unique<SelectionDialog>(m_session->database->shared(), m_prompter); });
        addWindow([this]() -> Ptr { return std::make_unique<ImportDialog>(context(), false); });
        addWindow([this]() -> Ptr {
            return std::make_unique<SettingsDialog>(m_session->settings, m_session->settingsPath(), m_prompter);
        });
        addWindow([this]() -> Ptr {
            return std::make_unique<TakeoverDialog>(m_prompter, [](const QString&) { return TakeoverResult{}; });
        });
        addWindow([this]() -> Ptr { return std::make_unique<MasterDataHub>(context()); });
        addWindow([this]() -> Ptr { return std::make_unique<LookupListDialog>(context()); });
        addWindow([this]() -> Ptr {
            static test::FakeDrives drives;
            return std::make_unique<BackupWizard>(context(), drives, shareFolder() + QStringLiteral("backup"));
        });
        addWindow([this]() -> Ptr {
            writeTextFile(reportFilePath(m_folder.path()), {QStringLiteral("Liste")}); // the window shows the last report
            return std::make_unique<TextOutputWindow>(context());
        });
        for (const lists::MemberDef& def : lists::members())
            addWindow([this, m = def.member]() -> Ptr { return std::make_unique<ListDialog>(context(), m, m_harvest, false); });
        addWindow([this]() -> Ptr { return std::make_unique<TimberListDialog>(context(), m_harvest); });
        addWindow([this]() -> Ptr { return std::make_unique<LotMapDialog>(context(), m_harvest); });
    }

    void windowTopics()
    {
        QFETCH(QVariant, make);
        m_prompter.clear();
        std::unique_ptr<QDialog> window = make.value<WindowMaker>()();
        m_coveredClasses << QString::fromLatin1(window->metaObject()->className());
        for (const QMetaObject* m = window->metaObject()->superClass(); m; m = m->superClass())
            m_coveredClasses << QString::fromLatin1(m->className());

        QPushButton* button = window->findChild<QPushButton*>(QStringLiteral("hilfe"));
        if (!button)
            button = window->findChild<QPushButton*>(QStringLiteral("comhilfe"));
        QVERIFY2(button, "the window has a help button");
        window->show();
        QVERIFY(button->isEnabled());

        const Shown shown = openedHelp([button] { button->click(); });
        QCOMPARE(shown.window, QStringLiteral("FH_Hilfe"));
        // The window's own topic, not a general one.
        const HelpTopic own = readHelpTopic(shareFolder(), helpTopicOfWindow(window->objectName()));
        QVERIFY2(!own.title.isEmpty(), qPrintable(helpTopicOfWindow(window->objectName())));
        QCOMPARE(shown.title, own.title);
        QVERIFY2(shown.text.size() > 200, qPrintable(QString::number(shown.text.size())));
        QVERIFY2(!m_windowOfTopic.contains(shown.text), qPrintable(QStringLiteral("dasselbe Thema wie ") + m_windowOfTopic.value(shown.text)));
        m_windowOfTopic.insert(shown.text, window->objectName());
        QVERIFY(!shown.text.contains(u'\uFFFD'));

        const QSet<QString> captions = captionsOf(*window);
        const QStringList unknown = unknownControls(shown.text, captions);
        QVERIFY2(unknown.isEmpty(), qPrintable(QStringLiteral("nicht im Fenster: %1\nim Fenster: %2")
                                                   .arg(unknown.join(QStringLiteral(", ")), QStringList(captions.values()).join(QStringLiteral(" | ")))));
        QVERIFY2(m_prompter.messages().isEmpty(), qPrintable(m_prompter.messages().join(u'\n')));
    }

    // A window class that builds a help button and is missing above would go without this test.
    void everyWindowWithAHelpButtonIsCovered()
    {
        const QStringList classes = classesWithHelpButtons();
        QVERIFY(classes.size() >= 10);
        for (const QString& c : classes)
            QVERIFY2(m_coveredClasses.contains(c), qPrintable(c));
    }
};

TARVIK_TEST_MAIN(TestHelpTopics)
#include "tst_helptopics.moc"
