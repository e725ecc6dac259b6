#include "listscenarios.h"

#include "reports/lists/writers.h"
#include "reports/lists/listmodel.h"
#include "store/database.h"
#include "store/sql.h"

#include <QTemporaryDir>
#include <cstdio>
#include <sqlite3.h>
#include <unistd.h>

namespace tarvik::bench {
namespace {

using namespace lists;

// Steps through every row of a statement, reading every column as text; the rows seen.
qint64 rawRows(sqlite3* db, const QByteArray& sql, qint64 limit = -1)
{
    sqlite3_stmt* s = nullptr;
    sqlite3_prepare_v2(db, sql.constData(), -1, &s, nullptr);
    qint64 n = 0;
    while ((limit < 0 || n < limit) && sqlite3_step(s) == SQLITE_ROW) {
        for (int c = 0; c < sqlite3_column_count(s); ++c)
            sqlite3_column_text(s, c);
        ++n;
    }
    sqlite3_finalize(s);
    return n;
}

// Every row's columns as text joined by " | ", one line each, into a file synced at the end:
// the least a program can do to hand a list on.
void rawToFile(sqlite3* db, const QByteArray& sql, const QString& path)
{
    std::FILE* f = std::fopen(path.toUtf8().constData(), "wb");
    sqlite3_stmt* s = nullptr;
    sqlite3_prepare_v2(db, sql.constData(), -1, &s, nullptr);
    while (sqlite3_step(s) == SQLITE_ROW) {
        for (int c = 0; c < sqlite3_column_count(s); ++c) {
            if (c > 0)
                std::fputs(" | ", f);
            const unsigned char* text = sqlite3_column_text(s, c);
            if (text)
                std::fputs(reinterpret_cast<const char*>(text), f);
        }
        std::fputs("\r\n", f);
    }
    sqlite3_finalize(s);
    std::fflush(f);
    fsync(fileno(f));
    std::fclose(f);
}

// The statement with its (here: no) values; every scenario lists all harvests.
QByteArray plainSql(const ListQuery& q) { return q.sql.toUtf8(); }

} // namespace

std::vector<Result> listScenarios(const QString& path, int groupedRuns, int fullRuns)
{
    std::vector<Result> results;
    auto database = Database::openOrCreate(path);
    const QSqlDatabase db = database->shared();
    const Einstellungen settings;
    sqlite3* raw = nullptr;
    sqlite3_open_v2(path.toUtf8().constData(), &raw, SQLITE_OPEN_READONLY, nullptr);
    QTemporaryDir out;

    // Grouped: every group read and formatted as the grid and the text file show it.
    ListRequest grouped(Member::Staemme);
    grouped.grouping = 1; // "Nach Baumart, Güte- und Stärkeklasse"
    Result r;
    r.scenario = QStringLiteral("log list grouped by species, quality, class (all logs)");
    r.program = measure(groupedRuns, [&] {
        const ListQuery q = buildListQuery(grouped, settings);
        const auto formats = columnFormats(member(Member::Staemme), q);
        QSqlQuery rows = execSql(db, q.sql, q.values);
        while (rows.next())
            for (int c = 0; c < formats.size(); ++c)
                cellText(formats[c], rows.value(c));
    });
    // The bare engine groups byte by byte and orders the groups byte by byte: the least any program
    // can do for the same groups.
    const MemberDef& logs = member(Member::Staemme);
    const QString keys = logs.groupings[grouped.grouping].expressions.join(QStringLiteral(", "));
    const QByteArray rawGrouped = (QStringLiteral("select ") + keys + QStringLiteral(", ") + logs.aggregates + logs.from +
                                   QStringLiteral(" group by ") + keys + QStringLiteral(" order by ") + keys)
                                      .toUtf8();
    r.raw = measure(groupedRuns, [&] { rawRows(raw, rawGrouped); });
    results.push_back(r);

    // Ungrouped: what the dialog waits for before the grid shows (the count, then the grid's
    // first rows fetched by the lazy model)...
    ListRequest full(Member::Staemme);
    const ListQuery f = buildListQuery(full, settings);
    const auto formats = columnFormats(member(Member::Staemme), f);
    Result shown;
    shown.scenario = QStringLiteral("full log list: count and the grid's first rows");
    shown.program = measure(fullRuns, [&] {
        const ListQuery q = buildListQuery(full, settings);
        countRows(db, q);
        ListModel model;
        QString error;
        model.show(db, q, formats, &error);
        for (int row = 0; row < model.rowCount(); ++row)
            for (int c = 0; c < model.columnCount(); ++c)
                model.data(model.index(row, c));
    });
    const QByteArray countSql = f.countSql.toUtf8();
    shown.raw = measure(fullRuns, [&] {
        rawRows(raw, countSql);
        rawRows(raw, plainSql(f), 256);
    });
    results.push_back(shown);

    // ...and the whole list handed on as the report file.
    Result written;
    written.scenario = QStringLiteral("full log list written as Daten.txt (widths included)");
    written.program = measure(fullRuns, [&] {
        // The columns' widths come from a pass over the rows of their own, as the dialog does it.
        const auto widths = columnFormats(db, member(Member::Staemme), f);
        QSqlQuery rows = execSql(db, f.sql, f.values);
        writeText(out.filePath(QStringLiteral("Daten.txt")), rows, widths, TextOptions::from(settings, QStringLiteral("Stämme"), {}), 0);
    });
    written.raw = measure(fullRuns, [&] { rawToFile(raw, plainSql(f), out.filePath(QStringLiteral("roh.txt"))); });
    results.push_back(written);

    sqlite3_close(raw);
    return results;
}

} // namespace tarvik::bench
