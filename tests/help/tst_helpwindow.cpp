// Help buttons of every window open the window's topic in FH_Hilfe.
#include "help/ui/helpbuttons.h"
#include "help/ui/helpwindow.h"
#include "support/scriptedprompter.h"
#include "support/tempdatafolder.h"

#include <QApplication>
#include <QDialog>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTimer>
#include <QtTest>

using namespace tarvik;

class TestHelpWindow : public QObject {
    Q_OBJECT

private slots:
    void windowNamesBecomeTopicKeys()
    {
        QCOMPARE(helpTopicOfWindow(QStringLiteral("EF_Eingabe_Stämme")), QStringLiteral("EF_Eingabe_Staemme"));
        QCOMPARE(helpTopicOfWindow(QStringLiteral("EF_Eingabe_Pfähle")), QStringLiteral("EF_Eingabe_Pfaehle"));
        QCOMPARE(helpTopicOfWindow(QStringLiteral("FH_Hiebeingabe")), QStringLiteral("FH_Hiebeingabe"));
    }

    void aDisabledHelpButtonIsSwitchedOnAndOpensTheTopic()
    {
        test::ScriptedPrompter prompter;
        HelpButtons filter(prompter);
        qApp->installEventFilter(&filter);
        QDialog window;
        window.setObjectName(QStringLiteral("EF_Eingabe_Stämme"));
        auto* help = new QPushButton(QStringLiteral("&Hilfe"), &window);
        help->setObjectName(QStringLiteral("comhilfe"));
        help->setEnabled(false);
        window.show();
        QVERIFY(help->isEnabled());

        QString title, text;
        QTimer::singleShot(0, [&] {
            auto* shown = qobject_cast<QDialog*>(QApplication::activeModalWidget());
            QVERIFY(shown);
            QCOMPARE(shown->objectName(), QStringLiteral("FH_Hilfe"));
            title = shown->findChild<QLabel*>(QStringLiteral("titel"))->text();
            text = shown->findChild<QPlainTextEdit*>(QStringLiteral("text"))->toPlainText();
            shown->findChild<QPushButton*>(QStringLiteral("ok"))->click();
        });
        help->click();
        qApp->removeEventFilter(&filter);
        QVERIFY2(!title.isEmpty(), "the log window's topic has a title");
        QVERIFY(text.size() > 200);
        QVERIFY(prompter.messages().isEmpty());
    }
};

TARVIK_TEST_MAIN(TestHelpWindow)
#include "tst_helpwindow.moc"
