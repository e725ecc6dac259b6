#include "common/germanlocale.h"
#include "support/tempdatafolder.h"

using namespace tarvik;

class TestGermanLocale : public QObject {
    Q_OBJECT
private slots:
    void germanPasses() { QVERIFY(!regionalSettingsProblem(QLocale(QLocale::German, QLocale::Germany))); }
    void austrianPasses() { QVERIFY(!regionalSettingsProblem(QLocale(QLocale::German, QLocale::Austria))); }

    void englishFails()
    {
        const auto problem = regionalSettingsProblem(QLocale(QLocale::English, QLocale::UnitedStates));
        QVERIFY(problem);
        QVERIFY(problem->startsWith(QStringLiteral("WICHTIG!!! Die Datumsberechnung")));
        QVERIFY(problem->endsWith(QStringLiteral("wird ZEP jetzt beendet!")));
        QCOMPARE(problem->count(u'\n'), 14);
    }

    void euroIsNoProblem() { QVERIFY(!currencyProblem(QLocale(QLocale::German, QLocale::Germany))); }
};

TARVIK_TEST_CORE_MAIN(TestGermanLocale)
#include "tst_germanlocale.moc"
