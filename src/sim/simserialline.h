#pragma once

#include "platform/lineinput.h"
#include "platform/serialline.h"
#include "sim/simbus.h"

#include <QByteArray>
#include <QString>

#include <algorithm>
#include <cstdint>
#include <map>
#include <vector>

namespace zun {

class Clock;

// The serial line in the same process: ports that lead to simulated buses.
// Time comes from the clock, so on a virtual clock a time-out costs nothing
// and on the system clock waiting really sleeps until the next byte is due.
class SimSerialLine final : public SerialLine
{
public:
    explicit SimSerialLine(Clock &clock);

    // Port n exists and leads to bus (not owned; null: nothing connected).
    void attachBus(int port, SimBus *bus);
    void removePort(int port);
    SimBus *bus(int port) const;

    // Bytes that reach the open port delayMicros from now, as line noise
    // or a stray receiver would put them there.
    void injectInput(const QByteArray &bytes, std::uint64_t delayMicros = 0);

    struct WrittenFrame
    {
        std::uint64_t micros; // when the first byte went out
        int port;
        int baud;
        QByteArray bytes;
    };
    // The latest frames written, oldest first: at least the last
    // writtenLimit() and never twice as many, so a long demo stays small.
    const std::vector<WrittenFrame> &written() const { return m_written; }
    void clearWritten() { m_written.clear(); }
    std::size_t writtenLimit() const { return m_writtenLimit; }
    void setWrittenLimit(std::size_t frames) { m_writtenLimit = std::max<std::size_t>(frames, 1); }

    int baudRate() const { return m_baud; }
    [[nodiscard]] bool requestToSend() const { return m_rts; }
    [[nodiscard]] bool textMode() const { return m_textMode; }

    // A port that is open here cannot be opened again exclusively, so it
    // does not pass the existence test while open.
    bool portExists(int n) override;
    // Ignored while the port is open, as the line cannot move under traffic.
    void selectPort(int n) override;
    int portNumber() const override { return m_port; }
    // False for an unknown port and when already open.
    bool open() override;
    void close() override;
    bool isOpen() const override { return m_open; }
    bool applySettings(const QString &settings) override;
    void setRequestToSend(bool on) override { m_rts = on; }
    void setTextMode() override { m_textMode = true; }
    bool write(const QByteArray &text) override;
    int bytesWaiting() override;
    QByteArray readAll() override;
    void discardInput() override;
    void discardOutput() override {}
    void waitForInput(int millis) override;
    void waitForInputMicros(std::uint64_t micros) override;
    std::uint64_t discardedInput() const override { return m_input.discarded(); }

private:
    void collectArrived();

    Clock &m_clock;
    std::map<int, SimBus *> m_ports;
    int m_port = 1;
    bool m_open = false;
    int m_baud = 9600;
    bool m_rts = false;
    bool m_textMode = false;
    std::multimap<std::uint64_t, char> m_inFlight; // equal times keep their order
    LineInput m_input;
    std::uint64_t m_txFreeAt = 0;
    std::vector<WrittenFrame> m_written;
    std::size_t m_writtenLimit = 20000;
};

} // namespace zun
