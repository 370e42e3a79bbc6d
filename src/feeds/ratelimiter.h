#pragma once

#include <QHash>
#include <QtGlobal>

namespace zun {

// At most one send per key within a minimum interval. Time is passed in
// (milliseconds, any monotonic origin), so the rule can be tested without
// waiting.
class RateLimiter
{
public:
    explicit RateLimiter(qint64 intervalMs) : m_intervalMs(intervalMs) {}

    // 0 when a send for this key may go now, else the milliseconds to wait.
    qint64 waitFor(int key, qint64 nowMs) const;
    void markSent(int key, qint64 nowMs) { m_lastSent.insert(key, nowMs); }
    void forget(int key) { m_lastSent.remove(key); }

private:
    qint64 m_intervalMs;
    QHash<int, qint64> m_lastSent;
};

} // namespace zun
