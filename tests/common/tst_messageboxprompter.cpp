// The desktop program's questions: Return on a question that destroys data answers No.
#include "common/ui/messageboxprompter.h"
#include "support/tempdatafolder.h"

#include <QApplication>
#include <QMessageBox>
#include <QPushButton>
#include <QTimer>

using namespace tarvik;

class TestMessageBoxPrompter : public QObject {
    Q_OBJECT

    // Presses Return in the message box that is about to open; returns its default button's text.
    static void pressReturnWhenShown(QString* defaultText)
    {
        QTimer::singleShot(0, [defaultText] {
            auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
            QVERIFY(box);
            if (QPushButton* b = box->defaultButton())
                *defaultText = b->text();
            QTest::keyClick(box, Qt::Key_Return);
        });
    }

private slots:
    void returnAnswersNoToADestructiveQuestion()
    {
        MessageBoxPrompter prompter;
        QString defaultText;
        pressReturnWhenShown(&defaultText);
        QVERIFY(!prompter.confirmDestructive(QStringLiteral("Soll der markierte Datensatz wirklich gelöscht werden?")));
        QCOMPARE(defaultText, QStringLiteral("&Nein"));
    }
};

TARVIK_TEST_MAIN(TestMessageBoxPrompter)
#include "tst_messageboxprompter.moc"
