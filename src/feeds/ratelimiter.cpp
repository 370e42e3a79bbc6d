#include "feeds/ratelimiter.h"

namespace zun {

qint64 RateLimiter::waitFor(int key, qint64 nowMs) const
{
    const auto it = m_lastSent.constFind(key);
    if (it == m_lastSent.cend())
        return 0;
    return qMax<qint64>(0, *it + m_intervalMs - nowMs);
}

} // namespace zun
