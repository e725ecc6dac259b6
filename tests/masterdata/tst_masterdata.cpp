// Master data stores through the core: species, quality and class editors, bark ranges, the
// deletes, cell edits and copies, lookup lists, the printed list, and the rules seeing every
// change at once.
#include "entry/logentry.h"
#include "masterdata/barkranges.h"
#include "masterdata/classtables.h"
#include "masterdata/lookuplists.h"
#include "masterdata/masterlists.h"
#include "masterdata/species.h"
#include "rules/masterdatalookup.h"
#include "support/masterdatafixture.h"

using namespace tarvik;

namespace {
const QString Fichte = QStringLiteral("FI (Fichte)");
const QString Refusal = QStringLiteral("Die Eingabe kann nicht übernommen werden, weil...\n");
const QString InUse = QStringLiteral("Der Datensatz kann nicht gelöscht werden, weil diese Stammdaten bereits in Buchungen "
                                     "verwendung findet!");
const QString DeleteQuestion = QStringLiteral("Soll der markierte Datensatz wirklich gelöscht werden?");
} // namespace

class TestMasterData : public QObject, protected test::MasterDataFixture {
    Q_OBJECT

private slots:
    void init() { resetDatabase(); }
    void cleanup() { QCOMPARE(m_prompter.pendingAnswers(), 0); }

    void newLogClassAddsItsColumnsAtZero()
    {
        QVERIFY(storeClass(context(), ClassTable::Staemme, EditMode::Neu, std::nullopt, {QStringLiteral("L7"), {"70", "79"}}));
        QCOMPARE(m_prompter.messages(),
                 QStringList{QStringLiteral("Sie haben eine neue Klasse eingegeben. Diese wird jetzt in die Stammdaten für "
                                            "Rindenabzug, Tagespreise und Messbeträge eingetragen. Bitte tragen Sie dort die "
                                            "Rindenabzugswerte, Preise und Messbeträge noch nach!")});
        for (const char* t : {"Rindenabzug", "Tagespreise", "Messbeträge"}) {
            const QString table = QString::fromUtf8(t);
            QVERIFY2(schema::hasColumn(db(), table, QStringLiteral("SK_L7")), t);
            QVERIFY(count(QStringLiteral("SELECT COUNT(*) FROM %1").arg(quoted(table))) > 20);
            QCOMPARE(count(QStringLiteral("SELECT COUNT(*) FROM %1 WHERE SK_L7 IS NOT 0").arg(quoted(table))), 0);
        }
        QCOMPARE(count(QStringLiteral("SELECT Durchm_oR_bis FROM Stärkeklassen_Stämme WHERE Klasse = 'L7'")), 79);
        // The other class tables never touch the price tables' columns.
        QVERIFY(storeClass(context(), ClassTable::Pfaehle, EditMode::Neu, std::nullopt, {QStringLiteral("P9"), {"1", "2", "1", "2", "3,5"}}));
        QVERIFY(!schema::hasColumn(db(), QStringLiteral("Rindenabzug"), QStringLiteral("SK_P9")));
        QCOMPARE(scalar(db(), QStringLiteral("SELECT Schätzpreis_je_St FROM Stärkeklassen_Pfähle WHERE Klasse = 'P9'")).toDouble(), 3.5);
    }

    void aFailingStepLeavesNoHalfClass()
    {
        // The third table refuses its update: the class row and the first two columns go too.
        execSql(db(), QStringLiteral("CREATE TRIGGER refuse BEFORE UPDATE ON Messbeträge BEGIN SELECT RAISE(ABORT, 'nein'); END"));
        const QString before = snapshot();
        QVERIFY_THROWS_EXCEPTION(StoreError, storeClass(context(), ClassTable::Staemme, EditMode::Neu, std::nullopt,
                                                         {QStringLiteral("L8"), {"80", "89"}}));
        QCOMPARE(snapshot(), before);
        QVERIFY(m_prompter.messages().isEmpty());
    }

    void classRefusals_data()
    {
        QTest::addColumn<int>("table");
        QTest::addColumn<QString>("klasse");
        QTest::addColumn<QStringList>("values");
        QTest::addColumn<QStringList>("reasons");
        const QString names = QStringLiteral("...die Klasse nur aus Buchstaben (ohne Umlaute), Ziffern und '_' bestehen darf "
                                             "(keine Leerzeichen, Anführungszeichen, Punkte oder Semikolons).");
        const QString valueNames = QStringLiteral("...die Klasse nur aus Buchstaben (ohne Umlaute), Ziffern, '_' und '.' bestehen "
                                                  "darf (keine Leerzeichen, Anführungszeichen oder Semikolons).");
        const QString diameter = QStringLiteral("...der 'Durchmesser von' nicht größen sein darf als der 'Durchmesser bis'.");
        const int logs = int(ClassTable::Staemme), poles = int(ClassTable::Pfaehle), stacks = int(ClassTable::Schichtholz);
        QTest::newRow("empty, all reasons gathered") << logs << "  " << QStringList{"30", "20"}
                                                     << QStringList{"...die Klasse angegeben werden muß.", diameter};
        QTest::newRow("existing class") << logs << "L2a" << QStringList{"20", "20"} << QStringList{"...die Klasse bereits existiert."};
        QTest::newRow("existing in another case") << logs << "l2A" << QStringList{"20", "20"}
                                                  << QStringList{"...die Klasse bereits existiert."};
        QTest::newRow("quote") << logs << "L'7" << QStringList{"1", "2"} << QStringList{names};
        QTest::newRow("blank") << logs << "L 7" << QStringList{"1", "2"} << QStringList{names};
        QTest::newRow("semicolon") << logs << "L7;" << QStringList{"1", "2"} << QStringList{names};
        QTest::newRow("umlaut") << logs << "Lä" << QStringList{"1", "2"} << QStringList{names};
        QTest::newRow("point names no column") << logs << "L7.1" << QStringList{"1", "2"} << QStringList{names};
        QTest::newRow("too long") << logs << "L123456" << QStringList{"1", "2"}
                                  << QStringList{"...die Klasse höchstens 6 Zeichen lang sein darf."};
        QTest::newRow("heilbronn: the logs' column holds five") << int(ClassTable::Heilbronn) << "H12345" << QStringList{"1", "2"}
                                                                << QStringList{"...die Klasse höchstens 5 Zeichen lang sein darf."};
        QTest::newRow("pole lengths") << poles << "P9" << QStringList{"1", "2", "9", "8", "0"}
                                      << QStringList{"...die 'Mindestlänge von' nicht größer sein darf als die 'Mindestlänge bis'."};
        QTest::newRow("pole quote") << poles << "P'9" << QStringList{"1", "2", "1", "2", "0"} << QStringList{valueNames};
        QTest::newRow("stack diameter") << stacks << "S9" << QStringList{"30", "20", "0"} << QStringList{diameter};
        QTest::newRow("stack existing") << stacks << "S2.1" << QStringList{"1", "2", "0"}
                                        << QStringList{"...die Klasse bereits existiert."};
    }
    void classRefusals()
    {
        QFETCH(int, table);
        QFETCH(QString, klasse);
        QFETCH(QStringList, values);
        QFETCH(QStringList, reasons);
        const QString before = snapshot();
        QVERIFY(!storeClass(context(), ClassTable(table), EditMode::Neu, std::nullopt, {klasse, values}));
        QCOMPARE(m_prompter.messages(), QStringList{Refusal + reasons.join(u'\n')});
        QCOMPARE(snapshot(), before);
    }

    void rangesAndOverlapsAccepted()
    {
        // Equal bounds are a valid range; overlapping classes are both accepted.
        QVERIFY(storeClass(context(), ClassTable::Staemme, EditMode::Neu, std::nullopt, {QStringLiteral("L7"), {"20", "20"}}));
        QVERIFY(storeClass(context(), ClassTable::Schichtholz, EditMode::Neu, std::nullopt, {QStringLiteral("S_9"), {"5", "50", "12,5"}}));
    }

    void renamingClasses()
    {
        const qint32 l2a = idOf(QStringLiteral("Stärkeklassen_Stämme"), QStringLiteral("Klasse"), QStringLiteral("L2a"));
        const QString before = snapshot();
        QVERIFY(!storeClass(context(), ClassTable::Staemme, EditMode::Aendern, l2a, {QStringLiteral("L2x"), {"20", "24"}}));
        QCOMPARE(m_prompter.messages().last(),
                 QStringLiteral("Sie haben die Klasse von L2a auf L2x geändert. Änderungen der Klasse sind nicht erlaubt. "
                                "Ggf. müssen Sie die Klasse löschen und nochmals neu eingeben."));
        QCOMPARE(snapshot(), before);
        // Unchanged name in "Ändern": its own row is no duplicate; the range is stored.
        QVERIFY(storeClass(context(), ClassTable::Staemme, EditMode::Aendern, l2a, {QStringLiteral("L2a"), {"20", "25"}}));
        QCOMPARE(count(QStringLiteral("SELECT Durchm_oR_bis FROM Stärkeklassen_Stämme WHERE ID = ?"), {l2a}), 25);

        // Pole classes are values: a rename is carried into every pole.
        test::addLot(db(), m_harvest, 2, QStringLiteral("Pfähle"));
        for (const char* c : {"P2", "P2", "P3"})
            execSql(db(), QStringLiteral("INSERT INTO Pfähle(Los_Nr, Baumart, Stärkeklasse, Anzahl, Kennung) VALUES (2, ?, ?, 1, ?)"),
                    {Fichte, QString::fromUtf8(c), m_harvest});
        const qint32 p2 = idOf(QStringLiteral("Stärkeklassen_Pfähle"), QStringLiteral("Klasse"), QStringLiteral("P2"));
        m_prompter.clear();
        QVERIFY(storeClass(context(), ClassTable::Pfaehle, EditMode::Aendern, p2, {QStringLiteral("L2a"), {"7", "13", "1", "99", "0"}}));
        QCOMPARE(m_prompter.messages(), QStringList{QStringLiteral("Die Klasse wurde von P2 auf L2a geändert. Die Änderung wird in "
                                                                   "allen Buchungen übernommen")});
        QCOMPARE(count(QStringLiteral("SELECT COUNT(*) FROM Pfähle WHERE Stärkeklasse = 'L2a'")), 2);
        QCOMPARE(count(QStringLiteral("SELECT COUNT(*) FROM Pfähle WHERE Stärkeklasse = 'P3'")), 1);

        // Heilbronn classes follow into the logs.
        test::addTypedLog(db(), m_harvest, 1, 1, Fichte, 30, 4, QStringLiteral("O"));
        execSql(db(), QStringLiteral("UPDATE Stämme SET Klasse_Heilbronn = 'H2'"));
        const qint32 h2 = idOf(QStringLiteral("Stärkeklassen_Stämme_Heilbronn"), QStringLiteral("Klasse"), QStringLiteral("H2"));
        QVERIFY(storeClass(context(), ClassTable::Heilbronn, EditMode::Aendern, h2, {QStringLiteral("H2x"), {"12", "10"}}));
        QCOMPARE(scalar(db(), QStringLiteral("SELECT Klasse_Heilbronn FROM Stämme")).toString(), QStringLiteral("H2x"));
    }

    void renamingASpeciesReachesEveryTable()
    {
        test::addTypedLog(db(), m_harvest, 1, 1, Fichte, 30, 4, QStringLiteral("O"));
        test::addTypedLog(db(), m_harvest, 1, 2, QStringLiteral("TA (Tanne)"), 30, 4, QStringLiteral("O"));
        execSql(db(), QStringLiteral("INSERT INTO Pfähle(Los_Nr, Baumart, Stärkeklasse, Anzahl, Kennung) VALUES (2, ?, 'P1', 1, ?)"),
                {Fichte, m_harvest});
        execSql(db(), QStringLiteral("INSERT INTO Schichtholz(Los_Nr, Baumart, Sektions_Nr, Kennung) VALUES (3, ?, 1, ?)"),
                {Fichte, m_harvest});
        const qint32 id = idOf(QStringLiteral("Baumarten"), QStringLiteral("Baumart"), Fichte);
        QVERIFY(storeSpecies(context(), EditMode::Aendern, id, {QStringLiteral("Fi"), false}));
        QCOMPARE(m_prompter.messages(),
                 QStringList{QStringLiteral("Die Baumart wurde von FI (Fichte) auf Fi geändert. Die Änderung wird in allen "
                                            "Buchungen übernommen")});
        for (const QString& table : speciesTables()) {
            QCOMPARE(count(QStringLiteral("SELECT COUNT(*) FROM %1 WHERE Baumart = ?").arg(quoted(table)), {Fichte}), 0);
            QVERIFY2(count(QStringLiteral("SELECT COUNT(*) FROM %1 WHERE Baumart = 'Fi'").arg(quoted(table))) > 0, qPrintable(table));
        }
        QCOMPARE(count(QStringLiteral("SELECT COUNT(*) FROM Stämme WHERE Baumart = 'TA (Tanne)'")), 1);
        // Stored again unchanged: its own row is no duplicate, and no rename message.
        m_prompter.clear();
        QVERIFY(storeSpecies(context(), EditMode::Aendern, id, {QStringLiteral("Fi"), true}));
        QVERIFY(m_prompter.messages().isEmpty());
        QCOMPARE(scalar(db(), QStringLiteral("SELECT Laubwald FROM Baumarten WHERE ID = ?"), {id}).toString(), QStringLiteral("J"));
    }

    void newSpeciesStartsAtZero()
    {
        const QString name = QStringLiteral("VB (Vogel'beere)");
        QVERIFY(storeSpecies(context(), EditMode::Neu, std::nullopt, {name, true}));
        QCOMPARE(m_prompter.messages().size(), 1);
        QVERIFY(m_prompter.messages().first().startsWith(QStringLiteral("Sie haben eine neue Baumart eingegeben.")));
        for (const char* t : {"Rindenabzug", "Tagespreise", "Messbeträge", "Messzahlen"}) {
            const QString table = QString::fromUtf8(t);
            const QString prefix = table == u"Messzahlen" ? QStringLiteral("GK_") : QStringLiteral("SK_");
            QCOMPARE(count(QStringLiteral("SELECT COUNT(*) FROM %1 WHERE Baumart = ?").arg(quoted(table)), {name}), 1);
            for (const QString& c : schema::columnNames(db(), table))
                if (c.startsWith(prefix))
                    QCOMPARE(count(QStringLiteral("SELECT %1 FROM %2 WHERE Baumart = ?").arg(quoted(c), quoted(table)), {name}), 0);
        }
        QCOMPARE(scalar(db(), QStringLiteral("SELECT Güte FROM Tagespreise WHERE Baumart = ?"), {name}).toString(), QStringLiteral("B"));
    }

    void speciesRefusals_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("message");
        QTest::newRow("empty") << " " << "Die Baumart muß eingegeben werden.";
        QTest::newRow("existing") << "FI (Fichte)" << "Die Baumart existiert bereits.";
        QTest::newRow("existing in another case") << "fi (fichte)" << "Die Baumart existiert bereits.";
        QTest::newRow("too long") << "ABCDEFGHIJKLMNOPQRSTUVW" << "Die Baumart darf höchstens 22 Zeichen lang sein.";
    }
    void speciesRefusals()
    {
        QFETCH(QString, name);
        QFETCH(QString, message);
        const QString before = snapshot();
        QVERIFY(!storeSpecies(context(), EditMode::Neu, std::nullopt, {name, false}));
        QCOMPARE(m_prompter.messages(), QStringList{message});
        QCOMPARE(snapshot(), before);
    }

    void qualityClasses()
    {
        const QString before = snapshot();
        QVERIFY(!storeQuality(context(), EditMode::Neu, std::nullopt, QStringLiteral("b")));
        QVERIFY(!storeQuality(context(), EditMode::Neu, std::nullopt, QString()));
        QVERIFY(!storeQuality(context(), EditMode::Neu, std::nullopt, QStringLiteral("B C;")));
        const qint32 b = idOf(QStringLiteral("Güteklassen"), QStringLiteral("Güteklasse"), QStringLiteral("B"));
        QVERIFY(!storeQuality(context(), EditMode::Aendern, b, QStringLiteral("Bx")));
        QVERIFY(storeQuality(context(), EditMode::Aendern, b, QStringLiteral("B"))); // unchanged: nothing to do
        QCOMPARE(m_prompter.messages(),
                 (QStringList{Refusal + QStringLiteral("...die Güteklasse bereits existiert."),
                              Refusal + QStringLiteral("...die Güteklasse angegeben werden muß."),
                              Refusal + QStringLiteral("...die Güteklasse nur aus Buchstaben (ohne Umlaute), Ziffern und '_' "
                                                       "bestehen darf (keine Leerzeichen, Anführungszeichen, Punkte oder Semikolons)."),
                              QStringLiteral("Sie haben die Güteklasse von B auf Bx geändert. Änderungen der Güteklasse sind nicht "
                                             "erlaubt. Ggf. müssen Sie die Güteklasse löschen und nochmals neu eingeben.")}));
        QCOMPARE(snapshot(), before);
    }

    void deletions_data()
    {
        QTest::addColumn<int>("list");
        QTest::addColumn<QString>("key");
        QTest::addColumn<bool>("used");
        QTest::addColumn<QString>("droppedColumn"); // table.column gone after the delete
        QTest::newRow("log class in use") << int(MasterList::Staemme) << "L2a" << true << "";
        QTest::newRow("log class free") << int(MasterList::Staemme) << "L6" << false << "Rindenabzug.SK_L6";
        QTest::newRow("quality in use") << int(MasterList::Gueteklassen) << "B" << true << "";
        QTest::newRow("quality free") << int(MasterList::Gueteklassen) << "C_D" << false << "Messzahlen.GK_C_D";
        QTest::newRow("species in use") << int(MasterList::Baumarten) << "FI (Fichte)" << true << "";
        QTest::newRow("species free") << int(MasterList::Baumarten) << "TA (Tanne)" << false << "";
        QTest::newRow("heilbronn in use") << int(MasterList::Heilbronn) << "H3" << true << "";
        QTest::newRow("pole class free") << int(MasterList::Pfaehle) << "P1" << false << "";
        QTest::newRow("pole class in use") << int(MasterList::Pfaehle) << "P2" << true << "";
        QTest::newRow("stacked class in use") << int(MasterList::Schichtholz) << "S2" << true << "";
    }
    void deletions()
    {
        QFETCH(int, list);
        QFETCH(QString, key);
        QFETCH(bool, used);
        QFETCH(QString, droppedColumn);
        test::addTypedLog(db(), m_harvest, 1, 1, Fichte, 30, 4, QStringLiteral("O"));
        execSql(db(), QStringLiteral("UPDATE Stämme SET Stärkeklasse = 'L2a', Klasse_Heilbronn = 'H3'"));
        execSql(db(), QStringLiteral("INSERT INTO Schichtholz(Los_Nr, Baumart, Sektions_Nr, Stärkeklasse, Kennung) VALUES (3, ?, 1, 'S2', ?)"),
                {Fichte, m_harvest});
        execSql(db(), QStringLiteral("INSERT INTO Pfähle(Los_Nr, Baumart, Stärkeklasse, Anzahl, Kennung) VALUES (2, ?, 'P2', 1, ?)"),
                {Fichte, m_harvest});
        const MasterList l = MasterList(list);
        const QString table = masterListTable(l);
        const QString keyColumn = l == MasterList::Baumarten ? QStringLiteral("Baumart")
                                  : l == MasterList::Gueteklassen ? QStringLiteral("Güteklasse") : QStringLiteral("Klasse");
        const qint32 id = idOf(table, keyColumn, key);
        QVERIFY(id > 0);

        // No: nothing happens.
        const QString before = snapshot();
        m_prompter.answerNo();
        QVERIFY(!deleteMasterRow(context(), l, id));
        QCOMPARE(m_prompter.questions(), QStringList{DeleteQuestion});
        QCOMPARE(snapshot(), before);

        m_prompter.answerYes();
        QCOMPARE(deleteMasterRow(context(), l, id), !used);
        if (used) {
            QCOMPARE(m_prompter.messages(), QStringList{InUse});
            QCOMPARE(snapshot(), before);
            return;
        }
        QCOMPARE(count(QStringLiteral("SELECT COUNT(*) FROM %1 WHERE ID = ?").arg(quoted(table)), {id}), 0);
        if (!droppedColumn.isEmpty()) {
            const QString t = droppedColumn.section(u'.', 0, 0), c = droppedColumn.section(u'.', 1);
            QVERIFY(!schema::hasColumn(db(), t, c));
            if (c.startsWith(u"SK_")) {
                QVERIFY(!schema::hasColumn(db(), QStringLiteral("Messbeträge"), c));
                QVERIFY(!schema::hasColumn(db(), QStringLiteral("Tagespreise"), c));
            }
        }
        if (l == MasterList::Baumarten)
            for (const char* t : {"Rindenabzug", "Messbeträge", "Messzahlen", "Tagespreise"})
                QCOMPARE(count(QStringLiteral("SELECT COUNT(*) FROM %1 WHERE Baumart = ?").arg(quoted(QString::fromUtf8(t))), {key}), 0);
    }

    void lastDayPriceRowStays()
    {
        const qint32 id = idOf(QStringLiteral("Tagespreise"), QStringLiteral("Baumart"), Fichte);
        m_prompter.answerYes();
        QVERIFY(!deleteMasterRow(context(), MasterList::Tagespreise, id));
        QCOMPARE(m_prompter.messages(),
                 QStringList{QStringLiteral("Die ausgewählte Baumart existiert nur noch einmal und kann nicht gelöscht werden!")});

        execSql(db(), QStringLiteral("UPDATE Tagespreise SET SK_L3a = 81.5 WHERE ID = ?"), {id});
        const qint32 copy = copyDayPriceRow(context(), id);
        QVERIFY(copy > id);
        QCOMPARE(scalar(db(), QStringLiteral("SELECT SK_L3a || '/' || Güte || '/' || Baumart FROM Tagespreise WHERE ID = ?"), {copy}).toString(),
                 QStringLiteral("81.5/B/FI (Fichte)"));
        m_prompter.answerYes();
        QVERIFY(deleteMasterRow(context(), MasterList::Tagespreise, id));
        QCOMPARE(count(QStringLiteral("SELECT COUNT(*) FROM Tagespreise WHERE Baumart = ?"), {Fichte}), 1);
    }

    void cellEditsAndTheCopyQuestion()
    {
        const qint32 id = idOf(QStringLiteral("Tagespreise"), QStringLiteral("Baumart"), Fichte);
        m_prompter.answerNo();
        QVERIFY(editMasterCell(context(), MasterList::Tagespreise, id, QStringLiteral("SK_L2a"), QStringLiteral("55,5")));
        QCOMPARE(m_prompter.questions(),
                 QStringList{QStringLiteral("Soll die Änderung auf alle Zellen des aktuellen Datensatzes kopiert werden?")});
        QCOMPARE(scalar(db(), QStringLiteral("SELECT SK_L2a FROM Tagespreise WHERE ID = ?"), {id}).toDouble(), 55.5);
        QCOMPARE(scalar(db(), QStringLiteral("SELECT SK_L2b FROM Tagespreise WHERE ID = ?"), {id}).toDouble(), 0.0);

        // Whole numbers where the column holds them; names are never cells.
        const qint32 bark = idOf(QStringLiteral("Rindenabzug"), QStringLiteral("Baumart"), Fichte);
        m_prompter.answerNo();
        QVERIFY(editMasterCell(context(), MasterList::Rindenabzug, bark, QStringLiteral("SK_L1a"), QStringLiteral("2,5")));
        QCOMPARE(scalar(db(), QStringLiteral("SELECT SK_L1a FROM Rindenabzug WHERE ID = ?"), {bark}).toInt(), 2);
        QVERIFY(!editMasterCell(context(), MasterList::Baumarten, 1, QStringLiteral("Laubwald"), QStringLiteral("J")));
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
        const qint32 copy = copyDayPriceRow(context(), original);
        QVERIFY(isCellEditable(MasterList::Tagespreise, QStringLiteral("Güte")));
        QCOMPARE(editMasterCell(context(), MasterList::Tagespreise, copy, QStringLiteral("Güte"), typed), refusal.isEmpty());
        QCOMPARE(m_prompter.questions(), QStringList()); // the quality is never copied across the row
        QCOMPARE(m_prompter.messages(), refusal.isEmpty() ? QStringList() : QStringList{Refusal + refusal});
        QCOMPARE(scalar(db(), QStringLiteral("SELECT Güte FROM Tagespreise WHERE ID = ?"), {copy}).toString(),
                 refusal.isEmpty() ? typed.trimmed() : QStringLiteral("B"));
        QCOMPARE(scalar(db(), QStringLiteral("SELECT Güte FROM Tagespreise WHERE ID = ?"), {original}).toString(), QStringLiteral("B"));
    }

    // Day prices per quality reach the logs: an A log is priced from the A row, a B log from B.
    void qualityLogsArePricedFromTheirRow_data()
    {
        QTest::addColumn<QString>("quality");
        QTest::addColumn<double>("holzpreis");
        QTest::newRow("A from the A row: 120 x 0,402") << "A" << 48.24;
        QTest::newRow("B from the B row: 80 x 0,402") << "B" << 32.16;
    }
    void qualityLogsArePricedFromTheirRow()
    {
        QFETCH(QString, quality);
        const qint32 b = idOf(QStringLiteral("Tagespreise"), QStringLiteral("Baumart"), Fichte);
        const qint32 a = copyDayPriceRow(context(), b);
        QVERIFY(editMasterCell(context(), MasterList::Tagespreise, a, QStringLiteral("Güte"), QStringLiteral("A")));
        m_prompter.answerYes().answerYes();
        QVERIFY(editMasterCell(context(), MasterList::Tagespreise, a, QStringLiteral("SK_L3a"), QStringLiteral("120")));
        QVERIFY(editMasterCell(context(), MasterList::Tagespreise, b, QStringLiteral("SK_L3a"), QStringLiteral("80")));
        execSql(db(), QStringLiteral("UPDATE Lose SET Preis_Art = 1 WHERE Kennung = ?"), {m_harvest});

        MasterDataLookup lookup(db());
        LogForm log;
        log.losNr = QStringLiteral("1");
        log.laufendeNr = QStringLiteral("1");
        log.species = Fichte;
        log.quality = quality;
        log.measuredDiameter = QStringLiteral("32"); // L3a without bark
        log.length = QStringLiteral("5");
        log.mode = BarkMode::Ohne;
        log.prices.preisArt = DayPrice;
        QVERIFY(storeLog(context(), lookup, m_harvest, log, std::nullopt));
        // 0,32² × 3.14159 ÷ 4 × 5 = 0,402 Efm
        QCOMPARE(scalar(db(), QStringLiteral("SELECT Stärkeklasse || '/' || Efm_oR FROM Stämme")).toString().left(9),
                 QStringLiteral("L3a/0.402"));
        QTEST(scalar(db(), QStringLiteral("SELECT Holzpreis FROM Stämme")).toDouble(), "holzpreis");
    }

    // A species' row of bark deductions, base amounts and index numbers goes only with the
    // species: deleting it alone would price or bark its logs at 0. One left behind may go.
    void speciesRowsStayWithTheirSpecies_data()
    {
        QTest::addColumn<int>("list");
        QTest::addColumn<QString>("species");
        QTest::addColumn<bool>("deleted");
        QTest::newRow("bark deductions") << int(MasterList::Rindenabzug) << "FI (Fichte)" << false;
        QTest::newRow("base amounts") << int(MasterList::Messbetraege) << "FI (Fichte)" << false;
        QTest::newRow("index numbers") << int(MasterList::Messzahlen) << "FI (Fichte)" << false;
        QTest::newRow("species no longer kept") << int(MasterList::Messzahlen) << "XY (Gelöscht)" << true;
    }
    void speciesRowsStayWithTheirSpecies()
    {
        QFETCH(int, list);
        QFETCH(QString, species);
        QFETCH(bool, deleted);
        const QString table = masterListTable(MasterList(list));
        execSql(db(), QStringLiteral("INSERT INTO %1(Baumart) VALUES ('XY (Gelöscht)')").arg(quoted(table)));
        const qint32 id = idOf(table, QStringLiteral("Baumart"), species);
        if (deleted)
            m_prompter.answerYes();
        QCOMPARE(deleteMasterRow(context(), MasterList(list), id), deleted);
        if (deleted) {
            QCOMPARE(m_prompter.questions(), QStringList{DeleteQuestion});
            QCOMPARE(m_prompter.messages(), QStringList());
        } else {
            QCOMPARE(m_prompter.questions(), QStringList()); // nothing to confirm that cannot happen
            QCOMPARE(m_prompter.messages(),
                     QStringList{QStringLiteral("Der Datensatz kann nicht gelöscht werden, weil er zur Baumart FI (Fichte) gehört. "
                                                "Er wird mit der Baumart (Liste \"Baumarten\") gelöscht.")});
        }
        QCOMPARE(count(QStringLiteral("SELECT COUNT(*) FROM %1 WHERE ID = ?").arg(quoted(table)), {id}), deleted ? 0 : 1);
    }

    void barkRanges()
    {
        BarkRangeForm form{Fichte, QStringLiteral("20"), QStringLiteral("29"), QStringLiteral("2")};
        QVERIFY(storeBarkRange(context(), EditMode::Neu, std::nullopt, form));
        QVERIFY(storeBarkRange(context(), EditMode::Neu, std::nullopt, {Fichte, "30", "30", "0"}));
        QVERIFY(storeBarkRange(context(), EditMode::Neu, std::nullopt, {Fichte, "25", "35", "1"})); // overlaps are accepted
        const QString before = snapshot();
        QVERIFY(!storeBarkRange(context(), EditMode::Neu, std::nullopt, {QString(), "30", "25", "-1"}));
        QCOMPARE(m_prompter.messages(),
                 QStringList{Refusal + QStringLiteral("...die Baumart angegeben werden muß.\n"
                                                      "...die 'Stärke von' nicht größen sein darf als die 'Stärke bis'.\n"
                                                      "...der Abzug darf nicht unter 0 cm sein.")});
        QCOMPARE(snapshot(), before);
        const qint32 id = count(QStringLiteral("SELECT MAX(ID) FROM Rindenabzug2"));
        QVERIFY(storeBarkRange(context(), EditMode::Aendern, id, {Fichte, "25", "36", "4"}));
        QCOMPARE(count(QStringLiteral("SELECT Abzug_cm FROM Rindenabzug2 WHERE ID = ?"), {id}), 4);
    }

    void theRulesSeeANewClassAtOnce()
    {
        // The lookup is made before the change, as an open window's would be.
        MasterDataLookup lookup(db());
        LogForm log;
        log.losNr = QStringLiteral("1");
        log.laufendeNr = QStringLiteral("1");
        log.species = Fichte;
        log.quality = QStringLiteral("B");
        log.measuredDiameter = QStringLiteral("72");
        log.length = QStringLiteral("5");
        log.mode = BarkMode::Ohne;
        log.prices.preisArt = DayPrice;
        recomputeLog(log, lookup);
        QCOMPARE(log.diameterClass, QStringLiteral("L6"));

        QVERIFY(storeClass(context(), ClassTable::Staemme, EditMode::Neu, std::nullopt, {QStringLiteral("L7"), {"70", "79"}}));
        const qint32 price = idOf(QStringLiteral("Tagespreise"), QStringLiteral("Baumart"), Fichte);
        m_prompter.answerNo();
        QVERIFY(editMasterCell(context(), MasterList::Tagespreise, price, QStringLiteral("SK_L7"), QStringLiteral("100")));

        recomputeLog(log, lookup);
        QCOMPARE(log.diameterClass, QStringLiteral("L7"));
        QCOMPARE(log.volume, QStringLiteral("2,036")); // 0,72² × 3.14159 ÷ 4 × 5 = 2,03575
        QCOMPARE(log.logPrice, QStringLiteral("203,60")); // 100 × the volume as shown
        m_prompter.clear();
        QVERIFY(storeLog(context(), lookup, m_harvest, log, std::nullopt));
        QCOMPARE(scalar(db(), QStringLiteral("SELECT Stärkeklasse FROM Stämme")).toString(), QStringLiteral("L7"));
        QCOMPARE(scalar(db(), QStringLiteral("SELECT Holzpreis FROM Stämme")).toDouble(), 203.6);

        // Deleting a class drops its columns; the same lookup, which has read them, then prices
        // without them instead of failing on a vanished column.
        QVERIFY(storeClass(context(), ClassTable::Staemme, EditMode::Neu, std::nullopt, {QStringLiteral("L8"), {"80", "89"}}));
        execSql(db(), QStringLiteral("UPDATE Tagespreise SET SK_L8 = 50 WHERE ID = ?"), {price});
        PriceSettings dayPrice;
        dayPrice.preisArt = DayPrice;
        const LogPriceInput l8{QStringLiteral("L8"), QStringLiteral("B"), 2.0f, Fichte, 0};
        QCOMPARE(priceLog(dayPrice, l8, lookup).gross, 100.0f);
        m_prompter.answerYes();
        QVERIFY(deleteMasterRow(context(), MasterList::Staemme,
                                idOf(QStringLiteral("Stärkeklassen_Stämme"), QStringLiteral("Klasse"), QStringLiteral("L8"))));
        QCOMPARE(priceLog(dayPrice, l8, lookup).gross, 0.0f);
        log.measuredDiameter = QStringLiteral("85");
        recomputeLog(log, lookup);
        QCOMPARE(log.diameterClass, QStringLiteral("L6"));
    }

    void lookupLists()
    {
        const QString name = QStringLiteral("O'Brien Holz");
        QVERIFY(addLookupEntry(context(), QStringLiteral("Liste_Abnehmer"), {name}));
        QVERIFY(!addLookupEntry(context(), QStringLiteral("Liste_Abnehmer"), {QStringLiteral("o'brien holz")}));
        QVERIFY(!addLookupEntry(context(), QStringLiteral("Liste_Hiebart"), {QString(21, u'x')}));
        QCOMPARE(m_prompter.messages(),
                 (QStringList{Refusal + QStringLiteral("...der Eintrag bereits existiert."),
                              Refusal + QStringLiteral("...der Eintrag 'Inhalt' höchstens 20 Zeichen lang sein darf.")}));
        QList<LookupEntry> entries = lookupEntries(db(), QStringLiteral("Liste_Abnehmer"));
        QCOMPARE(entries.size(), 1);
        QCOMPARE(entries[0].values, QStringList{name});
        QVERIFY(changeLookupEntry(context(), QStringLiteral("Liste_Abnehmer"), entries[0].rowId, {QStringLiteral("O'Brien")}));
        QVERIFY(changeLookupEntry(context(), QStringLiteral("Liste_Abnehmer"), entries[0].rowId, {QStringLiteral("O'Brien")}));

        QVERIFY(addLookupEntry(context(), QStringLiteral("Liste_Waldnamen"), {QStringLiteral("Eichwald"), QStringLiteral("Hang"), QStringLiteral("1,5")}));
        QVERIFY(addLookupEntry(context(), QStringLiteral("Liste_Waldnamen"), {QStringLiteral("Eichwald"), QStringLiteral("Tal"), QString()}));
        entries = lookupEntries(db(), QStringLiteral("Liste_Waldnamen"));
        QCOMPARE(entries.size(), 2);
        QCOMPARE(entries[0].values, (QStringList{"Eichwald", "Hang", "1,5"}));

        m_prompter.answerNo().answerYes();
        QVERIFY(!deleteLookupEntry(context(), QStringLiteral("Liste_Waldnamen"), entries[0].rowId));
        QVERIFY(deleteLookupEntry(context(), QStringLiteral("Liste_Waldnamen"), entries[0].rowId));
        QCOMPARE(lookupEntries(db(), QStringLiteral("Liste_Waldnamen")).size(), 1);
    }

    void printedList()
    {
        m_settings.text[1] = QStringLiteral("Forstbetrieb Muster");
        QStringList lines = masterListReport(db(), m_settings, MasterList::Tagespreise, m_clock.today());
        QCOMPARE(lines[0], QStringLiteral("Forstbetrieb Muster"));
        QCOMPARE(lines[1], QStringLiteral("Stammdaten: Tagespreise"));
        QVERIFY(lines[3].startsWith(QStringLiteral("Baumart ")));
        QVERIFY(lines[3].contains(QStringLiteral(" | Güte | SK_L0 | SK_L1a |")));
        QVERIFY(lines[3].endsWith(QStringLiteral(" | ID")));
        const int rows = count(QStringLiteral("SELECT COUNT(*) FROM Tagespreise"));
        QVERIFY(lines.contains(QStringLiteral("Anzahl Datensätze: %1").arg(rows)));
        QCOMPARE(lines.last(), QStringLiteral("Seite 1 von 1"));
        QCOMPARE(lines.filter(QStringLiteral("FI (Fichte)")).size(), 1);
        QVERIFY(lines.filter(QStringLiteral("FI (Fichte)")).first().contains(QStringLiteral(" | B    |  0,00 |")));

        // Sixty rows make two pages, each with its mark; with page breaks off, one page; the date on request.
        for (int i = 0; i < 60; ++i)
            execSql(db(), QStringLiteral("INSERT INTO Rindenabzug2(Baumart, Stärke_von, Stärke_bis, Abzug_cm) VALUES (?, ?, ?, 1)"),
                    {Fichte, i * 10, i * 10 + 9});
        const int bark = count(QStringLiteral("SELECT COUNT(*) FROM Rindenabzug2"));
        lines = masterListReport(db(), m_settings, MasterList::Rindenabzug2, m_clock.today());
        const int pages = (bark + 54) / 55;
        QCOMPARE(lines.count(QStringLiteral("#")), pages - 1);
        QVERIFY(lines.contains(QStringLiteral("Seite 1 von %1").arg(pages)));
        QCOMPARE(lines.last(), QStringLiteral("Seite %1 von %1").arg(pages));
        QCOMPARE(lines.filter(QStringLiteral("Anzahl Datensätze: ")).size(), 1);
        m_settings.zahl[50] = 1;
        m_settings.zahl[1] = 1;
        lines = masterListReport(db(), m_settings, MasterList::Rindenabzug2, m_clock.today());
        QCOMPARE(lines.count(QStringLiteral("#")), 0);
        QCOMPARE(lines[1], QStringLiteral("Stammdaten: Rindenabzug frei definiert   Datum: 23.11.2026"));
        m_settings.zahl[50] = 0;
        m_settings.zahl[1] = 0;
    }
};

TARVIK_TEST_CORE_MAIN(TestMasterData)
#include "tst_masterdata.moc"
