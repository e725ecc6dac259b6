#pragma once
// A harvester's production file (StanForD 2010 "HarvestedProduction", versions 2.x and 3.x),
// read as a stream: the species groups and products it names, and one entry per log of every
// stem the machine processed on its own. Nothing but the few numbers per log stays in memory,
// so a file of any size is read in one pass.
#include <QString>
#include <QStringList>
#include <optional>
#include <vector>

class QIODevice;

namespace tarvik {

struct HarvesterLog {
    qint64 stemNumber = 0;
    int position = 0;         // 1 for the butt log, counted along the stem
    int species = -1;         // index into HarvesterFile::speciesNames
    int product = -1;         // index into HarvesterFile::productNames
    double lengthCm = 0;      // in the file's unit, converted to cm
    double midOverBarkMm = 0; // "Mid ob"
    double midUnderBarkMm = -1; // "Mid HKS ub", else "Mid ub"; -1 when the file gives neither
    double machineVolume = 0; // m³ under bark as the machine measured it
};

struct HarvesterFile {
    QString fileName; // without its folder, for messages
    QString version;  // "3.6"
    QStringList speciesNames; // distinct species group names in the file's order
    QStringList productNames; // distinct product names in the file's order
    std::vector<HarvesterLog> logs; // logs of single-tree processed stems
    int stems = 0;
    int felledOnly = 0;        // stems felled but not processed: no logs
    int multiTreeStems = 0;    // stems processed in a bunch: estimated volumes only
    int multiTreeLogs = 0;
    double multiTreeVolume = 0; // m³ under bark of those logs
    // Sum of the positions of the processed stems (WGS84, south and west negative).
    double latitudeSum = 0, longitudeSum = 0;
    int positions = 0;

    struct Position {
        double latitude, longitude;
    };
    std::optional<Position> meanPosition() const;
};

struct HarvesterRead {
    std::optional<HarvesterFile> file;
    QString error; // German, names the file and, where it lies in one, the stem
};

// Reads the file at path; a file that is not XML, not a production file of a version read
// here, cut off, or with a log lacking its length or diameter gives the error and no file.
HarvesterRead readHarvesterFile(const QString& path);
// The same from an open device; fileName only names it in messages.
HarvesterRead readHarvesterFile(QIODevice& device, const QString& fileName);

// The program's running number of a log: stem number × 10 + position along the stem, so the
// numbers of one file never meet; 0 when the stem has more than nine logs or the number would
// pass 999999.
qint32 harvesterRunningNumber(const HarvesterLog& log);

} // namespace tarvik
