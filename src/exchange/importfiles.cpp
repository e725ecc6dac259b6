#include "exchange/importfiles.h"

#include "common/numbers.h"
#include "common/prompter.h"
#include "common/text.h"
#include "exchange/exchangefile.h"
#include "rules/masterdatalookup.h"
#include "rules/poles.h"
#include "rules/pricing.h"
#include "rules/stackedwood.h"
#include "store/rows.h"
#include "store/sql.h"
#include "store/totals.h"

#include <QDir>
#include <QFileInfo>
#include <QHash>
#include <QSet>
#include <QSqlQuery>

namespace tarvik::exchange {
namespace {

// Up to this many messages are shown one by one; more go into one report.
constexpr int SingleMessageLimit = 3;
// A report longer than this shows the first lines and the number of the rest.
constexpr int ReportLineLimit = 200;

bool takenStatus(const QString& status) { return status == u"N" || status == u"A"; }

QStringList columnsOf(Section section)
{
    QStringList names;
    for (const FieldLayout& f : sectionFields(section))
        if (f.column)
            names << QString::fromUtf8(f.column);
    return names;
}

int indexOf(Section section, const char* column) { return int(columnsOf(section).indexOf(QString::fromUtf8(column))); }

struct Lot {
    QString sorting;
};

struct PriceKey {
    QString species, diameterClass, quality;
    float efm;
    bool operator==(const PriceKey& o) const
    {
        return efm == o.efm && diameterClass == o.diameterClass && quality == o.quality && species == o.species;
    }
};

size_t qHash(const PriceKey& k, size_t seed = 0)
{
    return qHashMulti(seed, k.species, k.diameterClass, k.quality, k.efm);
}

// Takes one parsed file over into the open transaction.
class FileImport {
public:
    FileImport(const QSqlDatabase& db, const Einstellungen& settings, MasterDataLookup& lookup)
        : m_db(db), m_factors(StackedFactors::from(settings)), m_lookup(lookup) {}

    qint32 run(const ParsedFile& file)
    {
        const qint32 id = insertHarvest(file.sections[HarvestSection].first());
        for (const Record& r : file.sections[LotSection])
            insertLot(r, id);
        insertLogs(file.sections[LogSection], id);
        insertPoles(file.sections[PoleSection], id);
        insertSections(file.sections[StackSection], id);
        reportSkipped();
        recomputeTotals(m_db, id);
        recomputeSaleState(m_db, id);
        return id;
    }

    ImportCounts counts;
    QStringList messages;

private:
    qint32 insertHarvest(const Record& r)
    {
        QVariantList values = r.values;
        const qint32 number = values[0].toInt();
        if (scalar(m_db, QStringLiteral("SELECT 1 FROM \"Hiebe\" WHERE \"Hieb_Nr\" = ? LIMIT 1"), {number}).isValid()) {
            const qint32 next = toLong(readNumber(scalar(m_db, QStringLiteral("SELECT MAX(\"Hieb_Nr\") AS maximum FROM \"Hiebe\"")))) + 1;
            messages << QStringLiteral("Die Hieb_Nr") + signedText(number) + QStringLiteral(" existiert bereits. Tarvik hat automatisch die Hieb_Nr") +
                            signedText(next) + QStringLiteral(" vergeben!");
            values[0] = next;
        }
        m_hiebNr = values[0].toInt();
        // What the record does not carry: the harvest entry's defaults; totals follow below.
        QStringList columns = columnsOf(HarvestSection);
        columns << QStringLiteral("Selektiert") << QStringLiteral("Harvester") << QStringLiteral("Anzahl_Lose")
                << QStringLiteral("Stämme_Anzahl") << QStringLiteral("Stämme_Efm") << QStringLiteral("Stämme_Efm_je_Stück")
                << QStringLiteral("Pfähle_Anzahl") << QStringLiteral("Schichtholz_Efm") << QStringLiteral("Schichtholz_m3")
                << QStringLiteral("Teilverkauft") << QStringLiteral("Verkauft");
        values << QString() << QString() << 0 << 0 << 0 << 0 << 0 << 0 << 0 << QStringLiteral("N") << QStringLiteral("N");
        QSqlQuery q = execSql(m_db, insertSql(QStringLiteral("Hiebe"), columns), values);
        ++counts.harvests;
        return q.lastInsertId().toInt();
    }

    void insertLot(const Record& r, qint32 harvestId)
    {
        const qint32 lotNr = r.values[0].toInt();
        if (!takenStatus(r.status)) {
            ++m_unmarkedLots;
            return;
        }
        if (m_lots.contains(lotNr)) {
            messages << QStringLiteral("Die Los-Nummer %1 existiert bereits und wird deshalb nicht mehr neu angelegt! Stämme, Pfähle und "
                                       "Schichthölzer werden nur übernommen, wenn die Sortierung übereinstimmt!").arg(lotNr);
            return;
        }
        const QString sorting = r.values[1].toString();
        // The lot window's defaults for everything the record does not carry.
        QStringList columns = columnsOf(LotSection);
        columns << QStringLiteral("Efm_je_Stamm") << QStringLiteral("Efm_Schichtholz") << QStringLiteral("Preis_Art")
                << QStringLiteral("Erschwerniszuschlag") << QStringLiteral("Los_Bezeichnung") << QStringLiteral("Anfahrt")
                << QStringLiteral("GPS_L") << QStringLiteral("GPS_B") << QStringLiteral("Kosten_Einschlag") << QStringLiteral("Kosten_Rücken")
                << QStringLiteral("Pauschalpreis_efm") << QStringLiteral("Pauschalpreis_G") << QStringLiteral("Vermessungsart")
                << QStringLiteral("Überlänge") << QStringLiteral("Fixlänge") << QStringLiteral("Qualität") << QStringLiteral("Holzpreis")
                << QStringLiteral("Preis_berechnet") << QStringLiteral("Preis_erhalten") << QStringLiteral("Abgerechnet")
                << QStringLiteral("ReNr") << QStringLiteral("Bemerkung") << QStringLiteral("Käferholzabschlag") << QStringLiteral("Kennung");
        QVariantList values = r.values;
        values << 0 << 0 << int(IndexNumberPrice) << 0 << QString() << QString() << QString() << QString() << 0 << 0 << 0 << 0
               << QString() << 0 << 0 << QString() << 0 << 0 << 0 << QStringLiteral("N") << 0 << QString() << 0 << harvestId;
        execSql(m_db, insertSql(QStringLiteral("Lose"), columns), values);
        m_lots.insert(lotNr, {sorting});
        ++counts.lots;
    }

    // Whether the lot of the harvest takes rows of this assortment; counts those it refuses.
    bool lotTakes(qint32 lotNr, const QString& sorting, QHash<qint32, int>& refused)
    {
        const auto it = m_lots.constFind(lotNr);
        if (it != m_lots.constEnd() && it->sorting == sorting)
            return true;
        ++refused[lotNr];
        return false;
    }

    void insertLogs(const QList<Record>& records, qint32 harvestId)
    {
        if (records.isEmpty())
            return;
        QStringList columns = columnsOf(LogSection);
        columns << QStringLiteral("Käferholz") << QStringLiteral("Holzpreis") << QStringLiteral("Preis_berechnet")
                << QStringLiteral("Bemerkung") << QStringLiteral("Kennung");
        QSqlQuery insert = prepareSql(m_db, insertSql(QStringLiteral("Stämme"), columns));
        const int runningAt = indexOf(LogSection, "Laufende_Nr");
        const int speciesAt = indexOf(LogSection, "Baumart");
        const int efmAt = indexOf(LogSection, "Efm_oR");
        const int classAt = indexOf(LogSection, "Stärkeklasse");
        const int qualityAt = indexOf(LogSection, "Güteklasse");
        // The harvest is new: the numbers in use are the ones this file brought.
        QHash<qint32, QSet<qint32>> used;
        QHash<qint32, qint32> highest;
        const PriceSettings indexNumber; // price kind 0 without costs
        for (const Record& r : records) {
            if (!takenStatus(r.status)) {
                ++m_unmarkedLogs;
                continue;
            }
            const qint32 lotNr = r.values[0].toInt();
            if (!lotTakes(lotNr, QStringLiteral("Stämme"), m_refusedLogs))
                continue;
            QVariantList values = r.values;
            qint32 running = toLong(readNumber(values[runningAt]));
            QSet<qint32>& numbers = used[lotNr];
            if (numbers.contains(running)) {
                const qint32 next = highest.value(lotNr) + 1;
                messages << QStringLiteral("Die Laufende Nr. %1 war bereits vergeben. Deshalb hat der neu zu importierende Stamm die Nummer").arg(running) +
                                signedText(next) + QStringLiteral(" erhalten.");
                running = next;
                values[runningAt] = running;
            }
            numbers.insert(running);
            highest[lotNr] = std::max(highest.value(lotNr, running), running);

            const LogPriceInput log{readText(values[classAt]), readText(values[qualityAt]),
                                    static_cast<float>(readNumber(values[efmAt])), readText(values[speciesAt]), 0};
            // Logs of one species, class, quality and volume have one price: ask the master data once.
            const PriceKey key{log.species, log.diameterClass, log.quality, log.efm};
            auto known = m_prices.constFind(key);
            if (known == m_prices.constEnd())
                known = m_prices.insert(key, priceLog(indexNumber, log, m_lookup));
            const LogPrice price = *known;
            values << 0 << currencyValue(price.gross) << currencyValue(price.net) << QString() << harvestId;
            execPrepared(insert, values);
            ++counts.logs;
        }
    }

    void insertPoles(const QList<Record>& records, qint32 harvestId)
    {
        if (records.isEmpty())
            return;
        QStringList columns = columnsOf(PoleSection);
        columns << QStringLiteral("Preis_je_Stück") << QStringLiteral("Preis_berechnet") << QStringLiteral("Bemerkung")
                << QStringLiteral("Kennung");
        QSqlQuery insert = prepareSql(m_db, insertSql(QStringLiteral("Pfähle"), columns));
        const int countAt = indexOf(PoleSection, "Anzahl");
        const int classAt = indexOf(PoleSection, "Stärkeklasse");
        for (const Record& r : records) {
            if (!lotTakes(r.values[0].toInt(), QStringLiteral("Pfähle"), m_refusedPoles))
                continue;
            QVariantList values = r.values;
            const float perPiece = poleEstimatedPrice(m_lookup, readText(values[classAt]));
            values << currencyValue(perPiece) << currencyValue(polePrice(perPiece, toLong(readNumber(values[countAt]))))
                   << QString() << harvestId;
            execPrepared(insert, values);
            ++counts.poles;
        }
    }

    void insertSections(const QList<Record>& records, qint32 harvestId)
    {
        if (records.isEmpty())
            return;
        QStringList columns = columnsOf(StackSection);
        columns << QStringLiteral("Efm") << QStringLiteral("Preis_je_Ster") << QStringLiteral("Preis_berechnet")
                << QStringLiteral("Bemerkung") << QStringLiteral("Kennung");
        QSqlQuery insert = prepareSql(m_db, insertSql(QStringLiteral("Schichtholz"), columns));
        const int sectionAt = indexOf(StackSection, "Sektions_Nr");
        const int lengthAt = indexOf(StackSection, "Sektionslänge_m");
        const int depthAt = indexOf(StackSection, "Sektionstiefe_m");
        const int heightAt = indexOf(StackSection, "Sektionshöhe_m");
        const int classAt = indexOf(StackSection, "Stärkeklasse");
        const int m3At = indexOf(StackSection, "m3");
        QHash<qint32, QSet<qint32>> used;
        QHash<qint32, qint32> highest;
        for (const Record& r : records) {
            const qint32 lotNr = r.values[0].toInt();
            if (!lotTakes(lotNr, QStringLiteral("Schichtholz"), m_refusedSections))
                continue;
            QVariantList values = r.values;
            qint32 number = toLong(readNumber(values[sectionAt]));
            QSet<qint32>& numbers = used[lotNr];
            if (numbers.contains(number)) {
                const qint32 next = highest.value(lotNr) + 1;
                messages << QStringLiteral("Die Sektions-Nr. %1 war bereits vergeben. Deshalb hat die neu zu importierende Sektion die Nummer").arg(number) +
                                signedText(next) + QStringLiteral(" erhalten.");
                number = next;
                values[sectionAt] = number;
            }
            numbers.insert(number);
            highest[lotNr] = std::max(highest.value(lotNr, number), number);

            // The solid volume by this installation's factors for the depth of the stack.
            const StackedVolumes volumes = measureStack({numberText(readNumber(values[lengthAt])), numberText(readNumber(values[depthAt])),
                                                         numberText(readNumber(values[heightAt]))},
                                                        m_factors);
            const float perSter = stackedEstimatedPrice(m_lookup, readText(values[classAt]));
            values << readNumber(volumes.efm) << currencyValue(perSter)
                   << currencyValue(stackedPrice(perSter, static_cast<float>(readNumber(values[m3At])))) << QString() << harvestId;
            execPrepared(insert, values);
            ++counts.sections;
        }
    }

    void reportSkipped()
    {
        const auto report = [this](const QHash<qint32, int>& refused, const QString& what, const QString& sorting) {
            QList<qint32> lots = refused.keys();
            std::sort(lots.begin(), lots.end());
            for (qint32 lot : lots)
                messages << QStringLiteral("Hieb %1: %2 %3 des Loses %4 wurden nicht übernommen, weil die Datei kein neues Los %4 "
                                           "mit der Sortierung %5 enthält.")
                                .arg(m_hiebNr).arg(refused.value(lot)).arg(what).arg(lot).arg(sorting);
        };
        report(m_refusedLogs, QStringLiteral("Stämme"), QStringLiteral("Stämme"));
        report(m_refusedPoles, QStringLiteral("Pfahlzeilen"), QStringLiteral("Pfähle"));
        report(m_refusedSections, QStringLiteral("Sektionen"), QStringLiteral("Schichtholz"));
        if (m_unmarkedLots > 0 || m_unmarkedLogs > 0)
            messages << QStringLiteral("Hieb %1: %2 Lose und %3 Stämme sind weder als neu (N) noch als geändert (A) gekennzeichnet "
                                       "und wurden nicht übernommen.")
                            .arg(m_hiebNr).arg(m_unmarkedLots).arg(m_unmarkedLogs);
    }

    QSqlDatabase m_db;
    StackedFactors m_factors;
    MasterDataLookup& m_lookup;
    qint32 m_hiebNr = 0;
    QHash<qint32, Lot> m_lots;
    QHash<PriceKey, LogPrice> m_prices;
    QHash<qint32, int> m_refusedLogs, m_refusedPoles, m_refusedSections;
    int m_unmarkedLots = 0, m_unmarkedLogs = 0;
};

} // namespace

ImportCounts& ImportCounts::operator+=(const ImportCounts& o)
{
    harvests += o.harvests;
    lots += o.lots;
    logs += o.logs;
    poles += o.poles;
    sections += o.sections;
    return *this;
}

QStringList candidateFiles(const QString& folder)
{
    QStringList offered;
    const QStringList names = QDir(folder).entryList({QStringLiteral("*") + QString::fromLatin1(FileSuffix)},
                                                     QDir::Files, QDir::Name | QDir::IgnoreCase);
    for (const QString& name : names) {
        if (name.toUpper().startsWith(QLatin1String("STAMMDATEN")))
            continue;
        const QString status = harvestStatusOfFile(QDir(folder).filePath(name));
        if (status == u"N" || status == u"A")
            offered << name;
    }
    return offered;
}

std::optional<QStringList> filesToImport(Prompter& prompter, const QStringList& ticked, const QStringList& offered)
{
    if (!ticked.isEmpty())
        return ticked;
    if (offered.isEmpty())
        return std::nullopt;
    if (!prompter.askYesNo(QStringLiteral("Es sind noch keine zu importierende Dateien ausgewählt. Sollen jetzt alle ausgewählt werden?")))
        return std::nullopt;
    return offered;
}

ImportReport importFiles(const QSqlDatabase& db, const Einstellungen& settings, const QStringList& paths)
{
    ImportReport report;
    MasterDataLookup lookup(db);
    for (const QString& path : paths) {
        const QString name = QFileInfo(path).fileName();
        const ParseResult parsed = parseHarvestFile(path);
        if (!parsed.file) {
            report.messages << refusalMessage(name, parsed.error);
            report.refusedFiles << name;
            continue;
        }
        try {
            TransactionGuard guard(db);
            FileImport file(db, settings, lookup);
            const qint32 id = file.run(*parsed.file);
            guard.commit();
            report.counts += file.counts;
            report.messages << file.messages;
            report.importedFiles << name;
            report.harvestIds << id;
        } catch (const StoreError& error) {
            report.messages << refusalMessage(name, {0, error.message()});
            report.refusedFiles << name;
        }
    }
    return report;
}

QString closingMessage(const ImportCounts& c)
{
    QString text = QStringLiteral("Der Import wurde abgeschlossen. Insgesamt wurden folgende Buchungen eingelesen:\n\n"
                                  "Hiebe: %1\nLose: %2\nStämme: %3\nPfähle: %4\nSchichtholz: %5")
                       .arg(c.harvests).arg(c.lots).arg(c.logs).arg(c.poles).arg(c.sections);
    if (c.logs > 0)
        text += QStringLiteral("\n\nWICHTIG!!!\nDer Holzpreis wurde nach der alten Berechnung abhängig von der Messzahlen und Messbeträgen "
                               "ermittelt. Wenn Sie das importierte Los öffnen, können Sie den Preis auch nach Festpreisen, wahlweise "
                               "mit Lohnabzügen, neu berechnen.");
    if (c.harvests > 0)
        text += QStringLiteral("\n\nDie Exportdatei enthält nicht: die Bemerkungen der Lose, Stämme, Pfähle und Sektionen, die "
                               "Kennzeichnung als Käferholz, die Preisart und die Kosten (Einschlag, Rücken) der Lose. Die importierten "
                               "Lose werden deshalb nach Messzahlen und Messbeträgen ohne Kosten berechnet und ihre Stämme gelten nicht "
                               "als Käferholz; bitte ergänzen Sie diese Angaben bei Bedarf.");
    return text;
}

void showImportReport(Prompter& prompter, const ImportReport& report)
{
    if (report.messages.size() <= SingleMessageLimit) {
        for (const QString& m : report.messages)
            prompter.inform(m, Prompter::Icon::Information);
    } else {
        QStringList lines = report.messages.mid(0, ReportLineLimit);
        if (report.messages.size() > ReportLineLimit)
            lines << QStringLiteral("... und %1 weitere Meldungen.").arg(report.messages.size() - ReportLineLimit);
        prompter.inform(QStringLiteral("Beim Import sind %1 Meldungen angefallen:\n\n").arg(report.messages.size()) +
                            lines.join(u'\n'),
                        report.refusedFiles.isEmpty() ? Prompter::Icon::Information : Prompter::Icon::Warning);
    }
    prompter.inform(closingMessage(report.counts), Prompter::Icon::Information);
}

} // namespace tarvik::exchange
