#pragma once
// The owner's own data and the buyers' structured addresses, as invoices and e-invoices need
// them: reading, checking what is typed (IBAN check digits, German VAT ids and post codes) and
// storing, each through one core call.
#include "parties/taxregime.h"
#include "store/context.h"

#include <QList>
#include <QStringList>
#include <optional>

namespace tarvik::parties {

struct OwnData {
    QString name, street, postCode, city, country = QStringLiteral("DE"), contact, phone, email;
    QString taxNumber; // Steuernummer
    QString vatId;     // USt-IdNr.
    QString sellerId;  // the seller's identifier at the buyer (e.g. supplier number)
    QString iban, bic, bank;
    TaxRegime regime = TaxRegime::Regular;
};

struct BuyerData {
    QString shortName; // the Abnehmer of invoices and lots
    QString name, street, postCode, city, country = QStringLiteral("DE");
    QString vatId;
    QString reference; // order or customer number, or a public buyer's Leitweg-ID
    QString email;
};

// One typed field of the command line's FELD=WERT, with its column and its German name.
struct Field {
    const char* key;    // "plz"
    const char* column; // "PLZ"
    const char* title;  // "die Postleitzahl"
};
const QList<Field>& ownDataFields();
const QList<Field>& buyerFields(); // without the short name

OwnData loadOwnData(const QSqlDatabase& db);
std::optional<BuyerData> loadBuyer(const QSqlDatabase& db, const QString& shortName);
// The short names of the register and of earlier invoices, in German order.
QStringList buyerNames(const QSqlDatabase& db);

// The value of a field by its key, and setting it ("besteuerung" takes regel, pauschal24, klein19).
QString fieldValue(const OwnData& data, const QString& key);
QString fieldValue(const BuyerData& data, const QString& key);
// False when the key is not a field or the value is no tax regime; the reason in *why.
bool setField(OwnData& data, const QString& key, const QString& value, QString* why);
bool setField(BuyerData& data, const QString& key, const QString& value, QString* why);

// Every reason a value cannot be taken, each as "...<reason>" for the usual refusal message.
QStringList ownDataRefusals(const OwnData& data);
QStringList buyerRefusals(const BuyerData& data);

// The single checks, also for the windows that check a field as it is left.
bool ibanIsValid(const QString& iban);
// "DE" + 9 digits for German buyers and sellers; other countries: two letters and 2 to 13 characters.
bool vatIdIsValid(const QString& vatId, const QString& country);
bool postCodeIsValid(const QString& postCode, const QString& country);

// Stores after the checks; refusals are shown through the prompter and nothing is written.
bool storeOwnData(const AppContext& context, const OwnData& data);
bool storeBuyer(const AppContext& context, const BuyerData& data);

// "88662 Überlingen" as post code and town; a town without a leading post code stays whole.
std::pair<QString, QString> splitTown(const QString& town);

} // namespace tarvik::parties
