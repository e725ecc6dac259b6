// Printing a report file into PDF: pages break at "#" and when full, columns stay aligned, the
// fixed-pitch font is embedded, the font shrinks for wide tables and what is wider still wraps
// or goes into column bands; lists and timber lists carry their head on every page, and every
// evaluation list prints with each of its columns' headings. Checked with poppler's tools.
#include "common/textfile.h"
#include "reports/lists/listquery.h"
#include "reports/lists/writers.h"
#include "reports/print.h"
#include "reports/reportfile.h"
#include "store/sql.h"
#include "support/reportsfixture.h"
#include "support/tempdatafolder.h"

#include <QApplication>

using namespace tarvik;
using namespace tarvik::lists;

namespace {

int pdfPages(const QString& pdf)
{
    const QRegularExpressionMatch m =
        QRegularExpression(QStringLiteral("Pages:\\s+(\\d+)")).match(test::toolOutput(QStringLiteral("pdfinfo"), {pdf}));
    return m.hasMatch() ? m.captured(1).toInt() : -1;
}

// The text of one page as a fixed-pitch grid (10 pt Liberation Mono is 6 pt wide), without
// blank lines around it, trailing blanks and the first `indent` columns (the page margin).
QStringList pageText(const QString& pdf, int page, qsizetype indent = 0)
{
    const QString p = QString::number(page);
    QStringList lines = test::pdfText(pdf, {QStringLiteral("-fixed"), QStringLiteral("6"), QStringLiteral("-f"), p, QStringLiteral("-l"), p})
                            .remove(u'\f')
                            .split(u'\n');
    while (!lines.isEmpty() && lines.last().trimmed().isEmpty())
        lines.removeLast();
    while (!lines.isEmpty() && lines.first().trimmed().isEmpty())
        lines.removeFirst();
    for (QString& l : lines) {
        l = l.mid(indent);
        while (l.endsWith(u' '))
            l.chop(1);
    }
    return lines;
}

// The column the first line holding `text` shows it at.
qsizetype columnOf(const QStringList& lines, const QString& text)
{
    for (const QString& l : lines)
        if (l.contains(text))
            return l.indexOf(text);
    return -1;
}

} // namespace

class TestPrint : public QObject {
    Q_OBJECT
    test::TempDataFolder m_dir;
    std::unique_ptr<Database> m_database;

    QSqlDatabase db() const { return m_database->shared(); }

private slots:
    void initTestCase()
    {
        m_database = m_dir.openDatabase();
        const test::Forest forest = test::plantForest(db());
        // Enough logs that the list of logs runs onto further pages.
        TransactionGuard guard(db());
        for (int i = 1; i <= 120; ++i)
            test::addListLog(db(), forest.sold2026, 3, i, "FI (Fichte)", "B", "L3a", 1.25, 75);
        guard.commit();
    }

    void everyListPrintsWithAllColumns_data()
    {
        QTest::addColumn<int>("memberIndex");
        for (const MemberDef& def : members())
            QTest::addRow("%s", qPrintable(def.key)) << int(def.member);
    }
    void everyListPrintsWithAllColumns()
    {
        QFETCH(int, memberIndex);
        const MemberDef& def = member(Member(memberIndex));
        Einstellungen s;
        s.zahl[1] = 1; // date in the header
        s.zahl[8] = 1; // count line
        s.zahl[9] = 1; // the writer's own page numbers, which the printout replaces by its own
        // The report file as the dialogs write it: widths from the rows, page marks, the count line.
        const ListQuery query = buildListQuery(ListRequest(def.member), s);
        QSqlQuery rows = execSql(db(), query.sql, query.values);
        const QString file = m_dir.filePath(QStringLiteral("Daten-%1.txt").arg(def.key));
        QVERIFY(writeText(file, rows, columnFormats(db(), def, query), TextOptions::from(s, def.title, QDate(2026, 5, 4)), countRows(db(), query)).ok);

        PrintJob job;
        job.pdfPath = m_dir.filePath(def.key + QStringLiteral(".pdf"));
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
    }

    void pagesColumnsAndFont()
    {
        QStringList report{QStringLiteral("RECHNUNG"), QStringLiteral("Rechnung-Nr:      41")};
        report << QStringLiteral("  #  ");
        for (int i = 1; i <= 150; ++i)
            report << QStringLiteral("%1  %2%3").arg(i, 6).arg(QStringLiteral("FI (Fichte)"), -22).arg(QStringLiteral("12,5"), 7);
        report << QStringLiteral("#") << QStringLiteral("Gesamt                                 4,327");
        const QString file = m_dir.filePath(QStringLiteral("Daten.txt"));
        QVERIFY(writeTextFile(file, report).ok);

        PrintJob job;
        job.pdfPath = m_dir.filePath(QStringLiteral("liste.pdf"));
        const PrintResult result = printFileToPdf(file, job);
        QVERIFY2(result.ok, qPrintable(result.message));
        QCOMPARE(pdfPages(job.pdfPath), result.pages);
        const qsizetype indent = columnOf(::pageText(job.pdfPath, 1), QStringLiteral("RECHNUNG"));
        auto pageText = [&](int page) { return ::pageText(job.pdfPath, page, indent); };
        // Page 1 ends at the first mark; the 150 lines need more than one sheet; the total stands alone.
        QCOMPARE(pageText(1), (QStringList{QStringLiteral("RECHNUNG"), QStringLiteral("Rechnung-Nr:      41")}));
        QVERIFY(result.pages >= 4);
        QCOMPARE(pageText(2).mid(0, 40), report.mid(3, 40));
        QCOMPARE(pageText(result.pages), QStringList{QStringLiteral("Gesamt                                 4,327")});

        const QString fonts = test::toolOutput(QStringLiteral("pdffonts"), {job.pdfPath});
        QVERIFY2(fonts.contains(QRegularExpression(QStringLiteral("(Mono|Courier)\\S*\\s.*\\byes\\b"))), qPrintable(fonts));
    }

    void leftMarginInCharacters()
    {
        const QString file = m_dir.filePath(QStringLiteral("rand.txt"));
        QVERIFY(writeTextFile(file, {QStringLiteral("A"), QStringLiteral(" B")}).ok);
        PrintJob job;
        job.pdfPath = m_dir.filePath(QStringLiteral("rand.pdf"));
        job.settings.marginChars = 5;
        QVERIFY(printFileToPdf(file, job).ok);
        // Five blanks before every line; the second keeps its own one besides.
        const QStringList lines = pageText(job.pdfPath, 1);
        QCOMPARE(columnOf(lines, QStringLiteral("B")) - columnOf(lines, QStringLiteral("A")), 1);
        PrintJob plain = job;
        plain.settings.marginChars = 0;
        plain.pdfPath = m_dir.filePath(QStringLiteral("ohne.pdf"));
        QVERIFY(printFileToPdf(file, plain).ok);
        QCOMPARE(columnOf(lines, QStringLiteral("A")) - columnOf(pageText(plain.pdfPath, 1), QStringLiteral("A")), 5);
    }

    void aWideListShrinksTheFontNotTheLines_data()
    {
        QTest::addColumn<int>("width");
        QTest::addColumn<int>("chosenSize");
        QTest::addColumn<bool>("landscape");
        QTest::addColumn<bool>("reduced");
        // The timber list's 78 characters at 12 pt are wider than A4 portrait.
        QTest::newRow("timber list at 12 pt") << 78 << 12 << false << true;
        QTest::newRow("timber list at 10 pt") << 78 << 10 << false << false;
        QTest::newRow("130 characters portrait") << 130 << 10 << false << true;
        QTest::newRow("130 characters landscape at 8 pt") << 130 << 8 << true << false;
        QTest::newRow("needs less than 6 pt: wraps") << 300 << 10 << false << true;
    }
    void aWideListShrinksTheFontNotTheLines()
    {
        QFETCH(int, width);
        QFETCH(int, chosenSize);
        QFETCH(bool, landscape);
        QFETCH(bool, reduced);
        const QString file = m_dir.filePath(QStringLiteral("breit.txt"));
        const QString line = QString(width - 1, u'X') + u'E';
        QVERIFY(writeTextFile(file, {line}).ok);
        PrintJob job;
        job.pdfPath = m_dir.filePath(QStringLiteral("breit-%1.pdf").arg(QTest::currentDataTag()).replace(u' ', u'_'));
        job.settings.fontSize = chosenSize;
        job.settings.landscape = landscape;
        const PrintResult result = printFileToPdf(file, job);
        QVERIFY2(result.ok, qPrintable(result.message));
        QCOMPARE(result.fontReduced, reduced);
        // The whole line stands on the page, its last character included.
        QVERIFY(result.fontSize >= SmallestPrintFontSize && result.fontSize <= chosenSize);
        QCOMPARE(pageText(job.pdfPath, 1).join(QString()).remove(u' '), line);
        QCOMPARE(result.statusText().isEmpty(), !reduced);
    }

    // A long timber list: every page names the harvest and its number, a table running onto a
    // new page repeats its headings there, and a long remark wraps instead of shrinking the font.
    void timberListPagesCarryTheirHead()
    {
        const QString heading = QStringLiteral("   LNR  BAUMART                 LÄNGE STÄRKE_MR EFM_OR  KLASSE GÜTE");
        const QString remark = QStringLiteral("Zufahrt nur bei Frost, ").repeated(12);
        QStringList report{QStringLiteral("HIEBDATEN"), QStringLiteral("Hieb-Nr:         2026-17"), remark, QString(),
                           QStringLiteral("Einzelauswertung Stämme Los 1"), heading};
        for (int i = 1; i <= 150; ++i)
            report << QStringLiteral("%1  %2%3%4%5  L2b    B").arg(i, 6).arg(QStringLiteral("FI (Fichte)"), -22).arg(QStringLiteral("12,5"), 7)
                          .arg(35, 10).arg(QStringLiteral("0,385"), 7);
        const QString file = m_dir.filePath(QStringLiteral("holzliste.txt"));
        QVERIFY(writeTextFile(file, report).ok);
        PrintJob job;
        job.pdfPath = m_dir.filePath(QStringLiteral("holzliste.pdf"));
        const PrintResult result = printFileToPdf(file, job);
        QVERIFY2(result.ok, qPrintable(result.message));
        QVERIFY(!result.fontReduced);
        QVERIFY(result.pages >= 3);
        QCOMPARE(pdfPages(job.pdfPath), result.pages);
        QString logs;
        for (int p = 1; p <= result.pages; ++p) {
            const QStringList page = ::pageText(job.pdfPath, p, 0);
            QVERIFY2(page.first().contains(QStringLiteral("Hieb-Nr: 2026-17")), qPrintable(page.first()));
            QVERIFY(page.first().endsWith(QStringLiteral("Seite %1 von %2").arg(p).arg(result.pages)));
            QStringList below = page.mid(1);
            while (!below.isEmpty() && below.first().trimmed().isEmpty())
                below.removeFirst();
            if (p > 1)
                QCOMPARE(below.first().trimmed(), heading.trimmed());
            logs += page.join(u'\n');
        }
        // Every log once, the remark whole.
        for (int i = 1; i <= 150; ++i)
            QCOMPARE(int(logs.count(QRegularExpression(QStringLiteral("^\\s*%1\\s+FI \\(Fichte\\)").arg(i), QRegularExpression::MultilineOption))), 1);
        QVERIFY(logs.simplified().remove(u' ').contains(QString(remark).remove(u' ')));
    }

    // Column bands of a list wider than the page, from the rule under its headings: as many
    // columns as fit side by side, each page naming its band; all pages of a band come first.
    void listBands_data()
    {
        QTest::addColumn<QList<int>>("widths");
        QTest::addColumn<int>("pageColumns");
        QTest::addColumn<QStringList>("bands");
        const QList<int> tens(25, 10);
        QTest::newRow("25 columns of 10 on 100") << tens << 100
                                                << QStringList{"Spalten 1–7 von 25", "Spalten 8–14 von 25", "Spalten 15–21 von 25",
                                                               "Spalten 22–25 von 25"};
        QTest::newRow("fits") << tens << 330 << QStringList{};
        QTest::newRow("a column wider than the page") << QList<int>{8, 150, 8} << 100
                                                      << QStringList{"Spalte 1 von 3", "Spalte 2 von 3", "Spalte 3 von 3"};
    }
    void listBands()
    {
        QFETCH(QList<int>, widths);
        QFETCH(int, pageColumns);
        QFETCH(QStringList, bands);
        QStringList names, dashes;
        for (int i = 0; i < widths.size(); ++i) {
            names << QStringLiteral("S%1").arg(i + 1).leftJustified(widths[i]);
            dashes << QString(widths[i], u'-');
        }
        QStringList lines{QStringLiteral("Lose auswerten   Stand: 04.05.2026   Seite 1 von 2"), QString(), names.join(QStringLiteral(" | ")),
                          dashes.join(QStringLiteral("   "))};
        auto row = [&](int r) {
            QStringList cells;
            for (int i = 0; i < widths.size(); ++i)
                cells << QStringLiteral("z%1s%2").arg(r).arg(i + 1).leftJustified(widths[i]);
            return cells.join(QStringLiteral(" | "));
        };
        for (int r = 1; r <= 30; ++r)
            lines << row(r);
        lines << QStringLiteral("#") << lines.mid(0, 4);
        for (int r = 31; r <= 40; ++r)
            lines << row(r);
        lines << QString() << QStringLiteral("Anzahl Datenzeilen: 40");

        const PrintLayout layout = layoutForPrint(lines, {pageColumns, 60});
        QCOMPARE(layout.bands, std::max<int>(1, int(bands.size())));
        // Two marked pages per band, numbered through all of them.
        QCOMPARE(int(layout.pages.size()), 2 * layout.bands);
        QString all;
        for (qsizetype p = 0; p < layout.pages.size(); ++p) {
            const QStringList& page = layout.pages[p];
            QCOMPARE(page[0], QStringLiteral("Lose auswerten   Stand: 04.05.2026"));
            const QString number = QStringLiteral("Seite %1 von %2").arg(p + 1).arg(layout.pages.size());
            QCOMPARE(page[1], bands.isEmpty() ? number : bands[p / 2] + QStringLiteral("   ") + number);
            for (const QString& line : page)
                QVERIFY2(line.size() <= pageColumns, qPrintable(line));
            all += page.join(u'\n') + u'\n';
        }
        // Every cell and every heading printed, once per marked page for the headings.
        for (int i = 1; i <= widths.size(); ++i) {
            QCOMPARE(int(all.count(QRegularExpression(QStringLiteral("\\bS%1\\b").arg(i)))), 2);
            for (int r = 1; r <= 40; ++r)
                QVERIFY2(QString(all).remove(u'\n').remove(u' ').contains(QStringLiteral("z%1s%2").arg(r).arg(i)),
                         qPrintable(QStringLiteral("z%1s%2").arg(r).arg(i)));
        }
        QCOMPARE(int(all.count(QStringLiteral("Anzahl Datenzeilen: 40"))), layout.bands);
    }

    void aLongReportIsShownCut()
    {
        const QString big = m_dir.filePath(QStringLiteral("gross.txt"));
        QStringList lines;
        for (int i = 0; i < 1000; ++i)
            lines << QString(69, u'x'); // 70 000 characters with the line ends
        QVERIFY(writeTextFile(big, lines).ok);
        const ReportDisplay display = loadForDisplay(big);
        QVERIFY(display.exists && display.truncated);
        QVERIFY(display.text.size() >= DisplayLimit && display.text.size() < DisplayLimit + 70);
        QVERIFY(!loadForDisplay(m_dir.filePath(QStringLiteral("fehlt.txt"))).exists);
    }

    void settingClamps_data()
    {
        QTest::addColumn<int>("storedSize");
        QTest::addColumn<int>("storedMargin");
        QTest::addColumn<int>("size");
        QTest::addColumn<int>("margin");
        QTest::newRow("in range") << 12 << 3 << 12 << 3;
        QTest::newRow("size 7, margin 35") << 7 << 35 << 10 << 20;
        QTest::newRow("size 49") << 49 << 0 << 10 << 0;
    }
    void settingClamps()
    {
        QFETCH(int, storedSize);
        QFETCH(int, storedMargin);
        Einstellungen s = EinstellungenLaden(QString());
        s.zahl[20] = qint16(storedSize);
        s.zahl[22] = qint16(storedMargin);
        const PrintSettings p = PrintSettings::from(s);
        QTEST(p.fontSize, "size");
        QTEST(p.marginChars, "margin");
        QCOMPARE(stepFontSize(28, 5), 30);
        QCOMPARE(stepFontSize(5, -5), 4);
    }
};

TARVIK_TEST_MAIN(TestPrint)
#include "tst_print.moc"
