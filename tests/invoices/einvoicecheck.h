#pragma once
// The official offline check of an e-invoice file (CII schema, EN 16931 rules and, for
// XRechnung, the German rules) as it lies beside the repository.
#include <QFile>
#include <QProcess>
#include <QString>
#include <QStringList>
#include <optional>

namespace tarvik::test {

struct EInvoiceCheck {
    int exitCode = -1;
    QString report; // every failed rule, "fatal|warning ID: text", and the closing line
    bool clean() const { return exitCode == 0 && !report.contains(QStringLiteral("fatal")) && !report.contains(QStringLiteral("warning")); }
};

// Nothing when the rule files are not there to check with.
inline std::optional<EInvoiceCheck> checkEInvoice(const QString& path, bool xrechnung)
{
    const QString script = QStringLiteral(EINVOICE_CHECKS "/validate.sh");
    if (!QFile::exists(script))
        return std::nullopt;
    QProcess check;
    QStringList args{path};
    if (!xrechnung)
        args << QStringLiteral("--en16931");
    check.start(script, args);
    if (!check.waitForFinished(180000))
        return EInvoiceCheck{-1, QStringLiteral("the check did not finish")};
    return EInvoiceCheck{check.exitCode(), QString::fromUtf8(check.readAllStandardOutput() + check.readAllStandardError())};
}

} // namespace tarvik::test
