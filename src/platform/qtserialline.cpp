#include "platform/qtserialline.h"

#include "platform/portmap.h"

#include <QFile>
#include <QMetaObject>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <thread>
#include <utility>

#include <fcntl.h>
#include <linux/serial.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace zun {

namespace {
QString describe(int n, const QString &path)
{
    return QStringLiteral("COM%1 (%2)").arg(n).arg(path);
}

QString reasonFor(int error)
{
    switch (error) {
    case EACCES:
    case EPERM:
        return QStringLiteral("permission denied; the user must be in the dialout group");
    case EBUSY:
    case EWOULDBLOCK:
        return QStringLiteral("it is in use by another program");
    default:
        return QString::fromLocal8Bit(std::strerror(error));
    }
}

// Lets the driver hand over each byte at once instead of after its usual
// batching delay; drivers without the flag (pty, many UARTs) refuse, which
// only costs latency.
void requestLowLatency(int fd)
{
    serial_struct info{};
    if (::ioctl(fd, TIOCGSERIAL, &info) != 0 || (info.flags & ASYNC_LOW_LATENCY))
        return;
    info.flags |= ASYNC_LOW_LATENCY;
    ::ioctl(fd, TIOCSSERIAL, &info);
}

// Generous: ten bit times per byte at the line's speed plus a second.
int writeTimeoutMillis(qint64 bytes, qint32 baudRate)
{
    return 1000 + static_cast<int>(bytes * 10 * 1000 / qMax<qint32>(baudRate, 1));
}
} // namespace

QtSerialLine::QtSerialLine(const PortMap &ports) : m_ports(ports)
{
    QObject::connect(&m_port, &QSerialPort::errorOccurred, &m_port,
                     [this](QSerialPort::SerialPortError error) { onError(error); });
    // Qt reads into a buffer of its own whenever events run, waited for or
    // not; bounded, the rest stays with the driver, which bounds it too.
    m_port.setReadBufferSize(kLongestReply);
}

QtSerialLine::~QtSerialLine()
{
    close();
}

bool QtSerialLine::portExists(int n)
{
    const QString path = m_ports.devicePath(n);
    if (path.isEmpty())
        return false;
    if (m_port.isOpen() && m_openPath == path)
        return true; // our own open line: a probe would only find it locked

    const QByteArray native = QFile::encodeName(path);
    struct stat info
    {
    };
    if (::stat(native.constData(), &info) != 0) {
        if (m_ports.source(n) != PortMap::Source::Enumerated)
            qWarning("Zunoria: %s does not exist", qPrintable(describe(n, path)));
        return false;
    }
    const int fd = ::open(native.constData(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0) {
        qWarning("Zunoria: cannot open %s: %s", qPrintable(describe(n, path)), qPrintable(reasonFor(errno)));
        return false;
    }
    bool usable = true;
    if (!::isatty(fd)) {
        qWarning("Zunoria: %s is not a serial device", qPrintable(describe(n, path)));
        usable = false;
    } else if (::flock(fd, LOCK_EX | LOCK_NB) != 0) {
        qWarning("Zunoria: cannot open %s: %s", qPrintable(describe(n, path)), qPrintable(reasonFor(errno)));
        usable = false;
    }
    ::close(fd);
    return usable;
}

void QtSerialLine::selectPort(int n)
{
    closeIfLost();
    if (!m_port.isOpen())
        m_portNumber = n;
}

bool QtSerialLine::open()
{
    closeIfLost();
    if (m_port.isOpen())
        return true;
    const QString path = m_ports.devicePath(m_portNumber);
    if (path.isEmpty())
        return false;
    m_port.setPortName(path);
    configurePort();
    m_input.clear();
    if (!m_port.open(QIODevice::ReadWrite)) {
        qWarning("Zunoria: cannot open %s: %s", qPrintable(describe(m_portNumber, path)),
                 qPrintable(m_port.errorString()));
        m_port.clearError();
        return false;
    }
    m_openPath = path;
    requestLowLatency(static_cast<int>(m_port.handle()));
    if (m_requestToSend)
        setRequestToSend(true);
    // The kernel keeps whatever arrived before we opened; none of it answers us.
    m_port.clear(QSerialPort::AllDirections);
    m_port.clearError();
    return true;
}

void QtSerialLine::close()
{
    m_lost = false;
    m_input.clear();
    if (m_port.isOpen())
        m_port.close();
    m_port.clearError();
}

bool QtSerialLine::isOpen() const
{
    return m_port.isOpen() && !m_lost;
}

bool QtSerialLine::applySettings(const QString &settings)
{
    const auto parsed = parseLineSettings(settings);
    if (!parsed)
        return false;
    m_settings = *parsed;
    // While closed QSerialPort keeps the values and applies them at open.
    return configurePort();
}

bool QtSerialLine::configurePort()
{
    const bool ok = m_port.setBaudRate(m_settings.baudRate) && m_port.setParity(m_settings.parity) &&
                    m_port.setDataBits(m_settings.dataBits) && m_port.setStopBits(m_settings.stopBits) &&
                    m_port.setFlowControl(QSerialPort::NoFlowControl);
    m_port.clearError();
    return ok;
}

void QtSerialLine::setRequestToSend(bool on)
{
    m_requestToSend = on;
    if (!isOpen())
        return;
    // A pseudo-terminal has no modem lines and refuses with "Inappropriate
    // ioctl for device"; the line works without it, so carry on.
    m_port.setRequestToSend(on);
    m_port.clearError();
}

// The port runs raw and callers turn the bytes into text themselves, so there
// is no separate text mode to switch on.
void QtSerialLine::setTextMode() {}

bool QtSerialLine::write(const QByteArray &text)
{
    closeIfLost();
    if (!m_port.isOpen())
        return false;
    // Straight to the device while Qt has nothing queued: one system call
    // instead of Qt's queue, a poll and the write. A command is far smaller
    // than the driver's buffer, so the fallback below is for a full buffer.
    qsizetype done = 0;
    if (m_port.bytesToWrite() == 0) {
        const ssize_t n =
            ::write(static_cast<int>(m_port.handle()), text.constData(), static_cast<size_t>(text.size()));
        if (n < 0 && errno != EAGAIN && errno != EINTR)
            return false;
        done = std::max<qsizetype>(n, 0);
    }
    m_justDrained = false;
    if (done == text.size()) {
        m_justWritten = true;
        return true;
    }
    const qsizetype rest = text.size() - done;
    if (m_port.write(text.constData() + done, rest) != rest)
        return false;
    // QSerialPort only queues; the bytes must be on their way before the
    // caller starts timing the reply.
    while (m_port.bytesToWrite() > 0) {
        if (!m_port.waitForBytesWritten(writeTimeoutMillis(m_port.bytesToWrite(), m_settings.baudRate))) {
            closeIfLost();
            return false;
        }
    }
    return true;
}

int QtSerialLine::bytesWaiting()
{
    closeIfLost();
    if (!m_port.isOpen())
        return 0;
    if (!std::exchange(m_justWritten, false))
        pullInput();
    else
        m_justDrained = false;
    return static_cast<int>(m_input.size());
}

QByteArray QtSerialLine::readAll()
{
    closeIfLost();
    if (!m_port.isOpen())
        return {};
    if (!m_justDrained)
        pullInput();
    m_justWritten = m_justDrained = false;
    return m_input.take();
}

void QtSerialLine::discardInput()
{
    closeIfLost();
    m_input.clear();
    m_justWritten = m_justDrained = false;
    if (m_port.isOpen())
        m_port.clear(QSerialPort::Input);
}

void QtSerialLine::discardInputAndOutput()
{
    closeIfLost();
    m_input.clear();
    m_justWritten = m_justDrained = false;
    if (m_port.isOpen())
        m_port.clear(QSerialPort::AllDirections);
}

void QtSerialLine::discardOutput()
{
    closeIfLost();
    if (m_port.isOpen())
        m_port.clear(QSerialPort::Output);
}

void QtSerialLine::waitForInput(int millis)
{
    closeIfLost();
    m_justWritten = m_justDrained = false;
    if (millis <= 0)
        return;
    if (!m_port.isOpen()) {
        // Nothing can arrive; sleep rather than let the caller spin to its deadline.
        std::this_thread::sleep_for(std::chrono::milliseconds(millis));
        return;
    }
    // Once a reply has begun, the rest cannot come faster than the wire
    // carries it. Waiting on the device would wake us for every few bytes
    // the driver passes on; sleeping once through all but the last byte's
    // time, less a margin for timer slack, costs one wake-up and lets the
    // last byte end the wait as it arrives.
    const qint64 have = m_input.size() + m_port.bytesAvailable();
    const qint64 missing = m_expected - have;
    if (!m_sleptThisReply && have > 0 && missing > 1 && m_settings.baudRate > 0) {
        m_sleptThisReply = true;
        const qint64 restMicros = (missing - 1) * 10 * 1000000 / m_settings.baudRate - kWakeMarginMicros;
        if (restMicros > 0) {
            std::this_thread::sleep_for(
                std::chrono::microseconds(std::min<qint64>(restMicros, millis * 1000LL)));
            return;
        }
    }
    pollfd device{static_cast<int>(m_port.handle()), POLLIN, 0};
    if (::poll(&device, 1, millis) > 0 && (device.revents & (POLLHUP | POLLERR | POLLNVAL))) {
        // A hung-up device also reports itself readable, and reading it gives
        // 0 bytes for ever: mark it lost, or the caller waits in a spin.
        markLost(QStringLiteral("the device hung up"));
    }
    closeIfLost();
}

// Moves what Qt's notifier buffered, then what the kernel holds, into our
// own buffer, straight from the non-blocking device: input that arrived
// while nobody waited on the port (a sleep, a UI handler) is not left
// invisible, and no poll is needed to find it.
void QtSerialLine::pullInput()
{
    if (!m_port.isOpen() || m_lost)
        return;
    if (m_port.bytesAvailable() > 0)
        m_input.append(m_port.readAll());
    const int fd = static_cast<int>(m_port.handle());
    char chunk[256];
    m_justDrained = false;
    // Bounded, so that a line that never falls silent cannot hold us here.
    for (int round = 0; round < 64; ++round) {
        const ssize_t n = ::read(fd, chunk, sizeof chunk);
        if (n > 0) {
            m_input.append(chunk, n);
            if (static_cast<size_t>(n) < sizeof chunk) {
                m_justDrained = true;
                break;
            }
            continue;
        }
        // With VMIN and VTIME at 0, as Qt sets them, 0 means "nothing yet";
        // the loss of the device shows as an error or as a hang-up in the
        // next wait.
        if (n < 0 && errno != EAGAIN && errno != EINTR)
            markLost(QString::fromLocal8Bit(std::strerror(errno)));
        m_justDrained = n == 0 || errno == EAGAIN;
        break;
    }
    closeIfLost();
}

void QtSerialLine::onError(QSerialPort::SerialPortError error)
{
    if (error != QSerialPort::ReadError && error != QSerialPort::ResourceError)
        return;
    // The device is gone (pty closed, adapter pulled). An open port would
    // have its read notifier fire without end, but closing from inside
    // QSerialPort's own call chain is not safe: mark it and close at the next
    // safe point, which is the event loop or the next call on this line.
    markLost(m_port.errorString());
    QMetaObject::invokeMethod(
        &m_port, [this] { closeIfLost(); }, Qt::QueuedConnection);
}

void QtSerialLine::markLost(const QString &reason)
{
    if (!m_lost)
        qWarning("Zunoria: lost the serial device %s: %s", qPrintable(describe(m_portNumber, m_openPath)),
                 qPrintable(reason));
    m_lost = true;
}

void QtSerialLine::closeIfLost()
{
    if (m_lost)
        close();
}

} // namespace zun
