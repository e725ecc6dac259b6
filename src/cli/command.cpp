#include "cli/command.h"

#include "common/textfile.h"
#include "store/records.h"
#include "store/startup.h"

namespace tarvik::cli {

namespace {

// Written by length: a NUL inside a value must not end the line early.
void writeLine(std::FILE* f, const QString& text)
{
    const QByteArray bytes = text.toUtf8();
    std::fwrite(bytes.constData(), 1, size_t(bytes.size()), f);
    std::fputc('\n', f);
}

} // namespace

void Io::print(const QString& text) const { writeLine(out, text); }

void Io::printError(const QString& text) const { writeLine(err, text); }

int CommandContext::usageError(const QString& reason) const
{
    io.printError(reason);
    io.printError(usageLine);
    return Usage;
}

SessionContext::SessionContext(const CommandContext& context)
    : m_app{context.session->database->shared(), context.session->settings, context.session->dataFolder, context.prompter, m_clock}
{
}

std::optional<qint32> wholeNumber(const QString& text)
{
    bool ok = false;
    const qint32 value = text.trimmed().toInt(&ok);
    if (!ok)
        return std::nullopt;
    return value;
}

int printOrWriteLines(const CommandContext& context, const QStringList& lines, const QString& filePath)
{
    if (filePath.isEmpty()) {
        for (const QString& line : lines)
            context.io.print(line);
        return Success;
    }
    const TextFileResult written = writeTextFile(filePath, lines);
    if (!written.ok) {
        context.prompter.inform(written.error, Prompter::Icon::Critical);
        return Refused;
    }
    return Success;
}

std::optional<qint32> harvestByNumber(const CommandContext& context, qint32 hiebNr)
{
    const auto id = harvestIdByNumber(context.session->database->shared(), hiebNr);
    if (!id)
        context.prompter.inform(QStringLiteral("Einen Hieb mit der Nr. %1 gibt es nicht.").arg(hiebNr));
    return id;
}

} // namespace tarvik::cli
