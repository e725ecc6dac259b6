// Qt's own dialogs speak German once the program has loaded Qt's German catalogue.
#include "common/germanlocale.h"
#include "support/tempdatafolder.h"

#include <QApplication>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QMessageBox>
#include <QPushButton>

using namespace tarvik;

class TestQtTranslations : public QObject {
    Q_OBJECT
private slots:
    void initTestCase() { QVERIFY(installGermanQtTranslations()); }

    void messageBoxButtons_data()
    {
        QTest::addColumn<int>("button");
        QTest::addColumn<QString>("text");
        QTest::newRow("Cancel") << int(QMessageBox::Cancel) << QStringLiteral("Abbrechen");
        QTest::newRow("Yes") << int(QMessageBox::Yes) << QStringLiteral("&Ja");
        QTest::newRow("No") << int(QMessageBox::No) << QStringLiteral("&Nein");
        QTest::newRow("Save") << int(QMessageBox::Save) << QStringLiteral("Speichern");
    }
    void messageBoxButtons()
    {
        QFETCH(int, button);
        QFETCH(QString, text);
        QMessageBox box;
        box.setStandardButtons(QMessageBox::StandardButton(button));
        QCOMPARE(box.button(QMessageBox::StandardButton(button))->text(), text);
    }

    void saveDialog()
    {
        QFileDialog dialog;
        dialog.setOption(QFileDialog::DontUseNativeDialog);
        dialog.setAcceptMode(QFileDialog::AcceptSave);
        dialog.show();
        QCOMPARE(dialog.windowTitle(), QStringLiteral("Speichern unter"));
        auto* buttons = dialog.findChild<QDialogButtonBox*>();
        QVERIFY(buttons);
        QCOMPARE(buttons->button(QDialogButtonBox::Cancel)->text(), QStringLiteral("Abbrechen"));
        QCOMPARE(dialog.labelText(QFileDialog::Accept), QStringLiteral("S&peichern"));
        dialog.close();
    }
};

TARVIK_TEST_MAIN(TestQtTranslations)
#include "tst_qttranslations.moc"
