#pragma once

#include "platform/linesettings.h"

#include <QByteArray>

#include <array>
#include <optional>

namespace zun {

// The client side of a Telnet session with the COM-PORT-OPTION (RFC 2217):
// bytes from the server go in, line data and the bytes to send back come
// out. It does no I/O and keeps no time, so a recorded byte stream replays
// exactly.
class Rfc2217Session
{
public:
    enum class ComPort { Pending, Accepted, Refused };

    struct Result
    {
        QByteArray data;  // what the far serial port received, unescaped
        QByteArray reply; // to be sent to the server as it is
    };

    // The opening negotiation. The settings follow as soon as the server
    // accepts the option; with requestToSend the RTS line is switched on too.
    QByteArray start(const LineSettings &settings, bool requestToSend);

    Result receive(const QByteArray &bytes);

    // Bytes that set the far port; while the server has not yet accepted
    // the option they are kept and sent with its acceptance.
    QByteArray configure(const LineSettings &settings, bool requestToSend);

    // Line data as it must travel: every 0xFF doubled.
    [[nodiscard]] static QByteArray escape(const QByteArray &data);

    // The server never answered: treat the session as raw from now on.
    void giveUp();

    ComPort comPort() const { return m_comPort; }
    // The speed the server last reported for its port.
    [[nodiscard]] std::optional<qint32> confirmedBaudRate() const { return m_confirmedBaud; }
    // How many speed reports the server sent; a new one answers the last change.
    int baudRateReports() const { return m_baudReports; }
    // The server sent at least one Telnet command: it is a Telnet server,
    // whether or not it takes the option.
    [[nodiscard]] bool heardTelnet() const { return m_heardTelnet; }

private:
    enum class State { Data, Iac, Option, Sub, SubIac };
    enum class Want : unsigned char { No, WantYes, Yes };

    void option(unsigned char command, unsigned char opt, QByteArray &reply);
    void subnegotiation(QByteArray &reply);
    QByteArray settingsCommands() const;
    void accept(QByteArray &reply);

    State m_state = State::Data;
    unsigned char m_command = 0;
    QByteArray m_sub;
    std::array<Want, 256> m_us{};  // options we perform (WILL)
    std::array<Want, 256> m_him{}; // options the server performs (DO)
    ComPort m_comPort = ComPort::Pending;
    LineSettings m_settings;
    bool m_requestToSend = false;
    std::optional<qint32> m_confirmedBaud;
    int m_baudReports = 0;
    bool m_heardTelnet = false;
};

} // namespace zun
