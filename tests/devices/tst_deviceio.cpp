// The real serial code against a pseudo-terminal pair (the test writes the calliper's binary
// transfer on the master end), and the download from a local HTTP server on 127.0.0.1.
#include "common/textfile.h"
#include "devices/collect.h"
#include "devices/download.h"
#include "devices/serialsource.h"
#include "support/hookedprompter.h"
#include "support/reliabilityfiles.h"

#include <QTcpServer>
#include <QUrlQuery>
#include <QTcpSocket>
#include <fcntl.h>
#include <pty.h>
#include <termios.h>
#include <unistd.h>

using namespace tarvik;

namespace {

// A minimal HTTP/1.1 server: fixed answers by path, every requested path remembered.
class LocalServer : public QObject {
public:
    struct Answer {
        int status;
        QByteArray body;
    };
    QHash<QString, Answer> answers;
    QStringList requested;

    LocalServer()
    {
        QVERIFY(m_server.listen(QHostAddress::LocalHost));
        connect(&m_server, &QTcpServer::newConnection, this, [this] {
            while (QTcpSocket* s = m_server.nextPendingConnection())
                connect(s, &QTcpSocket::readyRead, this, [this, s] { serve(s); });
        });
    }
    QString host() const { return QStringLiteral("http://127.0.0.1:%1").arg(m_server.serverPort()); }

private:
    void serve(QTcpSocket* s)
    {
        m_pending[s] += s->readAll();
        if (!m_pending[s].contains("\r\n\r\n"))
            return;
        const QByteArray line = m_pending.take(s).split('\r').first();
        const QString target = QUrl::fromPercentEncoding(line.split(' ').value(1));
        requested << target;
        const Answer a = answers.value(QUrl(target).path(), {404, "<html><body>Not Found</body></html>"});
        s->write("HTTP/1.1 " + QByteArray::number(a.status) + " X\r\nContent-Length: " + QByteArray::number(a.body.size())
                 + "\r\nConnection: close\r\n\r\n" + a.body);
        s->disconnectFromHost();
    }
    QTcpServer m_server;
    QHash<QTcpSocket*, QByteArray> m_pending;
};

const QByteArray ExportTable = "Los;Nr;Baumart;Guete;Laenge;Staerke;Zopf;Kaefer;Bemerkung\r\n"
                               "2;1;Fi;B;4;35;;N;\r\n2;10001;Dgl;C;3;24;;N;\r\n2;3;Lä;A;5,5;41;28;J;Sturm\r\n";

} // namespace

class TestDeviceIo : public QObject, protected test::HookedEntryFixture {
    Q_OBJECT
    int m_master = -1;
    int m_slave = -1;

private slots:
    void init()
    {
        resetHooked(1);

        termios raw{};
        cfmakeraw(&raw);
        char name[256] = {};
        QCOMPARE(openpty(&m_master, &m_slave, name, &raw, nullptr), 0);
        m_settings.text[SerialDeviceSlot] = QString::fromLocal8Bit(name);
    }
    void cleanup()
    {
        ::close(m_master);
        ::close(m_slave);
    }

    // The bytes arrive through the port in two pieces, control characters pass, the device's
    // file is kept beside the data; a transfer broken off inside a record says how much came.
    void calliperTransferThroughTheSerialPort_data()
    {
        QTest::addColumn<QByteArray>("records");
        QTest::addColumn<QStringList>("lines");
        QTest::addColumn<QString>("message");
        const QByteArray spruce = QByteArray::fromHex("7A001F2303"); // Fi B 124, 35 cm, 4 m, lot 3
        const QByteArray beech = QByteArray::fromHex("9B00202800");  // Bu C 128, 40 cm, 4 m
        QTest::newRow("whole") << spruce + beech + QByteArray::fromHex("11130D0A0D")
                               << QStringList{"FMR 1", "Baumart", "Fi\tB\t124\t35\t04\t3", "Bu\tC\t128\t40\t04", "Do\tA\t1076\t10\t00\t13"}
                               << QString();
        QTest::newRow("cut off") << beech + spruce.left(3) << QStringList{"FMR 1", "Baumart", "Bu\tC\t128\t40\t04"}
                                 << QStringLiteral("Die Übertragung vom FMR1 endete mitten in einem Stamm: von seinem Datensatz kamen nur 3 von 5 "
                                                   "Zeichen an. Dieser Rest wird nicht übernommen; die 1 vollständig übertragenen Stämme werden "
                                                   "eingelesen. Bitte übertragen Sie den letzten Stamm gegebenenfalls nochmals.");
    }
    void calliperTransferThroughTheSerialPort()
    {
        QFETCH(QByteArray, records);
        QFETCH(QStringList, lines);
        QFETCH(QString, message);
        const QByteArray transfer = QByteArray("4") + QByteArray(28, 'K') + records;
        m_hooked.onInform = [&](const QString& text) {
            if (text.startsWith(QStringLiteral("Klicken Sie jetzt"))) {
                // In two pieces, as a slow device sends.
                QCOMPARE(::write(m_master, transfer.constData(), 20), ssize_t(20));
                QTest::qWait(50);
                QCOMPARE(::write(m_master, transfer.constData() + 20, size_t(transfer.size() - 20)), ssize_t(transfer.size() - 20));
            }
        };
        m_prompter.answerYes(); // connect the device, then [OK]
        SerialByteSource port(300);
        const auto logs = collectFromDevice(context(), port);
        QVERIFY(logs);
        QCOMPARE(m_prompter.questions().first(),
                 QStringLiteral("Bitte verbinden Sie jetzt den FMR1 mit der seriellen Schnittstelle %1 an Ihrem Rechner. Welche COM Sie "
                                "verwenden, können Sie in den Einstellungen in Tarvik festlegen. Danach klicken Sie auf [OK].")
                     .arg(m_settings.text[SerialDeviceSlot]));
        QCOMPARE(readTextFile(m_folder.filePath(QStringLiteral("FMR1.TXT"))).lines, lines);
        QCOMPARE(logs->size(), lines.size() - 2);
        if (!message.isEmpty())
            QCOMPARE(m_prompter.messages().last(), message);
    }

    void silentDeviceFindsNothing()
    {
        m_prompter.answerYes();
        SerialByteSource port(100);
        const auto logs = collectFromDevice(context(), port);
        QVERIFY(logs && logs->isEmpty());
    }

    void missingPortIsNamed()
    {
        m_settings.text[SerialDeviceSlot] = QStringLiteral("/dev/ttyGIBTESNICHT");
        m_prompter.answerYes();
        SerialByteSource port;
        QVERIFY(!collectFromDevice(context(), port));
        QVERIFY(m_prompter.messages().last().startsWith(QStringLiteral("Die serielle Schnittstelle /dev/ttyGIBTESNICHT kann nicht geöffnet werden.\n\n"
                                                                     "Diese Schnittstelle gibt es an diesem Rechner nicht.")));
        // Without a chosen device the COM number of the settings is named.
        m_settings.text[SerialDeviceSlot].clear();
        m_settings.zahl[ComPortSlot] = 2;
        QCOMPARE(serialPortName(m_settings), QStringLiteral("COM3"));
    }

    void onlineExportIsDownloadedAndImported()
    {
        LocalServer server;
        server.answers.insert(QStringLiteral("/otarvik/exporttarvik/Export_förster_TARVIK.DAT"), {200, ExportTable});
        m_settings.text[OnlineHostSlot] = server.host();
        QUrl opened;
        m_prompter.answerYes().answerText(QStringLiteral("förster")).answerYes();
        const auto logs = collectFromOnline(context(), [&](const QUrl& u) { opened = u; },
                                            [](const QUrl& u) { return httpDownload(u, 5000); });
        QVERIFY(logs);
        QCOMPARE(logs->size(), 3);
        QCOMPARE(opened.path(), QStringLiteral("/otarvik/export_tarvik_direkt.php"));
        QCOMPARE(QUrlQuery(opened).queryItemValue(QStringLiteral("benutzertk"), QUrl::FullyDecoded), QStringLiteral("förster"));
        QCOMPARE(server.requested, QStringList{QStringLiteral("/otarvik/exporttarvik/Export_förster_TARVIK.DAT")});
        QCOMPARE(test::readBytes(m_folder.filePath(QStringLiteral("Import_OTARVIK.DAT"))), ExportTable);
    }

    void onlineRefusals_data()
    {
        QTest::addColumn<int>("status");
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<bool>("serverUp");
        QTest::addColumn<QString>("message");
        const QString missing = QStringLiteral("Unter der Benutzerkennung wb7 konnte keine Exportdatei gefunden werden!");
        QTest::newRow("404") << 404 << QByteArray("<html><body>Not Found</body></html>") << true << missing;
        QTest::newRow("error page with 200") << 200 << QByteArray("<!DOCTYPE html><html><body>Fehler</body></html>") << true << missing;
        QTest::newRow("empty answer") << 200 << QByteArray() << true << missing;
        QTest::newRow("unreachable") << 0 << QByteArray() << false << QStringLiteral("Der Server von Online-TARVIK (127.0.0.1) ist nicht erreichbar:\n\nDie Verbindung wurde abgelehnt.");
    }
    void onlineRefusals()
    {
        QFETCH(int, status);
        QFETCH(QByteArray, body);
        QFETCH(bool, serverUp);
        QFETCH(QString, message);
        auto server = std::make_optional<LocalServer>();
        server->answers.insert(QStringLiteral("/otarvik/exporttarvik/Export_wb7_TARVIK.DAT"), {status, body});
        m_settings.text[OnlineHostSlot] = server->host();
        if (!serverUp)
            server.reset(); // its port closed again
        m_prompter.answerYes().answerText(QStringLiteral("wb7"));
        QVERIFY(!collectFromOnline(context(), [](const QUrl&) {}, [](const QUrl& u) { return httpDownload(u, 5000); }));
        if (server)
            QCOMPARE(server->requested.size(), 1);
        QVERIFY2(m_prompter.messages().last().startsWith(message), qPrintable(m_prompter.messages().last()));
        QVERIFY(!QFileInfo::exists(m_folder.filePath(QStringLiteral("Import_OTARVIK.DAT"))));
    }

    void onlineFileRoute()
    {
        const QString path = m_folder.filePath(QStringLiteral("Export_wb7_TARVIK.DAT"));
        test::writeBytes(path, ExportTable);
        m_prompter.answerNo().answerText(path).answerYes();
        const auto logs = collectFromOnline(context(), [](const QUrl&) { QFAIL("no browser on the file route"); },
                                            [](const QUrl&) { return Download{}; });
        QVERIFY(logs);
        QCOMPARE(logs->size(), 3);
        QVERIFY(m_prompter.questions().last().startsWith(QStringLiteral("Möchten Sie wirklich die Daten von Online-TARVIK importieren.")));
    }

    void addresses()
    {
        QCOMPARE(onlineBaseUrl(QStringLiteral("dienst.example")).toString(), QStringLiteral("https://dienst.example"));
        QCOMPARE(onlineExportUrl(onlineBaseUrl(QStringLiteral("http://127.0.0.1:8080")), QStringLiteral("a b")).toString(QUrl::FullyEncoded),
                 QStringLiteral("http://127.0.0.1:8080/otarvik/exporttarvik/Export_a%20b_TARVIK.DAT"));
        QVERIFY(!onlineBaseUrl(QString()).isValid());
    }
};

TARVIK_TEST_CORE_MAIN(TestDeviceIo)
#include "tst_deviceio.moc"
