#include "help/helpfile.h"

#include "common/textfile.h"

#include <QDir>
#include <QFileInfo>
#include <QStringList>

namespace tarvik {

namespace {

const QString EndMark = QStringLiteral("#ende#");

QString filePath(const QString& helpFolder) { return QDir(helpFolder).filePath(QLatin1String(HelpFileName)); }

} // namespace

HelpTopic readHelpTopic(const QString& helpFolder, const QString& key)
{
    HelpTopic topic;
    const QString path = filePath(helpFolder);
    const TextFileResult file = QFileInfo(path).isFile() ? readTextFile(path) : TextFileResult{};
    if (!file.ok) {
        QString folder = QDir::toNativeSeparators(helpFolder);
        if (!folder.endsWith(QDir::separator()))
            folder += QDir::separator();
        topic.missingFileMessage = QStringLiteral("Die Hilfedatei %1%2 existiert nicht!").arg(folder, QLatin1String(HelpFileName));
        return topic;
    }
    topic.fileFound = true;
    if (key.trimmed().isEmpty())
        return topic; // a blank line of the file is no topic's key
    bool inTopic = false, titleRead = false;
    for (const QString& line : file.lines) {
        if (!inTopic) {
            inTopic = line == key;
            continue;
        }
        if (line == EndMark)
            break;
        if (!titleRead) {
            topic.title = line;
            titleRead = true;
        } else {
            topic.text += line + u'\n';
        }
    }
    return topic;
}

QStringList helpTopicKeys(const QString& helpFolder)
{
    const TextFileResult file = readTextFile(filePath(helpFolder));
    QStringList keys;
    bool expectKey = true;
    for (const QString& line : file.lines) {
        if (expectKey && !line.trimmed().isEmpty()) {
            keys << line;
            expectKey = false;
        } else if (line == EndMark) {
            expectKey = true;
        }
    }
    return keys;
}

} // namespace tarvik
