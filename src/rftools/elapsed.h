#pragma once

#include <QString>

#include <cstdint>

namespace zun {

// hours:minutes:seconds:tenths. Hours wrap at 60, and the tenths are rounded
// on their own (halves to even), so 0.25 s shows 00:00:00:2.
[[nodiscard]] QString formatElapsed(double seconds);

// Run time of a tool that can be stopped and resumed. Times are kept in whole
// tenths of a second so that differences of clock readings stay exact.
class RunTimer
{
public:
    // Run pressed: the start is the clock cut down to tenths.
    void start(double secondsSinceMidnight);
    // A step: elapsed = this run (across midnight) + the runs before.
    void update(double secondsSinceMidnight);
    // Stop pressed: what the last step showed becomes the time before.
    void stop() { m_accumulatedTenths = m_elapsedTenths; }
    void clear();

    double elapsedSeconds() const { return m_elapsedTenths / 10.0; }
    double accumulatedSeconds() const { return m_accumulatedTenths / 10.0; }

private:
    static std::int64_t tenthsOf(double secondsSinceMidnight);

    std::int64_t m_startTenths = 0;
    std::int64_t m_accumulatedTenths = 0;
    std::int64_t m_elapsedTenths = 0;
};

} // namespace zun
