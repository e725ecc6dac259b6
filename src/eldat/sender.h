#pragma once
// Who offers the wood: name, address and contact of the sender of an .eldat file, from the own
// data ("Eigene Angaben") where they are kept, else from the sender lines the invoice window
// remembers ("Ihre Anschrift").
#include "parties/parties.h"

#include <QSqlDatabase>
#include <QString>
#include <QStringList>

namespace tarvik::eldat {

struct Sender {
    QString name, street, postcode, city;
    QString state = QStringLiteral("DE"); // the standard's country code
    QString firstName, surname;           // the contact person
    QString phone, email;
};

struct SenderResult {
    Sender sender;
    QStringList reasons; // "...die Absenderanschrift keine ... enthält.", one per missing part
};

SenderResult offerSender(const QSqlDatabase& db, const QString& dataFolder);
// The own data as sender; every part the standard needs and the data lack gives a reason.
SenderResult senderFromOwnData(const parties::OwnData& own);


// The address lines as typed, read into their parts: a line with "@" is the e-mail address, one
// with "Tel"/"Fon"/"Mobil" or of digits alone the phone, "12345 Ort" (also "D-", "A-", "CH-")
// postcode and town; of the other lines the first is the name, the street is the first later
// one that ends in a house number; "z. Hd." or "Ansprechpartner" names the contact person,
// else the name line does. Fax numbers and web addresses are passed over.
SenderResult senderFromLines(const QStringList& lines);

} // namespace tarvik::eldat
