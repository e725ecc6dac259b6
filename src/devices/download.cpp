#include "devices/download.h"
#include "common/systemerror.h"

#include <QEventLoop>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>

namespace tarvik {
namespace {

QString reason(const QNetworkReply& reply)
{
    switch (reply.error()) {
    case QNetworkReply::ConnectionRefusedError:
        return QStringLiteral("Die Verbindung wurde abgelehnt.");
    case QNetworkReply::HostNotFoundError:
        return QStringLiteral("Der Server wurde nicht gefunden. Besteht eine Verbindung zum Internet?");
    case QNetworkReply::TimeoutError:
    case QNetworkReply::OperationCanceledError:
        return QStringLiteral("Der Server hat nicht rechtzeitig geantwortet.");
    case QNetworkReply::SslHandshakeFailedError:
        return QStringLiteral("Die sichere Verbindung (https) kam nicht zustande.");
    default:
        return QStringLiteral("Fehler bei der Übertragung: %1").arg(germanErrorText(reply.errorString()));
    }
}

} // namespace

Download httpDownload(const QUrl& url, int timeoutMs)
{
    QNetworkAccessManager manager;
    QNetworkRequest request(url);
    request.setTransferTimeout(timeoutMs);
    QNetworkReply* reply = manager.get(request);
    QEventLoop loop;
    QObject::connect(reply, &QNetworkReply::finished, &loop, &QEventLoop::quit);
    if (!reply->isFinished())
        loop.exec();
    Download d;
    d.status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    if (reply->error() != QNetworkReply::NoError && d.status == 0)
        d.error = reason(*reply);
    d.body = reply->readAll();
    reply->deleteLater();
    return d;
}

} // namespace tarvik
