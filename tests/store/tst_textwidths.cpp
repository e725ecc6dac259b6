// Texts longer than their column are refused by the core checks of harvests, lots, invoices,
// logs, poles and stacked wood with the width message, gathered with the other reasons, before the engine's CHECK fires.
#include "entry/harvestentry.h"
#include "entry/logentry.h"
#include "entry/lotentry.h"
#include "entry/poleentry.h"
#include "entry/stackentry.h"
#include "invoices/invoice.h"
#include "store/sql.h"
#include "store/textwidth.h"
#include "support/tempdatafolder.h"

#include <QRegularExpression>

using namespace tarvik;

namespace {

// One form of each kind, each passing its check as it stands.
struct Forms {
    HarvestForm harvest;
    LotForm lot;
    InvoiceInput invoice;
    LogForm log;
    PoleForm pole;
    StackForm stack;
    Forms()
    {
        log.losNr = pole.losNr = stack.losNr = QStringLiteral("1");
        log.laufendeNr = stack.sectionNr = QStringLiteral("1");
        log.species = pole.species = stack.species = QStringLiteral("FI (Fichte)");
        log.underBark = log.measuredDiameter = pole.diameter = stack.diameter = QStringLiteral("30");
        log.length = pole.length = stack.length = stack.depth = stack.height = QStringLiteral("4");
        pole.count = QStringLiteral("10");
        log.diameterClass = QStringLiteral("2b");
        pole.poleClass = QStringLiteral("P2.11");
        stack.stackClass = QStringLiteral("S2.1");
        harvest.hiebNr = QStringLiteral("1");
        harvest.jahr = QStringLiteral("2026");
        harvest.waldname = QStringLiteral("Eichwald");
        lot.losNr = QStringLiteral("1");
        lot.sortierung = QStringLiteral("Stämme");
        invoice.name = QStringLiteral("Jörg O'Neill");
        invoice.number = QStringLiteral("1");
        invoice.date = QStringLiteral("15.11.2026");
    }
};

using Field = std::function<void(Forms&, const QString&)>;

// The reason lines of the check the table belongs to.
QStringList reasonsOf(const QSqlDatabase& db, const QString& table, const Forms& forms)
{
    if (table == u"Rechnungen")
        return invoiceRefusals(db, forms.invoice, QStringLiteral("Los 1"));
    const std::optional<QString> message = table == u"Hiebe"        ? checkHarvest(db, forms.harvest, std::nullopt)
                                           : table == u"Stämme"      ? checkLog(db, 1, forms.log)
                                           : table == u"Pfähle"      ? checkPole(db, 1, forms.pole)
                                           : table == u"Schichtholz" ? checkStack(db, 1, forms.stack)
                                                                     : checkLot(db, 1, forms.lot, std::nullopt);
    return message ? message->split(u'\n').filter(QRegularExpression(QStringLiteral("^\\.\\.\\."))) : QStringList();
}

} // namespace

class TestTextWidths : public QObject {
    Q_OBJECT
    test::TempDataFolder m_folder;
    std::unique_ptr<Database> m_db;
    QSqlDatabase db() const { return m_db->shared(); }

private slots:
    void initTestCase() { m_db = m_folder.openDatabase(); }

    void textLongerThanItsColumn_data()
    {
        QTest::addColumn<QString>("table");
        QTest::addColumn<QString>("column");
        QTest::addColumn<Field>("field");
        QTest::addColumn<int>("width");
        QTest::addColumn<QString>("reason");
        auto row = [](const char* table, const char* column, Field field, int width, const char* reason) {
            QTest::addRow("%s.%s", table, column) << QString::fromUtf8(table) << QString::fromUtf8(column) << field << width
                                                  << QString::fromUtf8(reason);
        };
        row("Hiebe", "Jahr", [](Forms& f, const QString& t) { f.harvest.jahr = t; }, 4, "...das Jahr höchstens 4 Zeichen lang sein darf.");
        row("Hiebe", "Waldname", [](Forms& f, const QString& t) { f.harvest.waldname = t; }, 30,
            "...der Waldname höchstens 30 Zeichen lang sein darf.");
        row("Hiebe", "Waldort", [](Forms& f, const QString& t) { f.harvest.waldort = t; }, 50,
            "...der Waldort höchstens 50 Zeichen lang sein darf.");
        row("Hiebe", "Bemerkung", [](Forms& f, const QString& t) { f.harvest.bemerkung = t; }, 255,
            "...die Bemerkung höchstens 255 Zeichen lang sein darf.");
        row("Hiebe", "Waldbesitzer_Tel", [](Forms& f, const QString& t) { f.harvest.besitzerTelefon = t; }, 15,
            "...die Telefonnummer des Waldbesitzers höchstens 15 Zeichen lang sein darf.");
        row("Lose", "Los_Bezeichnung", [](Forms& f, const QString& t) { f.lot.losBezeichnung = t; }, 15,
            "...die Los-Bezeichnung höchstens 15 Zeichen lang sein darf.");
        row("Lose", "GPS_B", [](Forms& f, const QString& t) { f.lot.gpsB = t; }, 10, "...die GPS-Breite höchstens 10 Zeichen lang sein darf.");
        row("Lose", "Abnehmer", [](Forms& f, const QString& t) { f.lot.abnehmer = t; }, 50,
            "...der Abnehmer höchstens 50 Zeichen lang sein darf.");
        row("Lose", "Bemerkung", [](Forms& f, const QString& t) { f.lot.bemerkung = t; }, 30,
            "...die Bemerkung höchstens 30 Zeichen lang sein darf.");
        row("Rechnungen", "Abnehmer", [](Forms& f, const QString& t) { f.invoice.buyer = t; }, 50,
            "...der Abnehmer höchstens 50 Zeichen lang sein darf.");
        row("Rechnungen", "Vor_Nachname", [](Forms& f, const QString& t) { f.invoice.name = t; }, 30,
            "...der Name höchstens 30 Zeichen lang sein darf.");
        row("Stämme", "Güteklasse", [](Forms& f, const QString& t) { f.log.quality = t; }, 5,
            "...die Güteklasse höchstens 5 Zeichen lang sein darf.");
        row("Stämme", "Bemerkung", [](Forms& f, const QString& t) { f.log.remark = t; }, 30,
            "...die Bemerkung höchstens 30 Zeichen lang sein darf.");
        row("Pfähle", "Baumart", [](Forms& f, const QString& t) { f.pole.species = t; }, 22,
            "...die Baumart höchstens 22 Zeichen lang sein darf.");
        row("Schichtholz", "Bemerkung", [](Forms& f, const QString& t) { f.stack.remark = t; }, 30,
            "...die Bemerkung höchstens 30 Zeichen lang sein darf.");
        row("Rechnungen", "Kundeninfo", [](Forms& f, const QString& t) { f.invoice.customerInfo = t; }, 30,
            "...die Kunden-Nr. höchstens 30 Zeichen lang sein darf.");
    }
    void textLongerThanItsColumn()
    {
        QFETCH(QString, table);
        QFETCH(QString, column);
        QFETCH(Field, field);
        QFETCH(int, width);
        QFETCH(QString, reason);
        // Umlauts and an apostrophe count one character each; blanks around the text are not stored.
        const QString fits = QStringLiteral("  ") + QStringLiteral("äO'").repeated(width).left(width) + QStringLiteral("  ");
        const QString tooLong = QStringLiteral("äO'").repeated(width + 1).left(width + 1);

        Forms forms;
        QCOMPARE(reasonsOf(db(), table, forms), QStringList());
        field(forms, fits);
        QCOMPARE(reasonsOf(db(), table, forms), QStringList());
        field(forms, tooLong);
        QCOMPARE(reasonsOf(db(), table, forms), QStringList{reason});

        // The width is the engine's: the text that fits is stored, the longer one refused.
        TransactionGuard guard(db());
        const QString insert = QStringLiteral("INSERT INTO %1(%2) VALUES (?)").arg(quoted(table), quoted(column));
        execSql(db(), insert, {fits.trimmed()});
        QVERIFY_THROWS_EXCEPTION(StoreError, execSql(db(), insert, {tooLong}));
    }

    // The width reason joins the others in one message, in the check's order.
    void gatheredWithTheOtherReasons()
    {
        Forms forms;
        forms.harvest.waldname.clear();
        forms.harvest.waldort = QString(51, u'x');
        QCOMPARE(checkHarvest(db(), forms.harvest, std::nullopt),
                 QStringLiteral("Die Eingabe kann nicht übernommen werden, weil...\n...der Waldname angegeben werden muß.\n"
                                "...der Waldort höchstens 50 Zeichen lang sein darf."));
        forms.lot.losNr.clear();
        forms.lot.lagerort = QString(51, u'x');
        QCOMPARE(checkLot(db(), 1, forms.lot, std::nullopt),
                 QStringLiteral("Die Eingabe kann nicht übernommen werden, weil...\n\n...die Los-Nummer fehlt.\n"
                                "...der Lagerort höchstens 50 Zeichen lang sein darf."));
        forms.invoice.date = QStringLiteral("31.02.2026");
        forms.invoice.town = QString(31, u'x');
        QCOMPARE(invoiceRefusals(db(), forms.invoice, QStringLiteral("Los 1")),
                 (QStringList{QStringLiteral("...das Datum nicht korrekt ist."),
                              QStringLiteral("...der Wohnort höchstens 30 Zeichen lang sein darf.")}));
    }
};

TARVIK_TEST_CORE_MAIN(TestTextWidths)
#include "tst_textwidths.moc"
