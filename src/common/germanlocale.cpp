#include "common/germanlocale.h"

#include "common/prompter.h"

#include <QCoreApplication>
#include <QDate>
#include <QDir>
#include <QLibraryInfo>
#include <QTranslator>

namespace tarvik {

void useGermanLocale() { QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany)); }

bool installGermanQtTranslations()
{
    auto* app = QCoreApplication::instance();
    if (!app)
        return false;
    const QStringList folders{QLibraryInfo::path(QLibraryInfo::TranslationsPath),
                              QDir(QCoreApplication::applicationDirPath()).filePath(QStringLiteral("translations"))};
    for (const QString& folder : folders) {
        auto* translator = new QTranslator(app); // lives as long as the application
        if (translator->load(QLocale(QLocale::German, QLocale::Germany), QStringLiteral("qtbase"), QStringLiteral("_"), folder) &&
            QCoreApplication::installTranslator(translator))
            return true;
        delete translator;
    }
    return false;
}

std::optional<QString> regionalSettingsProblem(const QLocale& locale)
{
    const bool commaOk = locale.toString(1.0, 'f', 3).contains(u',');
    // The short date format with a four-digit year must read "dd.mm.yyyy" texts.
    QString format = locale.dateFormat(QLocale::ShortFormat);
    if (!format.contains(QLatin1String("yyyy")))
        format.replace(QLatin1String("yy"), QLatin1String("yyyy"));
    const bool datesOk = locale.toDate(QStringLiteral("01.01.1999"), format).isValid()
                         && locale.toDate(QStringLiteral("01.01.2001"), format).isValid();
    if (commaOk && datesOk)
        return std::nullopt;
    return joinLines({
        QStringLiteral("WICHTIG!!! Die Datumsberechnung oder Zahlenumrechnung kann nicht korrekt erkannt werden. Bitte stellen Sie unter Start/Einstellungen/Systemsteuerung/Ländereinstellung folgende Werte ein!"),
        QStringLiteral("Ländereinstellung = Deutsch (Standard)"),
        QStringLiteral("Zahlen:"),
        QStringLiteral("Dezimaltrennzeichen = ,"),
        QStringLiteral("Anzahl Dezimalstellen = 2"),
        QStringLiteral("Symbol für Zifferngruppierung = ."),
        QStringLiteral("Anzahl Ziffern je Gruppe = 3"),
        QStringLiteral("Währung: (siehe Zahlen)"),
        QStringLiteral("Uhrzeit:"),
        QStringLiteral("Zeitformat = HH:mm:ss"),
        QStringLiteral("Zeittrennzeichen = :"),
        QStringLiteral("Datum:"),
        QStringLiteral("Datumformat = TT.MM.JJ oder TT.MM.JJJJ"),
        QStringLiteral("Trennzeichen = ."),
        QStringLiteral("Da diese Einstellung Standard sind und für ZEP zwingend erforderlich sind, wird ZEP jetzt beendet!"),
    });
}

std::optional<QString> currencyProblem(const QLocale& locale)
{
    if (!locale.toCurrencyString(0.0).trimmed().endsWith(QLatin1String("DM")))
        return std::nullopt;
    return QStringLiteral("Ihr Rechner ist noch auf die Währung DM eingestellt. Bitte stellen Sie in den Systemeinstellungen (Ländereinstellung) die Währung auf Euro ein!");
}

} // namespace tarvik
