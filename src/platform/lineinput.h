#pragma once

#include <QByteArray>

#include <algorithm>

#include <cstdint>
#include <utility>

namespace zun {

// The longest reply a transaction waits for: the full status read.
inline constexpr qsizetype kLongestReply = 41;

// What a line holds of its input until a transaction reads or discards it.
// A reply begins with the first character after the command, so only the
// first kLongestReply characters can matter; the transaction would throw
// away the rest before its next command, and a device that never stops
// sending must not grow the program without end.
class LineInput
{
public:
    void append(const char *bytes, qsizetype count)
    {
        const qsizetype room = std::max<qsizetype>(kLongestReply - m_bytes.size(), 0);
        const qsizetype kept = std::min(room, count);
        m_bytes.append(bytes, kept);
        m_discarded += static_cast<std::uint64_t>(count - kept);
    }
    void append(const QByteArray &bytes) { append(bytes.constData(), bytes.size()); }
    qsizetype size() const { return m_bytes.size(); }
    QByteArray take() { return std::exchange(m_bytes, {}); }
    void clear() { m_bytes.clear(); }
    // Characters dropped for want of room since the line was made.
    std::uint64_t discarded() const { return m_discarded; }

private:
    QByteArray m_bytes;
    std::uint64_t m_discarded = 0;
};

} // namespace zun
