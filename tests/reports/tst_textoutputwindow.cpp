// AF_Textausgabe through its controls, headless.
#include "common/textfile.h"
#include "reports/ui/textoutputwindow.h"
#include "support/tempdatafolder.h"
#include "support/widgets.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QFile>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>

using namespace tarvik;
using test::child;
using test::typeInto;

class TestTextOutputWindow : public QObject {
    Q_OBJECT
    test::TempDataFolder m_folder;
    Einstellungen m_settings = EinstellungenLaden(QString());
    FixedClock m_clock{QDate(2026, 11, 21)};
    test::ScriptedPrompter m_prompter;
    QSqlDatabase m_db;

    AppContext context() { return {m_db, m_settings, m_folder.path(), m_prompter, m_clock}; }

private slots:
    void init()
    {
        m_prompter.clear();
        QFile::remove(reportFilePath(m_folder.path()));
    }

    void missingReportFile()
    {
        TextOutputWindow w(context());
        QCOMPARE(m_prompter.messages().last(), missingReportMessage(reportFilePath(m_folder.path())));
        QVERIFY(child<QPlainTextEdit>(w, "t")->toPlainText().isEmpty());
    }

    void showsTheReportAndKeepsItsSettings()
    {
        QVERIFY(writeTextFile(reportFilePath(m_folder.path()), {QStringLiteral("HIEBDATEN"), QStringLiteral("Hieb-Nr:         41")}).ok);
        m_settings.zahl[20] = 49; // out of range: shown as 10
        m_settings.zahl[22] = 35; // shown and used as 20
        TextOutputWindow w(context());
        QVERIFY(m_prompter.messages().isEmpty()); // Liberation Mono or Courier: no font hint
        QCOMPARE(w.windowTitle(), QStringLiteral("Listen-Ausgabe ") + reportFilePath(m_folder.path()));
        QCOMPARE(child<QPlainTextEdit>(w, "t")->toPlainText(), QStringLiteral("HIEBDATEN\nHieb-Nr:         41\n"));
        QCOMPARE(child<QLineEdit>(w, "gr_e")->text(), QStringLiteral("10"));
        QCOMPARE(child<QLineEdit>(w, "tz")->text(), QStringLiteral("20"));
        QVERIFY(isFixedPitchName(child<QComboBox>(w, "kom")->currentText()));
        QCOMPARE(child<QComboBox>(w, "komdrucker")->findText(TextOutputWindow::pdfPrinterEntry()) >= 0, true);

        for (int i = 0; i < 5; ++i)
            child<QPushButton>(w, "plus5(0)")->click();
        QCOMPARE(child<QLineEdit>(w, "gr_e")->text(), QStringLiteral("30"));
        child<QPushButton>(w, "plus1(1)")->click();
        QCOMPARE(child<QLineEdit>(w, "gr_e")->text(), QStringLiteral("29"));
        child<QRadioButton>(w, "druckformat(0)")->click();
        child<QCheckBox>(w, "kon(0)")->click();
        child<QPushButton>(w, "abbv")->click();

        QCOMPARE(m_settings.zahl[20], qint16(29));
        QCOMPARE(m_settings.zahl[18], qint16(1));
        QCOMPARE(m_settings.zahl[23], qint16(1));
        QCOMPARE(m_settings.zahl[22], qint16(20));
        QCOMPARE(EinstellungenLaden(m_folder.filePath(QLatin1String(SettingsFileName))).zahl[20], qint16(29));
    }

    void printFileIntoPdfAndSaveACopy()
    {
        QVERIFY(writeTextFile(reportFilePath(m_folder.path()), {QStringLiteral("Zeile 1"), QStringLiteral("#"), QStringLiteral("Zeile 2")}).ok);
        TextOutputWindow w(context());
        child<QComboBox>(w, "komdrucker")->setCurrentText(TextOutputWindow::pdfPrinterEntry());
        const QString pdf = m_folder.filePath(QStringLiteral("ausgabe.pdf"));
        m_prompter.answerText(pdf);
        child<QPushButton>(w, "dateidrucken")->click();
        QVERIFY(QFile::exists(pdf));

        const QString copy = m_folder.filePath(QStringLiteral("kopie.txt"));
        m_prompter.answerText(copy);
        child<QPushButton>(w, "comspeichern")->click();
        QCOMPARE(readTextFile(copy).lines, (QStringList{QStringLiteral("Zeile 1"), QStringLiteral("#"), QStringLiteral("Zeile 2")}));

        // "Text drucken" takes the box, edits included.
        child<QPlainTextEdit>(w, "t")->setPlainText(QStringLiteral("geändert"));
        m_prompter.answerText(m_folder.filePath(QStringLiteral("text.pdf")));
        child<QPushButton>(w, "drucken")->click();
        QCOMPARE(readTextFile(m_folder.filePath(QStringLiteral("DRUCKAUF.TXT"))).lines, QStringList{QStringLiteral("geändert")});
    }
};

TARVIK_TEST_MAIN(TestTextOutputWindow)
#include "tst_textoutputwindow.moc"
