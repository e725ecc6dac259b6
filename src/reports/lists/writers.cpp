#include "reports/lists/writers.h"

#include "common/numbers.h"
#include "common/sqldate.h"
#include "common/systemerror.h"
#include "common/text.h"
#include "common/textfile.h"
#include "reports/columns.h"
#include "reports/lists/writerparts.h"

#include <QDir>
#include <QFileInfo>
#include <QSaveFile>
#include <QSqlResult>
#include <charconv>
#include <sqlite3.h>

namespace tarvik::lists {
namespace {

constexpr int MaxFastDecimals = 8;

using Kind = ColumnFormat::Kind;

// Text columns left-aligned, figures and dates right-aligned, each to its width.
QString padded(const ColumnFormat& f, const QString& text)
{
    if (f.kind == Kind::Text)
        return columns::left(text, f.width);
    if (text.size() >= f.width)
        return text; // a figure keeps every digit
    return QString(f.width - text.size(), u' ') + text; // figures carry no blanks to trim
}

// A line without the padding of its last column.
QString trimmedEnd(QString line)
{
    qsizetype end = line.size();
    while (end > 0 && line[end - 1] == u' ')
        --end;
    line.truncate(end);
    return line;
}

QString headerLine(const QList<ColumnFormat>& cols, const QString& separator)
{
    QStringList cells;
    for (const ColumnFormat& f : cols)
        cells << padded(f, f.name);
    return trimmedEnd(cells.join(separator));
}

// Dashes under each column and blanks under the separators: printing finds the columns by it.
QString ruleLine(const QList<ColumnFormat>& cols, const QString& separator)
{
    QStringList dashes;
    for (const ColumnFormat& f : cols)
        dashes << QString(f.width, u'-');
    return dashes.join(QString(separator.size(), u' '));
}

// Windows-1252 appended to the buffer; plain ASCII, the bulk of every list, byte for byte.
void appendCp1252(QByteArray& out, QStringView text)
{
    const qsizetype start = out.size();
    out.resize(start + text.size());
    char* p = out.data() + start;
    for (qsizetype i = 0; i < text.size(); ++i) {
        const char16_t c = text[i].unicode();
        if (c < 0x80) {
            p[i] = char(c);
        } else {
            const QByteArray one = encodeCp1252(QString(QChar(c)));
            p[i] = one.isEmpty() ? '?' : one[0];
        }
    }
}

// Where the characters of a line go: a QString for lines kept in memory, Windows-1252 bytes
// for the file. Both take the same calls, so the layout below serves both.
struct StringSink {
    QString& out;
    void text(QStringView t) { out += t; }
    void latin1(const char* p, qsizetype n) { out += QLatin1String(p, n); }
    void blanks(qsizetype n) { out.resize(out.size() + n, u' '); }
    // Drops the padding of the line's last column.
    void trimEnd(qsizetype lineStart)
    {
        qsizetype end = out.size();
        while (end > lineStart && out[end - 1] == u' ')
            --end;
        out.truncate(end);
    }
    qsizetype size() const { return out.size(); }
};

struct Cp1252Sink {
    QByteArray& out;
    void text(QStringView t) { appendCp1252(out, t); }
    void latin1(const char* p, qsizetype n) { out.append(p, n); }
    void blanks(qsizetype n) { out.append(n, ' '); }
    void trimEnd(qsizetype lineStart)
    {
        qsizetype end = out.size();
        while (end > lineStart && out[end - 1] == ' ')
            --end;
        out.truncate(end);
    }
    qsizetype size() const { return out.size(); }
};

// Figures and dates right-aligned to the column's width. One longer than its column is written
// whole: a cut figure would read as another amount. The lists widen their columns beforehand.
template <typename Sink>
void rightAligned(Sink& sink, int width, const char* text, qsizetype length)
{
    sink.blanks(std::max<qsizetype>(0, width - length));
    sink.latin1(text, length);
}

template <typename Sink>
void rightAligned(Sink& sink, int width, QStringView text)
{
    sink.blanks(std::max<qsizetype>(0, width - text.size()));
    sink.text(text);
}

// "dd.mm.yyyy" straight from a stored "yyyy-mm-dd…"; false for anything else.
bool isoDateAsGerman(const QVariant& value, char (&out)[10])
{
    if (value.typeId() != QMetaType::QString)
        return false;
    const QString& text = *static_cast<const QString*>(value.constData());
    if (text.size() < 10 || text[4] != u'-' || text[7] != u'-')
        return false;
    int parts[3] = {0, 0, 0};
    for (int i : {0, 1, 2, 3, 5, 6, 8, 9}) {
        const char16_t c = text[i].unicode();
        if (c < u'0' || c > u'9')
            return false;
        int& part = parts[i < 4 ? 0 : i < 7 ? 1 : 2];
        part = part * 10 + (c - u'0');
    }
    if (!QDate::isValid(parts[0], parts[1], parts[2]))
        return false;
    const char16_t* t = reinterpret_cast<const char16_t*>(text.constData());
    const char16_t order[10] = {t[8], t[9], u'.', t[5], t[6], u'.', t[0], t[1], t[2], t[3]};
    for (int i = 0; i < 10; ++i)
        out[i] = char(order[i]);
    return true;
}

// One cell as cellText shows it, padded to its width. Numbers and dates are written from a
// buffer on the stack: this runs for every cell of lists a million rows long.
template <typename Sink>
void putCell(Sink& sink, const ColumnFormat& f, const QVariant& value)
{
    if (f.kind == Kind::Text) {
        QString cell = value.toString();
        if (std::any_of(cell.cbegin(), cell.cend(), [](QChar c) { return c.unicode() < 0x20; }))
            cell = singleLine(cell); // a line break or tab would break the fixed columns
        const QStringView shown = QStringView(cell).trimmed().left(f.width);
        sink.text(shown);
        sink.blanks(f.width - shown.size());
        return;
    }
    if (value.isNull() && !f.nullAsZero) {
        sink.blanks(f.width);
        return;
    }
    char buffer[decimalTextCapacity(MaxFastDecimals)];
    switch (f.kind) {
    case Kind::Integer:
        if (value.typeId() == QMetaType::LongLong || value.typeId() == QMetaType::Int) {
            const auto end = std::to_chars(buffer, buffer + sizeof buffer, value.toLongLong()).ptr;
            rightAligned(sink, f.width, buffer, end - buffer);
        } else {
            rightAligned(sink, f.width, buffer, formatDecimalTo(readNumber(value), 0, buffer));
        }
        return;
    case Kind::Decimal:
        if (f.decimals <= MaxFastDecimals)
            rightAligned(sink, f.width, buffer, formatDecimalTo(readNumber(value), f.decimals, buffer));
        else
            rightAligned(sink, f.width, cellText(f, value));
        return;
    case Kind::Date: {
        char date[10];
        if (isoDateAsGerman(value, date))
            rightAligned(sink, f.width, date, 10);
        else
            rightAligned(sink, f.width, cellText(f, value));
        return;
    }
    case Kind::Text:
        break;
    }
}

// The value as the SQLite driver of Qt hands it over.
QVariant rawValue(sqlite3_stmt* statement, int column)
{
    switch (sqlite3_column_type(statement, column)) {
    case SQLITE_INTEGER:
        return QVariant(qlonglong(sqlite3_column_int64(statement, column)));
    case SQLITE_FLOAT:
        return QVariant(sqlite3_column_double(statement, column));
    case SQLITE_NULL:
        return QVariant();
    case SQLITE_BLOB:
        return QVariant(QByteArray(static_cast<const char*>(sqlite3_column_blob(statement, column)), sqlite3_column_bytes(statement, column)));
    default:
        return QVariant(QString::fromUtf8(reinterpret_cast<const char*>(sqlite3_column_text(statement, column)),
                                          sqlite3_column_bytes(statement, column)));
    }
}

// One cell straight from the statement. Plain ASCII texts, whole numbers, decimals and ISO
// dates, the bulk of every list, are written from the engine's bytes; anything else goes the
// way of putCell, so both give the same line.
template <typename Sink>
void putRawCell(Sink& sink, const ColumnFormat& f, sqlite3_stmt* statement, int column)
{
    const int type = sqlite3_column_type(statement, column);
    if (type == SQLITE_NULL) {
        putCell(sink, f, QVariant());
        return;
    }
    switch (f.kind) {
    case Kind::Text:
        if (type == SQLITE_TEXT) {
            const char* text = reinterpret_cast<const char*>(sqlite3_column_text(statement, column));
            qsizetype length = sqlite3_column_bytes(statement, column);
            const bool plain = std::all_of(text, text + length, [](char c) { return c >= 0x20 && c < 0x7F; });
            if (plain) {
                while (length > 0 && text[length - 1] == ' ')
                    --length;
                while (length > 0 && *text == ' ') {
                    ++text;
                    --length;
                }
                length = std::min<qsizetype>(length, f.width);
                sink.latin1(text, length);
                sink.blanks(f.width - length);
                return;
            }
        }
        break;
    case Kind::Integer:
        if (type == SQLITE_INTEGER) {
            char buffer[24];
            const auto end = std::to_chars(buffer, buffer + sizeof buffer, sqlite3_column_int64(statement, column)).ptr;
            rightAligned(sink, f.width, buffer, end - buffer);
            return;
        }
        break;
    case Kind::Decimal:
        if ((type == SQLITE_FLOAT || type == SQLITE_INTEGER) && f.decimals <= MaxFastDecimals) {
            char buffer[decimalTextCapacity(MaxFastDecimals)];
            rightAligned(sink, f.width, buffer, formatDecimalTo(sqlite3_column_double(statement, column), f.decimals, buffer));
            return;
        }
        break;
    case Kind::Date:
        break;
    }
    putCell(sink, f, rawValue(statement, column));
}

// The statement under a query of Qt's SQLite driver; nullptr for any other driver.
sqlite3_stmt* statementOf(const QSqlQuery& query)
{
    if (!query.result())
        return nullptr;
    const QVariant handle = query.result()->handle();
    if (!handle.isValid() || qstrcmp(handle.typeName(), "sqlite3_stmt*") != 0)
        return nullptr;
    return *static_cast<sqlite3_stmt* const*>(handle.constData());
}

// Produces the text form line by line, so the same layout serves the file and the tests.
class TextLayout {
public:
    TextLayout(const QList<ColumnFormat>& cols, const TextOptions& o, qint64 total)
        : m_cols(cols), m_options(o), m_total(total),
          m_pages(o.pageBreaks ? std::max<qint64>(1, (total + o.linesPerPage - 1) / o.linesPerPage) : 1)
    {
    }

    QStringList head(qint64 page) const
    {
        QStringList lines;
        if (!m_options.headerText.trimmed().isEmpty())
            lines << m_options.headerText;
        QString title = m_options.title;
        if (m_options.today.isValid())
            title += QStringLiteral("   Stand: ") + formatGermanDate(m_options.today);
        if (m_options.pageNumbers)
            title += QStringLiteral("   Seite %1 von %2").arg(page).arg(m_pages);
        lines << title << QString();
        lines << headerLine(m_cols, m_options.separator) << ruleLine(m_cols, m_options.separator);
        return lines;
    }

    // Lines to write before the row with the given number (0-based).
    QStringList before(qint64 row) const
    {
        if (row == 0)
            return head(1);
        if (m_options.pageBreaks && row % m_options.linesPerPage == 0) {
            QStringList lines{QStringLiteral("#")};
            return lines + head(row / m_options.linesPerPage + 1);
        }
        return {};
    }

    // The row's line, appended to the sink without its end.
    template <typename Sink>
    void row(Sink& sink, const QSqlQuery& q) const
    {
        const qsizetype lineStart = sink.size();
        for (int i = 0; i < m_cols.size(); ++i) {
            if (i > 0)
                sink.text(m_options.separator);
            putCell(sink, m_cols[i], q.value(i));
        }
        sink.trimEnd(lineStart);
    }

    // The same line from the statement's current row, read without a QVariant per cell.
    template <typename Sink>
    void row(Sink& sink, sqlite3_stmt* statement) const
    {
        const qsizetype lineStart = sink.size();
        for (int i = 0; i < m_cols.size(); ++i) {
            if (i > 0)
                sink.text(m_options.separator);
            putRawCell(sink, m_cols[i], statement, i);
        }
        sink.trimEnd(lineStart);
    }

    QStringList tail(qint64 written) const
    {
        QStringList lines;
        if (written == 0)
            lines << head(1);
        if (m_options.countLine)
            lines << QString() << QStringLiteral("Anzahl Datenzeilen: %1").arg(written);
        return lines;
    }

private:
    const QList<ColumnFormat>& m_cols;
    const TextOptions& m_options;
    qint64 m_total;
    qint64 m_pages;
};

QString escaped(const QString& text) { return text.toHtmlEscaped(); }

} // namespace

QString cannotWrite(const QString& path, const QString& reason)
{
    return QStringLiteral("Die Datei %1 kann nicht geschrieben werden: %2").arg(QDir::toNativeSeparators(path), reason);
}

bool keepGoing(const Progress& progress, qint64 done)
{
    return !progress || done % ProgressStep != 0 || progress(done);
}

TextOptions TextOptions::from(const Einstellungen& s, const QString& title, const QDate& today)
{
    TextOptions o;
    o.title = title;
    o.headerText = s.text[1];
    o.separator = s.text[10].isEmpty() ? QStringLiteral(" | ") : s.text[10];
    o.today = s.zahl[1] == 1 ? today : QDate();
    o.pageNumbers = s.zahl[9] == 1;
    o.countLine = s.zahl[8] == 1;
    o.pageBreaks = s.zahl[50] != 1;
    o.linesPerPage = std::max<int>(30, s.zahl[21]);
    return o;
}

Target targetFromSettings(const Einstellungen& settings)
{
    switch (settings.zahl[4]) {
    case 1:
        return Target::Browser;
    case 2:
        return Target::Spreadsheet;
    case 3:
        return Target::SystemEditor;
    default:
        return Target::OwnWindow; // the program's own window and its own editor
    }
}

QStringList textLines(QSqlQuery& rows, const QList<ColumnFormat>& columns, const TextOptions& options, qint64 totalRows)
{
    const TextLayout layout(columns, options, totalRows);
    QStringList lines;
    qint64 n = 0;
    while (rows.next()) {
        lines << layout.before(n++);
        QString line;
        StringSink sink{line};
        layout.row(sink, rows);
        lines << line;
    }
    return lines + layout.tail(n);
}

WriteResult writeText(const QString& path, QSqlQuery& rows, const QList<ColumnFormat>& columns, const TextOptions& options,
                      qint64 totalRows, const Progress& progress)
{
    WriteResult result{false, false, path, {}};
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly)) {
        result.error = cannotWrite(path, germanFileError(file));
        return result;
    }
    const TextLayout layout(columns, options, totalRows);
    // Lines gather in a buffer that goes to the file a megabyte at a time.
    QByteArray buffer;
    Cp1252Sink sink{buffer};
    auto flush = [&file, &buffer] {
        if (buffer.size() > (1 << 20)) {
            file.write(buffer);
            buffer.clear();
        }
    };
    auto put = [&](const QStringList& lines) {
        for (const QString& line : lines) {
            appendCp1252(buffer, line);
            buffer += "\r\n";
        }
        flush();
    };
    qint64 n = 0;
    // The first row comes through the query, which has fetched it already; the following ones
    // straight from the engine's statement where the query has one.
    sqlite3_stmt* statement = rows.next() ? statementOf(rows) : nullptr;
    bool more = rows.isValid();
    while (more) {
        put(layout.before(n));
        if (n > 0 && statement)
            layout.row(sink, statement);
        else
            layout.row(sink, rows);
        buffer += "\r\n";
        flush();
        if (!keepGoing(progress, ++n)) {
            file.cancelWriting();
            result.cancelled = true;
            return result;
        }
        if (!statement) {
            more = rows.next();
            continue;
        }
        const int step = sqlite3_step(statement);
        more = step == SQLITE_ROW;
        if (!more && step != SQLITE_DONE) {
            file.cancelWriting();
            result.error = cannotWrite(path, (step & 0xFF) == SQLITE_CORRUPT
                                                 ? QStringLiteral("die Datenbank ist beschädigt. Bitte spielen Sie die letzte "
                                                                  "Datensicherung zurück.")
                                                 : QStringLiteral("die Datenbank meldet beim Lesen der Liste den Fehler Nr. %1.").arg(step));
            return result;
        }
    }
    put(layout.tail(n));
    file.write(buffer);
    if (!file.commit()) {
        result.error = cannotWrite(path, germanFileError(file));
        return result;
    }
    result.ok = true;
    return result;
}

WriteResult writeHtml(const QString& path, QSqlQuery& rows, const QList<ColumnFormat>& columns, const TextOptions& options,
                      const Progress& progress)
{
    WriteResult result{false, false, path, {}};
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly)) {
        result.error = cannotWrite(path, germanFileError(file));
        return result;
    }
    auto put = [&file](const QString& text) { file.write(text.toUtf8()); };
    put(QStringLiteral("<!DOCTYPE html>\n<html lang=\"de\">\n<head>\n<meta charset=\"utf-8\">\n<title>%1</title>\n"
                       "<style>\nbody { font-family: sans-serif; }\ntable { border-collapse: collapse; }\n"
                       "th, td { border: 1px solid #999; padding: 2px 6px; }\nth { background: #eee; }\n"
                       "td.z { text-align: right; }\n</style>\n</head>\n<body>\n")
            .arg(escaped(options.title)));
    if (!options.headerText.trimmed().isEmpty())
        put(QStringLiteral("<p>%1</p>\n").arg(escaped(options.headerText)));
    put(QStringLiteral("<h1>%1</h1>\n").arg(escaped(options.title)));
    if (options.today.isValid())
        put(QStringLiteral("<p>Stand: %1</p>\n").arg(formatGermanDate(options.today)));
    put(QStringLiteral("<table>\n<thead><tr>"));
    for (const ColumnFormat& f : columns)
        put(QStringLiteral("<th>%1</th>").arg(escaped(f.name)));
    put(QStringLiteral("</tr></thead>\n<tbody>\n"));
    qint64 n = 0;
    while (rows.next()) {
        QString line = QStringLiteral("<tr>");
        for (int c = 0; c < columns.size(); ++c) {
            const bool figure = columns[c].kind != Kind::Text;
            line += (figure ? QStringLiteral("<td class=\"z\">") : QStringLiteral("<td>")) + escaped(cellText(columns[c], rows.value(c))) +
                    QStringLiteral("</td>");
        }
        put(line + QStringLiteral("</tr>\n"));
        if (!keepGoing(progress, ++n)) {
            file.cancelWriting();
            result.cancelled = true;
            return result;
        }
    }
    put(QStringLiteral("</tbody>\n</table>\n<p>Anzahl Datensätze: %1</p>\n</body>\n</html>\n").arg(n));
    if (!file.commit()) {
        result.error = cannotWrite(path, germanFileError(file));
        return result;
    }
    result.ok = true;
    return result;
}

QString nextReportPagePath(const QString& dataFolder)
{
    const QDir dir(dataFolder);
    for (int n = 1;; ++n) {
        const QString path = dir.filePath(QStringLiteral("report-%1.htm").arg(n));
        if (!QFileInfo::exists(path))
            return path;
    }
}

} // namespace tarvik::lists
