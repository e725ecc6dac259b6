// The evaluation lists' core over a small forest: every member's groupings, scopes and filters,
// the three writers (text against a golden file, the spreadsheet read back from its XML, the
// page), and German order in the core and through `tarvik-cli liste`.
#include "common/textfile.h"
#include "reports/lists/listquery.h"
#include "reports/lists/writers.h"
#include "store/sql.h"
#include "support/clirun.h"
#include "support/records.h"
#include "support/reportsfixture.h"
#include "support/tempdatafolder.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QSqlRecord>
#include <QTemporaryFile>
#include <cstdio>
#include <unistd.h>

using namespace tarvik;
using namespace tarvik::lists;

Q_DECLARE_METATYPE(tarvik::lists::ColumnFormat)

class TestListCore : public QObject {
    Q_OBJECT

    test::TempDataFolder m_folder;
    std::unique_ptr<Database> m_database;
    QSqlDatabase db() const { return m_database->shared(); }
    qint32 m_h1 = 0, m_h3 = 0;
    test::TempDataFolder m_german;
    std::unique_ptr<Database> m_germanDb;

    // Runs a request through the checks; the rows as text cells, or the messages shown.
    QList<QStringList> rows(const ListRequest& request, const Einstellungen& settings = {}, QStringList* messages = nullptr,
                            std::optional<QSqlDatabase> on = {})
    {
        test::ScriptedPrompter prompter;
        const auto query = prepareList(request, settings, prompter);
        if (messages)
            *messages = prompter.messages();
        if (!query)
            return {};
        const auto formats = columnFormats(member(request.member), *query);
        QSqlQuery q = execSql(on.value_or(db()), query->sql, query->values);
        QList<QStringList> out;
        while (q.next()) {
            QStringList cells;
            for (int i = 0; i < formats.size(); ++i)
                cells << cellText(formats[i], q.value(i));
            out << cells;
        }
        return out;
    }

    // The first cell of every row `tarvik-cli liste` prints: the cells under the column's heading
    // (cut to the column's width), and beside them the next column's.
    QStringList cliKeys(const QStringList& args, const QString& column, bool grouped)
    {
        const test::CliOutput o = test::runCli(QStringList{QStringLiteral("--daten"), m_german.path(), QStringLiteral("liste")} + args);
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

    // Buyers, places and species apart only by umlauts, ß or case, in a data folder the command
    // line created. In German order umlauts go with their base letters, ß with ss, and case
    // never splits a group.
    void plantGermanNames()
    {
        QCOMPARE(test::runCli({QStringLiteral("--daten"), m_german.path(), QStringLiteral("init")}).code, 0);
        m_germanDb = Database::openOrCreate(m_german.databasePath());
        const QSqlDatabase db = m_germanDb->shared();
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

private slots:
    void initTestCase()
    {
        m_database = m_folder.openDatabase();
        const test::Forest forest = test::plantForest(db());
        m_h1 = forest.unsold2025;
        m_h3 = forest.sold2026;
        plantGermanNames();
    }

    // Every grouping of every member runs and yields its group columns first.
    void everyGroupingRuns()
    {
        for (const MemberDef& def : members()) {
            for (int g = 0; g < def.groupings.size(); ++g) {
                ListRequest r{def.member};
                r.grouping = g;
                const ListQuery q = buildListQuery(r, {});
                QSqlQuery sql = execSql(db(), q.sql, q.values);
                QCOMPARE(sql.record().count(), q.columns.size());
                for (int i = 0; i < q.groupColumns; ++i)
                    QCOMPARE(sql.record().fieldName(i), def.groupings[g].columns[i]);
                QVERIFY2(sql.next(), qPrintable(def.windowName + u' ' + def.groupings[g].caption));
            }
            QCOMPARE(baseColumns(db(), def), def.columns);
        }
    }

    void groupings_data()
    {
        QTest::addColumn<int>("memberIndex");
        QTest::addColumn<int>("scope");
        QTest::addColumn<int>("grouping");
        QTest::addColumn<QList<QStringList>>("expected");
        QTest::newRow("logs by species, quality, class, current harvest")
            << int(Member::Staemme) << 2 << 1
            << QList<QStringList>{{"BU (Rotbuche)", "A", "L4", "1", "0,750", "0,750", "4,50", "33,00", "55,00"},
                                  {"BU (Rotbuche)", "B", "L2b", "1", "0,500", "0,500", "4,50", "33,00", "25,00"},
                                  {"FI (Fichte)", "B", "L2b", "2", "1,250", "0,625", "4,50", "33,00", "50,00"},
                                  {"FI (Fichte)", "C", "L3a", "1", "1,250", "1,250", "4,50", "33,00", "40,00"}};
        QTest::newRow("logs by lot number, all harvests")
            << int(Member::Staemme) << 0 << 10
            << QList<QStringList>{{"1", "4", "3,500", "0,875", "4,50", "33,00", "134,00"},
                                  {"2", "2", "1,250", "0,625", "4,50", "33,00", "80,00"}};
        QTest::newRow("lots by buyer, unsold harvests")
            << int(Member::Lose) << 3 << 0
            << QList<QStringList>{{"Säge Huber", "2", "5", "3,750", "0,000", "0", "0,000", "0,000", "230,00", "80,00"}};
        QTest::newRow("lots by year") << int(Member::Lose) << 0 << 3
                                      << QList<QStringList>{{"2025", "2", "5", "3,750", "0,000", "0", "0,000", "0,000", "230,00", "80,00"},
                                                            {"2026", "2", "0", "0,000", "0,000", "0", "0,000", "0,000", "415,00", "375,00"}};
        QTest::newRow("poles by class and length")
            << int(Member::Pfaehle) << 0 << 0
            << QList<QStringList>{{"P2.11", "8,00", "2", "14", "35,00"}, {"P2.32", "14,00", "1", "1", "5,00"}};
        QTest::newRow("stacked wood by species and class, sold")
            << int(Member::Schichtholz) << 5 << 0 << QList<QStringList>{{"BU (Rotbuche)", "S2.1", "1", "30,000", "19,500", "375,00"}};
        QTest::newRow("harvests by forest owner") << int(Member::Hiebe) << 0 << 0
                                                  << QList<QStringList>{{"Anna Müller", "3", "4,5000", "6", "9", "7,500", "0", "0,000", "0,000"}};
        QTest::newRow("invoices by year of their date")
            << int(Member::Rechnungen) << 0 << 1 << QList<QStringList>{{"2025", "1", "84,40"}, {"2026", "2", "258,25"}};
    }

    void groupings()
    {
        QFETCH(int, memberIndex);
        QFETCH(int, scope);
        QFETCH(int, grouping);
        QFETCH(QList<QStringList>, expected);
        ListRequest r{Member(memberIndex)};
        r.scope = scope;
        r.currentHarvest = m_h1;
        r.grouping = grouping;
        // Grouping ignores the chosen columns and the sort.
        r.columns = {member(r.member).columns.first()};
        r.sortColumn = member(r.member).columns.last();
        r.descending = true;
        QCOMPARE(rows(r), expected);
    }

    void filtersAndSort()
    {
        ListRequest r{Member::Lose};
        r.columns = {QStringLiteral("Hieb_Nr"), QStringLiteral("Los_Nr"), QStringLiteral("Lagerort"), QStringLiteral("Bemerkung")};
        r.filters[QStringLiteral("Lagerort")] = QStringLiteral("O'Brien's Weg");
        QCOMPARE(rows(r), (QList<QStringList>{{"1", "1", "O'Brien's Weg", "nass"}}));

        r.filters.clear();
        r.filters[QStringLiteral("Abnehmer")] = QStringLiteral("Säge Huber");
        r.sortColumn = QStringLiteral("Los_Nr");
        r.descending = true;
        QCOMPARE(rows(r), (QList<QStringList>{{"1", "2", "Hof", ""}, {"1", "1", "O'Brien's Weg", "nass"}}));

        ListRequest invoices{Member::Rechnungen};
        invoices.columns = {QStringLiteral("ReNr"), QStringLiteral("Vor_Nachname"), QStringLiteral("Datum")};
        invoices.filters[QStringLiteral("Jahr")] = QStringLiteral("2026");
        invoices.filters[QStringLiteral("Abnehmer")] = QStringLiteral("O'Neill Holz");
        QCOMPARE(rows(invoices), (QList<QStringList>{{"3", "Pat O'Neill", "10.02.2026"}}));

        // The invoices' year filter offers each year once.
        const MemberDef& bills = member(Member::Rechnungen);
        QCOMPARE(distinctValues(db(), bills, bills.filters[1]), (QVariantList{QStringLiteral("2025"), QStringLiteral("2026")}));
    }

    void refusedNames()
    {
        ListRequest r{Member::Lose};
        r.columns = {QStringLiteral("Los_Nr; drop table Lose")};
        QVERIFY_THROWS_EXCEPTION(StoreError, buildListQuery(r, {}));
        r.columns.clear();
        r.filters[QStringLiteral("Kennung")] = 1;
        QVERIFY_THROWS_EXCEPTION(StoreError, buildListQuery(r, {}));
    }

    // A year range no harvest falls in lists nothing; "Aktuellen Hieb" without a current harvest
    // is refused before any query. The invoices have no harvest to limit.
    void scopeOfEveryMember()
    {
        const QString noHarvest = QStringLiteral("Es ist kein (aktueller) Hieb markiert. Bitte wählen Sie einen Hieb aus oder listen "
                                                 "Sie die Daten von allen Hieben!");
        Einstellungen later;
        later.zahl[2] = 1;
        later.text[2] = QStringLiteral("2030");
        later.text[3] = QStringLiteral("2031");
        for (const MemberDef& def : members()) {
            ListRequest r{def.member};
            QCOMPARE(rows(r, later).isEmpty(), def.joinsHarvests);
            QStringList shown;
            r.scope = 2;
            QCOMPARE(rows(r, {}, &shown).isEmpty(), def.joinsHarvests);
            QCOMPARE(shown, def.joinsHarvests ? QStringList{noHarvest} : QStringList{});
        }
    }

    void textGolden()
    {
        Einstellungen s;
        s.text[1] = QStringLiteral("Forstbetriebsgemeinschaft Müller & O'Brien");
        s.text[10] = QStringLiteral(" | ");
        s.zahl[1] = 1; // date in the header
        s.zahl[8] = 1; // count line
        s.zahl[9] = 1; // page numbers
        s.zahl[21] = 3; // at least 30 lines per page
        ListRequest r{Member::Staemme};
        r.columns = {QStringLiteral("Hieb_Nr"), QStringLiteral("Los_Nr"), QStringLiteral("Laufende_Nr"), QStringLiteral("Baumart"),
                     QStringLiteral("Länge_m"), QStringLiteral("Efm_oR"), QStringLiteral("Stärkeklasse"), QStringLiteral("Güteklasse"),
                     QStringLiteral("Preis_berechnet"), QStringLiteral("Bemerkung")};
        const ListQuery q = buildListQuery(r, s);
        const TextOptions options = TextOptions::from(s, member(r.member).title, QDate(2026, 11, 23));
        QSqlQuery sql = execSql(db(), q.sql, q.values);
        const QString path = m_folder.filePath(QStringLiteral("Daten.txt"));
        const WriteResult written = writeText(path, sql, columnFormats(member(r.member), q), options, countRows(db(), q));
        QVERIFY2(written.ok, qPrintable(written.error));
        test::compareWithGolden(path, QStringLiteral("liste_staemme.txt"));

        // A page of 30 lines: the 31st row starts a new page after a "#" mark.
        {
            TransactionGuard guard(db());
            for (int i = 0; i < 30; ++i)
                test::addListLog(db(), m_h3, 9, 100 + i, "KI (Kiefer)", "C", "L1b", 0.125, 2);
            guard.commit();
        }
        ListRequest many{Member::Staemme};
        many.columns = {QStringLiteral("Laufende_Nr")};
        const ListQuery mq = buildListQuery(many, s);
        QSqlQuery msql = execSql(db(), mq.sql, mq.values);
        const QStringList lines = textLines(msql, columnFormats(member(many.member), mq), options, countRows(db(), mq));
        QCOMPARE(lines.count(QStringLiteral("#")), 1);
        QVERIFY(lines.contains(QStringLiteral("Stämme auswerten   Stand: 23.11.2026   Seite 2 von 2")));
        QCOMPARE(lines.last(), QStringLiteral("Anzahl Datenzeilen: 36"));
        execSql(db(), QStringLiteral("DELETE FROM Stämme WHERE Los_Nr = 9"));
    }

    // One cell of each kind as the list shows it; breaks and tabs never split a fixed-width line.
    void cellsInTheTextForm_data()
    {
        using K = ColumnFormat::Kind;
        QTest::addColumn<QVariant>("value");
        QTest::addColumn<ColumnFormat>("format");
        QTest::addColumn<QString>("expected");
        const ColumnFormat text{QStringLiteral("T"), K::Text, 0, 10};
        const ColumnFormat money{QStringLiteral("M"), K::Decimal, 2, 8};
        const ColumnFormat volume{QStringLiteral("V"), K::Decimal, 3, 8, true};
        const ColumnFormat whole{QStringLiteral("I"), K::Integer, 0, 5};
        const ColumnFormat date{QStringLiteral("D"), K::Date, 0, 10};
        QTest::newRow("tab") << QVariant(QStringLiteral("nass\tund krumm")) << text << QStringLiteral("nass und k");
        QTest::newRow("CR LF") << QVariant(QStringLiteral(" a\r\nb ")) << text << QStringLiteral("a b");
        QTest::newRow("umlaut") << QVariant(QStringLiteral("Säge")) << text << QStringLiteral("Säge");
        QTest::newRow("half up") << QVariant(0.125) << money << QStringLiteral("    0,13");
        QTest::newRow("no minus zero") << QVariant(-0.004) << money << QStringLiteral("    0,00");
        QTest::newRow("stored as text") << QVariant(QStringLiteral("1,5")) << money << QStringLiteral("    1,50");
        QTest::newRow("too wide") << QVariant(123456789.5) << money << QStringLiteral("123456789,50");
        QTest::newRow("null") << QVariant(QMetaType(QMetaType::Double)) << money << QString();
        QTest::newRow("null sum") << QVariant(QMetaType(QMetaType::Double)) << volume << QStringLiteral("   0,000");
        QTest::newRow("integer") << QVariant(qlonglong(42)) << whole << QStringLiteral("   42");
        QTest::newRow("integer from a real") << QVariant(41.5) << whole << QStringLiteral("   42");
        QTest::newRow("stored date") << QVariant(QStringLiteral("2026-01-05")) << date << QStringLiteral("05.01.2026");
        QTest::newRow("stored with time") << QVariant(QStringLiteral("2026-01-05 00:00:00")) << date << QStringLiteral("05.01.2026");
        QTest::newRow("German date") << QVariant(QStringLiteral("5.1.2026")) << date << QStringLiteral("05.01.2026");
        QTest::newRow("no such day") << QVariant(QStringLiteral("2026-02-30")) << date << QString();
    }
    void cellsInTheTextForm()
    {
        QFETCH(QVariant, value);
        QFETCH(ColumnFormat, format);
        QFETCH(QString, expected);
        // The writer reads the first row through the query, the second from the engine's statement.
        QSqlQuery shown = execSql(db(), QStringLiteral("SELECT ? UNION ALL SELECT ?"), {value, value});
        const QString path = m_folder.filePath(QStringLiteral("Zelle.txt"));
        QVERIFY(writeText(path, shown, {format}, {}, 2).ok);
        const QStringList lines = readTextFile(path).lines;
        QCOMPARE(lines.mid(lines.size() - 2), (QStringList{expected, expected}));
    }

    // A figure wider than its column widens the column for every line of the list: header,
    // rule and rows keep their separators in line, and no digit is lost.
    void figuresWidenTheirColumns_data()
    {
        QTest::addColumn<QString>("column");
        QTest::addColumn<QVariant>("wide");
        QTest::addColumn<QString>("shown");
        QTest::newRow("money") << QStringLiteral("Preis_berechnet") << QVariant(123456789012.5) << QStringLiteral("123456789012,50");
        QTest::newRow("negative money") << QStringLiteral("Preis_erhalten") << QVariant(-98765432109.25) << QStringLiteral("-98765432109,25");
        QTest::newRow("volume rounding up") << QStringLiteral("Efm_oR") << QVariant(99999999.9996) << QStringLiteral("100000000,000");
        QTest::newRow("count") << QStringLiteral("Anzahl_Stämme") << QVariant(qlonglong(2147483647)) << QStringLiteral("2147483647");
    }
    void figuresWidenTheirColumns()
    {
        QFETCH(QString, column);
        QFETCH(QVariant, wide);
        QFETCH(QString, shown);
        execSql(db(), QStringLiteral("INSERT INTO Lose(Los_Nr, Sortierung, Anzahl_Stämme, Efm_oR, Preis_berechnet, Preis_erhalten, Lagerort, "
                                 "Kennung) VALUES (99, 'Stämme', 1, 0.5, 2, 0, 'Hof', ?), (99, 'Stämme', 1, 0.5, 2, 0, 'Weg', ?)"),
            {m_h1, m_h1});
        execSql(db(), QStringLiteral("UPDATE Lose SET \"%1\" = ? WHERE Los_Nr = 99 AND Lagerort = 'Hof'").arg(column), {wide});
        const auto cleanUp = qScopeGuard([&] { execSql(db(), QStringLiteral("DELETE FROM Lose WHERE Los_Nr = 99")); });

        ListRequest r{Member::Lose};
        r.filters[QStringLiteral("Los_Nr")] = 99;
        r.columns = {QStringLiteral("Los_Nr"), QStringLiteral("Anzahl_Stämme"), QStringLiteral("Efm_oR"), QStringLiteral("Preis_berechnet"),
                     QStringLiteral("Preis_erhalten"), QStringLiteral("Lagerort")};
        r.sortColumn = QStringLiteral("Lagerort");
        const ListQuery q = buildListQuery(r, {});
        TextOptions options;
        options.separator = QStringLiteral(" | ");
        QSqlQuery sql = execSql(db(), q.sql, q.values);
        const QStringList lines = textLines(sql, columnFormats(db(), member(r.member), q), options, 2);
        const qsizetype header = lines.indexOf(QRegularExpression(QStringLiteral("^\\s*Los_Nr \\|.*")));
        QVERIFY(header >= 0 && header + 3 < lines.size());
        QCOMPARE(lines[header + 2].split(options.separator).at(r.columns.indexOf(column)).trimmed(), shown);
        QCOMPARE(lines[header + 1].size(), lines[header].size());
        auto separators = [&](const QString& line) {
            QList<qsizetype> at;
            for (qsizetype i = line.indexOf(options.separator); i >= 0; i = line.indexOf(options.separator, i + 1))
                at << i;
            return at;
        };
        for (qsizetype row : {header + 2, header + 3})
            QCOMPARE(separators(lines[row]), separators(lines[header]));
    }

    void spreadsheetReadBack()
    {
        ListRequest r{Member::Rechnungen};
        r.columns = {QStringLiteral("ReNr"), QStringLiteral("Abnehmer"), QStringLiteral("Datum"), QStringLiteral("Betrag")};
        const ListQuery q = buildListQuery(r, {});
        QSqlQuery sql = execSql(db(), q.sql, q.values);
        const QString path = spreadsheetPath(m_folder.path());
        const WriteResult written = writeSpreadsheet(path, sql, columnFormats(member(r.member), q), QStringLiteral("Rechnungen"), 3);
        QVERIFY2(written.ok, qPrintable(written.error));

        QVERIFY(test::toolOutput(QStringLiteral("unzip"), {QStringLiteral("-t"), path}).contains(QLatin1String("No errors detected")));
        auto part = [&path](const QString& name) { return test::toolOutput(QStringLiteral("unzip"), {QStringLiteral("-p"), path, name}); };
        const QString sheet = part(QStringLiteral("xl/worksheets/sheet1.xml"));
        // Cells by reference: numbers as numbers, dates as serial days, texts inline.
        QHash<QString, QString> cells;
        static const QRegularExpression cell(QStringLiteral("<c r=\"([A-Z]+[0-9]+)\"([^>]*)>(.*?)</c>"));
        for (auto m = cell.globalMatch(sheet); m.hasNext();) {
            const auto c = m.next();
            static const QRegularExpression content(QStringLiteral("<(?:v|t)[^>]*>(.*?)</(?:v|t)>"));
            const auto v = content.match(c.captured(3));
            cells[c.captured(1)] = (c.captured(2).contains(QLatin1String("t=\"inlineStr\"")) ? QStringLiteral("s:") : QStringLiteral("n:")) +
                                   v.captured(1);
        }
        const std::pair<const char*, const char*> expected[] = {{"A1", "s:ReNr"},      {"D1", "s:Betrag"}, {"A2", "n:1"},
                                                                {"B2", "s:Säge Huber"}, {"C2", "n:46021"},  // 30.12.2025
                                                                {"D3", "n:158.25"},     {"B4", "s:O'Neill Holz"}};
        for (const auto& [ref, value] : expected)
            QCOMPARE(cells.value(QString::fromUtf8(ref)), QString::fromUtf8(value));
        QVERIFY(sheet.contains(QLatin1String("<pane ySplit=\"1\" topLeftCell=\"A2\" activePane=\"bottomLeft\" state=\"frozen\"/>")));
        QVERIFY(sheet.contains(QLatin1String("<cols>")));
        const QString styles = part(QStringLiteral("xl/styles.xml"));
        QVERIFY(styles.contains(QLatin1String("formatCode=\"dd.mm.yyyy\"")));
        QVERIFY(styles.contains(QLatin1String("<b/>")));
    }

    void htmlPage()
    {
        ListRequest r{Member::Lose};
        r.columns = {QStringLiteral("Los_Nr"), QStringLiteral("Lagerort"), QStringLiteral("Efm_oR")};
        r.sortColumn = QStringLiteral("Efm_oR");
        const ListQuery q = buildListQuery(r, {});
        QSqlQuery sql = execSql(db(), q.sql, q.values);
        const QString path = nextReportPagePath(m_folder.path());
        QVERIFY(path.endsWith(QLatin1String("report-1.htm")));
        TextOptions o;
        o.title = QStringLiteral("Lose <alle>");
        const WriteResult written = writeHtml(path, sql, columnFormats(member(r.member), q), o);
        QVERIFY2(written.ok, qPrintable(written.error));
        QVERIFY(nextReportPagePath(m_folder.path()).endsWith(QLatin1String("report-2.htm")));
        QFile f(path);
        QVERIFY(f.open(QIODevice::ReadOnly));
        const QString page = QString::fromUtf8(f.readAll());
        QVERIFY(page.contains(QLatin1String("<meta charset=\"utf-8\">")));
        QVERIFY(page.contains(QLatin1String("<title>Lose &lt;alle&gt;</title>")));
        QVERIFY(page.contains(QLatin1String("<tr><td class=\"z\">1</td><td>O&#x27;Brien&#x27;s Weg</td><td class=\"z\">2,500</td></tr>")) ||
                page.contains(QLatin1String("<tr><td class=\"z\">1</td><td>O'Brien's Weg</td><td class=\"z\">2,500</td></tr>")));
        QVERIFY(page.contains(QStringLiteral("<p>Anzahl Datensätze: 4</p>")));
    }

    void unwritableTargets()
    {
        // A folder standing where the file should go cannot be written over, whatever the rights.
        QTemporaryDir dir;
        for (const char* name : {"Daten.txt", "Daten.xlsx", "report-1.htm"})
            QVERIFY(QDir(dir.path()).mkdir(QString::fromUtf8(name)));
        ListRequest r{Member::Lose};
        const ListQuery q = buildListQuery(r, {});
        const auto formats = columnFormats(member(r.member), q);
        for (int form = 0; form < 3; ++form) {
            QSqlQuery sql = execSql(db(), q.sql, q.values);
            const WriteResult w = form == 0   ? writeText(dir.filePath(QStringLiteral("Daten.txt")), sql, formats, {}, 4)
                                  : form == 1 ? writeSpreadsheet(spreadsheetPath(dir.path()), sql, formats, QStringLiteral("Lose"), 4)
                                              : writeHtml(dir.filePath(QStringLiteral("report-1.htm")), sql, formats, {});
            QVERIFY(!w.ok);
            QVERIFY2(w.error.startsWith(QLatin1String("Die Datei ")) && w.error.contains(QLatin1String("kann nicht geschrieben werden")),
                     qPrintable(w.error));
        }
    }

    // The spreadsheet library also prints what it cannot write; the user reads only the reason.
    void spreadsheetThatCannotBeMadeIsSilent()
    {
        // A folder where the workbook is put together: the library's own file step fails.
        QVERIFY(QDir(m_folder.path()).mkpath(QStringLiteral("Tabelle.xlsx.tmp")));
        ListRequest r{Member::Lose};
        const ListQuery q = buildListQuery(r, {});
        QSqlQuery sql = execSql(db(), q.sql, q.values);
        // Both streams of the terminal caught in a file.
        QTemporaryFile sink;
        QVERIFY(sink.open());
        std::fflush(stdout);
        std::fflush(stderr);
        const int savedOut = ::dup(STDOUT_FILENO);
        const int savedErr = ::dup(STDERR_FILENO);
        ::dup2(sink.handle(), STDOUT_FILENO);
        ::dup2(sink.handle(), STDERR_FILENO);
        const WriteResult w = writeSpreadsheet(m_folder.filePath(QStringLiteral("Tabelle.xlsx")), sql,
                                               columnFormats(member(r.member), q), QStringLiteral("Lose"), 4);
        std::fflush(stdout);
        std::fflush(stderr);
        ::dup2(savedOut, STDOUT_FILENO);
        ::dup2(savedErr, STDERR_FILENO);
        ::close(savedOut);
        ::close(savedErr);
        QVERIFY(!w.ok);
        QVERIFY2(w.error.startsWith(QLatin1String("Die Datei ")), qPrintable(w.error));
        QVERIFY(sink.seek(0));
        QCOMPARE(sink.readAll(), QByteArray());
    }

    void cancelStopsWriting()
    {
        TransactionGuard guard(db());
        for (int i = 0; i < 5000; ++i)
            test::addListLog(db(), m_h3, 8, 1000 + i, "KI (Kiefer)", "C", "L1b", 0.125, 2);
        guard.commit();
        ListRequest r{Member::Staemme};
        const ListQuery q = buildListQuery(r, {});
        QSqlQuery sql = execSql(db(), q.sql, q.values);
        const QString path = m_folder.filePath(QStringLiteral("abgebrochen.txt"));
        const WriteResult w = writeText(path, sql, columnFormats(member(r.member), q), {}, 5006, [](qint64) { return false; });
        QVERIFY(w.cancelled);
        QVERIFY(!QFile::exists(path));
        execSql(db(), QStringLiteral("DELETE FROM Stämme WHERE Los_Nr = 8"));
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
        QStringList keys;
        for (const QStringList& row : rows(r, {}, nullptr, m_germanDb->shared()))
            keys << (grouping >= 0 ? row[0] + u'=' + row[1] : row[0]);
        QCOMPARE(folded(keys), expected);
        QCOMPARE(folded(cliKeys(args, grouping >= 0 ? def.groupings[grouping].columns.first() : sort, grouping >= 0)), expected);
    }

    // The filter lists offer each name once, in German order, spelt as first stored.
    void filterValuesInGermanOrder()
    {
        const MemberDef& lots = member(Member::Lose);
        QStringList buyers;
        for (const QVariant& v : distinctValues(m_germanDb->shared(), lots, lots.filters[4]))
            buyers << v.toString();
        QCOMPARE(buyers, (QStringList{"Äbi Holz", "Abt", "Strasse Holz", "Zaunbau"}));
    }
};

TARVIK_TEST_CORE_MAIN(TestListCore)
#include "tst_listcore.moc"
