#include "invoices/einvoice/pdfreader.h"

#include <QFile>
#include <QFileInfo>
#include <poppler-qt6.h>

namespace tarvik::einvoice {
namespace {

// The names ZUGFeRD 1/2, Factur-X and XRechnung-in-PDF give the invoice's XML come first.
int attachmentRank(const QString& name)
{
    const QString lower = name.toLower();
    if (lower == u"factur-x.xml" || lower == u"zugferd-invoice.xml" || lower == u"xrechnung.xml")
        return 0;
    if (lower.endsWith(QStringLiteral(".xml")))
        return 1;
    return 2;
}

} // namespace

ReadResult readInvoicePdf(const QByteArray& pdf)
{
    ReadResult result;
    const std::unique_ptr<Poppler::Document> document = Poppler::Document::loadFromData(pdf);
    if (!document) {
        result.error = QStringLiteral("Die PDF-Datei kann nicht gelesen werden.");
        return result;
    }
    if (document->isLocked()) {
        result.error = QStringLiteral("Die PDF-Datei ist mit einem Kennwort geschützt.");
        return result;
    }
    QList<Poppler::EmbeddedFile*> files = document->embeddedFiles();
    std::stable_sort(files.begin(), files.end(), [](const Poppler::EmbeddedFile* a, const Poppler::EmbeddedFile* b) {
        return attachmentRank(a->name()) < attachmentRank(b->name());
    });
    QString firstError;
    for (Poppler::EmbeddedFile* file : files) {
        if (!file->isValid())
            continue;
        ReadResult read = readInvoiceXml(file->data());
        if (read.invoice)
            return read;
        if (firstError.isEmpty() && attachmentRank(file->name()) == 0)
            firstError = QStringLiteral("Die angehängte Datei \"%1\" ist keine lesbare E-Rechnung: %2").arg(file->name(), read.error);
    }
    result.error = !firstError.isEmpty() ? firstError
        : files.isEmpty() ? QStringLiteral("Die PDF-Datei enthält keine E-Rechnung: sie hat keinen Dateianhang.")
        : files.size() == 1 ? QStringLiteral("Die PDF-Datei enthält keine E-Rechnung: ihr Dateianhang ist keine Rechnung im Format CII oder UBL.")
                            : QStringLiteral("Die PDF-Datei enthält keine E-Rechnung: keiner ihrer %1 Dateianhänge ist eine Rechnung im Format CII oder UBL.").arg(files.size());
    return result;
}

ReadResult readInvoiceFile(const QString& path)
{
    QFile file(path);
    if (!QFileInfo(path).isFile() || !file.open(QIODevice::ReadOnly)) {
        ReadResult result;
        result.error = QFileInfo::exists(path) ? QStringLiteral("Die Datei \"%1\" kann nicht gelesen werden.").arg(path)
                                               : QStringLiteral("Die Datei \"%1\" gibt es nicht.").arg(path);
        return result;
    }
    const QByteArray content = file.readAll();
    if (content.startsWith("%PDF"))
        return readInvoicePdf(content);
    return readInvoiceXml(content);
}

} // namespace tarvik::einvoice
