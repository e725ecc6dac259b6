#include "devices/logtable.h"

#include "common/numbers.h"
#include "common/textfile.h"

#include <QStringDecoder>

namespace tarvik {

bool looksLikeHtml(const QByteArray& bytes)
{
    const QByteArray head = bytes.left(512).trimmed().toLower();
    return head.startsWith("<!doctype") || head.startsWith("<html") || head.contains("<body") || head.contains("<head");
}

LogTable parseLogTable(const QByteArray& bytes)
{
    LogTable table;
    if (looksLikeHtml(bytes)) {
        table.error = QStringLiteral("Die Antwort ist eine Internetseite und keine Exportdatei von Online-TARVIK.");
        return table;
    }
    QByteArray data = bytes;
    if (data.startsWith("\xEF\xBB\xBF"))
        data.remove(0, 3);
    QStringDecoder utf8(QStringDecoder::Utf8);
    QString text = utf8.decode(data);
    if (utf8.hasError())
        text = decodeCp1252(data);
    QStringList lines = text.split(u'\n');
    for (QString& l : lines)
        if (l.endsWith(u'\r'))
            l.chop(1);
    while (!lines.isEmpty() && lines.first().trimmed().isEmpty())
        lines.removeFirst();
    if (lines.isEmpty() || lines.first().trimmed().compare(QLatin1String(LogTableHeader), Qt::CaseInsensitive) != 0) {
        table.error = QStringLiteral("Die Datei enthält keine Stammliste (die Kopfzeile \"%1\" fehlt).")
                          .arg(QLatin1String(LogTableHeader));
        return table;
    }
    // A file that stops inside its last line (a transfer cut off) ends without a line end; that
    // line is taken only when all its fields arrived, else a cut "34" would be stored as "3".
    const bool lastLineOpen = !data.endsWith('\n');
    constexpr qsizetype AllFields = 9;
    for (qsizetype i = 1; i < lines.size(); ++i) {
        const QString& line = lines.at(i);
        if (line.trimmed().isEmpty())
            continue;
        const QStringList f = line.split(u';');
        const bool cutOff = lastLineOpen && i == lines.size() - 1 && f.size() < AllFields;
        bool lotOk = false;
        bool numberOk = false;
        ImportedLog log;
        if (f.size() >= 6 && !cutOff) {
            log.lot = f.at(0).trimmed().toInt(&lotOk);
            log.number = f.at(1).trimmed().toInt(&numberOk);
        }
        if (!lotOk || !numberOk) {
            ++table.unreadableLines;
            continue;
        }
        log.species = f.at(2).trimmed();
        log.quality = f.at(3).trimmed();
        log.length = numberText(readNumber(f.at(4)));
        log.diameter = f.at(5).trimmed();
        log.top = f.value(6).trimmed();
        log.beetle = f.value(7).trimmed().compare(QStringLiteral("J"), Qt::CaseInsensitive) == 0;
        // A remark may itself hold semicolons.
        log.remark = f.size() > 8 ? QStringList(f.mid(8)).join(u';').trimmed() : QString();
        table.logs << log;
    }
    return table;
}

} // namespace tarvik
