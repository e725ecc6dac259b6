#include "devices/fmr1.h"

#include "common/numbers.h"

#include <QStringBuilder>

namespace tarvik {
namespace {

// Characters from..to (1-based, inclusive) of the bit string as one binary number.
int bits(const QString& s, std::initializer_list<std::pair<int, int>> ranges)
{
    int value = 0;
    for (const auto& [from, to] : ranges)
        for (int i = from; i <= to; ++i)
            value = value * 2 + (s.at(i - 1) == u'1' ? 1 : 0);
    return value;
}

QString speciesOf(const QString& code)
{
    static const QStringList Species{QString(), QStringLiteral("Do"), QStringLiteral("Es"), QStringLiteral("Ah"),
                                     QStringLiteral("Ki"), QStringLiteral("Ei"), QStringLiteral("La"),
                                     QStringLiteral("Fi"), QStringLiteral("Ta"), QStringLiteral("Bu")};
    const int n = bits(code, {{1, 4}});
    return n < Species.size() ? Species.at(n) : QString();
}

QString qualityOf(int code)
{
    switch (code) {
    case 1: return QStringLiteral("A");
    case 2: return QStringLiteral("B");
    case 3: return QStringLiteral("C");
    case 4: return QStringLiteral("D");
    default: return QStringLiteral(" ");
    }
}

} // namespace

QString fmr1BitString(const QByteArray& fourBytes)
{
    QString s;
    s.reserve(32);
    for (int i = 0; i < 4; ++i) {
        const auto byte = static_cast<unsigned char>(i < fourBytes.size() ? fourBytes.at(i) : 0);
        for (int bit = 7; bit >= 0; --bit)
            s += (byte >> bit) & 1 ? u'1' : u'0';
    }
    return s;
}

Fmr1Record decodeFmr1Record(const QByteArray& fiveBytes)
{
    const QString s = fmr1BitString(fiveBytes.left(4));
    Fmr1Record r;
    r.species = speciesOf(s);
    r.quality = qualityOf(bits(s, {{6, 8}}));
    // Bits 25 and 26 are read twice: the device packs its numbers so.
    r.first = bits(s, {{9, 14}, {19, 26}});
    r.second = bits(s, {{26, 32}});
    r.third = bits(s, {{25, 25}, {5, 5}, {17, 18}});
    r.lot = fiveBytes.size() >= 5 ? static_cast<unsigned char>(fiveBytes.at(4)) : 0;
    return r;
}

QString fmr1Line(const Fmr1Record& r)
{
    // One allocation for the line, not one per piece: a transfer holds thousands of records.
    QString line = r.species % u'\t' % r.quality % u'\t' % QString::number(r.first) % u'\t' % QString::number(r.second)
                   % QLatin1String("\t0") % QString::number(r.third);
    if (r.lot > 0)
        line += u'\t' % QString::number(r.lot);
    return line;
}

Fmr1Conversion convertFmr1Transfer(const QByteArray& received)
{
    Fmr1Conversion c;
    c.lines << QStringLiteral("FMR 1") << QStringLiteral("Baumart");
    if (received.isEmpty())
        return c;
    if (received.at(0) != '4') {
        QString line;
        for (const char ch : received) {
            if (ch == '\r' || ch == '\n') {
                if (!line.isEmpty())
                    c.lines << line;
                line.clear();
            } else {
                line += QChar::fromLatin1(ch); // the device speaks 8-bit text
            }
        }
        if (!line.isEmpty())
            c.lines << line;
        return c;
    }
    c.binary = true;
    qsizetype pos = Fmr1HeaderBytes;
    for (; pos + Fmr1RecordBytes <= received.size(); pos += Fmr1RecordBytes) {
        const QByteArray record = received.mid(pos, Fmr1RecordBytes);
        if (record.count('\0') == Fmr1RecordBytes) {
            ++c.paddingRecords;
            continue;
        }
        c.lines << fmr1Line(decodeFmr1Record(record));
    }
    if (pos < received.size())
        c.cutOffBytes = int(received.size() - pos);
    return c;
}

QList<ImportedLog> parseFmr1Lines(const QStringList& lines)
{
    QList<ImportedLog> logs;
    for (const QString& line : lines) {
        if (line.contains(QStringLiteral("FMR 1")) || line.contains(QStringLiteral("Baumart")))
            continue;
        const QList<QStringView> f = QStringView(line).split(u'\t');
        if (f.size() < 5)
            continue;
        bool numberOk = false;
        bool diameterOk = false;
        const qint32 number = f.at(2).trimmed().toInt(&numberOk);
        [[maybe_unused]] const int diameter = f.at(3).trimmed().toInt(&diameterOk);
        if (!numberOk || !diameterOk)
            continue; // noise, e.g. a transfer at the wrong speed
        ImportedLog log;
        log.species = f.at(0).trimmed().toString();
        log.quality = f.at(1).trimmed().toString();
        log.number = number;
        log.diameter = f.at(3).trimmed().toString();
        log.length = numberText(readNumber(f.at(4).toString()));
        if (f.size() >= 6)
            log.lot = f.at(5).trimmed().toInt();
        logs << log;
    }
    return logs;
}

} // namespace tarvik
