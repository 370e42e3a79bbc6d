#pragma once

#include "platform/lineinput.h"
#include "platform/linesettings.h"
#include "platform/netaddress.h"
#include "platform/rfc2217session.h"
#include "platform/serialline.h"

#include <QTcpSocket>

#include <optional>

namespace zun {

class PortMap;

// The serial line of a serial server on the network: a raw TCP stream or an
// RFC 2217 session. Name lookup and connection happen in open(), within a
// bounded wait; an exchange only ever waits on the socket.
class NetSerialLine final : public SerialLine
{
public:
    explicit NetSerialLine(const PortMap &ports, int connectMillis = 2500);
    ~NetSerialLine() override;

    // A well-formed address counts as present without connecting: a server
    // that is off at start must neither hold up the start nor lose its port.
    bool portExists(int n) override;

    void selectPort(int n) override;
    int portNumber() const override { return m_portNumber; }
    bool open() override;
    void close() override;
    bool isOpen() const override;

    bool applySettings(const QString &settings) override;
    void setRequestToSend(bool on) override;
    void setTextMode() override {}

    bool write(const QByteArray &text) override;
    int bytesWaiting() override;
    QByteArray readAll() override;
    void discardInput() override;
    void discardOutput() override {}
    void waitForInput(int millis) override;
    std::uint64_t discardedInput() const override { return m_input.discarded(); }
    QString takeNotice() override;

private:
    // False when the connection broke; the next exchange finds the line closed.
    bool send(const QByteArray &bytes);
    void pull();
    void ackAtOnce();
    void absorb(const QByteArray &bytes);
    // Waits for the server's answers after the opening negotiation or a
    // speed change; bounded, never longer than the connect allowance.
    // Ends when the server has taken the option and reported a speed newer
    // than the count given, or has refused.
    void settle(int baudReportsBefore);
    void warn(const QString &text);

    const PortMap &m_ports;
    const int m_connectMillis;
    QTcpSocket m_socket;
    std::optional<NetAddress> m_address; // of the open connection
    Rfc2217Session m_session;
    LineSettings m_settings;
    LineInput m_input;
    QString m_notice;
    QString m_refusedBy; // warned once per server
    int m_portNumber = 1;
    bool m_requestToSend = false;
    bool m_telnet = false; // the connection speaks Telnet: escape and decode
};

} // namespace zun
