#include "cli/command.h"

#include "store/records.h"
#include "store/startup.h"

namespace tarvik::cli {

void Io::print(const QString& text) const
{
    std::fputs(text.toUtf8().constData(), out);
    std::fputc('\n', out);
}

void Io::printError(const QString& text) const
{
    std::fputs(text.toUtf8().constData(), err);
    std::fputc('\n', err);
}

int CommandContext::usageError(const QString& reason) const
{
    io.printError(reason);
    io.printError(usageLine);
    return Usage;
}

std::optional<qint32> wholeNumber(const QString& text)
{
    bool ok = false;
    const qint32 value = text.trimmed().toInt(&ok);
    if (!ok)
        return std::nullopt;
    return value;
}

std::optional<qint32> harvestByNumber(const CommandContext& context, qint32 hiebNr)
{
    const auto id = harvestIdByNumber(context.session->database->shared(), hiebNr);
    if (!id)
        context.prompter.inform(QStringLiteral("Einen Hieb mit der Nr. %1 gibt es nicht.").arg(hiebNr));
    return id;
}

} // namespace tarvik::cli
