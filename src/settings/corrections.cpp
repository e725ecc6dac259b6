#include "settings/corrections.h"

#include "common/numbers.h"

#include <QDir>
#include <QFileInfo>

#include <optional>

namespace tarvik::settingsrules {

QString separator(const QString& text) { return text.isEmpty() ? QStringLiteral(" | ") : text; }

QString backupDays(const QString& text) { return readNumber(text) < 3 ? QStringLiteral("3") : text; }

QString linesPerPage(const QString& text) { return readNumber(text) < 30 ? QStringLiteral("30") : text; }

QString topMargin(const QString& text) { return readNumber(text) > 80 ? QStringLiteral("80") : text; }

QString firstFactor(const QString& text)
{
    const double v = readNumber(text);
    if (v > 0.9)
        return QStringLiteral("0,900");
    if (v < 0.5)
        return QStringLiteral("0,500");
    return text;
}

std::optional<QString> handheldFolderRefusal(const QString& folder, const QString& dataFolder)
{
    if (folder.trimmed().isEmpty())
        return std::nullopt;
    const QString handheld = QFileInfo(folder.trimmed()).canonicalFilePath();
    if (handheld.isEmpty() || handheld != QFileInfo(dataFolder).canonicalFilePath())
        return std::nullopt;
    return QStringLiteral("Der Ordner des Pocket-PC %1 ist der Datenordner von TARVIK. Bitte wählen Sie den Ordner, in dem Pocket-Tarvik "
                          "seine Dateien ablegt (angeschlossenes Gerät oder synchronisierter Ordner).")
        .arg(QDir::toNativeSeparators(folder.trimmed()));
}

const QStringList& separatorChoices()
{
    static const QStringList choices{
        QStringLiteral("Keine Änderung"),        QStringLiteral("Ein Leerzeichen _"),
        QStringLiteral("Zwei Leerzeichen __"),   QStringLiteral("Hochstrich  |"),
        QStringLiteral("Hochstrich mit Leerz.  _|_"), QStringLiteral("Semikolon  ;"),
        QStringLiteral("Semikolon mit Leerz.  _;_"),  QStringLiteral("Doppelpunkt  :"),
        QStringLiteral("Doppelpunkt mit Leerz.  _:_"),
    };
    return choices;
}

std::optional<QString> separatorOfChoice(int index)
{
    static const QStringList separators{QString(), QStringLiteral(" "), QStringLiteral("  "), QStringLiteral("|"),
                                        QStringLiteral(" | "), QStringLiteral(";"), QStringLiteral(" ; "),
                                        QStringLiteral(":"), QStringLiteral(" : ")};
    if (index <= 0 || index >= separators.size())
        return std::nullopt;
    return separators[index];
}

} // namespace tarvik::settingsrules
