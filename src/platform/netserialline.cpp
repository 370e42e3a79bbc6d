#include "platform/netserialline.h"

#include "platform/portmap.h"

#include <QElapsedTimer>

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

#include <chrono>
#include <thread>
#include <utility>

namespace zun {

namespace {
QString describe(int n, const QString &target)
{
    return QStringLiteral("COM%1 (%2)").arg(n).arg(target);
}

// A server buffers little; a second beyond the bytes' own time on the far
// wire is plenty before the connection counts as stuck.
int writeTimeoutMillis(qint64 bytes, qint32 baudRate)
{
    return 1000 + static_cast<int>(bytes * 10 * 1000 / qMax<qint32>(baudRate, 1));
}
} // namespace

NetSerialLine::NetSerialLine(const PortMap &ports, int connectMillis)
    : m_ports(ports), m_connectMillis(connectMillis)
{
    // Only the far side ends a connection without close(): the server went
    // away or the network between broke, as when an adapter is pulled.
    QObject::connect(&m_socket, &QTcpSocket::disconnected, &m_socket, [this] {
        if (m_address)
            qWarning("Zunoria: lost the connection to %s",
                     qPrintable(describe(m_portNumber, m_ports.mapping(m_portNumber))));
    });
}

NetSerialLine::~NetSerialLine()
{
    close();
}

bool NetSerialLine::portExists(int n)
{
    if (m_ports.networkAddress(n))
        return true;
    const QString target = m_ports.mapping(n);
    if (looksLikeNetAddress(target))
        qWarning("Zunoria: %s is not a network address of the form tcp://HOST:PORT or rfc2217://HOST:PORT",
                 qPrintable(describe(n, target)));
    return false;
}

void NetSerialLine::selectPort(int n)
{
    if (!isOpen())
        m_portNumber = n;
}

bool NetSerialLine::open()
{
    if (isOpen())
        return true;
    close();
    const auto address = m_ports.networkAddress(m_portNumber);
    if (!address)
        return false;
    const QString target = m_ports.mapping(m_portNumber);
    m_socket.connectToHost(address->host, address->port);
    if (!m_socket.waitForConnected(m_connectMillis)) {
        qWarning("Zunoria: cannot connect to %s: %s", qPrintable(describe(m_portNumber, target)),
                 qPrintable(m_socket.errorString()));
        m_socket.abort();
        return false;
    }
    // Every frame is a few bytes waiting for an answer: send each at once.
    m_socket.setSocketOption(QAbstractSocket::LowDelayOption, 1);
    m_socket.setSocketOption(QAbstractSocket::KeepAliveOption, 1);
    m_address = address;
    m_session = Rfc2217Session();
    m_telnet = address->kind == NetAddress::Kind::Rfc2217;
    if (m_telnet) {
        send(m_session.start(m_settings, m_requestToSend));
        settle(0);
        if (m_session.comPort() != Rfc2217Session::ComPort::Accepted) {
            m_session.giveUp();
            // A server that never spoke Telnet is a raw one given the wrong scheme.
            m_telnet = m_session.heardTelnet();
            if (m_refusedBy != target) {
                m_refusedBy = target;
                warn(QStringLiteral("%1 does not set the serial port's speed (no RFC 2217); the line runs at "
                                    "the server's own speed")
                         .arg(target));
            }
        }
    }
    // Whatever the far side sent before we were ready answers nothing of ours.
    m_input.clear();
    return isOpen();
}

void NetSerialLine::settle(int baudReportsBefore)
{
    QElapsedTimer elapsed;
    elapsed.start();
    const auto done = [&] {
        const auto state = m_session.comPort();
        if (state == Rfc2217Session::ComPort::Refused)
            return true;
        return state == Rfc2217Session::ComPort::Accepted && m_session.baudRateReports() > baudReportsBefore;
    };
    while (isOpen() && !done() && elapsed.elapsed() < m_connectMillis) {
        m_socket.waitForReadyRead(static_cast<int>(m_connectMillis - elapsed.elapsed()));
        pull();
    }
}

void NetSerialLine::close()
{
    m_address.reset();
    m_socket.abort();
    m_input.clear();
    m_telnet = false;
}

bool NetSerialLine::isOpen() const
{
    return m_socket.state() == QAbstractSocket::ConnectedState;
}

bool NetSerialLine::applySettings(const QString &settings)
{
    const auto parsed = parseLineSettings(settings);
    if (!parsed)
        return false;
    m_settings = *parsed;
    const int before = m_session.baudRateReports();
    const QByteArray commands = m_session.configure(m_settings, m_requestToSend);
    if (isOpen() && !commands.isEmpty()) {
        if (!send(commands))
            return false;
        settle(before);
    }
    return true;
}

void NetSerialLine::setRequestToSend(bool on)
{
    m_requestToSend = on;
    const QByteArray commands = m_session.configure(m_settings, m_requestToSend);
    if (isOpen() && !commands.isEmpty())
        send(commands);
}

bool NetSerialLine::write(const QByteArray &text)
{
    return send(m_telnet ? Rfc2217Session::escape(text) : text);
}

bool NetSerialLine::send(const QByteArray &bytes)
{
    if (!isOpen())
        return false;
    if (m_socket.write(bytes) != bytes.size())
        return false;
    while (m_socket.bytesToWrite() > 0) {
        if (!m_socket.waitForBytesWritten(writeTimeoutMillis(m_socket.bytesToWrite(), m_settings.baudRate))) {
            m_socket.abort(); // a stuck connection is a lost one
            return false;
        }
    }
    return true;
}

void NetSerialLine::absorb(const QByteArray &bytes)
{
    if (bytes.isEmpty())
        return;
    if (!m_telnet) {
        m_input.append(bytes);
        return;
    }
    const auto result = m_session.receive(bytes);
    m_input.append(result.data);
    if (!result.reply.isEmpty())
        send(result.reply);
}

// Takes what the socket and the kernel hold; input that arrived while nobody
// waited (a sleep, a UI handler) must count as waiting too.
void NetSerialLine::pull()
{
    ackAtOnce();
    absorb(m_socket.readAll());
    for (int round = 0; round < 64 && isOpen() && m_socket.waitForReadyRead(0); ++round)
        absorb(m_socket.readAll());
    absorb(m_socket.readAll()); // what came with the end of the connection
}

// A server that sends a reply in pieces without TCP_NODELAY holds each piece
// until the one before is acknowledged, and Linux delays acknowledgements by
// up to 40 ms. Quick acknowledgement is not sticky; it is asked for again on
// every read.
void NetSerialLine::ackAtOnce()
{
    const int one = 1;
    if (isOpen())
        ::setsockopt(static_cast<int>(m_socket.socketDescriptor()), IPPROTO_TCP, TCP_QUICKACK, &one,
                     sizeof one);
}

int NetSerialLine::bytesWaiting()
{
    pull();
    return static_cast<int>(m_input.size());
}

QByteArray NetSerialLine::readAll()
{
    pull();
    return m_input.take();
}

void NetSerialLine::discardInput()
{
    pull();
    m_input.clear();
}

void NetSerialLine::waitForInput(int millis)
{
    if (millis <= 0)
        return;
    if (!isOpen()) {
        // Nothing can arrive; sleep rather than let the caller spin to its deadline.
        std::this_thread::sleep_for(std::chrono::milliseconds(millis));
        return;
    }
    if (m_socket.bytesAvailable() == 0)
        m_socket.waitForReadyRead(millis);
}

QString NetSerialLine::takeNotice()
{
    return std::exchange(m_notice, {});
}

void NetSerialLine::warn(const QString &text)
{
    qWarning("Zunoria: %s", qPrintable(text));
    m_notice = text;
}

} // namespace zun
