#include "reports/lists/writers.h"

#include "common/sqldate.h"
#include "common/textfile.h"
#include "reports/columns.h"

#include <QDir>
#include <QFileInfo>
#include <QSaveFile>
#include <xlsxwriter.h>

namespace tarvik::lists {
namespace {

constexpr qint64 ProgressStep = 4096;

using Kind = ColumnFormat::Kind;

QString cannotWrite(const QString& path, const QString& reason)
{
    return QStringLiteral("Die Datei %1 kann nicht geschrieben werden: %2").arg(QDir::toNativeSeparators(path), reason);
}

// Text columns left-aligned, figures and dates right-aligned, each to its width.
QString padded(const ColumnFormat& f, const QString& text)
{
    if (f.kind == Kind::Text)
        return columns::left(text, f.width);
    if (text.size() >= f.width)
        return text.left(f.width);
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

// Produces the text form line by line, so the same layout serves the file and the tests.
class TextLayout {
public:
    TextLayout(const QList<ColumnFormat>& cols, const TextOptions& o, qint64 total)
        : m_cols(cols), m_options(o), m_total(total),
          m_pages(o.pageBreaks ? std::max<qint64>(1, (total + o.linesPerPage - 1) / o.linesPerPage) : 1)
    {
        for (const ColumnFormat& f : cols)
            m_width += f.width + int(o.separator.size());
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
        const QString header = headerLine(m_cols, m_options.separator);
        lines << header << QString(header.size(), u'-');
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

    QString row(const QSqlQuery& q) const
    {
        // One string built in place: this runs once for every row of lists a million long.
        QString line;
        line.reserve(m_width);
        for (int i = 0; i < m_cols.size(); ++i) {
            const ColumnFormat& f = m_cols[i];
            if (i > 0)
                line += m_options.separator;
            QString cell = cellText(f, q.value(i));
            if (f.kind == Kind::Text) {
                if (cell.contains(u'\n') || cell.contains(u'\r'))
                    cell.replace(u'\n', u' ').replace(u'\r', u' ');
                cell = cell.trimmed();
            }
            const qsizetype shown = std::min<qsizetype>(cell.size(), f.width);
            if (f.kind != Kind::Text)
                line.resize(line.size() + f.width - shown, u' ');
            line += QStringView(cell).left(shown);
            if (f.kind == Kind::Text)
                line.resize(line.size() + f.width - shown, u' ');
        }
        return trimmedEnd(std::move(line));
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
    int m_width = 0;
};

// Windows-1252 appended to the buffer; plain ASCII, the bulk of every list, byte for byte.
void appendCp1252(QByteArray& out, const QString& text)
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

bool keepGoing(const Progress& progress, qint64 done)
{
    return !progress || done % ProgressStep != 0 || progress(done);
}

QString escaped(const QString& text) { return text.toHtmlEscaped(); }

} // namespace

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
    while (rows.next())
        lines << layout.before(n++) << layout.row(rows);
    return lines + layout.tail(n);
}

WriteResult writeText(const QString& path, QSqlQuery& rows, const QList<ColumnFormat>& columns, const TextOptions& options,
                      qint64 totalRows, const Progress& progress)
{
    WriteResult result{false, false, path, {}};
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly)) {
        result.error = cannotWrite(path, file.errorString());
        return result;
    }
    const TextLayout layout(columns, options, totalRows);
    // Lines gather in a buffer that goes to the file a megabyte at a time.
    QByteArray buffer;
    auto put = [&file, &buffer](const QStringList& lines) {
        for (const QString& line : lines) {
            appendCp1252(buffer, line);
            buffer += "\r\n";
        }
        if (buffer.size() > (1 << 20)) {
            file.write(buffer);
            buffer.clear();
        }
    };
    qint64 n = 0;
    while (rows.next()) {
        put(layout.before(n));
        put({layout.row(rows)});
        if (!keepGoing(progress, ++n)) {
            file.cancelWriting();
            result.cancelled = true;
            return result;
        }
    }
    put(layout.tail(n));
    file.write(buffer);
    if (!file.commit()) {
        result.error = cannotWrite(path, file.errorString());
        return result;
    }
    result.ok = true;
    return result;
}

WriteResult writeSpreadsheet(const QString& path, QSqlQuery& rows, const QList<ColumnFormat>& columns, const QString& title,
                             qint64 totalRows, const Progress& progress)
{
    WriteResult result{false, false, path, {}};
    if (totalRows > SpreadsheetRowLimit) {
        result.error = QStringLiteral("Die Liste hat %1 Datensätze; eine Tabelle nimmt höchstens %2 auf. "
                                      "Bitte schränken Sie die Auswahl ein oder übergeben Sie die Liste als Text.")
                           .arg(totalRows)
                           .arg(SpreadsheetRowLimit);
        return result;
    }
    // Written beside the target first, so an unwritable target leaves the old file whole.
    const QString temporary = path + QStringLiteral(".tmp");
    lxw_workbook_options wbOptions{};
    wbOptions.constant_memory = LXW_TRUE; // rows go to disk as they come
    lxw_workbook* book = workbook_new_opt(QFile::encodeName(temporary).constData(), &wbOptions);
    if (!book) {
        result.error = cannotWrite(path, QStringLiteral("die Arbeitsmappe lässt sich nicht anlegen."));
        return result;
    }
    const QByteArray sheetName = title.left(31).toUtf8();
    lxw_worksheet* sheet = workbook_add_worksheet(book, sheetName.isEmpty() ? nullptr : sheetName.constData());
    lxw_format* bold = workbook_add_format(book);
    format_set_bold(bold);
    lxw_format* date = workbook_add_format(book);
    format_set_num_format(date, "dd.mm.yyyy");
    QList<lxw_format*> numberFormats;
    QList<double> widths;
    for (const ColumnFormat& f : columns) {
        lxw_format* n = nullptr;
        if (f.kind == Kind::Integer || f.kind == Kind::Decimal) {
            n = workbook_add_format(book);
            const QByteArray pattern = f.decimals > 0 ? "0." + QByteArray(f.decimals, '0') : QByteArray("0");
            format_set_num_format(n, pattern.constData());
        }
        numberFormats << n;
        widths << double(f.name.size());
    }
    for (int c = 0; c < columns.size(); ++c)
        worksheet_write_string(sheet, 0, lxw_col_t(c), columns[c].name.toUtf8().constData(), bold);
    worksheet_freeze_panes(sheet, 1, 0);

    lxw_row_t row = 0;
    while (rows.next()) {
        ++row;
        for (int c = 0; c < columns.size(); ++c) {
            const ColumnFormat& f = columns[c];
            const QVariant v = rows.value(c);
            if (v.isNull())
                continue;
            const lxw_col_t col = lxw_col_t(c);
            QString shown = cellText(f, v);
            if (f.kind == Kind::Integer || f.kind == Kind::Decimal) {
                worksheet_write_number(sheet, row, col, v.toDouble(), numberFormats[c]);
            } else if (f.kind == Kind::Date && cellDate(v).isValid()) {
                const QDate d = cellDate(v);
                lxw_datetime dt{d.year(), d.month(), d.day(), 0, 0, 0.0};
                worksheet_write_datetime(sheet, row, col, &dt, date);
            } else {
                worksheet_write_string(sheet, row, col, v.toString().toUtf8().constData(), nullptr);
                shown = v.toString();
            }
            widths[c] = std::max(widths[c], std::min(60.0, double(shown.size())));
        }
        if (!keepGoing(progress, row)) {
            workbook_close(book);
            QFile::remove(temporary);
            result.cancelled = true;
            return result;
        }
    }
    for (int c = 0; c < columns.size(); ++c)
        worksheet_set_column(sheet, lxw_col_t(c), lxw_col_t(c), widths[c] + 2, nullptr);
    const lxw_error closed = workbook_close(book);
    if (closed != LXW_NO_ERROR) {
        QFile::remove(temporary);
        result.error = cannotWrite(path, QString::fromUtf8(lxw_strerror(closed)));
        return result;
    }
    QFile::remove(path);
    if (!QFile::rename(temporary, path)) {
        QFile::remove(temporary);
        result.error = cannotWrite(path, QStringLiteral("die Datei ist schreibgeschützt oder in einem anderen Programm geöffnet."));
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
        result.error = cannotWrite(path, file.errorString());
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
        result.error = cannotWrite(path, file.errorString());
        return result;
    }
    result.ok = true;
    return result;
}

QString spreadsheetPath(const QString& dataFolder)
{
    return QDir(dataFolder).filePath(QStringLiteral("Daten.xlsx"));
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
