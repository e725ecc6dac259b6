// Names in German order wherever a list orders, groups or filters them: umlauts with their base
// letters, ß as ss, and case never splitting a group. The same cases run through the list core
// and through `tarvik-cli liste`.
#include "reports/lists/listquery.h"
#include "reports/lists/formats.h"
#include "store/sql.h"
#include "support/clirun.h"
#include "support/records.h"
#include "support/tempdatafolder.h"

using namespace tarvik;
using namespace tarvik::lists;

class TestGermanOrder : public QObject {
    Q_OBJECT
    test::TempDataFolder m_root;

    // The first cell of every row the core lists, and beside it the row's first figure.
    QStringList coreKeys(const ListRequest& r)
    {
        auto database = Database::openOrCreate(m_root.databasePath());
        const ListQuery q = buildListQuery(r, {});
        const auto formats = columnFormats(member(r.member), q);
        QSqlQuery rows = execSql(database->shared(), q.sql, q.values);
        QStringList keys;
        while (rows.next())
            keys << (q.groupColumns > 0 ? cellText(formats[0], rows.value(0)) + u'=' + cellText(formats[q.groupColumns], rows.value(q.groupColumns))
                                        : cellText(formats[0], rows.value(0)));
        return keys;
    }

    // The same from the command line's text: the cells under the column's heading (cut to the
    // column's width), and beside them the next column's.
    QStringList cliKeys(const QStringList& args, const QString& column, bool grouped)
    {
        const test::CliOutput o = test::runCli(QStringList{QStringLiteral("--daten"), m_root.path(), QStringLiteral("liste")} + args);
        const QStringList lines = o.out.split(u'\n', Qt::SkipEmptyParts);
        qsizetype header = -1, at = -1;
        for (qsizetype i = 0; i < lines.size() && at < 0; ++i) {
            const QStringList cells = lines[i].split(u'|');
            for (qsizetype c = 0; c < cells.size() && at < 0; ++c)
                if (const QString h = cells[c].trimmed(); h.size() >= 5 && column.startsWith(h))
                    header = i, at = c;
        }
        if (at < 0)
            return {QStringLiteral("Fehler: ") + o.out + o.err};
        QStringList keys;
        for (qsizetype i = header + 1; i < lines.size(); ++i)
            if (const QStringList cells = lines[i].split(u'|'); cells.size() > at + (grouped ? 1 : 0) && !cells[0].trimmed().startsWith(u'-'))
                keys << (grouped ? cells[at].trimmed() + u'=' + cells[at + 1].trimmed() : cells[at].trimmed());
        return keys;
    }

private slots:
    void initTestCase()
    {
        QCOMPARE(test::runCli({QStringLiteral("--daten"), m_root.path(), QStringLiteral("init")}).code, 0);
        auto database = Database::openOrCreate(m_root.databasePath());
        const QSqlDatabase db = database->shared();
        const qint32 h = test::addHarvest(db, 1);
        const char* lots[][2] = {{"Zaunbau", "Zollhaus"},         {"Äbi Holz", "Öhringer Weg"}, {"äbi holz", "oberer Hof"},
                                 {"Abt", "Oberer Hof"},           {"Straße Holz", "Ölmühle"},   {"Strasse Holz", "Zollhaus"}};
        int nr = 0;
        for (const auto& [buyer, place] : lots) {
            test::addLot(db, h, ++nr);
            execSql(db, QStringLiteral("UPDATE Lose SET Abnehmer = ?, Lagerort = ? WHERE Los_Nr = ?"),
                    {QString::fromUtf8(buyer), QString::fromUtf8(place), nr});
        }
        int log = 0;
        for (const char* species : {"Ulme", "eiche", "Äspe", "Ahorn", "Eiche"})
            execSql(db, QStringLiteral("INSERT INTO Stämme(Los_Nr, Laufende_Nr, Baumart, Efm_oR, Kennung) VALUES (1, ?, ?, 1, ?)"),
                    {++log, QString::fromUtf8(species), h});
    }

    void listsInGermanOrder_data()
    {
        QTest::addColumn<int>("memberIndex");
        QTest::addColumn<int>("grouping");
        QTest::addColumn<QString>("sort");
        QTest::addColumn<bool>("descending");
        QTest::addColumn<QString>("filter"); // column=value
        QTest::addColumn<QStringList>("expected");
        // Grouped: one group per name as a German reader sees it, its count beside it.
        QTest::newRow("lots by buyer") << int(Member::Lose) << 0 << "" << false << ""
                                       << QStringList{"Äbi Holz=2", "Abt=1", "Strasse Holz=2", "Zaunbau=1"};
        QTest::newRow("lots of one buyer by storage place, the buyer typed in small letters")
            << int(Member::Lose) << 1 << "" << false << "Abnehmer=äbi holz" << QStringList{"oberer Hof=1", "Öhringer Weg=1"};
        // Sorted: names in German order, those equal but for case side by side.
        QTest::newRow("logs sorted by species") << int(Member::Staemme) << -1 << "Baumart" << false << ""
                                                << QStringList{"ahorn", "äspe", "eiche", "eiche", "ulme"};
        QTest::newRow("logs sorted by species, descending") << int(Member::Staemme) << -1 << "Baumart" << true << ""
                                                            << QStringList{"ulme", "eiche", "eiche", "äspe", "ahorn"};
        QTest::newRow("lots of one buyer written with ss, sorted by place")
            << int(Member::Lose) << -1 << "Lagerort" << false << "Abnehmer=Strasse Holz" << QStringList{"ölmühle", "zollhaus"};
    }

    void listsInGermanOrder()
    {
        QFETCH(int, memberIndex);
        QFETCH(int, grouping);
        QFETCH(QString, sort);
        QFETCH(bool, descending);
        QFETCH(QString, filter);
        QFETCH(QStringList, expected);
        const MemberDef& def = member(Member(memberIndex));
        ListRequest r(def.member);
        r.grouping = grouping;
        QStringList args{def.key};
        if (grouping >= 0)
            args << QStringLiteral("--gruppe") << QString::number(grouping + 1);
        if (!sort.isEmpty()) {
            r.sortColumn = sort;
            r.columns = {sort};
            r.descending = descending;
            args << QStringLiteral("--sortierung") << sort;
            if (descending)
                args << QStringLiteral("--absteigend");
        }
        if (!filter.isEmpty()) {
            r.filters.insert(filter.section(u'=', 0, 0), filter.section(u'=', 1));
            args << QStringLiteral("--filter") << filter;
        }
        // Names equal but for case may stand either way round; the rest of the order is fixed.
        auto folded = [&](QStringList keys) {
            if (grouping < 0)
                for (QString& k : keys)
                    k = k.toLower();
            return keys;
        };
        QCOMPARE(folded(coreKeys(r)), expected);
        QCOMPARE(folded(cliKeys(args, grouping >= 0 ? def.groupings[grouping].columns.first() : sort, grouping >= 0)), expected);
    }

    // The filter lists offer each name once, in German order, spelt as first stored.
    void filterValuesInGermanOrder()
    {
        auto database = Database::openOrCreate(m_root.databasePath());
        const MemberDef& lots = member(Member::Lose);
        QStringList buyers;
        for (const QVariant& v : distinctValues(database->shared(), lots, lots.filters[4]))
            buyers << v.toString();
        QCOMPARE(buyers, (QStringList{"Äbi Holz", "Abt", "Strasse Holz", "Zaunbau"}));
    }
};

TARVIK_TEST_CORE_MAIN(TestGermanOrder)
#include "tst_germanorder.moc"
