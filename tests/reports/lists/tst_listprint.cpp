// Every evaluation list with all its columns goes onto paper: written as the dialogs write it,
// printed into a PDF and read back with poppler's pdftotext, every column's heading is found and
// every page carries the list's title and its page number; a list wider than the page names
// its column bands. The report file's lines are the same whichever way the rows are read.
#include "common/textfile.h"
#include "reports/lists/listquery.h"
#include "reports/lists/writers.h"
#include "reports/print.h"
#include "store/sql.h"
#include "support/reportsfixture.h"
#include "support/tempdatafolder.h"

#include <QApplication>
#include <QRegularExpression>

using namespace tarvik;
using namespace tarvik::lists;

namespace {

void run(const QSqlDatabase& db, const QString& sql, const QVariantList& values = {}) { execSql(db, sql, values); }

} // namespace

class TestListPrint : public QObject {
    Q_OBJECT

    test::TempDataFolder m_folder;
    std::unique_ptr<Database> m_database;
    QSqlDatabase db() const { return m_database->shared(); }

    // The list's report file as the dialog writes it: widths from the rows, page marks and
    // numbers, the count line.
    QString writeList(Member m, const Einstellungen& s)
    {
        test::ScriptedPrompter prompter;
        const ListRequest request(m);
        const auto query = prepareList(request, s, prompter);
        if (!query)
            return {};
        const MemberDef& def = member(m);
        QSqlQuery rows = execSql(db(), query->sql, query->values);
        const QString path = m_folder.filePath(QStringLiteral("Daten-%1.txt").arg(def.key));
        const WriteResult written = writeText(path, rows, columnFormats(db(), def, *query), TextOptions::from(s, def.title, QDate(2026, 5, 4)),
                                              countRows(db(), *query));
        return written.ok ? path : QString();
    }

private slots:
    void initTestCase()
    {
        m_database = m_folder.openDatabase();
        TransactionGuard guard(db());
        for (int h = 1; h <= 3; ++h) {
            run(db(), QStringLiteral("INSERT INTO Hiebe(Hieb_Nr, Jahr, Waldname, Waldort, Hiebgrund, Hiebfläche, Hiebart, Hiebdatum_von, "
                                     "Hiebdatum_bis, Anzahl_Lose, Stämme_Anzahl, Stämme_Efm, Teilverkauft, Verkauft, Waldbesitzer_Name, "
                                     "Waldbesitzer_Straße, Waldbesitzer_Wohnort, Waldbesitzer_Tel, Bemerkung) VALUES "
                                     "(?, '2026', 'Großer Eichwald am Südhang', 'Abteilung 12b', 'Sturmwurf', 2.5, 'Durchforstung', "
                                     "'2026-03-01', '2026-03-20', 3, 40, 31.5, 'N', 'N', 'Anna Müller-Lüdenscheidt', "
                                     "'Lange Straße 123', '12345 Waldhausen', '01234 56789', 'Zufahrt nur bei Frost')"),
                {h});
            const QVariant id = scalar(db(), QStringLiteral("SELECT max(ID) FROM Hiebe"));
            run(db(), QStringLiteral("INSERT INTO Lose(Los_Nr, Sortierung, Anzahl_Stämme, Efm_oR, Lagerort, Abgerechnet, Abnehmer, "
                                     "Preis_berechnet, Preis_erhalten, Bemerkung, Kennung) VALUES "
                                     "(1, 'Stämme', 40, 31.5, 'Polterplatz an der B 27', 'N', 'Sägewerk Huber & Söhne', 2150, 0, "
                                     "'nass', ?), (2, 'Pfähle', 0, 0, 'Hof', 'N', 'Zaunbau Koch', 40, 0, '', ?), "
                                     "(3, 'Schichtholz', 0, 0, 'Weg 7', 'J', '', 375, 375, '', ?)"),
                {id, id, id});
            for (int i = 1; i <= 40; ++i)
                run(db(), QStringLiteral("INSERT INTO Stämme(Los_Nr, Laufende_Nr, Baumart, Stärke_gemessen, Rindenabzugsart, Rindenabzug, "
                                         "Stärke_oR, Länge_m, Efm_oR, Stärkeklasse, Güteklasse, Zopfdurchm_cm, Klasse_Heilbronn, "
                                         "Holzpreis, Preis_berechnet, Bemerkung, Kennung) VALUES "
                                         "(1, ?, 'FI (Fichte)', 35, 'T', 2, 33, 14.5, 1.25, 'L3a', 'B', 22, 'H5', 60, 75, 'Käfer', ?)"),
                    {i, id});
            run(db(), QStringLiteral("INSERT INTO Pfähle(Los_Nr, Baumart, Stärke_mR, Länge_m, Stärkeklasse, Anzahl, Preis_je_Stück, "
                                     "Preis_berechnet, Bemerkung, Kennung) VALUES (2, 'LA (Lärche)', 8, 8, 'P2.11', 10, 2.5, 25, '', ?)"),
                {id});
            run(db(), QStringLiteral("INSERT INTO Schichtholz(Los_Nr, Baumart, Sektions_Nr, Stärke, Sektionslänge_m, Sektionstiefe_m, "
                                     "Sektionshöhe_m, Stärkeklasse, m3, Efm, Preis_je_Ster, Preis_berechnet, Bemerkung, Kennung) VALUES "
                                     "(3, 'BU (Rotbuche)', 1, 8, 10, 2, 1.5, 'S2.1', 30, 19.5, 12.5, 375, '', ?)"),
                {id});
        }
        run(db(), QStringLiteral("INSERT INTO Rechnungen(Abnehmer, Vor_Nachname, Strasse, Wohnort, Datum, ReNr, CMA_Abgabe_Proz, "
                                 "Kundeninfo, MwSt_Proz, Skonto_Proz, Betrag) VALUES ('Sägewerk Huber & Söhne', 'Josef Huber', "
                                 "'Mühlweg 3', '54321 Sägedorf', '2026-04-01', 17, 0.2, 'Kunde seit 1998', 5.5, 2, 2268.25)"));
        guard.commit();
    }

    void everyListPrintsWithAllColumns_data()
    {
        QTest::addColumn<int>("memberIndex");
        QTest::addColumn<bool>("landscape");
        for (const MemberDef& def : members()) {
            QTest::addRow("%s hoch", qPrintable(def.key)) << int(def.member) << false;
            QTest::addRow("%s quer", qPrintable(def.key)) << int(def.member) << true;
        }
    }
    void everyListPrintsWithAllColumns()
    {
        QFETCH(int, memberIndex);
        QFETCH(bool, landscape);
        const MemberDef& def = member(Member(memberIndex));
        Einstellungen s;
        s.zahl[1] = 1; // date in the header
        s.zahl[8] = 1; // count line
        s.zahl[9] = 1; // the writer's own page numbers, which the printout replaces by its own
        const QString file = writeList(def.member, s);
        QVERIFY(!file.isEmpty());

        PrintJob job;
        job.pdfPath = m_folder.filePath(QStringLiteral("%1-%2.pdf").arg(def.key).arg(landscape));
        job.settings.landscape = landscape;
        const PrintResult result = printFileToPdf(file, job);
        QVERIFY2(result.ok, qPrintable(result.message));
        QVERIFY(result.fontSize >= SmallestPrintFontSize);

        const QString text = test::pdfText(job.pdfPath);
        QStringList pages = text.split(u'\f');
        while (!pages.isEmpty() && pages.last().trimmed().isEmpty())
            pages.removeLast();
        QCOMPARE(int(pages.size()), result.pages);
        for (const QString& column : def.columns)
            QVERIFY2(text.contains(QRegularExpression(QStringLiteral("(^|\\s)%1(\\s|$)").arg(QRegularExpression::escape(column)),
                                                      QRegularExpression::MultilineOption)),
                     qPrintable(column + QStringLiteral(" fehlt")));
        // Every page: the title, its number, and the rule under the headings.
        for (int p = 0; p < pages.size(); ++p) {
            QVERIFY2(pages[p].contains(def.title), qPrintable(QStringLiteral("Seite %1 ohne Titel").arg(p + 1)));
            QVERIFY2(pages[p].contains(QStringLiteral("Seite %1 von %2").arg(p + 1).arg(pages.size())),
                     qPrintable(QStringLiteral("Seite %1 ohne Seitenzahl").arg(p + 1)));
            QVERIFY(pages[p].contains(QStringLiteral("-----")));
            QCOMPARE(int(pages[p].count(QStringLiteral("Seite "))), 1);
            QCOMPARE(pages[p].contains(QStringLiteral("Spalte")), result.bands > 1);
        }
        if (result.bands > 1) {
            // The bands follow each other and together name every column once.
            static const QRegularExpression band(QStringLiteral("Spalten? (\\d+)(?:–(\\d+))? von (\\d+)"));
            int next = 1;
            for (const QString& page : pages) {
                const QRegularExpressionMatch m = band.match(page);
                QVERIFY(m.hasMatch());
                QCOMPARE(m.captured(3).toInt(), int(def.columns.size()));
                const int first = m.captured(1).toInt();
                QVERIFY(first == next || first < next); // the band's further pages repeat its numbers
                next = (m.captured(2).isEmpty() ? first : m.captured(2).toInt()) + 1;
            }
            QCOMPARE(next, int(def.columns.size()) + 1);
        }
    }

    // The writer reads the first row through the query and the others from the engine's
    // statement: umlauts, blanks around a text, a tab, NULL and large figures come out the same
    // as from the query throughout.
    void bothWaysOfReadingWriteTheSameLines()
    {
        TransactionGuard guard(db());
        const QVariant id = scalar(db(), QStringLiteral("SELECT min(ID) FROM Hiebe"));
        run(db(), QStringLiteral("INSERT INTO Stämme(Los_Nr, Laufende_Nr, Baumart, Länge_m, Efm_oR, Preis_berechnet, Bemerkung, Kennung) "
                                 "VALUES (5, 1, '  RK (Roßkastianie) ', 4.25, 0.0005, 123456789.125, 'a\tb', ?), "
                                 "(5, 2, NULL, NULL, NULL, NULL, NULL, ?), (5, 3, 'EI (Eiche)', 20, 12.3456, -7.5, ' vorn', ?)"),
            {id, id, id});
        guard.commit();
        ListRequest request(Member::Staemme);
        request.sortColumn = QStringLiteral("Laufende_Nr");
        const ListQuery query = buildListQuery(request, {});
        const auto formats = columnFormats(db(), member(Member::Staemme), query);
        const TextOptions options = TextOptions::from({}, QStringLiteral("Stämme"), {});
        QSqlQuery viaQuery = execSql(db(), query.sql, query.values);
        const QStringList expected = textLines(viaQuery, formats, options, countRows(db(), query));
        QSqlQuery viaStatement = execSql(db(), query.sql, query.values);
        const QString path = m_folder.filePath(QStringLiteral("beide.txt"));
        QVERIFY(writeText(path, viaStatement, formats, options, countRows(db(), query)).ok);
        const TextFileResult read = readTextFile(path);
        QVERIFY(read.ok);
        QCOMPARE(read.lines, expected);
        QVERIFY(expected.join(u'\n').contains(QStringLiteral("RK (Roßkastianie)")));
    }
};

TARVIK_TEST_MAIN(TestListPrint)
#include "tst_listprint.moc"
