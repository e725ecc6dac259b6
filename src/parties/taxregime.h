#pragma once
// How the seller is taxed; decides the VAT of an invoice and the note printed on it.
#include <QString>
#include <optional>

namespace tarvik::parties {

enum class TaxRegime {
    Regular, // regular VAT at the invoice's rate
    Flat24,  // flat rate for farmers and foresters, § 24 UStG (5,5 % for forestry products)
    Small19, // small business, § 19 UStG: no VAT
};

// "regel", "pauschal24", "klein19": the word the data file and the command line use.
QString regimeWord(TaxRegime regime);
std::optional<TaxRegime> regimeFromWord(const QString& word);
// As a window lists it.
QString regimeCaption(TaxRegime regime);
// The sentence the invoice carries for the regime; empty for regular VAT.
QString regimeNote(TaxRegime regime);

} // namespace tarvik::parties
