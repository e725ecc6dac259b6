#include "backup/rotation.h"

#include "common/prompter.h"
#include "common/sqldate.h"
#include "common/textfile.h"

#include <QDir>

namespace tarvik {

Stick dueStick(const QDate& lastMonthly, const QDate& lastYearly, const QDate& today)
{
    Stick stick = Stick::Gruen;
    if (!lastMonthly.isValid() || lastMonthly.daysTo(today) > 60)
        stick = Stick::Blau;
    if (!lastYearly.isValid() || lastYearly.daysTo(today) > 180)
        stick = Stick::Rot;
    return stick;
}

QString stickVolumeName(Stick stick)
{
    switch (stick) {
    case Stick::Gruen: return QStringLiteral("KELMO_GRUEN");
    case Stick::Blau: return QStringLiteral("KELMO_BLAU");
    case Stick::Rot: return QStringLiteral("KELMO_ROT");
    }
    return {};
}

QString stickImageFile(Stick stick)
{
    switch (stick) {
    case Stick::Gruen: return QStringLiteral("stick_gruen.png");
    case Stick::Blau: return QStringLiteral("stick_blau.png");
    case Stick::Rot: return QStringLiteral("stick_rot.png");
    }
    return {};
}

QString insertStickMessage(Stick stick)
{
    QString which;
    switch (stick) {
    case Stick::Gruen: which = QStringLiteral("Wochenbackup (Grün)"); break;
    case Stick::Blau: which = QStringLiteral("Monatsbackup (Blau)"); break;
    case Stick::Rot: which = QStringLiteral("Jahresbackup (Rot)"); break;
    }
    return QStringLiteral("Bitte stecken Sie den USB-Stick für das ") + which +
           QStringLiteral(" ein. Warten Sie, bis dieser erkannt wird und bestätigen Sie dann mit [OK].");
}

bool volumeMatches(const Drive& drive, Stick stick)
{
    return drive.volumeName.trimmed().compare(stickVolumeName(stick), Qt::CaseInsensitive) == 0;
}

QString rotationInfoText()
{
    return QStringLiteral("Der grüne Stick für das Wochenbackup heisst KELMO_GRUEN. Der blaue Stick für das Monatsbackup heisst KELMO_BLAU "
                          "und der rote Stick für das Jahresbackup heisst KELMO_ROT. Zusätzlich zu den Sicherungen auf den Datenstick "
                          "kann das Backup optional auch in eine Cloud übertragen werden.");
}

QString externalDriveHint()
{
    return joinLines({
        QStringLiteral("Hinweis!!! Die Datensicherung sollte immer auf einen externen Datenträger (USB, externe Festplatte) gemacht werden. Bitte gehen Sie wie folgt vor:"),
        QStringLiteral("Bei Datensicherung auf USB-Stick:"),
        QStringLiteral("Stecken Sie diesen ein, warten Sie ein paar Sekunden, bis der USB-Stick angemeldet ist und klicken Sie dann [OK]."),
        QStringLiteral("Bei Datensicherung auf Festplatte (oder bereits eingesteckten USB):"),
        QStringLiteral("Klicken Sie auf [OK]."),
        QStringLiteral("Datensicherung vorzeitig beenden:"),
        QStringLiteral("Klicken Sie auf [Abbrechen]."),
    });
}

QStringList drivePageLines()
{
    return {QStringLiteral("Bitte wählen Sie aus, auf welches Laufwerk die Datensicherung übertragen werden soll."),
            QStringLiteral("Falls der USB-Stick nach der Aufforderung eingesteckt wurde, müsste das richtige Laufwerk bereits ausgewählt sein."),
            QStringLiteral("Nach der Laufwerksauswahl klicken Sie auf [Weiter].")};
}

BackupChoices loadBackupChoices(const QString& dataFolder)
{
    BackupChoices choices;
    const TextFileResult file = readTextFile(QDir(dataFolder).filePath(QLatin1String(BackupChoicesFileName)));
    if (!file.ok)
        return choices;
    for (const QString& line : file.lines) {
        const int eq = line.indexOf(u'=');
        if (eq < 0)
            continue;
        const QString key = line.left(eq).trimmed();
        const QString value = line.mid(eq + 1);
        if (key == QLatin1String("Backupkonzept"))
            choices.rotation = value.trimmed() == QLatin1String("1");
        else if (key == QLatin1String("Monatsbackup"))
            choices.lastMonthly = parseGermanDate(value.trimmed());
        else if (key == QLatin1String("Jahresbackup"))
            choices.lastYearly = parseGermanDate(value.trimmed());
        else if (key == QLatin1String("Cloudordner"))
            choices.cloudFolder = value.trimmed();
        else if (key == QLatin1String("Laufwerk"))
            choices.lastDrive = value.trimmed();
    }
    return choices;
}

bool saveBackupChoices(const QString& dataFolder, const BackupChoices& choices, QString* error)
{
    const TextFileResult written = writeTextFile(QDir(dataFolder).filePath(QLatin1String(BackupChoicesFileName)), {
        QStringLiteral("Backupkonzept=") + (choices.rotation ? QStringLiteral("1") : QStringLiteral("0")),
        QStringLiteral("Monatsbackup=") + formatGermanDate(choices.lastMonthly),
        QStringLiteral("Jahresbackup=") + formatGermanDate(choices.lastYearly),
        QStringLiteral("Cloudordner=") + choices.cloudFolder,
        QStringLiteral("Laufwerk=") + choices.lastDrive,
    });
    if (!written.ok && error)
        *error = written.error;
    return written.ok;
}

} // namespace tarvik
