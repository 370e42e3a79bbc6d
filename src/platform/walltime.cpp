#include "platform/walltime.h"

#include "platform/clock.h"

namespace zun {

WallTime::WallTime(const Clock &clock, const QDateTime &anchor)
    : m_clock(clock), m_anchor(anchor), m_anchorMicros(clock.nowMicros())
{
}

QDateTime WallTime::at(std::uint64_t clockMicros) const
{
    const auto deltaMicros = static_cast<qint64>(clockMicros) - static_cast<qint64>(m_anchorMicros);
    return m_anchor.addMSecs(deltaMicros / 1000);
}

QDateTime WallTime::now() const
{
    return at(m_clock.nowMicros());
}

QString WallTime::iso(const QDateTime &time)
{
    return time.toOffsetFromUtc(time.offsetFromUtc()).toString(Qt::ISODateWithMs);
}

} // namespace zun
