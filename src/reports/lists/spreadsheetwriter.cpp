#include "reports/lists/writers.h"

#include "common/systemerror.h"
#include "reports/lists/writerparts.h"

#include <QDir>
#include <QFile>
#include <xlsxwriter.h>

namespace tarvik::lists {

using Kind = ColumnFormat::Kind;

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
    // The library prints its faults besides returning them; the user reads them in German.
    const QuietStandardError quiet;
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
        result.error = cannotWrite(path, germanErrorText(QString::fromUtf8(lxw_strerror(closed))));
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

QString spreadsheetPath(const QString& dataFolder)
{
    return QDir(dataFolder).filePath(QStringLiteral("Daten.xlsx"));
}

} // namespace tarvik::lists
