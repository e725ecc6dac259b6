#pragma once
// The e-invoice reader's small element tree: the XML read once, elements then looked up by
// namespace and name. A DTD or nesting deeper than any invoice's is refused while parsing.
#include <QList>
#include <QString>
#include <QXmlStreamAttributes>
#include <initializer_list>
#include <memory>
#include <vector>

namespace tarvik::einvoice {

// A small element tree: the reader looks elements up by namespace and name.
struct Node {
    QString ns;
    QString name;
    QString text;
    QXmlStreamAttributes attributes;
    std::vector<std::unique_ptr<Node>> children;

    const Node* child(const QString& childNs, const QString& childName) const
    {
        for (const auto& c : children)
            if (c->name == childName && c->ns == childNs)
                return c.get();
        return nullptr;
    }
    QList<const Node*> all(const QString& childNs, const QString& childName) const
    {
        QList<const Node*> found;
        for (const auto& c : children)
            if (c->name == childName && c->ns == childNs)
                found << c.get();
        return found;
    }
    QString attribute(const QString& attributeName) const { return attributes.value(attributeName).toString(); }
};

// Follows a path of element names, all in one namespace; null when a step is missing.
const Node* at(const Node* node, const QString& ns, std::initializer_list<const char*> path);
QString textAt(const Node* node, const QString& ns, std::initializer_list<const char*> path);

struct Tree {
    std::unique_ptr<Node> root;
    QString error; // German, when the bytes are no usable XML
};

Tree parse(const QByteArray& xml);

} // namespace tarvik::einvoice
