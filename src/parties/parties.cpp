#include "parties/parties.h"

#include "common/text.h"
#include "store/collation.h"
#include "store/rows.h"
#include "store/sql.h"
#include "store/textwidth.h"

#include <QRegularExpression>
#include <QSqlQuery>
#include <QSqlRecord>

namespace tarvik::parties {
namespace {

const QString OwnTable = QStringLiteral("Eigene_Angaben");
const QString BuyerTable = QStringLiteral("Abnehmerdaten");

// Member of the struct behind each key, in the order of the field tables.
template <typename Data>
using Members = QList<std::pair<const char*, QString Data::*>>;

const Members<OwnData>& ownMembers()
{
    static const Members<OwnData> m{{"name", &OwnData::name},         {"strasse", &OwnData::street},  {"plz", &OwnData::postCode},
                                    {"ort", &OwnData::city},          {"land", &OwnData::country},    {"kontakt", &OwnData::contact},
                                    {"telefon", &OwnData::phone},     {"email", &OwnData::email},     {"steuernummer", &OwnData::taxNumber},
                                    {"ustid", &OwnData::vatId},       {"kennung", &OwnData::sellerId}, {"iban", &OwnData::iban},
                                    {"bic", &OwnData::bic},           {"bank", &OwnData::bank}};
    return m;
}

const Members<BuyerData>& buyerMembers()
{
    static const Members<BuyerData> m{{"name", &BuyerData::name}, {"strasse", &BuyerData::street}, {"plz", &BuyerData::postCode},
                                      {"ort", &BuyerData::city},  {"land", &BuyerData::country},  {"ustid", &BuyerData::vatId},
                                      {"referenz", &BuyerData::reference}, {"email", &BuyerData::email}};
    return m;
}

template <typename Data>
QString Data::* memberOf(const Members<Data>& members, const QString& key)
{
    for (const auto& [k, member] : members)
        if (key == QLatin1String(k))
            return member;
    return nullptr;
}

QString compact(const QString& text) { return text.simplified().remove(u' ').toUpper(); }

// Typed values are kept as typed, except the codes users write in several ways.
template <typename Data>
void normalise(Data& data)
{
    data.country = data.country.trimmed().toUpper();
    if (data.country.isEmpty())
        data.country = QStringLiteral("DE");
    data.vatId = compact(data.vatId);
}

QStringList commonRefusals(const QString& table, const QList<Field>& fields, const QList<QString>& values, const QString& country,
                           const QString& postCode, const QString& vatId, const QString& email)
{
    QStringList reasons;
    if (!QRegularExpression(QStringLiteral("^[A-Z]{2}$")).match(country).hasMatch())
        reasons << QStringLiteral("...das Land als zweistelliges Länderkürzel (z.B. DE) angegeben werden muss.");
    if (!postCode.trimmed().isEmpty() && !postCodeIsValid(postCode, country))
        reasons << QStringLiteral("...die Postleitzahl in Deutschland aus 5 Ziffern bestehen muss.");
    if (!vatId.isEmpty() && !vatIdIsValid(vatId, country))
        reasons << (country == u"DE" ? QStringLiteral("...die USt-IdNr. aus DE und 9 Ziffern bestehen muss.")
                                     : QStringLiteral("...die USt-IdNr. mit dem Länderkürzel beginnen muss."));
    if (!email.trimmed().isEmpty() && !QRegularExpression(QStringLiteral("^[^@\\s]+@[^@\\s]+\\.[^@\\s]+$")).match(email.trimmed()).hasMatch())
        reasons << QStringLiteral("...die E-Mail-Adresse nicht gültig ist.");
    QList<TextField> widths;
    for (int i = 0; i < fields.size(); ++i)
        widths.append({QString::fromUtf8(fields[i].column), values[i], QString::fromUtf8(fields[i].title)});
    reasons << widthReasons(table, widths);
    return reasons;
}

template <typename Data>
QList<QString> valuesOf(const Data& data, const Members<Data>& members)
{
    QList<QString> values;
    for (const auto& [key, member] : members)
        values << (data.*member).trimmed();
    return values;
}

template <typename Data>
void readInto(Data& data, const QSqlRecord& r, const Members<Data>& members, const QList<Field>& fields)
{
    for (int i = 0; i < members.size(); ++i)
        data.*(members[i].second) = readText(r.value(QString::fromUtf8(fields[i].column)));
}

template <typename Data>
RowValues rowOf(const Data& data, const Members<Data>& members, const QList<Field>& fields)
{
    RowValues row;
    for (int i = 0; i < members.size(); ++i)
        row.append({QString::fromUtf8(fields[i].column), (data.*(members[i].second)).trimmed()});
    return row;
}

} // namespace

const QList<Field>& ownDataFields()
{
    static const QList<Field> f{{"name", "Name", "der Name"},
                                {"strasse", "Strasse", "die Straße"},
                                {"plz", "PLZ", "die Postleitzahl"},
                                {"ort", "Ort", "der Ort"},
                                {"land", "Land", "das Land"},
                                {"kontakt", "Kontakt", "der Ansprechpartner"},
                                {"telefon", "Telefon", "die Telefonnummer"},
                                {"email", "EMail", "die E-Mail-Adresse"},
                                {"steuernummer", "Steuernummer", "die Steuernummer"},
                                {"ustid", "UStIdNr", "die USt-IdNr."},
                                {"kennung", "Lieferantennummer", "die Lieferantennummer beim Käufer"},
                                {"iban", "IBAN", "die IBAN"},
                                {"bic", "BIC", "die BIC"},
                                {"bank", "Bank", "der Name der Bank"}};
    return f;
}

const QList<Field>& buyerFields()
{
    static const QList<Field> f{{"name", "Name", "der Name"},
                                {"strasse", "Strasse", "die Straße"},
                                {"plz", "PLZ", "die Postleitzahl"},
                                {"ort", "Ort", "der Ort"},
                                {"land", "Land", "das Land"},
                                {"ustid", "UStIdNr", "die USt-IdNr."},
                                {"referenz", "Referenz", "die Käuferreferenz"},
                                {"email", "EMail", "die E-Mail-Adresse"}};
    return f;
}

OwnData loadOwnData(const QSqlDatabase& db)
{
    OwnData data;
    QSqlQuery q = execSql(db, QStringLiteral("SELECT * FROM Eigene_Angaben ORDER BY ID LIMIT 1"));
    if (!q.next())
        return data;
    readInto(data, q.record(), ownMembers(), ownDataFields());
    if (data.country.isEmpty())
        data.country = QStringLiteral("DE");
    data.regime = regimeFromWord(readText(q.value(QStringLiteral("Besteuerung")))).value_or(TaxRegime::Regular);
    return data;
}

std::optional<BuyerData> loadBuyer(const QSqlDatabase& db, const QString& shortName)
{
    QSqlQuery q = execSql(db, QStringLiteral("SELECT * FROM Abnehmerdaten WHERE Kurzname = ? ORDER BY ID LIMIT 1"), {shortName.trimmed()});
    if (!q.next())
        return std::nullopt;
    BuyerData data;
    data.shortName = readText(q.value(QStringLiteral("Kurzname")));
    readInto(data, q.record(), buyerMembers(), buyerFields());
    if (data.country.isEmpty())
        data.country = QStringLiteral("DE");
    return data;
}

QStringList buyerNames(const QSqlDatabase& db)
{
    QStringList names;
    QSqlQuery q = execSql(db, QStringLiteral("SELECT Kurzname FROM Abnehmerdaten UNION SELECT Abnehmer FROM Rechnungen"));
    while (q.next()) {
        const QString name = readText(q.value(0));
        if (!name.isEmpty() && !names.contains(name))
            names << name;
    }
    std::sort(names.begin(), names.end(), germanLess);
    return names;
}

QString fieldValue(const OwnData& data, const QString& key)
{
    if (key == u"besteuerung")
        return regimeWord(data.regime);
    const auto member = memberOf(ownMembers(), key);
    return member ? data.*member : QString();
}

QString fieldValue(const BuyerData& data, const QString& key)
{
    const auto member = memberOf(buyerMembers(), key);
    return member ? data.*member : QString();
}

bool setField(OwnData& data, const QString& key, const QString& value, QString* why)
{
    if (key == u"besteuerung") {
        const auto regime = regimeFromWord(value);
        if (!regime) {
            *why = QStringLiteral("besteuerung erwartet regel, pauschal24 oder klein19.");
            return false;
        }
        data.regime = *regime;
        return true;
    }
    const auto member = memberOf(ownMembers(), key);
    if (!member) {
        *why = QStringLiteral("Das Feld \"%1\" gibt es bei den eigenen Angaben nicht.").arg(key);
        return false;
    }
    data.*member = value;
    return true;
}

bool setField(BuyerData& data, const QString& key, const QString& value, QString* why)
{
    const auto member = memberOf(buyerMembers(), key);
    if (!member) {
        *why = QStringLiteral("Das Feld \"%1\" gibt es beim Abnehmer nicht.").arg(key);
        return false;
    }
    data.*member = value;
    return true;
}

bool ibanIsValid(const QString& typed)
{
    const QString iban = compact(typed);
    if (iban.size() < 15 || iban.size() > 34 || !QRegularExpression(QStringLiteral("^[A-Z]{2}[0-9]{2}[A-Z0-9]+$")).match(iban).hasMatch())
        return false;
    if (iban.startsWith(u"DE") && iban.size() != 22)
        return false;
    // ISO 13616: the first four characters move to the end, letters count 10 … 35, mod 97 is 1.
    const QString moved = iban.mid(4) + iban.left(4);
    int rest = 0;
    for (QChar c : moved) {
        const int value = c.isDigit() ? c.digitValue() : c.unicode() - u'A' + 10;
        rest = value >= 10 ? (rest * 100 + value) % 97 : (rest * 10 + value) % 97;
    }
    return rest == 1;
}

bool vatIdIsValid(const QString& typed, const QString& country)
{
    const QString vatId = compact(typed);
    if (country.trimmed().toUpper() == u"DE" || vatId.startsWith(u"DE"))
        return QRegularExpression(QStringLiteral("^DE[0-9]{9}$")).match(vatId).hasMatch();
    return QRegularExpression(QStringLiteral("^[A-Z]{2}[A-Z0-9+*]{2,13}$")).match(vatId).hasMatch();
}

bool postCodeIsValid(const QString& postCode, const QString& country)
{
    if (country.trimmed().toUpper() != u"DE")
        return !postCode.trimmed().isEmpty();
    return QRegularExpression(QStringLiteral("^[0-9]{5}$")).match(postCode.trimmed()).hasMatch();
}

QStringList ownDataRefusals(const OwnData& typed)
{
    OwnData data = typed;
    normalise(data);
    QStringList reasons = commonRefusals(OwnTable, ownDataFields(), valuesOf(data, ownMembers()), data.country, data.postCode, data.vatId,
                                         data.email);
    if (!data.iban.trimmed().isEmpty() && !ibanIsValid(data.iban))
        reasons << QStringLiteral("...die IBAN nicht gültig ist (Länge oder Prüfziffer falsch).");
    if (!data.bic.trimmed().isEmpty() && !QRegularExpression(QStringLiteral("^[A-Z0-9]{8}([A-Z0-9]{3})?$")).match(compact(data.bic)).hasMatch())
        reasons << QStringLiteral("...die BIC aus 8 oder 11 Buchstaben und Ziffern bestehen muss.");
    return reasons;
}

QStringList buyerRefusals(const BuyerData& typed)
{
    BuyerData data = typed;
    normalise(data);
    QStringList reasons;
    if (data.shortName.trimmed().isEmpty())
        reasons << QStringLiteral("...der Kurzname des Abnehmers angegeben werden muss.");
    reasons << commonRefusals(BuyerTable, buyerFields(), valuesOf(data, buyerMembers()), data.country, data.postCode, data.vatId, data.email);
    reasons << widthReasons(BuyerTable, {{QStringLiteral("Kurzname"), data.shortName.trimmed(), QStringLiteral("der Kurzname")}});
    return reasons;
}

bool storeOwnData(const AppContext& context, const OwnData& typed)
{
    OwnData data = typed;
    normalise(data);
    data.iban = compact(data.iban);
    data.bic = compact(data.bic);
    const QStringList reasons = ownDataRefusals(data);
    if (!reasons.isEmpty()) {
        context.prompter.inform(QStringLiteral("Die Eingabe kann nicht übernommen werden, weil...\n") + reasons.join(u'\n'));
        return false;
    }
    RowValues row = rowOf(data, ownMembers(), ownDataFields());
    row.append({QStringLiteral("Besteuerung"), regimeWord(data.regime)});
    TransactionGuard guard(context.db);
    const QVariant id = scalar(context.db, QStringLiteral("SELECT ID FROM Eigene_Angaben ORDER BY ID LIMIT 1"));
    writeRow(context.db, OwnTable, row, id.isValid() ? std::optional<qint32>(id.toInt()) : std::nullopt);
    guard.commit();
    return true;
}

bool storeBuyer(const AppContext& context, const BuyerData& typed)
{
    BuyerData data = typed;
    normalise(data);
    data.shortName = data.shortName.trimmed();
    const QStringList reasons = buyerRefusals(data);
    if (!reasons.isEmpty()) {
        context.prompter.inform(QStringLiteral("Die Eingabe kann nicht übernommen werden, weil...\n") + reasons.join(u'\n'));
        return false;
    }
    RowValues row{{QStringLiteral("Kurzname"), data.shortName}};
    row.append(rowOf(data, buyerMembers(), buyerFields()));
    TransactionGuard guard(context.db);
    const QVariant id = scalar(context.db, QStringLiteral("SELECT ID FROM Abnehmerdaten WHERE Kurzname = ? ORDER BY ID LIMIT 1"),
                               {data.shortName});
    writeRow(context.db, BuyerTable, row, id.isValid() ? std::optional<qint32>(id.toInt()) : std::nullopt);
    guard.commit();
    return true;
}

std::pair<QString, QString> splitTown(const QString& town)
{
    const QRegularExpressionMatch m = QRegularExpression(QStringLiteral("^\\s*([0-9]{5})\\s+(.+?)\\s*$")).match(town);
    if (m.hasMatch())
        return {m.captured(1), m.captured(2)};
    return {QString(), town.trimmed()};
}

} // namespace tarvik::parties
