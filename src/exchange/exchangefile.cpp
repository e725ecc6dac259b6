#include "exchange/exchangefile.h"
#include "common/systemerror.h"

#include "common/numbers.h"
#include "common/sqldate.h"
#include "common/text.h"
#include "common/textfile.h"
#include "store/sql.h"

#include <QFile>
#include <QFileInfo>
#include <QSqlQuery>
#include <QSqlRecord>
#include <QStringDecoder>
#include <charconv>
#include <cmath>

namespace tarvik::exchange {
namespace {

using K = FieldKind;

const QList<FieldLayout> HarvestFields{
    {"Hieb_Nr", K::Long},          {"Jahr", K::Text, 4},
    {"Waldname", K::Text, 30},     {"Hiebart", K::Text, 20},
    {"Hiebgrund", K::Text, 20},    {nullptr, K::Status},
    {"Waldort", K::Text, 50},      {"Hiebfläche", K::Real},
    {"Hiebdatum_von", K::Date},    {"Hiebdatum_bis", K::Date},
    {"Bemerkung", K::Text, 255},   {"Waldbesitzer_Name", K::Text, 30},
    {"Waldbesitzer_Straße", K::Text, 30}, {"Waldbesitzer_Wohnort", K::Text, 30},
    {"Waldbesitzer_Tel", K::Text, 15},    {"Waldbesitzer_Sonst", K::Text, 30},
};
const QList<FieldLayout> LotFields{
    {"Los_Nr", K::Long},       {"Sortierung", K::Text, 11}, {"Anzahl_Stämme", K::Long},
    {"Efm_oR", K::Real},       {"Anzahl_Pfähle", K::Long},  {"m3_Schichtholz", K::Real},
    {"Lagerort", K::Text, 50}, {"Abnehmer", K::Text, 50},   {nullptr, K::Status},
};
const QList<FieldLayout> LogFields{
    {"Los_Nr", K::Long},          {"Baumart", K::Text, 22},       {"Laufende_Nr", K::Long},
    {"Stärke_gemessen", K::Short}, {"Rindenabzugsart", K::Text, 1}, {"Rindenabzug", K::Short},
    {"Stärke_oR", K::Short},      {"Länge_m", K::Real},           {"Efm_oR", K::Real},
    {"Stärkeklasse", K::Text, 6}, {"Güteklasse", K::Text, 5},     {nullptr, K::Status},
    {"Zopfdurchm_cm", K::Short},  {"Klasse_Heilbronn", K::Text, 5},
};
const QList<FieldLayout> PoleFields{
    {"Los_Nr", K::Long}, {"Baumart", K::Text, 22}, {"Stärke_mR", K::Short},
    {"Länge_m", K::Real}, {"Anzahl", K::Long},     {"Stärkeklasse", K::Text, 6},
};
const QList<FieldLayout> StackFields{
    {"Los_Nr", K::Long},           {"Baumart", K::Text, 22},       {"Sektions_Nr", K::Long},
    {"Stärke", K::Short},          {"Sektionslänge_m", K::Real},   {"Sektionstiefe_m", K::Real},
    {"Sektionshöhe_m", K::Real},   {"Stärkeklasse", K::Text, 6},   {"m3", K::Real},
};

struct SectionSource {
    const char* marker;
    const char* table;
    const char* order;
};
const SectionSource Sources[SectionCount] = {
    {"#HIEBE#", "Hiebe", ""},
    {"#LOSE#", "Lose", "\"Los_Nr\", \"ID\""},
    {"#STÄMME#", "Stämme", "\"Laufende_Nr\", \"ID\""},
    {"#PFÄHLE#", "Pfähle", "\"Los_Nr\", \"ID\""},
    {"#SCHICHTHOLZ#", "Schichtholz", "\"Los_Nr\", \"Sektions_Nr\", \"ID\""},
};

QString cleanText(QString text)
{
    text.replace(u'\t', u' ');
    text.replace(u'\r', u' ');
    text.replace(u'\n', u' ');
    return text;
}

// The shortest decimal that reads back as the same double, never in exponent form.
QString realText(double value)
{
    if (!std::isfinite(value) || value == 0)
        return QStringLiteral("0");
    char buffer[400];
    const auto [end, ec] = std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::fixed);
    if (ec != std::errc())
        return QStringLiteral("0");
    return QString::fromLatin1(buffer, int(end - buffer)).replace(u'.', u',');
}

QString columnList(const QList<FieldLayout>& fields)
{
    QStringList names;
    for (const FieldLayout& f : fields)
        if (f.column)
            names << quoted(QString::fromUtf8(f.column));
    return names.join(QStringLiteral(", "));
}

QStringList recordLines(QSqlQuery& q, const QList<FieldLayout>& fields)
{
    QStringList lines;
    while (q.next()) {
        QStringList parts;
        int column = 0;
        for (const FieldLayout& f : fields)
            parts << (f.kind == K::Status ? QStringLiteral("N") : fieldText(f.kind, q.value(column++)));
        lines << parts.join(u'\t');
    }
    return lines;
}

QStringList tableLines(const QSqlDatabase& db, const char* marker, const QString& sql, int columns)
{
    QStringList lines{QString::fromUtf8(marker)};
    QSqlQuery q = execSql(db, sql);
    while (q.next()) {
        QStringList parts;
        for (int i = 0; i < columns; ++i) {
            const QVariant v = q.value(i);
            const bool number = v.typeId() == QMetaType::Double || v.typeId() == QMetaType::LongLong ||
                                v.typeId() == QMetaType::Int;
            parts << (number ? (v.typeId() == QMetaType::Double ? realText(v.toDouble()) : QString::number(v.toLongLong()))
                             : cleanText(v.isNull() ? QString() : v.toString()));
        }
        lines << parts.join(u'\t');
    }
    return lines;
}

// Digits, sign, point and comma only, and at least one digit: what a number field may hold.
bool looksNumeric(QStringView text)
{
    bool digit = false;
    for (qsizetype i = 0; i < text.size(); ++i) {
        const char16_t c = text[i].unicode();
        if (c >= u'0' && c <= u'9')
            digit = true;
        else if (!(c == u'.' || c == u',' || ((c == u'-' || c == u'+') && i == 0)))
            return false;
    }
    return digit;
}

// What the writer writes ("-12", "0,385") read directly; anything else by the tolerant reader.
double plainNumber(const QString& text)
{
    qsizetype i = 0;
    const bool negative = !text.isEmpty() && text[0] == u'-';
    if (negative)
        ++i;
    double whole = 0;
    qsizetype digits = 0;
    for (; i < text.size() && text[i].isDigit() && digits < 15; ++i, ++digits)
        whole = whole * 10 + (text[i].unicode() - u'0');
    if (i == text.size() && digits > 0)
        return negative ? -whole : whole;
    return readNumber(text);
}

ParseError fault(int line, const QString& reason) { return {line, reason}; }

// Converts one field; an error text when it does not fit its column.
std::optional<QString> convert(const FieldLayout& field, int position, const QString& raw, QVariant& out)
{
    // The field's name is only put together for a message.
    const auto where = [&] {
        return QStringLiteral("Im Feld %1 (%2)").arg(position).arg(field.column ? QString::fromUtf8(field.column) : QStringLiteral("Satzstatus"));
    };
    const QString text = raw.trimmed();
    switch (field.kind) {
    case K::Text:
        if (raw.size() > field.width)
            return QStringLiteral("%1 stehen %2 Zeichen; erlaubt sind höchstens %3.").arg(where()).arg(raw.size()).arg(field.width);
        out = raw;
        return std::nullopt;
    case K::Short:
    case K::Long:
    case K::Real: {
        if (text.isEmpty()) {
            out = QVariant();
            return std::nullopt;
        }
        if (!looksNumeric(text))
            return QStringLiteral("%1 steht \"%2\" statt einer Zahl.").arg(where(), text.left(40));
        const double v = plainNumber(text);
        if (field.kind == K::Real) {
            out = v;
        } else {
            const double limit = field.kind == K::Short ? 32767.0 : 2147483647.0;
            if (std::fabs(v) > limit)
                return QStringLiteral("%1 steht die Zahl %2; sie ist zu groß für diese Spalte.").arg(where(), text.left(40));
            out = field.kind == K::Short ? QVariant(toShort(v)) : QVariant(toLong(v));
        }
        return std::nullopt;
    }
    case K::Date: {
        if (text.isEmpty()) {
            out = QVariant();
            return std::nullopt;
        }
        const QDate date = parseGermanDate(text.section(u' ', 0, 0));
        if (!date.isValid())
            return QStringLiteral("%1 steht \"%2\" statt eines Datums (TT.MM.JJJJ).").arg(where(), text.left(40));
        out = sqlDateValue(formatGermanDate(date));
        return std::nullopt;
    }
    case K::Status:
        out = text.toUpper();
        return std::nullopt;
    }
    return std::nullopt;
}

} // namespace

QString sectionMarker(Section section) { return QString::fromUtf8(Sources[section].marker); }

const QList<FieldLayout>& sectionFields(Section section)
{
    static const QList<FieldLayout>* all[SectionCount] = {&HarvestFields, &LotFields, &LogFields, &PoleFields, &StackFields};
    return *all[section];
}

QString harvestFileName(qint32 hiebNr) { return QString::number(hiebNr) + QString::fromLatin1(FileSuffix); }

QString fieldText(FieldKind kind, const QVariant& value)
{
    if (value.isNull() || !value.isValid())
        return {};
    switch (kind) {
    case K::Text:
        return cleanText(value.toString());
    case K::Short:
    case K::Long:
        return QString::number(toLong(readNumber(value)));
    case K::Real:
        return realText(readNumber(value));
    case K::Date:
        return germanDateFromSql(value);
    case K::Status:
        return QStringLiteral("N");
    }
    return {};
}

QStringList harvestFileLines(const QSqlDatabase& db, qint32 harvestId)
{
    QStringList lines;
    for (int s = 0; s < SectionCount; ++s) {
        const Section section = static_cast<Section>(s);
        const SectionSource& src = Sources[s];
        QString sql = QStringLiteral("SELECT %1 FROM %2 WHERE %3 = ?")
                          .arg(columnList(sectionFields(section)), quoted(QString::fromUtf8(src.table)),
                               section == HarvestSection ? QStringLiteral("\"ID\"") : QStringLiteral("\"Kennung\""));
        if (*src.order)
            sql += QStringLiteral(" ORDER BY ") + QString::fromUtf8(src.order);
        QSqlQuery q = execSql(db, sql, {harvestId});
        lines << sectionMarker(section);
        lines << recordLines(q, sectionFields(section));
    }
    return lines;
}

QStringList masterDataFileLines(const QSqlDatabase& db)
{
    QStringList lines;
    lines << tableLines(db, "#BAUMART#", QStringLiteral("SELECT \"Baumart\" FROM \"Baumarten\" ORDER BY \"Baumart\""), 1);
    lines << tableLines(db, "#KLASSESTÄMME#",
                        QStringLiteral("SELECT \"Klasse\", \"Durchm_oR_von\", \"Durchm_oR_bis\" FROM \"Stärkeklassen_Stämme\" ORDER BY \"Klasse\""), 3);
    lines << tableLines(db, "#KLASSEHEILBRONN#",
                        QStringLiteral("SELECT \"Klasse\", \"Zopfdurchmesser_cm\", \"Länge_m\" FROM \"Stärkeklassen_Stämme_Heilbronn\" ORDER BY \"Klasse\""), 3);
    lines << tableLines(db, "#KLASSEPFÄHLE#",
                        QStringLiteral("SELECT \"Klasse\", \"Durchm_oR_von\", \"Durchm_oR_bis\", \"Mindestlänge_von_m\", \"Mindestlänge_bis_m\" "
                                       "FROM \"Stärkeklassen_Pfähle\" ORDER BY \"Klasse\""), 5);
    lines << tableLines(db, "#KLASSESCHICHTHOLZ#",
                        QStringLiteral("SELECT \"Klasse\", \"Durchm_von\", \"Durchm_bis\" FROM \"Stärkeklassen_Schichtholz\" ORDER BY \"Klasse\""), 3);
    lines << tableLines(db, "#GÜTEKLASSEN#", QStringLiteral("SELECT \"Güteklasse\" FROM \"Güteklassen\" ORDER BY \"Güteklasse\""), 1);

    // The bark table's class columns follow the class table: a header line names them.
    QStringList classColumns;
    const QSqlRecord barkRecord = db.record(QStringLiteral("Rindenabzug"));
    for (int i = 0; i < barkRecord.count(); ++i)
        if (barkRecord.fieldName(i).startsWith(QLatin1String("SK_")))
            classColumns << barkRecord.fieldName(i);
    lines << QStringLiteral("#RINDENABZUG#");
    QString header;
    QStringList selected{QStringLiteral("\"Baumart\"")};
    for (const QString& c : classColumns) {
        header += c + u'\t';
        selected << quoted(c);
    }
    lines << header;
    QSqlQuery bark = execSql(db, QStringLiteral("SELECT %1 FROM \"Rindenabzug\" ORDER BY \"Baumart\"").arg(selected.join(QStringLiteral(", "))));
    while (bark.next()) {
        QString line = cleanText(readText(bark.value(0)));
        for (int i = 1; i <= classColumns.size(); ++i)
            line += u'\t' + fieldText(K::Short, bark.value(i));
        lines << line;
    }

    lines << tableLines(db, "#RINDENABZUG2#",
                        QStringLiteral("SELECT \"Baumart\", \"Stärke_von\", \"Stärke_bis\", \"Abzug_cm\" FROM \"Rindenabzug2\" "
                                       "ORDER BY \"Baumart\", \"Stärke_von\", \"Stärke_bis\""), 4);
    lines << tableLines(db, "#WALDNAME#", QStringLiteral("SELECT \"Waldname\", \"Waldort\", \"Fläche\" FROM \"Liste_Waldnamen\" ORDER BY \"Waldname\""), 3);
    lines << tableLines(db, "#LAGERORT#", QStringLiteral("SELECT \"Inhalt\" FROM \"Liste_Lagerort\" ORDER BY \"Inhalt\""), 1);
    lines << tableLines(db, "#HIEBART#", QStringLiteral("SELECT \"Inhalt\" FROM \"Liste_Hiebart\" ORDER BY \"Inhalt\""), 1);
    lines << tableLines(db, "#HIEBGRUND#", QStringLiteral("SELECT \"Inhalt\" FROM \"Liste_Hiebgrund\" ORDER BY \"Inhalt\""), 1);
    lines << tableLines(db, "#ABNEHMER#", QStringLiteral("SELECT \"Inhalt\" FROM \"Liste_Abnehmer\" ORDER BY \"Inhalt\""), 1);
    return lines;
}

ParseResult parseHarvestFile(const QString& path)
{
    const QString name = QFileInfo(path).fileName();
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {std::nullopt, fault(0, QStringLiteral("Die Datei kann nicht gelesen werden: %1").arg(germanFileError(file)))};
    // A harvest of a million logs is about 80 MB; anything far beyond is no exchange file.
    if (file.size() > MaxFileSize)
        return {std::nullopt, fault(0, QStringLiteral("Die Datei ist %1 MB groß; eine Exportdatei hat höchstens %2 MB.")
                                           .arg(file.size() / (1024 * 1024)).arg(MaxFileSize / (1024 * 1024)))};
    return parseHarvestBytes(name, file.readAll());
}

ParseResult parseHarvestBytes(const QString& fileName, const QByteArray& given)
{
    // A file saved by an editor as UTF-8 is read as such: with its byte order mark, or when its
    // bytes beyond ASCII decode as UTF-8 (Windows-1252 umlauts never do).
    const bool byteOrderMark = given.startsWith("\xEF\xBB\xBF");
    const QByteArray bytes = byteOrderMark ? given.mid(3) : given;
    bool utf8 = byteOrderMark;
    if (!utf8 && std::any_of(bytes.begin(), bytes.end(), [](char c) { return (unsigned char)c >= 0x80; })) {
        QStringDecoder probe(QStringDecoder::Utf8);
        [[maybe_unused]] const QString text = probe.decode(bytes);
        utf8 = !probe.hasError();
    }

    // Split first: line numbers are needed by every later check.
    QList<QByteArrayView> lines;
    qsizetype start = 0;
    while (start < bytes.size()) {
        const qsizetype end = bytes.indexOf('\n', start);
        if (end < 0) {
            lines << QByteArrayView(bytes).sliced(start);
            break;
        }
        lines << QByteArrayView(bytes).sliced(start, end - start);
        start = end + 1;
    }
    const bool cutOff = !bytes.isEmpty() && !bytes.endsWith('\n');

    // First the lines as lines and the order of the markers, so that a missing marker is
    // named as such and not as the odd record it leaves behind.
    QStringList texts;
    QList<int> markerOf; // per line: the section it opens, -1 for a record, -2 for an empty line
    int current = -1;
    for (int i = 0; i < lines.size(); ++i) {
        const int lineNo = i + 1;
        QByteArrayView raw = lines[i];
        if (raw.endsWith('\r'))
            raw.chop(1); // the line's end, not part of its length
        if (raw.size() > MaxLineLength)
            return {std::nullopt, fault(lineNo, QStringLiteral("Die Zeile ist %1 Zeichen lang; ein Datensatz hat höchstens %2.")
                                                    .arg(raw.size()).arg(MaxLineLength))};
        if (cutOff && i == lines.size() - 1)
            return {std::nullopt, fault(lineNo, QStringLiteral("Die Zeile endet ohne Zeilenende: die Datei ist unvollständig (abgeschnitten)."))};
        const QString line = utf8 ? QString::fromUtf8(raw) : decodeCp1252(raw.toByteArray());
        texts << line;
        if (line.isEmpty()) {
            markerOf << -2;
            continue;
        }
        if (line.startsWith(u'#') && line.endsWith(u'#') && line.size() > 1 && !line.contains(u'\t')) {
            int found = -1;
            for (int s = 0; s < SectionCount; ++s)
                if (line == sectionMarker(static_cast<Section>(s)))
                    found = s;
            if (found < 0)
                return {std::nullopt, fault(lineNo, QStringLiteral("Die Kennzeichnung %1 ist unbekannt.").arg(line.left(40)))};
            if (found != current + 1)
                return {std::nullopt, fault(lineNo, found <= current
                                                        ? QStringLiteral("Die Kennzeichnung %1 steht ein zweites Mal oder an falscher Stelle.").arg(line)
                                                        : QStringLiteral("Vor dieser Zeile fehlt die Kennzeichnung %1.")
                                                              .arg(sectionMarker(static_cast<Section>(current + 1))))};
            current = found;
            markerOf << found;
            continue;
        }
        if (current < 0)
            return {std::nullopt, fault(lineNo, QStringLiteral("Vor dieser Zeile fehlt die Kennzeichnung %1.").arg(sectionMarker(HarvestSection)))};
        markerOf << -1;
    }
    if (current < SectionCount - 1)
        return {std::nullopt, fault(int(lines.size()), QStringLiteral("Die Kennzeichnung %1 fehlt: die Datei ist unvollständig.")
                                                           .arg(sectionMarker(static_cast<Section>(current + 1))))};

    ParsedFile parsed;
    parsed.fileName = fileName;
    current = -1;
    for (int i = 0; i < texts.size(); ++i) {
        const int lineNo = i + 1;
        if (markerOf[i] == -2)
            continue;
        if (markerOf[i] >= 0) {
            current = markerOf[i];
            continue;
        }
        const QString& line = texts[i];
        const Section section = static_cast<Section>(current);
        const QList<FieldLayout>& fields = sectionFields(section);
        const QStringList parts = line.split(u'\t');
        if (parts.size() < fields.size())
            return {std::nullopt, fault(lineNo, QStringLiteral("Der Datensatz im Abschnitt %1 hat %2 Felder; erwartet werden %3.")
                                                    .arg(sectionMarker(section)).arg(parts.size()).arg(fields.size()))};
        Record record;
        record.line = lineNo;
        for (int f = 0; f < fields.size(); ++f) {
            QVariant value;
            if (const auto error = convert(fields[f], f, parts[f], value))
                return {std::nullopt, fault(lineNo, *error)};
            if (fields[f].kind == K::Status)
                record.status = value.toString();
            else
                record.values << value;
        }
        if (section == HarvestSection) {
            if (!parsed.sections[HarvestSection].isEmpty())
                return {std::nullopt, fault(lineNo, QStringLiteral("Die Datei enthält mehr als einen Hieb."))};
            if (record.status != u"N" && record.status != u"A")
                return {std::nullopt, fault(lineNo, QStringLiteral("Der Hieb ist weder als neu (N) noch als geändert (A) gekennzeichnet."))};
            if (record.values[0].isNull())
                return {std::nullopt, fault(lineNo, QStringLiteral("Der Hieb hat keine Hieb_Nr."))};
        } else if (record.values[0].isNull()) {
            return {std::nullopt, fault(lineNo, QStringLiteral("Der Datensatz hat keine Los-Nummer."))};
        }
        parsed.sections[section] << record;
    }
    if (parsed.sections[HarvestSection].isEmpty())
        return {std::nullopt, fault(0, QStringLiteral("Die Datei enthält keinen Hieb."))};
    return {std::move(parsed), {}};
}

QString refusalMessage(const QString& fileName, const ParseError& error)
{
    const QString where = error.line > 0 ? QStringLiteral(" (Zeile %1)").arg(error.line) : QString();
    return QStringLiteral("Die Datei %1 kann nicht importiert werden%2: %3 Von dieser Datei wurde nichts übernommen.")
        .arg(fileName, where, error.reason);
}

QString harvestStatusOfFile(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    file.readLine(MaxLineLength);
    QByteArray second = file.readLine(MaxLineLength);
    while (second.endsWith('\n') || second.endsWith('\r'))
        second.chop(1);
    const QStringList parts = decodeCp1252(second).split(u'\t');
    return parts.size() > 5 ? parts[5].trimmed().toUpper() : QString();
}

} // namespace tarvik::exchange
