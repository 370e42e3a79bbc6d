#include "rftools/holdtraces.h"

#include <algorithm>

namespace zun {

void HoldTraces::resize(int pointCount)
{
    for (auto &trace : m_traces)
        trace.assign(static_cast<std::size_t>(std::max(pointCount, 0)) + 1, kNone);
}

void HoldTraces::setEnabled(Kind kind, bool on)
{
    m_on[kind] = on;
    std::fill(m_traces[kind].begin(), m_traces[kind].end(), kNone);
}

void HoldTraces::record(int index, int level)
{
    if (index < 0 || index >= static_cast<int>(m_traces[Max].size()))
        return;
    const auto value = static_cast<std::int16_t>(level);
    std::int16_t &high = m_traces[Max][static_cast<std::size_t>(index)];
    std::int16_t &low = m_traces[Min][static_cast<std::size_t>(index)];
    if (m_on[Max] && (high == kNone || value > high))
        high = value;
    if (m_on[Min] && (low == kNone || value < low))
        low = value;
}

void HoldTraces::clear()
{
    for (auto &trace : m_traces)
        std::fill(trace.begin(), trace.end(), kNone);
}

bool HoldTraces::holdsAny(Kind kind) const
{
    return std::any_of(m_traces[kind].begin(), m_traces[kind].end(),
                       [](std::int16_t v) { return v != kNone; });
}

} // namespace zun
