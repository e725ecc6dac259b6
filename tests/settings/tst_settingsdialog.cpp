// OF_Einstellungen driven through its controls, headless.
#include "settings/ui/settingsdialog.h"
#include "support/tempdatafolder.h"
#include "support/widgets.h"

#include <QDir>
#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTemporaryDir>

using namespace tarvik;
using test::child;
using test::typeInto;

class TestSettingsDialog : public QObject {
    Q_OBJECT

    test::TempDataFolder m_dir;
    QString path() const { return m_dir.filePath(QLatin1String(SettingsFileName)); }

    // Replaces the field's text key by key, as a user does.
    static void typeOnly(QLineEdit* edit, const QString& text)
    {
        edit->selectAll();
        QTest::keyClick(edit, Qt::Key_Backspace);
        QTest::keyClicks(edit, text);
    }
    // ... and then leaves the field.
    static void typeInto(QLineEdit* edit, const QString& text)
    {
        typeOnly(edit, text);
        emit edit->editingFinished();
    }

private slots:
    void couplings()
    {
        Einstellungen s = EinstellungenLaden(path());
        test::ScriptedPrompter prompter;
        SettingsDialog d(s, path(), prompter);
        // Each click and the ticks of the five boxes after it: the diameter jump clears the first
        // two, either of them clears it in turn; two and three digits exclude each other.
        const char* boxes[] = {"koneingabe0", "konruecklnr", "konstaerke", "konzweistellig(0)", "konzweistellig(1)"};
        const std::pair<int, const char*> steps[] = {{0, "10000"}, {1, "11000"}, {2, "00100"}, {0, "10100"},
                                                     {1, "11000"}, {3, "11010"}, {4, "11001"}, {3, "11010"}};
        for (const auto& [box, ticks] : steps) {
            child<QCheckBox>(d, boxes[box])->click();
            QString shown;
            for (const char* b : boxes)
                shown += child<QCheckBox>(d, b)->isChecked() ? u'1' : u'0';
            QCOMPARE(shown, QString::fromLatin1(ticks));
        }
        QVERIFY(prompter.messages().isEmpty());
        child<QCheckBox>(d, "kondefaultok")->click();
        QCOMPARE(prompter.messages().size(), 1);
        QVERIFY(prompter.messages().first().startsWith(QStringLiteral("Durch die Aktivierung dieses Kontrollfeldes")));
        child<QCheckBox>(d, "kondefaultok")->click(); // unchecking says nothing
        QCOMPARE(prompter.messages().size(), 1);
    }

    void separatorChoice()
    {
        Einstellungen s = EinstellungenLaden(path());
        test::ScriptedPrompter prompter;
        SettingsDialog d(s, path(), prompter);
        auto* combo = child<QComboBox>(d, "kom");
        auto* field = child<QLineEdit>(d, "t(3)");
        const std::pair<int, QString> cases[] = {{1, " "}, {2, "  "}, {3, "|"}, {6, " ; "}, {8, " : "}, {0, " : "}};
        for (const auto& [index, expected] : cases) {
            combo->setCurrentIndex(index);
            emit combo->activated(index);
            QCOMPARE(field->text(), expected);
        }
    }

    // The corrections of each field's rule as the user leaves the field.
    void correctionsOnLeavingAField()
    {
        Einstellungen s = EinstellungenLaden(path());
        test::ScriptedPrompter prompter;
        SettingsDialog d(s, path(), prompter);
        const std::tuple<const char*, QString, QString> cases[] = {
            {"t(3)", "", " | "},   {"t(3)", " ", " "},          {"t(2)", "1", "3"},          {"t(2)", "x", "3"},
            {"t(2)", "3", "3"},    {"t(1)", "10", "30"},        {"t(1)", "60", "60"},        {"t(8)", "95", "80"},
            {"t(8)", "80", "80"},  {"t(4)", "0,95", "0,900"},   {"t(4)", "0,1", "0,500"},    {"t(4)", "0,675", "0,675"},
            {"t(5)", "0,95", "0,95"}, {"t(6)", "1,2", "1,2"}};
        for (const auto& [name, typed, expected] : cases) {
            typeInto(child<QLineEdit>(d, name), typed);
            QCOMPARE(child<QLineEdit>(d, name)->text(), expected);
        }
    }

    // Only a field the user edited is corrected: passing through a field, or never touching
    // it, leaves its stored value alone.
    void untouchedFieldsAreNotCorrected()
    {
        QFile::remove(path());
        Einstellungen s = EinstellungenLaden(path());
        s.zahl[59] = 95; // beyond the dialog's limit, set by an older version
        test::ScriptedPrompter prompter;
        SettingsDialog d(s, path(), prompter);
        QCOMPARE(child<QLineEdit>(d, "t(1)")->text(), QStringLiteral("0"));
        emit child<QLineEdit>(d, "t(8)")->editingFinished(); // tabbed through without typing
        child<QPushButton>(d, "beenden")->click();
        QCOMPARE(d.result(), int(QDialog::Accepted));
        QCOMPARE(s.zahl[21], qint16(0));
        QCOMPARE(s.zahl[59], qint16(95));
        QCOMPARE(EinstellungenLaden(path()).zahl[21], qint16(0));
    }

    // The dialog shows the slots of the settings, and Beenden stores what was changed.
    void showsAndStoresTheSlots()
    {
        QFile::remove(path());
        Einstellungen s = EinstellungenLaden(path());
        s.zahl[46] = 2;
        s.zahl[4] = 4;
        s.zahl[57] = 1;
        s.zahl[99] = 7; // a slot the dialog does not show is written back unchanged
        s.text[1] = QStringLiteral("Forstbetrieb");
        test::ScriptedPrompter prompter;
        SettingsDialog d(s, path(), prompter);
        QVERIFY(child<QRadioButton>(d, "opticom(2)")->isChecked());
        QVERIFY(child<QRadioButton>(d, "optiberi(4)")->isChecked());
        QVERIFY(child<QCheckBox>(d, "konlnrlos")->isChecked());
        QVERIFY(!child<QCheckBox>(d, "konbeep")->isChecked());
        const std::pair<const char*, const char*> shown[] = {{"t(4)", "0,700"}, {"t(5)", "0,650"}, {"t(2)", "14"}, {"t(3)", " | "},
                                                             {"t(0)", "Forstbetrieb"}};
        for (const auto& [name, text] : shown)
            QCOMPARE(child<QLineEdit>(d, name)->text(), QString::fromUtf8(text));

        child<QCheckBox>(d, "konbeep")->click();
        child<QCheckBox>(d, "kon(3)")->click();
        child<QRadioButton>(d, "opticom(8)")->click();
        child<QRadioButton>(d, "optiberi(3)")->click();
        typeInto(child<QLineEdit>(d, "t(4)"), QStringLiteral("0,675"));
        typeInto(child<QLineEdit>(d, "t(7)"), QStringLiteral("10,5"));
        typeInto(child<QLineEdit>(d, "t(2)"), QStringLiteral("21"));
        typeInto(child<QLineEdit>(d, "t(0)"), QStringLiteral("Gemeinde O'Brien"));
        child<QComboBox>(d, "komschnittstelle")->setEditText(QStringLiteral("/dev/ttyUSB0"));
        typeInto(child<QLineEdit>(d, "tonlineserver"), QStringLiteral("dienst.example"));
        typeOnly(child<QLineEdit>(d, "t(1)"), QStringLiteral("12")); // still in the field when Beenden is pressed
        child<QPushButton>(d, "beenden")->click();

        QCOMPARE(d.result(), int(QDialog::Accepted));
        QCOMPARE(s.zahl[24], qint16(1));
        QCOMPARE(s.zahl[50], qint16(1));
        QCOMPARE(s.zahl[46], qint16(8));
        QCOMPARE(s.zahl[4], qint16(3));
        QCOMPARE(s.zahl[54], qint16(10)); // half to even
        QCOMPARE(s.zahl[17], qint16(21));
        QCOMPARE(s.zahl[21], qint16(30));
        QCOMPARE(s.dezimal[0], 0.675f);
        QCOMPARE(s.text[1], QStringLiteral("Gemeinde O'Brien"));
        QCOMPARE(s.text[SerialDeviceSlot], QStringLiteral("/dev/ttyUSB0"));
        QCOMPARE(s.text[OnlineHostSlot], QStringLiteral("dienst.example"));

        const Einstellungen stored = EinstellungenLaden(path());
        QCOMPARE(stored.zahl, s.zahl);
        QCOMPARE(stored.dezimal[0], 0.68f); // the file keeps two decimals
        QCOMPARE(stored.text, s.text);
        QCOMPARE(stored.zahl[99], qint16(7));
    }

    // The data folder is refused as the handheld folder; the dialog stays open and stores
    // nothing until another folder is chosen.
    void dataFolderIsNoHandheldFolder()
    {
        QFile::remove(path());
        Einstellungen s = EinstellungenLaden(path());
        test::ScriptedPrompter prompter;
        SettingsDialog d(s, path(), prompter);
        typeInto(child<QLineEdit>(d, "tpocket"), m_dir.path() + QStringLiteral("/."));
        child<QPushButton>(d, "beenden")->click();
        QCOMPARE(d.result(), int(QDialog::Rejected));
        QCOMPARE(prompter.messages().size(), 1);
        QVERIFY2(prompter.messages().first().contains(QStringLiteral("ist der Datenordner von TARVIK")), qPrintable(prompter.messages().first()));
        QVERIFY(!QFile::exists(path()));
        QVERIFY(s.text[HandheldFolderSlot].isEmpty());

        QTemporaryDir device;
        typeInto(child<QLineEdit>(d, "tpocket"), device.path());
        child<QPushButton>(d, "beenden")->click();
        QCOMPARE(d.result(), int(QDialog::Accepted));
        QCOMPARE(s.text[HandheldFolderSlot], device.path());
    }

    void closingByTheFrameStoresNothing()
    {
        QFile::remove(path());
        Einstellungen s = EinstellungenLaden(path());
        const Einstellungen before = s;
        test::ScriptedPrompter prompter;
        SettingsDialog d(s, path(), prompter);
        child<QCheckBox>(d, "konbeep")->click();
        typeInto(child<QLineEdit>(d, "t(2)"), QStringLiteral("40"));
        d.reject();
        QCOMPARE(s.zahl, before.zahl);
        QVERIFY(!QFile::exists(path()));
    }
};

TARVIK_TEST_MAIN(TestSettingsDialog)
#include "tst_settingsdialog.moc"
