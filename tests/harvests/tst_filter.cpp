// Which harvests a report counts: each selection kind with the year or date range, run against
// real harvests, and the range refusals.
#include "harvests/filter.h"
#include "store/sql.h"
#include "support/tempdatafolder.h"

#include <QSqlQuery>

Q_DECLARE_METATYPE(tarvik::Einstellungen)

using namespace tarvik;

namespace {

Einstellungen years(const QString& from, const QString& to)
{
    Einstellungen s;
    s.zahl[RangeModeSlot] = 1;
    s.text[YearFromSlot] = from;
    s.text[YearToSlot] = to;
    return s;
}

Einstellungen dates(const QString& from, const QString& to)
{
    Einstellungen s;
    s.zahl[RangeModeSlot] = 2;
    s.text[DateFromSlot] = from;
    s.text[DateToSlot] = to;
    return s;
}

} // namespace

class TestFilter : public QObject {
    Q_OBJECT

    test::TempDataFolder m_folder;
    std::unique_ptr<Database> m_database;
    QSqlDatabase db() const { return m_database->shared(); }
    QHash<qint32, qint32> m_idOf; // Hieb_Nr → ID

    QList<qint32> matching(const HarvestFilter& f)
    {
        QList<qint32> numbers;
        QSqlQuery q = execSql(db(), QStringLiteral("select Hieb_Nr from Hiebe") + f.whereClause() + QStringLiteral(" order by Hieb_Nr"),
                              f.values);
        while (q.next())
            numbers << q.value(0).toInt();
        return numbers;
    }

private slots:
    void initTestCase()
    {
        m_database = m_folder.openDatabase();
        // Hieb_Nr, Jahr, Selektiert, Teilverkauft, Verkauft, von, bis
        const std::tuple<int, const char*, const char*, const char*, const char*, const char*, const char*> rows[] = {
            {1, "2004", "X", "N", "N", "2004-02-01", "2004-02-10"},
            {2, "2005", "", "N", "N", "2005-03-01", "2005-03-20"},
            {3, "2006", "X", "J", "N", "2006-01-10", "2006-05-01"},
            {4, "2007", "", "J", "J", "2007-07-01", "2007-07-02"},
            {5, "2008", "X", "N", "J", "2008-01-01", "2008-12-31"},
        };
        for (const auto& [nr, year, sel, partly, sold, from, to] : rows) {
            execSql(db(), QStringLiteral("INSERT INTO Hiebe(Hieb_Nr, Jahr, Selektiert, Teilverkauft, Verkauft, Hiebdatum_von, Hiebdatum_bis) "
                                         "VALUES (?, ?, ?, ?, ?, ?, ?)"),
                    {nr, QString::fromUtf8(year), QString::fromUtf8(sel), QString::fromUtf8(partly), QString::fromUtf8(sold),
                     QString::fromUtf8(from), QString::fromUtf8(to)});
            m_idOf[nr] = scalar(db(), QStringLiteral("SELECT max(ID) FROM Hiebe")).toInt();
        }
    }

    void harvestsCounted_data()
    {
        QTest::addColumn<int>("kind");
        QTest::addColumn<int>("current");
        QTest::addColumn<Einstellungen>("settings");
        QTest::addColumn<QList<qint32>>("harvests");
        const Einstellungen none;
        QTest::newRow("all") << 0 << 0 << none << QList<qint32>{1, 2, 3, 4, 5};
        QTest::newRow("unknown kind counts all") << 9 << 0 << none << QList<qint32>{1, 2, 3, 4, 5};
        QTest::newRow("selected") << 1 << 0 << none << QList<qint32>{1, 3, 5};
        QTest::newRow("current") << 2 << 4 << none << QList<qint32>{4};
        QTest::newRow("current without one") << 2 << 0 << none << QList<qint32>{};
        QTest::newRow("unsold") << 3 << 0 << none << QList<qint32>{1, 2};
        QTest::newRow("partly sold") << 4 << 0 << none << QList<qint32>{3};
        QTest::newRow("sold") << 5 << 0 << none << QList<qint32>{4, 5};
        QTest::newRow("years") << 0 << 0 << years("2005", "2007") << QList<qint32>{2, 3, 4};
        // A year text with an apostrophe is a value, not SQL: it matches nothing and breaks nothing.
        QTest::newRow("years with apostrophes") << 0 << 0 << years("20'5", "2'07") << QList<qint32>{};
        QTest::newRow("unsold in years") << 3 << 0 << years("2005", "2007") << QList<qint32>{2};
        // Only the end date can bring a harvest in: the start date's half asks for a start
        // on or before the range's start and on or after its end.
        QTest::newRow("dates") << 0 << 0 << dates("01.01.2005", "01.07.2007") << QList<qint32>{2, 3};
        QTest::newRow("dates, one day") << 0 << 0 << dates("01.07.2007", "01.07.2007") << QList<qint32>{4};
        // "and" binds before "or": a harvest whose end falls in the range counts although it
        // is not selected.
        QTest::newRow("selected and dates") << 1 << 0 << dates("01.01.2005", "31.12.2005") << QList<qint32>{2};
        QTest::newRow("current and dates") << 2 << 1 << dates("01.01.2006", "31.12.2008") << QList<qint32>{3, 4, 5};
    }

    void harvestsCounted()
    {
        QFETCH(int, kind);
        QFETCH(int, current);
        QFETCH(Einstellungen, settings);
        QFETCH(QList<qint32>, harvests);
        const std::optional<qint32> id = current ? std::optional<qint32>(m_idOf[current]) : std::nullopt;
        const HarvestFilter f = harvestFilter(kind, id, settings);
        QCOMPARE(matching(f), harvests);
    }

    void behindAJoin()
    {
        execSql(db(), QStringLiteral("INSERT INTO Lose(Los_Nr, Sortierung, Kennung) VALUES (1, 'Stämme', ?), (1, 'Stämme', ?)"),
                {m_idOf[2], m_idOf[3]});
        // The date range's "or" must not loosen the join: each lot is counted once.
        const HarvestFilter f = harvestFilter(1, std::nullopt, dates(QStringLiteral("01.01.2005"), QStringLiteral("31.12.2006")));
        const QVariant n = scalar(db(), QStringLiteral("select count(*) from Hiebe, Lose where Hiebe.ID = Lose.Kennung") + f.andClause(),
                                  f.values);
        QCOMPARE(n.toInt(), 2);
        execSql(db(), QStringLiteral("DELETE FROM Lose"));
    }

    // A range a report cannot use is refused with its reason; the main list names the range that
    // limits it, and only a range it really applies. Cleared, the range limits nothing but keeps
    // its texts for the next time.
    void ranges_data()
    {
        QTest::addColumn<Einstellungen>("settings");
        QTest::addColumn<QString>("reason");
        QTest::addColumn<QString>("note"); // empty: no note
        const QString fourDigits = QStringLiteral("die Jahre von... bis... 4-stellig sein müssen.");
        const QString badDate = QStringLiteral("das Datum von... und/oder das Datum bis... nicht korrekt ist.");
        Einstellungen unused = years("2005", "2007");
        unused.zahl[RangeModeSlot] = 0;
        QTest::newRow("no range") << unused << QString() << QString();
        QTest::newRow("years fine") << years("2005", "2007") << QString() << QStringLiteral("Nur Hiebe 2005–2007");
        QTest::newRow("same year") << years("2007", "2007") << QString() << QStringLiteral("Nur Hiebe 2007");
        QTest::newRow("two-digit from") << years("05", "2007") << fourDigits << QString();
        QTest::newRow("empty to") << years("2005", "") << fourDigits << QString();
        QTest::newRow("years reversed") << years("2008", "2007")
                                        << QStringLiteral("das Jahr von... nicht größer sein darf als das Jahr bis...") << QString();
        QTest::newRow("dates fine") << dates("01.03.2020", "30.09.2021") << QString() << QStringLiteral("Nur Hiebe 01.03.2020–30.09.2021");
        QTest::newRow("invalid date") << dates("31.02.2005", "31.12.2005") << badDate << QString();
        QTest::newRow("empty date") << dates("01.01.2005", "") << badDate << QString();
        QTest::newRow("dates reversed") << dates("02.01.2006", "01.01.2006")
                                        << QStringLiteral("das Datum von... nicht neuer sein muß als das Datum bis...") << QString();
    }

    void ranges()
    {
        QFETCH(Einstellungen, settings);
        QFETCH(QString, reason);
        QFETCH(QString, note);
        test::ScriptedPrompter prompter;
        QCOMPARE(checkRange(settings, prompter), reason.isEmpty());
        QCOMPARE(prompter.messages(), reason.isEmpty() ? QStringList{} : QStringList{"Die Liste kann nicht erstellt werden, weil " + reason});
        QCOMPARE(rangeNote(settings).value_or(QString()), note);
        const Einstellungen before = settings;
        clearRange(settings);
        QVERIFY(!rangeNote(settings));
        QVERIFY(harvestFilter(0, std::nullopt, settings).isEmpty());
        QCOMPARE(settings.text, before.text);
    }
};

TARVIK_TEST_CORE_MAIN(TestFilter)
#include "tst_filter.moc"
