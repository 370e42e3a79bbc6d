#include "link/transaction.h"

#include "link/hex.h"
#include "platform/clock.h"
#include "platform/serialline.h"

namespace zun {

Link::Link(SerialLine &line, Clock &clock, const int &retry) : m_line(line), m_clock(clock), m_retry(retry) {}

QString frame(QChar prefix, int address, const QString &body)
{
    return prefix + NumToHex(address, 2) + body + QLatin1Char('\r');
}

void Link::Delay(int millis)
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

bool Link::SendCommand(const QString &command, int replyLength, QString &reply, int timeoutMillis)
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
        Delay(timeoutMillis);
        return true;
    }
    return exchange(bytes, address, replyLength, reply, timeoutMillis);
}

bool Link::exchange(const QByteArray &bytes, const QString &address, int replyLength, QString &reply,
                    int timeoutMillis)
{
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
            Delay(timeoutMillis);

        reply = QString::fromLatin1(m_line.readAll());
        if (!reply.isEmpty())
            break;
        if (!m_line.isOpen())
            return false;
    }
    return reply.size() >= 3 && reply.at(0) == QLatin1Char('$') && reply.mid(1, 2) == address;
}

} // namespace zun
