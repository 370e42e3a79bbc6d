#pragma once

#include <QDateTime>
#include <QString>

#include <cstdint>

namespace zun {

class Clock;

// Calendar time for records a person reads later (log lines, alarm times).
// The date and time of day are taken once; from then on time moves with the
// program's clock, so tests get exact stamps on the virtual clock and a log
// never jumps back when the system time is adjusted.
class WallTime
{
public:
    explicit WallTime(const Clock &clock, const QDateTime &anchor = QDateTime::currentDateTime());

    // The calendar time at a reading of the program's clock.
    QDateTime at(std::uint64_t clockMicros) const;
    QDateTime now() const;
    const Clock &clock() const { return m_clock; }

    // ISO 8601 with milliseconds and the offset from UTC: 2026-11-23T21:04:05.123+01:00
    [[nodiscard]] static QString iso(const QDateTime &time);

private:
    const Clock &m_clock;
    QDateTime m_anchor;
    std::uint64_t m_anchorMicros;
};

} // namespace zun
