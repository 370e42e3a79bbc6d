#include "sim/simptyhost.h"

#include "platform/clock.h"
#include "sim/simconsole.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/signalfd.h>
#include <termios.h>
#include <unistd.h>

namespace zun {

namespace {
struct Speed
{
    speed_t code;
    int baud;
};
constexpr Speed kSpeeds[] = {{B1200, 1200},     {B2400, 2400},     {B4800, 4800},    {B9600, 9600},
                             {B19200, 19200},   {B38400, 38400},   {B57600, 57600},  {B115200, 115200},
                             {B230400, 230400}, {B460800, 460800}, {B921600, 921600}};

bool makeRaw(int fd, int baud)
{
    termios t{};
    if (tcgetattr(fd, &t) != 0)
        return false;
    cfmakeraw(&t);
    for (const Speed &s : kSpeeds)
        if (s.baud == baud)
            cfsetspeed(&t, s.code);
    return tcsetattr(fd, TCSANOW, &t) == 0;
}
} // namespace

SimPtyHost::SimPtyHost(SimBus &bus, Clock &clock, int baud) : m_bus(bus), m_clock(clock), m_baud(baud)
{
    m_bus.setFrameObserver(
        [this](std::uint64_t micros, const QByteArray &frame, int) { log(micros, "", frame); });
}

SimPtyHost::~SimPtyHost()
{
    m_bus.setFrameObserver({});
    m_bus.setReplyObserver({});
    if (m_log)
        std::fclose(m_log);
    if (m_slave >= 0)
        ::close(m_slave);
    if (m_master >= 0)
        ::close(m_master);
}

bool SimPtyHost::open(QString &error)
{
    m_master = posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK);
    if (m_master < 0 || grantpt(m_master) != 0 || unlockpt(m_master) != 0) {
        error = QStringLiteral("cannot create a pseudo-terminal: %1")
                    .arg(QString::fromLocal8Bit(strerror(errno)));
        return false;
    }
    char name[128] = {};
    if (ptsname_r(m_master, name, sizeof name) != 0) {
        error = QStringLiteral("cannot name the pseudo-terminal");
        return false;
    }
    m_slavePath = name;
    // Holding the slave open keeps the master from reporting hang-ups (and
    // ppoll from spinning) while no program has the port open, and lets us
    // read the speed the program sets.
    m_slave = ::open(name, O_RDWR | O_NOCTTY);
    if (m_slave < 0 || !makeRaw(m_master, m_baud) || !makeRaw(m_slave, m_baud)) {
        error = QStringLiteral("cannot set up %1").arg(QString::fromLocal8Bit(name));
        return false;
    }
    return true;
}

bool SimPtyHost::setLogFile(const QString &path, bool withReplies)
{
    m_log = std::fopen(path.toLocal8Bit().constData(), "w");
    if (m_log && withReplies)
        m_bus.setReplyObserver(
            [this](std::uint64_t micros, const QByteArray &reply, int) { log(micros, "  reply ", reply); });
    return m_log != nullptr;
}

void SimPtyHost::log(std::uint64_t micros, const char *mark, const QByteArray &frame)
{
    if (!m_log)
        return;
    std::fprintf(m_log, "%12.6f %s%s\n", micros / 1e6, mark, simPrintable(frame).constData());
    std::fflush(m_log);
}

int SimPtyHost::lineBaud() const
{
    termios t{};
    if (tcgetattr(m_slave, &t) == 0)
        for (const Speed &s : kSpeeds)
            if (s.code == cfgetospeed(&t))
                return s.baud;
    return m_baud;
}

void SimPtyHost::readMaster()
{
    char buffer[512];
    const ssize_t n = ::read(m_master, buffer, sizeof buffer);
    if (n <= 0)
        return;
    const std::uint64_t now = m_clock.nowMicros();
    const auto bytes = m_bus.hostTransmit(QByteArray(buffer, n), now, lineBaud());
    std::uint64_t last = 0;
    for (const SimTimedByte &b : bytes)
        last = std::max(last, b.micros);
    for (const SimTimedByte &b : bytes)
        m_outgoing.emplace(m_wholeReplies ? last : b.micros, b.byte);
}

SimPtyHost::Console SimPtyHost::readConsole()
{
    char buffer[256];
    const ssize_t n = ::read(STDIN_FILENO, buffer, sizeof buffer);
    if (n < 0 && errno == EINTR)
        return Console::Open;
    if (n <= 0)
        return Console::Closed;
    m_console.append(buffer, n);
    qsizetype end;
    while ((end = m_console.indexOf('\n')) >= 0) {
        bool quit = false;
        const QByteArray answer = simConsoleCommand(m_bus, m_console.left(end), quit);
        m_console.remove(0, end + 1);
        if (!answer.isEmpty())
            std::fprintf(stderr, "%s\n", answer.constData());
        if (quit)
            return Console::Quit;
    }
    return Console::Open;
}

void SimPtyHost::sendDue()
{
    const std::uint64_t now = m_clock.nowMicros();
    QByteArray due;
    auto it = m_outgoing.begin();
    for (; it != m_outgoing.end() && it->first <= now; ++it)
        due.append(it->second);
    m_outgoing.erase(m_outgoing.begin(), it);
    // A full slave queue means nobody reads: the bytes are lost, as on a wire.
    if (!due.isEmpty() && ::write(m_master, due.constData(), static_cast<size_t>(due.size())) < 0)
        return;
}

int SimPtyHost::run()
{
    // A wire has no timer slack: with the kernel's default 50 us every byte
    // would leave late, and the emulated line would be slower than a real one.
    ::prctl(PR_SET_TIMERSLACK, 1000UL, 0UL, 0UL, 0UL);
    sigset_t stops;
    sigemptyset(&stops);
    sigaddset(&stops, SIGINT);
    sigaddset(&stops, SIGTERM);
    sigprocmask(SIG_BLOCK, &stops, nullptr);
    const int signalFd = signalfd(-1, &stops, SFD_CLOEXEC);
    bool consoleOpen = true;

    for (;;) {
        pollfd fds[3] = {
            {m_master, POLLIN, 0}, {signalFd, POLLIN, 0}, {consoleOpen ? STDIN_FILENO : -1, POLLIN, 0}};
        timespec wait{};
        timespec *timeout = nullptr;
        if (!m_outgoing.empty()) {
            const std::uint64_t now = m_clock.nowMicros();
            const std::uint64_t due = m_outgoing.begin()->first;
            const std::uint64_t left = due > now ? due - now : 0;
            wait.tv_sec = static_cast<time_t>(left / 1000000u);
            wait.tv_nsec = static_cast<long>(left % 1000000u) * 1000;
            timeout = &wait;
        }
        if (ppoll(fds, 3, timeout, nullptr) < 0 && errno != EINTR)
            break;
        if (fds[1].revents & POLLIN)
            break;
        if (fds[0].revents & POLLIN)
            readMaster();
        else if (fds[0].revents & (POLLHUP | POLLERR))
            m_clock.sleepMicros(50000); // nobody on the slave side; do not spin
        if (fds[2].revents & (POLLIN | POLLHUP)) {
            const Console console = readConsole();
            if (console == Console::Quit)
                break;
            // The end of the console input does not end the service.
            consoleOpen = console == Console::Open;
        }
        sendDue();
    }
    if (signalFd >= 0)
        ::close(signalFd);
    return 0;
}

} // namespace zun
