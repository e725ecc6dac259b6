#pragma once
// An invoice as a UN/CEFACT Cross Industry Invoice (CII) file, for XRechnung 3.0 or plain EN 16931.
#include "invoices/einvoice/einvoice.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

namespace tarvik::einvoice {

enum class Profile {
    XRechnung, // urn:cen.eu:en16931:2017#compliant#urn:xeinkauf.de:kosit:xrechnung_3.0
    EN16931,   // urn:cen.eu:en16931:2017
};
QString guidelineId(Profile profile);

// German phrases for every field the profile needs and the invoice lacks, e.g. "die
// Postleitzahl des Käufers"; empty when a file may be written.
QStringList missingFields(const Invoice& invoice, Profile profile);
// "Für die E-Rechnung fehlen: a; b."
QString missingFieldsMessage(const QStringList& missing);

// The XML; totals and the VAT breakdown are computed from the lines (withTotals).
QByteArray writeCii(const Invoice& invoice, Profile profile);

// Writes the file under a temporary name and renames it, so a failed write leaves no half
// file. Refuses (nothing written) when fields are missing or the given totals disagree with
// the lines. Returns a German message, empty on success.
QString writeCiiFile(const Invoice& invoice, Profile profile, const QString& path);

} // namespace tarvik::einvoice
