// Master data stores through the core: what a new entry adds, what each editor stores or
// refuses, renames carried into the bookings, the deletes, cell edits and copies, lookup lists,
// the printed list, and the rules seeing every change at once.
#include "entry/logentry.h"
#include "masterdata/barkranges.h"
#include "masterdata/classtables.h"
#include "masterdata/lookuplists.h"
#include "masterdata/masterlists.h"
#include "masterdata/species.h"
#include "rules/masterdatalookup.h"
#include "support/masterdatafixture.h"

#include <functional>

using namespace tarvik;

namespace {
const QString Fichte = QStringLiteral("FI (Fichte)");
const QString Refusal = QStringLiteral("Die Eingabe kann nicht übernommen werden, weil...\n");
const QString DeleteQuestion = QStringLiteral("Soll der markierte Datensatz wirklich gelöscht werden?");
using Store = std::function<bool()>;

QString why(const QStringList& reasons) { return Refusal + reasons.join(u'\n'); }
} // namespace

class TestMasterData : public QObject, protected test::MasterDataFixture {
    Q_OBJECT

    Store newClass(ClassTable table, const QString& klasse, const QStringList& values)
    {
        return [=, this] { return storeClass(context(), table, EditMode::Neu, std::nullopt, {klasse, values}); };
    }
    Store changedClass(ClassTable table, const QString& old, const QString& klasse, const QStringList& values)
    {
        return [=, this] {
            const qint32 id = idOf(classTableName(table), QStringLiteral("Klasse"), old);
            return storeClass(context(), table, EditMode::Aendern, id, {klasse, values});
        };
    }
    Store species(const QString& old, const QString& name, bool laubwald = false)
    {
        return [=, this] {
            const std::optional<qint32> id = old.isEmpty() ? std::nullopt : std::optional(idOf(QStringLiteral("Baumarten"), QStringLiteral("Baumart"), old));
            return storeSpecies(context(), id ? EditMode::Aendern : EditMode::Neu, id, {name, laubwald});
        };
    }
    Store quality(const QString& old, const QString& name)
    {
        return [=, this] {
            const std::optional<qint32> id = old.isEmpty() ? std::nullopt : std::optional(idOf(QStringLiteral("Güteklassen"), QStringLiteral("Güteklasse"), old));
            return storeQuality(context(), id ? EditMode::Aendern : EditMode::Neu, id, name);
        };
    }
    LogForm typedLog(const QString& diameter) const
    {
        LogForm log;
        log.losNr = log.laufendeNr = QStringLiteral("1");
        log.species = Fichte;
        log.quality = QStringLiteral("B");
        log.measuredDiameter = diameter;
        log.length = QStringLiteral("5");
        log.mode = BarkMode::Ohne;
        log.prices.preisArt = DayPrice;
        return log;
    }

private slots:
    void init() { resetDatabase(); }
    void cleanup() { QCOMPARE(m_prompter.pendingAnswers(), 0); }

    // A new entry reaches the price tables at 0 (index numbers at 100) and asks the user to
    // fill them in; classes that are values touch no price table.
    void newEntriesReachThePriceTables_data()
    {
        QTest::addColumn<Store>("store");
        QTest::addColumn<QString>("message");
        QTest::addColumn<QString>("probe");
        QTest::addColumn<QString>("expected");
        QTest::newRow("log class") << newClass(ClassTable::Staemme, "L7", {"70", "79"})
                                   << "Sie haben eine neue Klasse eingegeben. Diese wird jetzt in die Stammdaten für Rindenabzug, "
                                      "Tagespreise und Messbeträge eingetragen. Bitte tragen Sie dort die Rindenabzugswerte, Preise "
                                      "und Messbeträge noch nach!"
                                   << "SELECT (SELECT sum(SK_L7 IS 0) = count(*) FROM Rindenabzug) || (SELECT sum(SK_L7 IS 0) = count(*) "
                                      "FROM Tagespreise) || (SELECT sum(SK_L7 IS 0) = count(*) FROM Messbeträge) || '/' || "
                                      "(SELECT Durchm_oR_bis FROM Stärkeklassen_Stämme WHERE Klasse = 'L7')"
                                   << "111/79";
        QTest::newRow("pole class") << newClass(ClassTable::Pfaehle, "P9", {"1", "2", "1", "2", "3,5"}) << ""
                                    << "SELECT (SELECT count(*) FROM pragma_table_info('Rindenabzug') WHERE name = 'SK_P9') || '/' || "
                                       "(SELECT Schätzpreis_je_St FROM Stärkeklassen_Pfähle WHERE Klasse = 'P9')"
                                    << "0/3.5";
        QTest::newRow("quality class") << quality("", "E")
                                       << "Sie haben eine neue Güteklasse eingegeben. Diese wird jetzt in die Stammdaten für Messzahlen "
                                          "eingetragen. Bitte tragen Sie dort die Messzahlen noch nach!"
                                       << "SELECT min(GK_E) || '/' || max(GK_E) || '/' || (count(*) > 20) FROM Messzahlen" << "100/100/1";
        QTest::newRow("species") << species("", "VB (Vogel'beere)", true)
                                 << "Sie haben eine neue Baumart eingegeben. Diese wird jetzt in die Stammdaten für Rindenabzug, "
                                    "Tagespreise, Messbeträge und Messzahlen eingetragen. Bitte tragen Sie dort die Rindenabzugswerte, "
                                    "Preise, Messbeträge und Messzahlen noch nach!"
                                 << "SELECT (SELECT Laubwald FROM Baumarten WHERE Baumart = 'VB (Vogel''beere)') || '/' || "
                                    "(SELECT SK_L0 + SK_L6 FROM Rindenabzug WHERE Baumart = 'VB (Vogel''beere)') || '/' || "
                                    "(SELECT Güte || SK_L3a FROM Tagespreise WHERE Baumart = 'VB (Vogel''beere)') || '/' || "
                                    "(SELECT SK_L2a FROM Messbeträge WHERE Baumart = 'VB (Vogel''beere)') || '/' || "
                                    "(SELECT GK_A + GK_D FROM Messzahlen WHERE Baumart = 'VB (Vogel''beere)')"
                                 << "J/0/B0.0/0.0/0";
    }
    void newEntriesReachThePriceTables()
    {
        QFETCH(Store, store);
        QFETCH(QString, message);
        QFETCH(QString, probe);
        QVERIFY(store());
        QCOMPARE(m_prompter.messages(), message.isEmpty() ? QStringList() : QStringList{message});
        QTEST(value(probe), "expected");
    }

    void aFailingStepLeavesNoHalfClass()
    {
        // The third table refuses its update: the class row and the first two columns go too.
        execSql(db(), QStringLiteral("CREATE TRIGGER refuse BEFORE UPDATE ON Messbeträge BEGIN SELECT RAISE(ABORT, 'nein'); END"));
        const QString before = snapshot();
        QVERIFY_THROWS_EXCEPTION(StoreError, newClass(ClassTable::Staemme, QStringLiteral("L8"), {"80", "89"})());
        QCOMPARE(snapshot(), before);
        QVERIFY(m_prompter.messages().isEmpty());
    }

    // Each editor's core call: a refusal names every reason and changes nothing; what passes
    // is stored (probe: what it reads afterwards).
    void storedOrRefused_data()
    {
        QTest::addColumn<Store>("store");
        QTest::addColumn<QString>("message");
        QTest::addColumn<QString>("probe"); // empty: refused
        QTest::addColumn<QString>("expected");
        auto refused = [](const char* name, const Store& store, const QString& message) {
            QTest::newRow(name) << store << message << QString() << QString();
        };
        auto stored = [](const char* name, const Store& store, const QString& probe, const QString& expected) {
            QTest::newRow(name) << store << QString() << probe << expected;
        };
        const QString names = QStringLiteral("...die Klasse nur aus Buchstaben (ohne Umlaute), Ziffern und '_' bestehen darf "
                                             "(keine Leerzeichen, Anführungszeichen, Punkte oder Semikolons).");
        const QString diameter = QStringLiteral("...der 'Durchmesser von' nicht größen sein darf als der 'Durchmesser bis'.");
        const QString exists = why({"...die Klasse bereits existiert."});
        const ClassTable logs = ClassTable::Staemme;
        refused("class: empty, all reasons gathered", newClass(logs, "  ", {"30", "20"}),
                why({"...die Klasse angegeben werden muß.", diameter}));
        refused("class: existing", newClass(logs, "L2a", {"20", "20"}), exists);
        refused("class: existing in another case", newClass(logs, "l2A", {"20", "20"}), exists);
        for (const char* name : {"L'7", "L 7", "L7;", "Lä", "L7.1"})
            QTest::addRow("class: %s", name) << newClass(logs, QString::fromUtf8(name), {"1", "2"}) << why({names}) << QString() << QString();
        refused("class: too long", newClass(logs, "L123456", {"1", "2"}), why({"...die Klasse höchstens 6 Zeichen lang sein darf."}));
        refused("class: heilbronn, the logs' column holds five", newClass(ClassTable::Heilbronn, "H12345", {"1", "2"}),
                why({"...die Klasse höchstens 5 Zeichen lang sein darf."}));
        refused("class: pole lengths", newClass(ClassTable::Pfaehle, "P9", {"1", "2", "9", "8", "0"}),
                why({"...die 'Mindestlänge von' nicht größer sein darf als die 'Mindestlänge bis'."}));
        refused("class: pole quote", newClass(ClassTable::Pfaehle, "P'9", {"1", "2", "1", "2", "0"}),
                why({"...die Klasse nur aus Buchstaben (ohne Umlaute), Ziffern, '_' und '.' bestehen darf (keine Leerzeichen, "
                     "Anführungszeichen oder Semikolons)."}));
        refused("class: stacked diameter", newClass(ClassTable::Schichtholz, "S9", {"30", "20", "0"}), why({diameter}));
        refused("class: stacked existing", newClass(ClassTable::Schichtholz, "S2.1", {"1", "2", "0"}), exists);
        refused("class: renamed", changedClass(logs, "L2a", "L2x", {"20", "24"}),
                "Sie haben die Klasse von L2a auf L2x geändert. Änderungen der Klasse sind nicht erlaubt. Ggf. müssen Sie die "
                "Klasse löschen und nochmals neu eingeben.");
        stored("class: own name kept, equal bounds", changedClass(logs, "L2a", "L2a", {"20", "20"}),
               "SELECT Durchm_oR_von || '-' || Durchm_oR_bis FROM Stärkeklassen_Stämme WHERE Klasse = 'L2a'", "20-20");
        stored("class: overlapping another", newClass(ClassTable::Schichtholz, "S_9", {"5", "50", "12,5"}),
               "SELECT count(*) FROM Stärkeklassen_Schichtholz WHERE Klasse = 'S_9'", "1");

        refused("species: empty", species("", " "), "Die Baumart muß eingegeben werden.");
        refused("species: existing", species("", "FI (Fichte)"), "Die Baumart existiert bereits.");
        refused("species: existing in another case", species("", "fi (fichte)"), "Die Baumart existiert bereits.");
        refused("species: too long", species("", "ABCDEFGHIJKLMNOPQRSTUVW"), "Die Baumart darf höchstens 22 Zeichen lang sein.");
        stored("species: own name kept, now broadleaf", species(Fichte, Fichte, true),
               "SELECT Laubwald FROM Baumarten WHERE Baumart = 'FI (Fichte)'", "J");

        refused("quality: existing in another case", quality("", "b"), why({"...die Güteklasse bereits existiert."}));
        refused("quality: empty", quality("", ""), why({"...die Güteklasse angegeben werden muß."}));
        refused("quality: blank and semicolon", quality("", "B C;"),
                why({"...die Güteklasse nur aus Buchstaben (ohne Umlaute), Ziffern und '_' bestehen darf (keine Leerzeichen, "
                     "Anführungszeichen, Punkte oder Semikolons)."}));
        refused("quality: renamed", quality("B", "Bx"),
                "Sie haben die Güteklasse von B auf Bx geändert. Änderungen der Güteklasse sind nicht erlaubt. Ggf. müssen Sie "
                "die Güteklasse löschen und nochmals neu eingeben.");
        stored("quality: own name kept", quality("B", "B"), "SELECT count(*) FROM Güteklassen WHERE Güteklasse = 'B'", "1");

        refused("bark range: all reasons", [this] { return storeBarkRange(context(), EditMode::Neu, std::nullopt, {"", "30", "25", "-1"}); },
                why({"...die Baumart angegeben werden muß.", "...die 'Stärke von' nicht größen sein darf als die 'Stärke bis'.",
                     "...der Abzug darf nicht unter 0 cm sein."}));
        stored("bark range: overlapping, then changed",
               [this] {
                   return storeBarkRange(context(), EditMode::Neu, std::nullopt, {Fichte, "20", "29", "2"}) &&
                          storeBarkRange(context(), EditMode::Neu, std::nullopt, {Fichte, "25", "35", "1"}) &&
                          storeBarkRange(context(), EditMode::Aendern, count(QStringLiteral("SELECT max(ID) FROM Rindenabzug2")),
                                         {Fichte, "25", "36", "4"});
               },
               "SELECT group_concat(r, ' ') FROM (SELECT Stärke_von || '-' || Stärke_bis || ':' || Abzug_cm AS r FROM Rindenabzug2 "
               "ORDER BY ID DESC LIMIT 2)",
               "25-36:4 20-29:2");

        const QString buyers = QStringLiteral("Liste_Abnehmer");
        refused("lookup: existing in another case",
                [=, this] { return addLookupEntry(context(), buyers, {"O'Brien Holz"}) && addLookupEntry(context(), buyers, {"o'brien holz"}); },
                why({"...der Eintrag bereits existiert."}));
        refused("lookup: too long", [this] { return addLookupEntry(context(), QStringLiteral("Liste_Hiebart"), {QString(21, u'x')}); },
                why({"...der Eintrag 'Inhalt' höchstens 20 Zeichen lang sein darf."}));
        stored("lookup: changed to the same text twice",
               [=, this] {
                   addLookupEntry(context(), buyers, {"O'Brien Holz"});
                   const qint64 row = lookupEntries(db(), buyers).first().rowId;
                   return changeLookupEntry(context(), buyers, row, {"O'Brien"}) && changeLookupEntry(context(), buyers, row, {"O'Brien"});
               },
               "SELECT group_concat(Inhalt) FROM Liste_Abnehmer", "O'Brien");
    }
    void storedOrRefused()
    {
        QFETCH(Store, store);
        QFETCH(QString, message);
        QFETCH(QString, probe);
        const QString before = snapshot();
        QCOMPARE(store(), !probe.isEmpty());
        QCOMPARE(m_prompter.messages(), message.isEmpty() ? QStringList() : QStringList{message});
        if (probe.isEmpty())
            QCOMPARE(snapshot(), before);
        else
            QTEST(value(probe), "expected");
    }

    // Classes and species are values in the bookings: a rename is carried into every row.
    void renamesReachTheBookings_data()
    {
        QTest::addColumn<Store>("store");
        QTest::addColumn<QString>("message");
        QTest::addColumn<QString>("probe");
        QTest::addColumn<QString>("expected");
        const QString carried = QStringLiteral(" geändert. Die Änderung wird in allen Buchungen übernommen");
        QTest::newRow("pole class") << changedClass(ClassTable::Pfaehle, "P2", "L2a", {"7", "13", "1", "99", "0"})
                                    << "Die Klasse wurde von P2 auf L2a" + carried
                                    << "SELECT group_concat(Stärkeklasse) FROM (SELECT Stärkeklasse FROM Pfähle ORDER BY ID)" << "L2a,L2a,P3";
        QTest::newRow("heilbronn class") << changedClass(ClassTable::Heilbronn, "H2", "H2x", {"12", "10"})
                                         << "Die Klasse wurde von H2 auf H2x" + carried
                                         << "SELECT group_concat(Klasse_Heilbronn) FROM (SELECT Klasse_Heilbronn FROM Stämme ORDER BY ID)"
                                         << "H2x,H3";
        QStringList perTable;
        for (const char* table : {"Baumarten", "Rindenabzug", "Messbeträge", "Tagespreise", "Messzahlen", "Stämme", "Pfähle", "Schichtholz"})
            perTable << QStringLiteral("(SELECT count(*) FROM %1 WHERE Baumart = 'Fi')").arg(QString::fromUtf8(table));
        QTest::newRow("species") << species(Fichte, "Fi") << "Die Baumart wurde von FI (Fichte) auf Fi" + carried
                                 << "SELECT " + perTable.join(" || ") + " || '/' || (SELECT count(*) FROM Rindenabzug2 WHERE Baumart = "
                                                                        "'FI (Fichte)')"
                                 << "11111131/0";
    }
    void renamesReachTheBookings()
    {
        QFETCH(Store, store);
        QFETCH(QString, message);
        QFETCH(QString, probe);
        test::addTypedLog(db(), m_harvest, 1, 1, Fichte, 30, 4, QStringLiteral("O"));
        test::addTypedLog(db(), m_harvest, 1, 2, QStringLiteral("TA (Tanne)"), 30, 4, QStringLiteral("O"));
        execSql(db(), QStringLiteral("UPDATE Stämme SET Klasse_Heilbronn = CASE Laufende_Nr WHEN 1 THEN 'H2' ELSE 'H3' END"));
        for (const char* c : {"P2", "P2", "P3"})
            execSql(db(), QStringLiteral("INSERT INTO Pfähle(Los_Nr, Baumart, Stärkeklasse, Anzahl, Kennung) VALUES (2, ?, ?, 1, ?)"),
                    {Fichte, QString::fromUtf8(c), m_harvest});
        execSql(db(), QStringLiteral("INSERT INTO Schichtholz(Los_Nr, Baumart, Sektions_Nr, Kennung) VALUES (3, ?, 1, ?)"), {Fichte, m_harvest});
        QVERIFY(store());
        QCOMPARE(m_prompter.messages(), QStringList{message});
        QTEST(value(probe), "expected");
    }

    // A delete asks first ("Nein" keeps the row). What is booked, a species' own row of a price
    // table, and a species' last day-price row stay with a message; a free class takes its
    // columns along, a species its rows.
    void deletions_data()
    {
        QTest::addColumn<int>("list");
        QTest::addColumn<QString>("key");
        QTest::addColumn<bool>("asked");
        QTest::addColumn<QString>("refusal"); // empty: deleted
        QTest::addColumn<QStringList>("dropped"); // table.column gone with it
        const QString inUse = QStringLiteral("Der Datensatz kann nicht gelöscht werden, weil diese Stammdaten bereits in Buchungen "
                                             "verwendung findet!");
        const QString belongs = QStringLiteral("Der Datensatz kann nicht gelöscht werden, weil er zur Baumart FI (Fichte) gehört. "
                                               "Er wird mit der Baumart (Liste \"Baumarten\") gelöscht.");
        auto row = [](const char* name, MasterList list, const char* key, bool asked, const QString& refusal, const QStringList& dropped = {}) {
            QTest::newRow(name) << int(list) << QString::fromUtf8(key) << asked << refusal << dropped;
        };
        row("log class in use", MasterList::Staemme, "L2a", true, inUse);
        row("log class free", MasterList::Staemme, "L6", true, "", {"Rindenabzug.SK_L6", "Messbeträge.SK_L6", "Tagespreise.SK_L6"});
        row("quality in use", MasterList::Gueteklassen, "B", true, inUse);
        row("quality free", MasterList::Gueteklassen, "C_D", true, "", {"Messzahlen.GK_C_D"});
        row("species in use", MasterList::Baumarten, "FI (Fichte)", true, inUse);
        row("species free", MasterList::Baumarten, "TA (Tanne)", true, "");
        row("heilbronn class in use", MasterList::Heilbronn, "H3", true, inUse);
        row("pole class free", MasterList::Pfaehle, "P1", true, "");
        row("pole class in use", MasterList::Pfaehle, "P2", true, inUse);
        row("stacked class in use", MasterList::Schichtholz, "S2", true, inUse);
        row("a species' bark deductions", MasterList::Rindenabzug, "FI (Fichte)", false, belongs);
        row("a species' base amounts", MasterList::Messbetraege, "FI (Fichte)", false, belongs);
        row("a species' index numbers", MasterList::Messzahlen, "FI (Fichte)", false, belongs);
        row("index numbers of a species no longer kept", MasterList::Messzahlen, "XY (Gelöscht)", true, "");
        row("the last day-price row", MasterList::Tagespreise, "FI (Fichte)", true,
            "Die ausgewählte Baumart existiert nur noch einmal und kann nicht gelöscht werden!");
        row("one of two day-price rows", MasterList::Tagespreise, "TA (Tanne)", true, "");
    }
    void deletions()
    {
        QFETCH(int, list);
        QFETCH(QString, key);
        QFETCH(bool, asked);
        QFETCH(QString, refusal);
        QFETCH(QStringList, dropped);
        test::addTypedLog(db(), m_harvest, 1, 1, Fichte, 30, 4, QStringLiteral("O"));
        execSql(db(), QStringLiteral("UPDATE Stämme SET Stärkeklasse = 'L2a', Klasse_Heilbronn = 'H3'"));
        execSql(db(), QStringLiteral("INSERT INTO Schichtholz(Los_Nr, Baumart, Sektions_Nr, Stärkeklasse, Kennung) VALUES (3, ?, 1, 'S2', ?)"),
                {Fichte, m_harvest});
        execSql(db(), QStringLiteral("INSERT INTO Pfähle(Los_Nr, Baumart, Stärkeklasse, Anzahl, Kennung) VALUES (2, ?, 'P2', 1, ?)"),
                {Fichte, m_harvest});
        execSql(db(), QStringLiteral("INSERT INTO Messzahlen(Baumart) VALUES ('XY (Gelöscht)')"));
        execSql(db(), QStringLiteral("INSERT INTO Tagespreise(Baumart, Güte) VALUES ('TA (Tanne)', 'A')"));
        const MasterList l = MasterList(list);
        const QString table = masterListTable(l);
        const QString keyColumn = table == u"Güteklassen" ? QStringLiteral("Güteklasse")
                                  : schema::hasColumn(db(), table, QStringLiteral("Baumart")) ? QStringLiteral("Baumart") : QStringLiteral("Klasse");
        const qint32 id = idOf(table, keyColumn, key);
        QVERIFY(id > 0);

        const QString before = snapshot();
        if (asked) {
            m_prompter.answerNo();
            QVERIFY(!deleteMasterRow(context(), l, id));
            QCOMPARE(snapshot(), before);
            m_prompter.answerYes();
        }
        QCOMPARE(deleteMasterRow(context(), l, id), refusal.isEmpty());
        QCOMPARE(m_prompter.questions(), asked ? QStringList(2, DeleteQuestion) : QStringList());
        QCOMPARE(m_prompter.messages(), refusal.isEmpty() ? QStringList() : QStringList{refusal});
        if (!refusal.isEmpty()) {
            QCOMPARE(snapshot(), before);
            return;
        }
        QCOMPARE(count(QStringLiteral("SELECT COUNT(*) FROM %1 WHERE ID = ?").arg(quoted(table)), {id}), 0);
        for (const QString& column : dropped)
            QVERIFY2(!schema::hasColumn(db(), column.section(u'.', 0, 0), column.section(u'.', 1)), qPrintable(column));
        if (l == MasterList::Baumarten)
            for (const char* t : {"Rindenabzug", "Messbeträge", "Messzahlen", "Tagespreise"})
                QCOMPARE(count(QStringLiteral("SELECT COUNT(*) FROM %1 WHERE Baumart = ?").arg(quoted(QString::fromUtf8(t))), {key}), 0);
    }

    // A typed price cell may be copied across its row on request; bark deductions are whole cm.
    void cellEdits_data()
    {
        QTest::addColumn<int>("list");
        QTest::addColumn<QString>("column");
        QTest::addColumn<QString>("typed");
        QTest::addColumn<bool>("acrossTheRow");
        QTest::addColumn<QString>("probe");
        QTest::addColumn<QString>("expected");
        const QString prices = QStringLiteral("SELECT SK_L0 || '/' || SK_L2a || '/' || SK_L6 || '/' || Güte FROM Tagespreise WHERE Baumart = 'FI (Fichte)'");
        QTest::newRow("day price, this cell") << int(MasterList::Tagespreise) << "SK_L2a" << "55,5" << false << prices << "0.0/55.5/0.0/B";
        QTest::newRow("day price, the whole row") << int(MasterList::Tagespreise) << "SK_L2a" << "55,5" << true << prices << "55.5/55.5/55.5/B";
        QTest::newRow("bark deduction in whole cm") << int(MasterList::Rindenabzug) << "SK_L1a" << "2,5" << false
                                                    << "SELECT SK_L1a FROM Rindenabzug WHERE Baumart = 'FI (Fichte)'" << "2";
    }
    void cellEdits()
    {
        QFETCH(int, list);
        QFETCH(QString, column);
        QFETCH(QString, typed);
        QFETCH(bool, acrossTheRow);
        QFETCH(QString, probe);
        const QString table = masterListTable(MasterList(list));
        acrossTheRow ? m_prompter.answerYes() : m_prompter.answerNo();
        QVERIFY(editMasterCell(context(), MasterList(list), idOf(table, QStringLiteral("Baumart"), Fichte), column, typed));
        QCOMPARE(m_prompter.questions(),
                 QStringList{QStringLiteral("Soll die Änderung auf alle Zellen des aktuellen Datensatzes kopiert werden?")});
        QTEST(value(probe), "expected");
    }

    // A copied day-price row becomes the price of another quality through its `Güte` cell; a
    // species takes one row per quality, and only qualities that logs can have.
    void dayPriceQualities_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("refusal"); // empty: stored
        QTest::newRow("another quality") << "A" << "";
        QTest::newRow("blanks around it") << " C " << "";
        QTest::newRow("no quality") << "" << "";
        QTest::newRow("the original's quality") << "B" << "...die Baumart FI (Fichte) bereits Tagespreise für die Güte B hat.";
        QTest::newRow("no quality class") << "Z" << "...die Güte Z keine Güteklasse der Stammdaten ist.";
        QTest::newRow("too long") << "ABCDEF" << "...die Güte höchstens 5 Zeichen lang sein darf.";
    }
    void dayPriceQualities()
    {
        QFETCH(QString, typed);
        QFETCH(QString, refusal);
        const qint32 original = idOf(QStringLiteral("Tagespreise"), QStringLiteral("Baumart"), Fichte);
        execSql(db(), QStringLiteral("UPDATE Tagespreise SET SK_L3a = 81.5 WHERE ID = ?"), {original});
        const qint32 copy = copyDayPriceRow(context(), original);
        QVERIFY(isCellEditable(MasterList::Tagespreise, QStringLiteral("Güte")));
        QCOMPARE(editMasterCell(context(), MasterList::Tagespreise, copy, QStringLiteral("Güte"), typed), refusal.isEmpty());
        QCOMPARE(m_prompter.questions(), QStringList()); // the quality is never copied across the row
        QCOMPARE(m_prompter.messages(), refusal.isEmpty() ? QStringList() : QStringList{Refusal + refusal});
        const QString sql = QStringLiteral("SELECT Baumart || '/' || Güte || '/' || SK_L3a FROM Tagespreise WHERE ID = ?");
        QCOMPARE(value(sql, {copy}), "FI (Fichte)/" + (refusal.isEmpty() ? typed.trimmed() : QStringLiteral("B")) + "/81.5");
        QCOMPARE(value(sql, {original}), QStringLiteral("FI (Fichte)/B/81.5"));
    }

    void theRulesSeeANewClassAtOnce()
    {
        // The lookup is made before the change, as an open window's would be.
        MasterDataLookup lookup(db());
        LogForm log = typedLog(QStringLiteral("72"));
        recomputeLog(log, lookup);
        QCOMPARE(log.diameterClass, QStringLiteral("L6"));

        QVERIFY(newClass(ClassTable::Staemme, QStringLiteral("L7"), {"70", "79"})());
        const qint32 price = idOf(QStringLiteral("Tagespreise"), QStringLiteral("Baumart"), Fichte);
        m_prompter.answerNo();
        QVERIFY(editMasterCell(context(), MasterList::Tagespreise, price, QStringLiteral("SK_L7"), QStringLiteral("100")));
        recomputeLog(log, lookup);
        QCOMPARE(log.diameterClass, QStringLiteral("L7"));
        QCOMPARE(log.logPrice, QStringLiteral("203,60")); // 100 × 2,036 Efm (0,72² × π ÷ 4 × 5)

        // Deleting a class drops its columns; the same lookup, which has read them, then prices
        // without them instead of failing on a vanished column.
        QVERIFY(newClass(ClassTable::Staemme, QStringLiteral("L8"), {"80", "89"})());
        execSql(db(), QStringLiteral("UPDATE Tagespreise SET SK_L8 = 50 WHERE ID = ?"), {price});
        PriceSettings dayPrice;
        dayPrice.preisArt = DayPrice;
        const LogPriceInput l8{QStringLiteral("L8"), QStringLiteral("B"), 2.0f, Fichte, 0};
        QCOMPARE(priceLog(dayPrice, l8, lookup).gross, 100.0f);
        m_prompter.answerYes();
        QVERIFY(deleteMasterRow(context(), MasterList::Staemme,
                                idOf(QStringLiteral("Stärkeklassen_Stämme"), QStringLiteral("Klasse"), QStringLiteral("L8"))));
        QCOMPARE(priceLog(dayPrice, l8, lookup).gross, 0.0f);
        log = typedLog(QStringLiteral("85"));
        recomputeLog(log, lookup);
        QCOMPARE(log.diameterClass, QStringLiteral("L6"));
    }

    void lookupListsOfSeveralFields()
    {
        const QString woods = QStringLiteral("Liste_Waldnamen");
        QVERIFY(addLookupEntry(context(), woods, {QStringLiteral("Eichwald"), QStringLiteral("Hang"), QStringLiteral("1,5")}));
        QVERIFY(addLookupEntry(context(), woods, {QStringLiteral("Eichwald"), QStringLiteral("Tal"), QString()}));
        const QList<LookupEntry> entries = lookupEntries(db(), woods);
        QCOMPARE(entries.size(), 2);
        QCOMPARE(entries[0].values, (QStringList{"Eichwald", "Hang", "1,5"}));
        m_prompter.answerNo().answerYes();
        QVERIFY(!deleteLookupEntry(context(), woods, entries[0].rowId));
        QVERIFY(deleteLookupEntry(context(), woods, entries[0].rowId));
        QCOMPARE(lookupEntries(db(), woods).size(), 1);
    }

    void printedList()
    {
        m_settings.text[1] = QStringLiteral("Forstbetrieb Muster");
        QStringList lines = masterListReport(db(), m_settings, MasterList::Tagespreise, m_clock.today());
        QCOMPARE(lines[0], QStringLiteral("Forstbetrieb Muster"));
        QCOMPARE(lines[1], QStringLiteral("Stammdaten: Tagespreise"));
        QVERIFY(lines[3].startsWith(QStringLiteral("Baumart ")));
        QVERIFY(lines[3].contains(QStringLiteral(" | Güte | SK_L0 | SK_L1a |")));
        QCOMPARE(lines.filter(QStringLiteral("FI (Fichte)")).size(), 1);
        QVERIFY(lines.filter(QStringLiteral("FI (Fichte)")).first().contains(QStringLiteral(" | B    |  0,00 |")));

        // 55 rows a page, each page but the last ended by its mark; with page breaks off, one
        // page; the date on request.
        execSql(db(), QStringLiteral("DELETE FROM Rindenabzug2"));
        for (int i = 0; i < 60; ++i)
            execSql(db(), QStringLiteral("INSERT INTO Rindenabzug2(Baumart, Stärke_von, Stärke_bis, Abzug_cm) VALUES (?, ?, ?, 1)"),
                    {Fichte, i * 10, i * 10 + 9});
        lines = masterListReport(db(), m_settings, MasterList::Rindenabzug2, m_clock.today());
        QCOMPARE(lines.count(QStringLiteral("#")), 1);
        QVERIFY(lines.contains(QStringLiteral("Seite 1 von 2")));
        QCOMPARE(lines.last(), QStringLiteral("Seite 2 von 2"));
        QCOMPARE(lines.filter(QStringLiteral("Anzahl Datensätze: ")), QStringList{QStringLiteral("Anzahl Datensätze: 60")});
        m_settings.zahl[50] = 1;
        m_settings.zahl[1] = 1;
        lines = masterListReport(db(), m_settings, MasterList::Rindenabzug2, m_clock.today());
        QCOMPARE(lines.count(QStringLiteral("#")), 0);
        QCOMPARE(lines[1], QStringLiteral("Stammdaten: Rindenabzug frei definiert   Datum: 23.11.2026"));
    }
};

TARVIK_TEST_CORE_MAIN(TestMasterData)
#include "tst_masterdata.moc"
