// Lots offered as .eldat files: each file written for log, stacked-wood and pole lots passes the
// published schema's checker, carries every log and the lots' totals, and nothing is written
// when a species, a lot or the sender cannot be put into the standard. Also through tarvik-cli.
#include "common/sqldate.h"
#include "common/textfile.h"
#include "parties/parties.h"
#include "eldat/codes.h"
#include "eldat/offer.h"
#include "eldat/sender.h"
#include "invoices/invoice.h"
#include "store/records.h"
#include "store/sql.h"
#include "store/totals.h"
#include "support/clirun.h"
#include "support/entryfixture.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>

using namespace tarvik;

namespace {

const QString SchemaChecker = QStringLiteral(TARVIK_ELDAT_CHECKER);

// Exit code and output of the schema's own checker on a file.
std::pair<int, QString> checked(const QString& path)
{
    QProcess p;
    p.setProcessChannelMode(QProcess::MergedChannels);
    p.start(QStringLiteral("python3"), {SchemaChecker, path});
    if (!p.waitForFinished(60000))
        return {-1, QStringLiteral("checker did not finish")};
    return {p.exitCode(), QString::fromUtf8(p.readAll())};
}

QJsonObject readJson(const QString& path)
{
    QFile f(path);
    if (!f.open(QIODevice::ReadOnly))
        return {};
    return QJsonDocument::fromJson(f.readAll()).object();
}

// The schema's enumeration of a definition, read from the schema file beside the checker.
QStringList schemaEnum(const char* definition)
{
    const QJsonObject schema = readJson(QFileInfo(SchemaChecker).dir().filePath(QStringLiteral("schema_de.json")));
    QStringList values;
    for (const QJsonValue& v : schema[QStringLiteral("definitions")][QString::fromLatin1(definition)][QStringLiteral("enum")].toArray())
        values << v.toString();
    return values;
}

const QJsonObject allocation(const QJsonObject& doc) { return doc["document"]["eldat"]["wood_allocation"].toObject(); }

} // namespace

class TestEldat : public QObject, protected test::EntryFixture {
    Q_OBJECT

    QString m_file;

    void rememberSender(const QStringList& lines)
    {
        QStringList file{QStringLiteral("0"), QStringLiteral("19"), QStringLiteral("0")};
        file << lines;
        while (file.size() < 11)
            file << QString();
        QVERIFY(writeTextFile(m_folder.filePath(QString::fromUtf8(RememberedInvoiceFile)), file).ok);
    }

    void setLot(qint32 lotNr, const QString& latitude, const QString& longitude, const QString& place)
    {
        execSql(db(), QStringLiteral("UPDATE Lose SET GPS_B = ?, GPS_L = ?, Lagerort = ? WHERE Los_Nr = ? AND Kennung = ?"),
                {latitude, longitude, place, lotNr, m_harvest});
    }

    std::optional<eldat::OfferOutcome> offer(const QList<qint32>& lots, const QString& kind = QStringLiteral("ang"))
    {
        eldat::OfferRequest request;
        request.harvestId = m_harvest;
        request.lotNumbers = lots;
        request.filePath = m_file;
        request.docType = kind;
        return eldat::writeOffer(context(), request);
    }

private slots:
    void initTestCase() { QVERIFY2(QFile::exists(SchemaChecker), qPrintable(SchemaChecker + QStringLiteral(" fehlt"))); }

    // Harvest 12 felled in October; lot 1 logs, 2 stacked wood, 3 poles, 4 logs without a
    // position, 5 logs with one outside the range, 6 an empty lot.
    void init()
    {
        resetDatabase(12);
        m_file = m_folder.filePath(QStringLiteral("Angebot.eldat"));
        for (const QString& old : QDir(m_folder.path()).entryList({QStringLiteral("*.eldat*")}, QDir::Files))
            QFile::remove(m_folder.filePath(old));
        execSql(db(), QStringLiteral("UPDATE Hiebe SET Hiebdatum_von = ?, Hiebdatum_bis = ? WHERE ID = ?"),
                {sqlDateValue(QStringLiteral("01.10.2026")), sqlDateValue(QStringLiteral("15.10.2026")), m_harvest});
        rememberSender({QStringLiteral("Forstbetrieb Hans Mustermann"), QStringLiteral("Waldweg 3"),
                        QStringLiteral("12345 Holzhausen"), QStringLiteral("Tel. 01234 / 5678-9"),
                        QStringLiteral("E-Mail: hans@mustermann-forst.de")});
        createLot(db(), m_harvest, 1, QStringLiteral("Stämme"));
        createLot(db(), m_harvest, 2, QStringLiteral("Schichtholz"));
        createLot(db(), m_harvest, 3, QStringLiteral("Pfähle"));
        createLot(db(), m_harvest, 4, QStringLiteral("Stämme"));
        createLot(db(), m_harvest, 5, QStringLiteral("Stämme"));
        createLot(db(), m_harvest, 6, QStringLiteral("Stämme"));
        setLot(1, QStringLiteral("50.123456"), QStringLiteral("9.87654"), QStringLiteral("Holzplatz Nord"));
        setLot(2, QStringLiteral("50,2"), QStringLiteral("9,9"), QStringLiteral("Weg am Bach"));
        setLot(3, QStringLiteral("49.5"), QStringLiteral("10.25"), QString());
        setLot(5, QStringLiteral("80.5"), QStringLiteral("9.5"), QStringLiteral("Schlag Süd"));
        // As typed without bark deduction: volumes by Huber, classes and qualities as chosen.
        const QVariant h = m_harvest;
        execSql(db(), QStringLiteral("INSERT INTO Stämme(Los_Nr, Laufende_Nr, Baumart, Stärke_gemessen, Stärke_oR, Länge_m, Efm_oR, "
                                     "Stärkeklasse, Güteklasse, Käferholz, Kennung) VALUES "
                                     "(1, 1, 'FI (Fichte)', 35, 35, 4.5, 0.433, 'L3b', 'B', 0, ?), (1, 2, 'FI (Fichte)', 42, 42, 5, 0.693, 'L4', 'A', 0, ?), "
                                     "(1, 3, 'KI (Kiefer)', 28, 28, 4, 0.246, 'L2b', 'C', 1, ?), (1, 4, 'LA (Lärche)', 51, 51, 12.5, 2.554, 'L5', 'B_C', 0, ?), "
                                     "(4, 1, 'DO (Douglasie)', 30, 30, 4, 0.283, 'L3a', 'B', 0, ?), (5, 1, 'BU (Rotbuche)', 45, 45, 6, 0.954, 'L4', 'A', 0, ?)"),
                {h, h, h, h, h, h});
        execSql(db(), QStringLiteral("INSERT INTO Schichtholz(Los_Nr, Sektions_Nr, Baumart, Sektionslänge_m, Sektionstiefe_m, Sektionshöhe_m, m3, Efm, "
                                     "Kennung) VALUES (2, 1, 'BU (Rotbuche)', 10, 2, 1.5, 30, 21, ?), (2, 2, 'EI (Eiche)', 5, 1, 1, 5, 3.5, ?)"),
                {h, h});
        execSql(db(), QStringLiteral("INSERT INTO Pfähle(Los_Nr, Baumart, Stärke_mR, Länge_m, Anzahl, Kennung) VALUES "
                                     "(3, 'FI (Fichte)', 8, 8, 10, ?), (3, 'FI (Fichte)', 12, 14, 5, ?)"),
                {h, h});
        recomputeTotals(db(), m_harvest);
        m_prompter.clear();
    }

    // Each offer passes the schema's checker; every pile holds its lot's logs (or poles or
    // sections), its amount is the lot's total, and its point is the lot's when valid.
    void offersPassTheSchema_data()
    {
        QTest::addColumn<QList<qint32>>("lots");
        QTest::addColumn<QString>("kind");
        QTest::addColumn<QList<qint32>>("withoutPoint");
        QTest::newRow("log lot") << QList<qint32>{1} << "ang" << QList<qint32>{};
        QTest::newRow("stacked-wood lot") << QList<qint32>{2} << "ang" << QList<qint32>{};
        QTest::newRow("pole lot") << QList<qint32>{3} << "ang" << QList<qint32>{};
        QTest::newRow("position out of range, notice") << QList<qint32>{5, 3} << "hba" << QList<qint32>{5};
        QTest::newRow("release for collection, a lot named twice") << QList<qint32>{3, 1, 2, 4, 1} << "abf" << QList<qint32>{4};
    }
    void offersPassTheSchema()
    {
        QFETCH(QList<qint32>, lots);
        QFETCH(QString, kind);
        QFETCH(QList<qint32>, withoutPoint);

        const auto outcome = offer(lots, kind);
        QVERIFY2(outcome, qPrintable(m_prompter.messages().join(u'\n')));
        const auto [code, report] = checked(m_file);
        QVERIFY2(code == 0, qPrintable(report));
        QCOMPARE(outcome->lotsWithoutPoint, withoutPoint);
        QCOMPARE(m_prompter.messages().size(), 1);
        QCOMPARE(m_prompter.messages().constFirst().contains(QStringLiteral("Ohne GPS-Position")), !withoutPoint.isEmpty());
        QVERIFY(!QDir(m_folder.path()).entryList(QDir::Files).join(u' ').contains(QStringLiteral(".eldat.")));

        const QJsonObject a = allocation(readJson(m_file));
        QCOMPARE(a["doc_type"].toString(), kind);
        QCOMPARE(a["wood_data"]["wood_id"][0]["wood_id_no"].toString(), QStringLiteral("12"));
        QVERIFY(a["wood_data"]["felling_date"].toString().startsWith(QStringLiteral("2026-10-15T00:00:00")));

        // Per lot as typed in init(): unit, amount, logs (or poles or sections), latitude.
        const QMap<qint32, QString> typed{{1, "fmo 3.926 4 50.123456 WGS84"}, {2, "rmm 35 2 50.2 WGS84"}, {3, "stk 15 15 49.5 WGS84"},
                                          {4, "fmo 0.283 1 ohne"}, {5, "fmo 0.954 1 ohne"}};
        QStringList expected, piles;
        for (qint32 n : lots)
            if (!expected.contains(QStringLiteral("los %1 ").arg(n) + typed[n]))
                expected << QStringLiteral("los %1 ").arg(n) + typed[n];
        for (const QJsonValue& v : a["wood_data"]["allocated_pile"].toArray()) {
            const QJsonObject product = v["product_data"][0].toObject();
            const QJsonObject measured = v["forest_measured"].toObject();
            const qsizetype entries = measured.contains(QStringLiteral("measurement_type_sectional"))
                                          ? measured["measurement_type_sectional"]["count"].toInt()
                                          : measured["measurement_type_single_log"]["log"].toArray().size();
            const QJsonValue point = product["coordinate"];
            const bool noPoint = product["all_wood_text"].toString().contains(QStringLiteral("ohne gültige GPS-Position"));
            piles << QStringLiteral("%1 %2 %3 %4 %5 %6")
                         .arg(v["wood_id"][0]["wood_id_type"].toString(), v["wood_id"][0]["wood_id_no"].toString(),
                              product["amount"]["amount_unit"].toString())
                         .arg(product["amount"]["amount_value"].toDouble())
                         .arg(entries)
                         .arg(noPoint ? QStringLiteral("ohne") : QString::number(point["latitude"].toDouble(), 'g', 9) + u' ' + point["crs"].toString());
        }
        QCOMPARE(piles, expected);
        for (qint32 n : withoutPoint)
            QVERIFY(m_prompter.messages().constFirst().contains(QString::number(n)));
    }

    // What a buyer reads off the log lot: species, lengths, diameters, classes, qualities.
    void logLotAsTheBuyerReadsIt()
    {
        QVERIFY(offer({1}));
        const QJsonObject pile = allocation(readJson(m_file))["wood_data"]["allocated_pile"][0].toObject();
        const QJsonObject product = pile["product_data"][0].toObject();
        QCOMPARE(product["grade"].toString(), QStringLiteral("st"));
        QCOMPARE(product["use"].toString(), QStringLiteral("sg"));
        QCOMPARE(product["all_wood_text"].toString(), QStringLiteral("Lagerort: Holzplatz Nord"));
        QCOMPARE(product["coordinate"]["longitude"].toDouble(), 9.87654);
        QStringList logs;
        for (const QJsonValue& v : pile["forest_measured"]["measurement_type_single_log"]["log"].toArray())
            logs << QStringLiteral("%1 %2 %3m %4cm %5 %6 %7")
                        .arg(v["stam_id"].toString(), v["species"].toString())
                        .arg(v["stem_length"].toDouble())
                        .arg(v["diameter"].toInt())
                        .arg(v["thickness_class"].toString(), v["quality_definition"]["qual_type"].toString(),
                             v["quality_definition"]["quality_attribute"].toString());
        // The standard's classes and qualities for the program's own: L3b is d3b, B_C is bc, beetle wood bk.
        QCOMPARE(logs, (QStringList{QStringLiteral("1 fi 4.5m 35cm d3b b "), QStringLiteral("2 fi 5m 42cm d4 a "),
                                    QStringLiteral("3 ki 4m 28cm d2b c bk"), QStringLiteral("4 ela 12.5m 51cm d5 bc ")}));
        // Volume shares of the qualities: every class present once, together the whole lot.
        double total = 0;
        for (const QJsonValue& q : product["quality"].toArray())
            total += q["qual_rat"].toDouble();
        QVERIFY(qAbs(total - 100) < 0.25);
        QCOMPARE(product["quality"].toArray().size(), 4);
    }

    void speciesCodes_data()
    {
        QTest::addColumn<QString>("species");
        QTest::addColumn<QString>("code");
        QTest::newRow("douglas fir") << "DO (Douglasie)" << "dgl";
        QTest::newRow("horse chestnut as spelt") << "RK (Roßkastianie)" << "rka";
        QTest::newRow("rowan") << "EB (Eberesche)" << "vb";
        QTest::newRow("own code, known name") << "SAH (Spitzahorn)" << "sah";
        QTest::newRow("own code, group name") << "LAE (Lärche)" << "la";
        QTest::newRow("no counterpart") << "ZB (Zauberbaum)" << "";
    }
    void speciesCodes()
    {
        QFETCH(QString, species);
        QFETCH(QString, code);
        QCOMPARE(eldat::speciesCode(species).value_or(QString()), code);
    }

    // Whatever a new database holds maps onto the standard's enumerations.
    void masterDataMapsOntoTheStandard()
    {
        const QStringList species = schemaEnum("species"), qualities = schemaEnum("qual_type"),
                          classes = schemaEnum("thickness_class");
        QVERIFY(species.contains(QStringLiteral("fi")) && qualities.contains(QStringLiteral("b")) && classes.contains(QStringLiteral("d0")));
        for (const auto& [sql, known, map] :
             {std::tuple{"SELECT Baumart FROM Baumarten", species, &eldat::speciesCode},
              std::tuple{"SELECT Güteklasse FROM Güteklassen", qualities, &eldat::qualityCode},
              std::tuple{"SELECT Klasse FROM Stärkeklassen_Stämme", classes, &eldat::diameterClassCode}}) {
            QSqlQuery q = execSql(db(), QString::fromUtf8(sql));
            int rows = 0;
            while (q.next()) {
                ++rows;
                const auto code = map(q.value(0).toString());
                QVERIFY2(code && known.contains(*code), qPrintable(q.value(0).toString()));
            }
            QVERIFY(rows > 5);
        }
        for (const char* sorting : {"Stämme", "Pfähle", "Schichtholz"}) {
            const auto c = eldat::assortmentCodes(QString::fromUtf8(sorting), false);
            QVERIFY(c && schemaEnum("grade").contains(c->grade) && schemaEnum("use").contains(c->use) &&
                    schemaEnum("amount_unit").contains(c->unit));
        }
    }

    // Refused with every reason, and no file (nor a temporary one) is left behind.
    void refusals_data()
    {
        QTest::addColumn<QString>("setup");
        QTest::addColumn<QList<qint32>>("lots");
        QTest::addColumn<QStringList>("reasons");
        QTest::newRow("species without counterpart")
            << "UPDATE Stämme SET Baumart = 'ZB (Zauberbaum)' WHERE Laufende_Nr = 2" << QList<qint32>{1, 4}
            << QStringList{"...die Baumart ZB (Zauberbaum) keine Entsprechung im ELDATsmart-Standard hat."};
        QTest::newRow("no felling date") << "UPDATE Hiebe SET Hiebdatum_von = NULL, Hiebdatum_bis = NULL" << QList<qint32>{1}
                                         << QStringList{"...im Hieb 12 kein Hiebdatum eingetragen ist."};
        QTest::newRow("several at once")
            << "UPDATE Schichtholz SET Baumart = 'QQ (Quittenholz)'" << QList<qint32>{2, 6, 7}
            << QStringList{"...das Los 6 weder Stämme noch Pfähle noch Schichtholz enthält.",
                           "...das Los 7 im Hieb 12 nicht existiert.",
                           "...die Baumart QQ (Quittenholz) keine Entsprechung im ELDATsmart-Standard hat."};
    }
    void refusals()
    {
        QFETCH(QString, setup);
        QFETCH(QList<qint32>, lots);
        QFETCH(QStringList, reasons);
        if (!setup.isEmpty())
            execSql(db(), setup);
        QVERIFY(!offer(lots));
        QCOMPARE(m_prompter.messages(),
                 QStringList{QStringLiteral("Das .eldat-Angebot kann nicht geschrieben werden, weil...\n\n") + reasons.join(u'\n')});
        QCOMPARE(QDir(m_folder.path()).entryList({QStringLiteral("*.eldat*")}, QDir::Files), QStringList());
    }

    void sender_data()
    {
        QTest::addColumn<QStringList>("lines");
        QTest::addColumn<QString>("read"); // name|street|postcode city state|first surname|phone|email
        QTest::addColumn<QStringList>("reasons");
        QTest::newRow("person")
            << QStringList{"Hans Müller", "Waldweg 3a", "D-12345 Holzhausen", "0171 2345678", "hm@example.de"}
            << "Hans Müller|Waldweg 3a|12345 Holzhausen DE|Hans Müller|0171 2345678|hm@example.de" << QStringList();
        QTest::newRow("association with contact")
            << QStringList{"FBG Oberwald e.V.", "z. Hd. Anna Berg", "Fax 0123 45", "Am Forsthaus 12", "A-4020 Linz",
                           "Telefon: +43 732 12345", "E-Mail: info@fbg-oberwald.at", "www.fbg-oberwald.at"}
            << "FBG Oberwald e.V.|Am Forsthaus 12|4020 Linz AT|Anna Berg|+43 732 12345|info@fbg-oberwald.at" << QStringList();
        QTest::newRow("enterprise without contact person")
            << QStringList{"Forstbetrieb Hans Forster", "Lindenallee 7", "CH-8001 Zürich", "044 123 45 67", "<hf@forst.ch>"}
            << "Forstbetrieb Hans Forster|Lindenallee 7|8001 Zürich CH|Forstbetrieb Hans Forster|044 123 45 67|hf@forst.ch"
            << QStringList();
        QTest::newRow("nothing") << QStringList{"", ""} << "||  DE|||"
                                 << QStringList{"...die Absenderanschrift keinen Namen enthält.",
                                                "...die Absenderanschrift keine Straße enthält.",
                                                "...die Absenderanschrift keine Zeile mit Postleitzahl und Ort enthält.",
                                                "...die Absenderanschrift keine Telefonnummer enthält.",
                                                "...die Absenderanschrift keine E-Mail-Adresse enthält."};
    }
    void sender()
    {
        QFETCH(QStringList, lines);
        QFETCH(QString, read);
        QFETCH(QStringList, reasons);
        const eldat::SenderResult r = eldat::senderFromLines(lines);
        const eldat::Sender& s = r.sender;
        QCOMPARE(QStringList({s.name, s.street, s.postcode + u' ' + s.city + u' ' + s.state,
                              (s.firstName + u' ' + s.surname).trimmed(), s.phone, s.email})
                     .join(u'|'),
                 read);
        QCOMPARE(r.reasons, reasons);
    }

    // Once the own data are kept they are the sender, over the remembered invoice lines.
    void ownDataAreTheSender()
    {
        parties::OwnData own;
        own.name = QStringLiteral("Waldgenossenschaft O'Neill & Söhne");
        own.street = QStringLiteral("Am Bühl 3");
        own.postCode = QStringLiteral("78333");
        own.city = QStringLiteral("Stockach");
        own.contact = QStringLiteral("Anna Maria Müller");
        own.email = QStringLiteral("anna@example.de");
        QVERIFY(parties::storeOwnData(context(), own));
        QVERIFY(!offer({1})); // the standard needs a phone number
        QVERIFY(m_prompter.messages().value(0).contains(QStringLiteral("...bei den eigenen Angaben die Telefonnummer fehlt.")));

        own.phone = QStringLiteral("07771 1234");
        QVERIFY(parties::storeOwnData(context(), own));
        QVERIFY(offer({1}));
        QFile file(m_file);
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QString json = QString::fromUtf8(file.readAll());
        QVERIFY(json.contains(QStringLiteral("Waldgenossenschaft O'Neill & Söhne")));
        QVERIFY(json.contains(QStringLiteral("\"Anna Maria\"")));
        QVERIFY(!json.contains(QStringLiteral("Mustermann")));
    }

    void withoutRememberedSenderNothingIsWritten()
    {
        QFile::remove(m_folder.filePath(QString::fromUtf8(RememberedInvoiceFile)));
        QVERIFY(!offer({1}));
        QVERIFY(m_prompter.messages().value(0).contains(QStringLiteral("...noch keine Absenderanschrift gespeichert ist.")));
        QVERIFY(!QFile::exists(m_file));
    }

    // The command's own part: its arguments, the file named on stdout, the exit codes.
    void commandLine()
    {
        m_db.reset(); // the tool opens the folder itself
        const QStringList call{"--daten", m_folder.path(), "eldat", "12"};
        const test::CliOutput written = test::runCli(call + QStringList{"1,3", "--datei", m_file, "--art", "hba"});
        QCOMPARE(written.code, 0);
        QCOMPARE(written.out.trimmed(), QDir::toNativeSeparators(m_file));
        QCOMPARE(allocation(readJson(m_file))["doc_type"].toString(), QStringLiteral("hba"));
        QCOMPARE(test::runCli(call + QStringList{"6", "--datei", m_file}).code, 1);
        QCOMPARE(test::runCli(call + QStringList{"1"}).code, 2);
        QCOMPARE(test::runCli(call + QStringList{"1", "--datei", m_file, "--art", "rechnung"}).code, 2);
    }
};

TARVIK_TEST_CORE_MAIN(TestEldat)
#include "tst_eldat.moc"
