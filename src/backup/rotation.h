#pragma once
// The three-stick rotation (green weekly, blue monthly, red yearly) and the wizard's
// remembered choices in "FH_Datensicherung.TK3".
#include "backup/drives.h"

#include <QDate>
#include <QString>

namespace tarvik {

enum class Stick { Gruen, Blau, Rot };

// Green by default; blue when the last monthly backup is missing or more than 60 days old;
// red, which wins, when the last yearly one is missing or more than 180 days old.
Stick dueStick(const QDate& lastMonthly, const QDate& lastYearly, const QDate& today);

QString stickVolumeName(Stick stick); // "KELMO_GRUEN", ...
QString stickImageFile(Stick stick);  // the picture shipped in the share folder
QString insertStickMessage(Stick stick);
bool volumeMatches(const Drive& drive, Stick stick);

QString rotationInfoText();
QString externalDriveHint();
QStringList drivePageLines();

inline constexpr char BackupChoicesFileName[] = "FH_Datensicherung.TK3";

struct BackupChoices {
    bool rotation = false;
    QDate lastMonthly;
    QDate lastYearly;
    QString cloudFolder;
    QString lastDrive; // root of the drive of the last backup
};

// A missing or garbled file gives the defaults.
BackupChoices loadBackupChoices(const QString& dataFolder);
// One "Name=Wert" line per choice, Windows-1252, CR LF.
bool saveBackupChoices(const QString& dataFolder, const BackupChoices& choices, QString* error = nullptr);

} // namespace tarvik
