#pragma once
// Icons and type texts for the file views of the program, taken from the name alone. Qt's own
// provider reads a file's first bytes to guess its type; done to the database, the close of
// that read would release every lock the engine holds on it (POSIX locks belong to the
// process), and another program could then remove the write-ahead log under this one.
#include <QFileIconProvider>

namespace tarvik {

class NameOnlyIconProvider final : public QFileIconProvider {
public:
    using QFileIconProvider::icon;
    QIcon icon(const QFileInfo& info) const override;
    QString type(const QFileInfo& info) const override;
};
// Set it on a file dialog or file system model right after creating it, before the event loop
// runs: the model asks for icons and types only when its listing arrives through that loop.
// The provider must outlive the model.

} // namespace tarvik
