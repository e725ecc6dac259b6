#pragma once
// The XML namespaces of the e-invoice syntaxes, shared by the CII writer and the reader.
#include <QString>

namespace tarvik::einvoice::xmlns {

inline const QString Rsm = QStringLiteral("urn:un:unece:uncefact:data:standard:CrossIndustryInvoice:100");
inline const QString Ram = QStringLiteral("urn:un:unece:uncefact:data:standard:ReusableAggregateBusinessInformationEntity:100");
inline const QString Udt = QStringLiteral("urn:un:unece:uncefact:data:standard:UnqualifiedDataType:100");
inline const QString Qdt = QStringLiteral("urn:un:unece:uncefact:data:standard:QualifiedDataType:100");

// UBL's namespaces are UblStart + the OASIS document category + UblSchemas + the schema's name
// ("Invoice-2", "CommonBasicComponents-2"); a document's root tells the prefix all its parts share.
inline const QString UblStart = QStringLiteral("urn:oasis:names:");
inline const QString UblSchemas = QStringLiteral(":ubl:schema:xsd:");

} // namespace tarvik::einvoice::xmlns
