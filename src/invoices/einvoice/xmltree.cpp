#include "invoices/einvoice/xmltree.h"

#include <QXmlStreamReader>

namespace tarvik::einvoice {
namespace {

constexpr int MaxDepth = 64; // real invoices nest about a dozen levels

} // namespace

const Node* at(const Node* node, const QString& ns, std::initializer_list<const char*> path)
{
    for (const char* step : path) {
        if (!node)
            return nullptr;
        node = node->child(ns, QString::fromLatin1(step));
    }
    return node;
}

QString textAt(const Node* node, const QString& ns, std::initializer_list<const char*> path)
{
    const Node* found = at(node, ns, path);
    return found ? found->text : QString();
}

Tree parse(const QByteArray& xml)
{
    Tree tree;
    QXmlStreamReader reader(xml);
    std::vector<Node*> open;
    while (!reader.atEnd()) {
        switch (reader.readNext()) {
        case QXmlStreamReader::DTD:
            tree.error = QStringLiteral("Die Datei enthält eine Dokumenttypdefinition (DTD); eine E-Rechnung hat keine.");
            return tree;
        case QXmlStreamReader::StartElement: {
            if (int(open.size()) >= MaxDepth) {
                tree.error = QStringLiteral("Die XML-Datei ist zu tief verschachtelt, um eine E-Rechnung zu sein.");
                return tree;
            }
            auto node = std::make_unique<Node>();
            node->ns = reader.namespaceUri().toString();
            node->name = reader.name().toString();
            node->attributes = reader.attributes();
            Node* raw = node.get();
            if (open.empty())
                tree.root = std::move(node);
            else
                open.back()->children.push_back(std::move(node));
            open.push_back(raw);
            break;
        }
        case QXmlStreamReader::EndElement:
            open.pop_back();
            break;
        case QXmlStreamReader::Characters:
            if (!open.empty() && !reader.isWhitespace())
                open.back()->text += reader.text();
            else if (!open.empty() && open.back()->children.empty())
                open.back()->text += reader.text(); // whitespace inside a text element belongs to it
            break;
        default:
            break;
        }
    }
    if (reader.hasError()) {
        tree.root.reset();
        tree.error = xml.trimmed().isEmpty()
            ? QStringLiteral("Die Datei ist leer.")
            : QStringLiteral("Die Datei ist kein gültiges XML (Fehler in Zeile %1, Spalte %2).").arg(reader.lineNumber()).arg(reader.columnNumber());
    }
    return tree;
}
} // namespace tarvik::einvoice
