#pragma once
// The one failure the core throws at a window: a German message about stored data.
#include <QString>
#include <stdexcept>

namespace tarvik {

class StoreError : public std::runtime_error {
public:
    explicit StoreError(const QString& message)
        : std::runtime_error(message.toStdString()), m_message(message) {}
    const QString& message() const { return m_message; }

private:
    QString m_message;
};

} // namespace tarvik
