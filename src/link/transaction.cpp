#include "link/transaction.h"

#include "link/hex.h"
#include "platform/clock.h"
#include "platform/lineinput.h"
#include "platform/serialline.h"

#include <algorithm>

namespace zun {

Link::Link(SerialLine &line, Clock &clock, const int &retry, const int *baudrate)
    : m_line(line), m_clock(clock), m_retry(retry), m_baudrate(baudrate)
{
}

QString frame(QChar prefix, int address, const QString &body)
{
    return prefix + formatHex(address, 2) + body + QLatin1Char('\r');
}

void Link::delay(int millis)
{
    std::uint32_t start = m_clock.tickCount();
    for (;;) {
        const std::uint32_t now = m_clock.tickCount();
        if (now < start) // the counter wrapped: count again from 0
            start = 0;
        const std::uint32_t elapsed = m_clock.tickCount() - start;
        if (static_cast<std::int64_t>(elapsed) >= millis)
            return;
        // Sleep for the rest instead of spinning; the timing stays the same.
        m_clock.sleepMicros((static_cast<std::uint64_t>(millis) - elapsed) * 1000u);
    }
}

bool Link::sendCommand(const QString &command, int replyLength, QString &reply, int timeoutMillis)
{
    reply.clear();
    if (command.size() < 3 || !m_line.isOpen())
        return false;
    const QString address = command.mid(1, 2);
    const QByteArray bytes = command.toLatin1();

    if (address == QLatin1String("00")) {
        // Broadcast: nobody answers. Input is left alone on purpose.
        m_line.discardOutput();
        if (!m_line.write(bytes))
            return false;
        delay(timeoutMillis);
        return true;
    }
    return exchange(bytes, address, replyLength, reply, timeoutMillis);
}

bool Link::exchange(const QByteArray &bytes, const QString &address, int replyLength, QString &reply,
                    int timeoutMillis)
{
    if (m_disturbed)
        waitForQuietLine();
    for (int attempt = 0; attempt <= m_retry; ++attempt) {
        m_lastAttempts = attempt + 1;
        reply.clear();
        m_line.discardInputAndOutput();
        if (!m_line.write(bytes))
            return false;
        m_line.expectInput(replyLength);

        std::uint32_t start = m_clock.tickCount();
        for (;;) {
            const std::uint32_t now = m_clock.tickCount();
            if (now < start)
                start = 0;
            const std::uint32_t elapsed = m_clock.tickCount() - start;
            const bool timedOut = static_cast<std::int64_t>(elapsed) > timeoutMillis;
            if (m_line.bytesWaiting() >= replyLength || timedOut)
                break;
            // Block on the port until input arrives or just past the time-out.
            m_line.waitForInput(static_cast<int>(timeoutMillis - static_cast<std::int64_t>(elapsed)) + 1);
        }
        if (replyLength == 0)
            delay(timeoutMillis);

        reply = QString::fromLatin1(m_line.readAll());
        if (!reply.isEmpty())
            break;
        if (!m_line.isOpen())
            return false;
    }
    const bool accepted = reply.size() >= 3 && reply.at(0) == QLatin1Char('$') && reply.mid(1, 2) == address;
    noteDisturbance(accepted, reply, address, replyLength);
    return accepted;
}

void Link::noteDisturbance(bool accepted, const QString &reply, const QString &address, int replyLength)
{
    // The read stops at the length asked for, and every reply asked for
    // ends with its carriage return there. One that is longer or does not
    // end so can still be on the wire, and so can the asked receiver's own
    // answer after a frame from another. A whole frame that is merely
    // altered, and a wait that ends with the full time-out, leave a quiet line.
    if (reply.isEmpty() || replyLength <= 0)
        return;
    const bool unended = reply.size() > replyLength || !reply.endsWith(QLatin1Char('\r'));
    const bool otherSender =
        reply.size() >= 3 && reply.at(0) == QLatin1Char('$') && reply.mid(1, 2) != address;
    m_disturbed = unended || (!accepted && otherSender);
}

void Link::waitForQuietLine()
{
    m_disturbed = false;
    // Ten bits a character at the line's speed; the wait never outlasts the
    // longest reply on the wire, so a line that never stops costs one such
    // time per exchange and no more.
    const int baud = m_baudrate && *m_baudrate > 0 ? *m_baudrate : 115200;
    const std::uint64_t character =
        (10'000'000u + static_cast<std::uint64_t>(baud) - 1) / static_cast<std::uint64_t>(baud);
    const std::uint64_t quiet = 2 * character;
    const std::uint64_t start = m_clock.nowMicros();
    const std::uint64_t end = start + static_cast<std::uint64_t>(kLongestReply) * character;
    std::uint64_t quietSince = start;
    for (;;) {
        const std::uint64_t now = m_clock.nowMicros();
        if (m_line.bytesWaiting() > 0) {
            m_line.discardInput();
            quietSince = now;
        }
        const std::uint64_t until = std::min(quietSince + quiet, end);
        if (now >= until || !m_line.isOpen())
            return;
        m_line.waitForInputMicros(until - now);
    }
}

} // namespace zun
