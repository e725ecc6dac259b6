#pragma once
// The exchange file of one harvest and the master data file: their record layout, the writer
// and a reader that checks a whole file before anything of it reaches the database.
#include <QList>
#include <QSqlDatabase>
#include <QString>
#include <QStringList>
#include <optional>

namespace tarvik::exchange {

inline constexpr char FileSuffix[] = "_Tarvik_Export.f10";
inline constexpr char MasterDataFileName[] = "Stammdaten_Tarvik_Export.f10";
// Longer lines cannot come from the writer; they are refused before they are split.
inline constexpr int MaxLineLength = 32 * 1024;
inline constexpr qint64 MaxFileSize = 512ll * 1024 * 1024;

enum class FieldKind { Text, Short, Long, Real, Date, Status };

struct FieldLayout {
    const char* column; // nullptr for the record status
    FieldKind kind;
    int width = 0;      // text columns: the most characters the column takes
};

enum Section { HarvestSection, LotSection, LogSection, PoleSection, StackSection, SectionCount };

// Marker line and fields, by position, of each section of a harvest file.
QString sectionMarker(Section section);
const QList<FieldLayout>& sectionFields(Section section);

// "17_Tarvik_Export.f10"
QString harvestFileName(qint32 hiebNr);

// The lines of a harvest's file (without line ends); status "N" in every status field.
QStringList harvestFileLines(const QSqlDatabase& db, qint32 harvestId);
// The lines of the master data file.
QStringList masterDataFileLines(const QSqlDatabase& db);

// One value as the file holds it: integers plain, reals in their shortest exact form with a
// decimal comma, dates "dd.mm.yyyy", texts with TAB and line breaks turned into blanks.
QString fieldText(FieldKind kind, const QVariant& value);

// A record of a read file: its line and its values converted for binding (NULL for empty).
struct Record {
    int line = 0;
    QVariantList values;
    QString status; // the record status, "" where the record has none
};

struct ParsedFile {
    QString fileName;
    std::array<QList<Record>, SectionCount> sections;
};

struct ParseError {
    int line = 0;    // 0: the file as a whole
    QString reason;  // German, lower case start, completes "weil ..."
};

// Reads and checks the whole file: encoding, line ends, markers, field counts, numbers,
// dates and text widths. Either every record or the first fault with its line.
struct ParseResult {
    std::optional<ParsedFile> file;
    ParseError error;
};
ParseResult parseHarvestFile(const QString& path);
ParseResult parseHarvestBytes(const QString& fileName, const QByteArray& bytes);

// The message for a refused file: names the file and the line.
QString refusalMessage(const QString& fileName, const ParseError& error);

// The status at position 5 of a file's harvest record, read from its first two lines only;
// "" when the file cannot be read or has no such field.
QString harvestStatusOfFile(const QString& path);

} // namespace tarvik::exchange
