#include "sim/simserialline.h"

#include "platform/clock.h"

#include <QStringList>

#include <algorithm>

namespace zun {

SimSerialLine::SimSerialLine(Clock &clock) : m_clock(clock) {}

void SimSerialLine::attachBus(int port, SimBus *bus)
{
    m_ports[port] = bus;
}

void SimSerialLine::removePort(int port)
{
    if (m_open && port == m_port)
        close();
    m_ports.erase(port);
}

SimBus *SimSerialLine::bus(int port) const
{
    const auto it = m_ports.find(port);
    return it == m_ports.end() ? nullptr : it->second;
}

void SimSerialLine::injectInput(const QByteArray &bytes, std::uint64_t delayMicros)
{
    if (!m_open)
        return;
    const std::uint64_t at = m_clock.nowMicros() + delayMicros;
    for (char c : bytes)
        m_inFlight.emplace(at, c);
}

bool SimSerialLine::portExists(int n)
{
    return m_ports.contains(n) && !(m_open && n == m_port);
}

void SimSerialLine::selectPort(int n)
{
    if (!m_open)
        m_port = n;
}

bool SimSerialLine::open()
{
    if (m_open || !m_ports.contains(m_port))
        return false;
    m_open = true;
    m_inFlight.clear();
    m_input.clear();
    return true;
}

void SimSerialLine::close()
{
    m_open = false;
    m_inFlight.clear();
    m_input.clear();
}

bool SimSerialLine::applySettings(const QString &settings)
{
    const QStringList parts = settings.split(QLatin1Char(','));
    bool ok = false;
    const int baud = parts.value(0).trimmed().toInt(&ok);
    if (!ok || baud <= 0 || baud > 4000000)
        return false;
    if (parts.size() > 1) {
        static const QStringList parities{"N", "E", "O", "M", "S"};
        static const QStringList dataBits{"5", "6", "7", "8"};
        static const QStringList stopBits{"1", "1.5", "2"};
        if (parts.size() != 4 || !parities.contains(parts[1].trimmed().toUpper()) ||
            !dataBits.contains(parts[2].trimmed()) || !stopBits.contains(parts[3].trimmed()))
            return false;
    }
    m_baud = baud;
    return true;
}

bool SimSerialLine::write(const QByteArray &text)
{
    if (!m_open)
        return false;
    // Bytes queue behind whatever is still leaving the port.
    const std::uint64_t start = std::max(m_clock.nowMicros(), m_txFreeAt);
    m_txFreeAt = start + simWireMicros(static_cast<int>(text.size()), m_baud);
    // Trimmed in halves, so each frame is moved once on average.
    if (m_written.size() >= 2 * m_writtenLimit)
        m_written.erase(m_written.begin(), m_written.end() - static_cast<std::ptrdiff_t>(m_writtenLimit) + 1);
    m_written.push_back({start, m_port, m_baud, text});
    if (SimBus *bus = this->bus(m_port))
        for (const SimTimedByte &b : bus->hostTransmit(text, start, m_baud))
            m_inFlight.emplace(b.micros, b.byte);
    return true;
}

void SimSerialLine::collectArrived()
{
    const std::uint64_t now = m_clock.nowMicros();
    auto it = m_inFlight.begin();
    for (; it != m_inFlight.end() && it->first <= now; ++it)
        m_input.append(&it->second, 1);
    m_inFlight.erase(m_inFlight.begin(), it);
}

int SimSerialLine::bytesWaiting()
{
    collectArrived();
    return static_cast<int>(m_input.size());
}

QByteArray SimSerialLine::readAll()
{
    collectArrived();
    return m_input.take();
}

void SimSerialLine::discardInput()
{
    // Only what has arrived goes; bytes still on the wire land afterwards.
    collectArrived();
    m_input.clear();
}

void SimSerialLine::waitForInput(int millis)
{
    if (millis > 0)
        waitForInputMicros(static_cast<std::uint64_t>(millis) * 1000u);
}

void SimSerialLine::waitForInputMicros(std::uint64_t micros)
{
    if (micros == 0)
        return;
    collectArrived();
    const std::uint64_t now = m_clock.nowMicros();
    std::uint64_t until = now + micros;
    if (m_open && !m_inFlight.empty())
        until = std::min(until, m_inFlight.begin()->first);
    if (until > now)
        m_clock.sleepMicros(until - now);
}

} // namespace zun
