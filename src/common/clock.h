#pragma once
#include <QDate>

namespace tarvik {

// "Today" comes through this, so tests can fix the date.
class Clock {
public:
    virtual ~Clock() = default;
    virtual QDate today() const = 0;
};

class SystemClock final : public Clock {
public:
    QDate today() const override;
};

class FixedClock final : public Clock {
public:
    explicit FixedClock(QDate date) : m_date(date) {}
    QDate today() const override { return m_date; }
    void setToday(QDate date) { m_date = date; }

private:
    QDate m_date;
};

} // namespace tarvik
