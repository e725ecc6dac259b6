#pragma once
// The gross value and the net price of one log from the price settings of its lot.
#include <QString>

namespace tarvik {

class MasterDataLookup;

enum PriceKind : qint16 {
    IndexNumberPrice = 0, // Messzahl ÷ 100 × Messbetrag
    DayPrice = 1,         // Tagespreis of the master data
    FlatPerEfm = 2,       // Pauschalpreis je Efm
    FlatForLot = 3,       // Pauschalpreis für das Los
};

// The price columns of a lot (`Lose`), as the lot window and the log window's price frame hold them.
struct PriceSettings {
    qint16 preisArt = IndexNumberPrice;
    float pauschalpreisEfm = 0;
    float pauschalpreisG = 0;
    qint16 kaeferholzabschlag = 0; // percent
    float kostenEinschlag = 0;     // felling wage per Efm
    float kostenRuecken = 0;       // skidding wage per Efm
    qint16 erschwerniszuschlag = 0; // percent
};

struct LogPriceInput {
    QString diameterClass;
    QString quality;
    float efm = 0;
    QString species;
    int kaeferholz = 0; // 1 = bark-beetle wood
};

struct LogPrice {
    float gross = 0; // `Holzpreis`
    float net = 0;   // `Preis_berechnet`
};

LogPrice priceLog(const PriceSettings& settings, const LogPriceInput& log, MasterDataLookup& masterData);

} // namespace tarvik
