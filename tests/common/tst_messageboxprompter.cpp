// The desktop's questions: Enter answers No, the buttons are German.
#include "common/ui/messageboxprompter.h"
#include "support/tempdatafolder.h"

#include <QApplication>
#include <QMessageBox>
#include <QPushButton>
#include <QTimer>
#include <QtTest>

using namespace tarvik;

class TestMessageBoxPrompter : public QObject {
    Q_OBJECT

private slots:
    void enterAnswersNo()
    {
        MessageBoxPrompter prompter;
        QStringList buttons;
        QTimer::singleShot(0, [&] {
            auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
            QVERIFY(box);
            for (QAbstractButton* b : box->buttons())
                buttons << b->text();
            QCOMPARE(box->defaultButton(), box->button(QMessageBox::No));
            QTest::keyClick(box, Qt::Key_Return);
        });
        QVERIFY(!prompter.askYesNo(QStringLiteral("Soll der markierte Datensatz wirklich gelöscht werden?")));
        buttons.sort();
        QCOMPARE(buttons, (QStringList{QStringLiteral("&Ja"), QStringLiteral("&Nein")}));
    }
};

TARVIK_TEST_MAIN(TestMessageBoxPrompter)
#include "tst_messageboxprompter.moc"
