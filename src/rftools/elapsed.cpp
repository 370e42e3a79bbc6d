#include "rftools/elapsed.h"

#include <cmath>

namespace zun {

namespace {
constexpr std::int64_t kTenthsPerDay = 864000;

std::int64_t positiveMod(std::int64_t value, std::int64_t modulus)
{
    const std::int64_t r = value % modulus;
    return r < 0 ? r + modulus : r;
}
} // namespace

QString formatElapsed(double seconds)
{
    if (!std::isfinite(seconds) || std::fabs(seconds) > 1e15)
        seconds = 0;
    const std::int64_t tenths = positiveMod(static_cast<std::int64_t>(std::nearbyint(seconds * 10)), 10);
    std::int64_t t = static_cast<std::int64_t>(std::floor(seconds));
    const std::int64_t secs = positiveMod(t, 60);
    t = static_cast<std::int64_t>(std::floor(t / 60.0));
    const std::int64_t minutes = positiveMod(t, 60);
    t = static_cast<std::int64_t>(std::floor(t / 60.0));
    const std::int64_t hours = positiveMod(t, 60);
    return QStringLiteral("%1:%2:%3:%4")
        .arg(hours, 2, 10, QLatin1Char('0'))
        .arg(minutes, 2, 10, QLatin1Char('0'))
        .arg(secs, 2, 10, QLatin1Char('0'))
        .arg(tenths);
}

std::int64_t RunTimer::tenthsOf(double secondsSinceMidnight)
{
    if (!std::isfinite(secondsSinceMidnight))
        return 0;
    return static_cast<std::int64_t>(std::floor(secondsSinceMidnight * 10));
}

void RunTimer::start(double secondsSinceMidnight)
{
    m_startTenths = tenthsOf(secondsSinceMidnight);
}

void RunTimer::update(double secondsSinceMidnight)
{
    std::int64_t run = tenthsOf(secondsSinceMidnight) - m_startTenths;
    if (run < 0) // midnight passed during the run
        run += kTenthsPerDay;
    m_elapsedTenths = run + m_accumulatedTenths;
}

void RunTimer::clear()
{
    m_startTenths = 0;
    m_accumulatedTenths = 0;
    m_elapsedTenths = 0;
}

} // namespace zun
