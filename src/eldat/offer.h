#pragma once
// Lots of one harvest offered to buyers as an ELDATsmart file (.eldat, JSON, standard 1.0.3,
// module wood_allocation): the sender, the harvest, one pile per lot with its amount and the
// forest measurement that carries the species (every log, the sections, the poles).
#include "store/context.h"

#include <QList>
#include <functional>
#include <QStringList>
#include <optional>

namespace tarvik::eldat {

inline constexpr char FormatVersion[] = "1.0.3";
inline constexpr char FileSuffix[] = ".eldat";

// "ang" offer, "hba" notice of wood made ready, "abf" release for collection.
bool isDocType(const QString& code);

struct OfferRequest {
    qint32 harvestId = 0;
    QList<qint32> lotNumbers; // Los_Nr, in the order the piles are written
    QString filePath;
    QString docType = QStringLiteral("ang");
    // Asked for the file's name once every check has passed, when filePath is empty; an empty
    // answer ends the action without a message.
    std::function<QString()> chooseFilePath;
};

struct OfferOutcome {
    QString filePath;
    int lots = 0;
    int logs = 0;   // single logs of log lots
    int poles = 0;
    int sections = 0;
    QList<qint32> lotsWithoutPoint; // written without a valid GPS position
    QString message;                // the closing message shown
};

// Checks everything first (lots, species, harvest date, sender); any refusal is shown with all
// its reasons and nothing is written. Otherwise the file is written under a temporary name and
// renamed, and the closing message is shown.
std::optional<OfferOutcome> writeOffer(const AppContext& context, const OfferRequest& request);

// "Hieb_12_Lose_3_4.eldat": a name for the offer of these lots.
QString proposedFileName(const QSqlDatabase& db, qint32 harvestId, const QList<qint32>& lotNumbers);

// The lot numbers of the lots with these IDs, in the given order.
QList<qint32> lotNumbersOf(const QSqlDatabase& db, const QList<qint32>& lotIds);

} // namespace tarvik::eldat
