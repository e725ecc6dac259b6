#pragma once
// The rows of the list a window was opened from, in that list's order. A window in mode
// "Ändern" stores the row it shows and moves on to the next one; after the last it starts
// again at the first, so a whole list can be gone through without reopening the window.
#include <QList>
#include <optional>

namespace tarvik {

class OpenerRows {
public:
    OpenerRows() = default;
    OpenerRows(QList<qint32> ids, qint32 current) : m_ids(std::move(ids)), m_position(m_ids.indexOf(current)) {}

    bool isEmpty() const { return m_ids.isEmpty(); }
    qsizetype size() const { return m_ids.size(); }
    // 1-based place of the shown row ("3 von 40"); 0 when it is not in the list.
    qsizetype place() const { return m_position + 1; }

    std::optional<qint32> current() const
    {
        if (m_position < 0)
            return std::nullopt;
        return m_ids.at(m_position);
    }

    // Moves to the row after the shown one, to the first after the last (and when the shown
    // row is not listed); nullopt for an empty list.
    std::optional<qint32> advance()
    {
        if (m_ids.isEmpty())
            return std::nullopt;
        m_position = (m_position + 1) % m_ids.size();
        return m_ids.at(m_position);
    }

    // Moves to the row before the shown one, to the last before the first; nullopt for an empty list.
    std::optional<qint32> back()
    {
        if (m_ids.isEmpty())
            return std::nullopt;
        m_position = m_position <= 0 ? m_ids.size() - 1 : m_position - 1;
        return m_ids.at(m_position);
    }

private:
    QList<qint32> m_ids;
    qsizetype m_position = -1;
};

} // namespace tarvik
