#include "eldat/sender.h"

#include "invoices/invoice.h"

#include <QRegularExpression>

namespace tarvik::eldat {
namespace {

const QRegularExpression& emailPattern()
{
    // The address form receivers check: local part, "@", a domain with a top level of letters.
    static const QRegularExpression p(QStringLiteral("[^<>()\\[\\]\\\\,;:\\s@\"]+(\\.[^<>()\\[\\]\\\\.,;:\\s@\"]+)*@"
                                                     "([a-zA-Z0-9-]+\\.)+[a-zA-Z]{2,}"));
    return p;
}

// "Tel.: 0123 / 45 67-8" → "0123 / 45 67-8"; nothing when too few or too many digits remain.
QString phoneNumber(const QString& line)
{
    static const QRegularExpression label(QStringLiteral("^\\s*(tel(efon)?|fon|phone|mobil|handy)\\b[.:]?\\s*"),
                                          QRegularExpression::CaseInsensitiveOption);
    QString number = line;
    number.remove(label);
    number.remove(QRegularExpression(QStringLiteral("[()]")));
    number = number.simplified();
    static const QRegularExpression allowed(QStringLiteral("^\\+?[0-9 /-]{5,20}$"));
    if (!allowed.match(number).hasMatch() || number.count(QRegularExpression(QStringLiteral("[0-9]"))) < 5)
        return {};
    return number;
}

} // namespace

SenderResult senderFromLines(const QStringList& lines)
{
    static const QRegularExpression phoneLabel(QStringLiteral("^\\s*(tel(efon)?|fon|phone|mobil|handy)\\b"),
                                               QRegularExpression::CaseInsensitiveOption);
    static const QRegularExpression skipped(QStringLiteral("^\\s*(fax|telefax|www\\.|https?://|internet)"),
                                            QRegularExpression::CaseInsensitiveOption);
    static const QRegularExpression town(QStringLiteral("^(?:(D|A|CH)\\s*-\\s*)?([0-9]{4,5})\\s+([^0-9\\s].*)$"),
                                         QRegularExpression::CaseInsensitiveOption);
    static const QRegularExpression contactLabel(QStringLiteral("^\\s*(z\\.\\s*hd\\.?|ansprechpartner(in)?:?)\\s*"),
                                                 QRegularExpression::CaseInsensitiveOption);
    static const QRegularExpression houseNumber(QStringLiteral("[0-9]+\\s*[a-zA-Z]?$"));

    SenderResult result;
    Sender& s = result.sender;
    QStringList others;
    QString contact;
    for (const QString& raw : lines) {
        const QString line = raw.simplified();
        if (line.isEmpty() || skipped.match(line).hasMatch())
            continue;
        if (line.contains(u'@')) {
            if (s.email.isEmpty())
                s.email = emailPattern().match(line).captured(0);
            continue;
        }
        if (const QRegularExpressionMatch m = town.match(line); m.hasMatch() && s.postcode.isEmpty()) {
            const QString country = m.captured(1).toUpper();
            s.state = country == u"A" ? QStringLiteral("AT") : country == u"CH" ? QStringLiteral("CH") : QStringLiteral("DE");
            s.postcode = m.captured(2);
            s.city = m.captured(3).left(100);
            continue;
        }
        if (phoneLabel.match(line).hasMatch() || !phoneNumber(line).isEmpty()) {
            if (s.phone.isEmpty())
                s.phone = phoneNumber(line);
            continue;
        }
        if (contactLabel.match(line).hasMatch()) {
            contact = QString(line).remove(contactLabel).simplified();
            continue;
        }
        others << line;
    }
    s.name = others.value(0).left(100);
    for (qsizetype i = 1; i < others.size() && s.street.isEmpty(); ++i)
        if (houseNumber.match(others[i]).hasMatch())
            s.street = others[i].left(100);
    if (s.street.isEmpty())
        s.street = others.value(1).left(100);

    // The last word is the surname: "Hans Müller" is Hans, Müller; a one-word name is all surname,
    // and so is the name of an enterprise or association when no contact person is named.
    static const QRegularExpression enterprise(
        QStringLiteral("(forst(betrieb|verwaltung|amt|gemeinschaft)|verein|verband|gemeinschaft|gmbh|\\b(kg|eg|ag|fbg|wbv|gut|"
                       "gemeinde|stadt)\\b|e\\.\\s*v\\.)"),
        QRegularExpression::CaseInsensitiveOption);
    const QString person = contact.isEmpty() ? s.name : contact;
    const QStringList words = contact.isEmpty() && enterprise.match(person).hasMatch()
                                  ? QStringList{person}
                                  : person.split(u' ', Qt::SkipEmptyParts);
    if (!words.isEmpty()) {
        s.surname = words.last().left(100);
        s.firstName = words.mid(0, words.size() - 1).join(u' ').left(100);
    }

    if (s.name.isEmpty())
        result.reasons << QStringLiteral("...die Absenderanschrift keinen Namen enthält.");
    if (s.street.isEmpty())
        result.reasons << QStringLiteral("...die Absenderanschrift keine Straße enthält.");
    if (s.postcode.isEmpty())
        result.reasons << QStringLiteral("...die Absenderanschrift keine Zeile mit Postleitzahl und Ort enthält.");
    if (s.phone.isEmpty())
        result.reasons << QStringLiteral("...die Absenderanschrift keine Telefonnummer enthält.");
    if (s.email.isEmpty())
        result.reasons << QStringLiteral("...die Absenderanschrift keine E-Mail-Adresse enthält.");
    return result;
}

SenderResult senderFromOwnData(const parties::OwnData& own)
{
    SenderResult result;
    Sender& s = result.sender;
    s.name = own.name.trimmed().left(100);
    s.street = own.street.trimmed().left(100);
    s.postcode = own.postCode.trimmed();
    s.city = own.city.trimmed().left(100);
    s.state = own.country.trimmed().isEmpty() ? QStringLiteral("DE") : own.country.trimmed().toUpper();
    s.phone = own.phone.trimmed();
    s.email = own.email.trimmed();
    // The contact person's last word is the surname; without one the whole name is.
    const QStringList words = own.contact.trimmed().isEmpty() ? QStringList{s.name} : own.contact.split(u' ', Qt::SkipEmptyParts);
    if (!words.isEmpty()) {
        s.surname = words.last().left(100);
        s.firstName = words.mid(0, words.size() - 1).join(u' ').left(100);
    }
    const std::pair<const QString*, const char*> required[] = {
        {&s.street, "...bei den eigenen Angaben die Straße fehlt."},
        {&s.postcode, "...bei den eigenen Angaben die Postleitzahl fehlt."},
        {&s.city, "...bei den eigenen Angaben der Ort fehlt."},
        {&s.phone, "...bei den eigenen Angaben die Telefonnummer fehlt."},
        {&s.email, "...bei den eigenen Angaben die E-Mail-Adresse fehlt."}};
    for (const auto& [value, reason] : required)
        if (value->isEmpty())
            result.reasons << QString::fromUtf8(reason);
    return result;
}

SenderResult offerSender(const QSqlDatabase& db, const QString& dataFolder)
{
    const parties::OwnData own = parties::loadOwnData(db);
    if (!own.name.trimmed().isEmpty())
        return senderFromOwnData(own);
    InvoiceInput remembered;
    if (!loadRemembered(dataFolder, remembered))
        return {{}, {QStringLiteral("...noch keine Absenderanschrift gespeichert ist.")}};
    return senderFromLines(QStringList(remembered.sender.begin(), remembered.sender.end()));
}

} // namespace tarvik::eldat
