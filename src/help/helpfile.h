#pragma once
// The help file: plain text, a topic starts at a line equal to its key, the next line is its
// title, the text runs to a line "#ende#" (or to the end of the file).
#include <QString>

namespace tarvik {

inline constexpr char HelpFileName[] = "HILFETARVIK.HLP";

struct HelpTopic {
    bool fileFound = false;
    QString title;
    QString text; // every line followed by a line break
    QString missingFileMessage; // German, when the file is not there
};

HelpTopic readHelpTopic(const QString& helpFolder, const QString& key);

// Every topic key the file holds, in file order.
QStringList helpTopicKeys(const QString& helpFolder);

} // namespace tarvik
