// The attacks the program must hold against, each against the real program
// (headless) with its figures: junk without end on the serial line; idle
// connections and a header flood of 1 GB without the token on the dashboard while
// 64 simulated receivers are polled; more idle connections than a 1,024
// file limit allows; and a 15 MB scan file made of one bad line. --quick
// shortens every window; --junk-seconds N sets the flood's, --junk-only
// leaves the dashboard out.
#include "benchprocess.h"
#include "coordination/scancsv.h"
#include "platform/regularfile.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QThread>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fcntl.h>
#include <memory>
#include <sys/resource.h>
#include <unistd.h>
#include <vector>

using namespace zunbench;

namespace {

const QString kToken = QStringLiteral("bench-attacks-0123456789");

quint16 freeLoopbackPort()
{
    QTcpServer probe;
    return probe.listen(QHostAddress::LocalHost, 0) ? probe.serverPort() : 0;
}

void pump(int millis)
{
    QDeadlineTimer deadline(millis);
    while (!deadline.hasExpired())
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
}

void row(const QString &attack, const QString &figure, const QString &goal)
{
    std::printf("| %s | %s | %s |\n", qPrintable(attack), qPrintable(figure), qPrintable(goal));
    std::fflush(stdout);
}

// A device that never ends a frame: junk at the pace of 115200 baud on a
// pseudo-terminal that is the program's only port, with nobody to find.
void junkFlood(const QString &bin, const QString &scratch, int seconds)
{
    const int master = ::posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK);
    if (master < 0 || ::grantpt(master) != 0 || ::unlockpt(master) != 0) {
        row("junk flood at 115200", "could not open a pseudo-terminal", "-");
        return;
    }
    const QString slave = QString::fromLocal8Bit(::ptsname(master));
    ProgramProcess program(bin, slave, 115200, scratch, 2, true);
    program.start();
    pump(3000);
    const qint64 startKiB = program.residentKiB();
    qint64 maxKiB = startKiB;
    std::uint64_t delivered = 0;
    QByteArray junk(1152, 'x');
    for (int i = 0; i < junk.size(); ++i)
        junk[i] = static_cast<char>(i % 7 == 0 ? 0x80 + i % 0x7f : 'A' + i % 26); // never a CR
    QElapsedTimer clock;
    clock.start();
    std::uint64_t due = 0;
    while (clock.elapsed() < seconds * 1000LL && program.running()) {
        // 11,520 characters a second, in tenths.
        if (static_cast<std::uint64_t>(clock.elapsed()) >= due) {
            const ssize_t n = ::write(master, junk.constData(), static_cast<size_t>(junk.size()));
            delivered += n > 0 ? static_cast<std::uint64_t>(n) : 0;
            char drain[4096];
            while (::read(master, drain, sizeof drain) > 0) { // what the program writes
            }
            due += 100;
        }
        QThread::msleep(5);
        if (clock.elapsed() % 1000 < 6)
            maxKiB = std::max(maxKiB, program.residentKiB());
    }
    const qint64 endKiB = program.residentKiB();
    const double perMinute = (endKiB - startKiB) / (seconds / 60.0);
    row(QStringLiteral("junk flood at 115200 for %1 s (%2 KB taken by the program)")
            .arg(seconds)
            .arg(delivered / 1000),
        QStringLiteral("resident %1 -> %2 KiB (max %3), %4 KiB/min, so %5 KiB in 10 min at that rate%6")
            .arg(startKiB)
            .arg(endKiB)
            .arg(maxKiB)
            .arg(perMinute, 0, 'f', 0)
            .arg(std::max(0.0, perMinute * 10), 0, 'f', 0)
            .arg(program.running() ? QString() : QStringLiteral(", ENDED")),
        "within 2 MB in 10 min");
    ::close(master);
}

// The level reads a second in the simulator's log over the window.
double pollRate(const SimProcess &sim, int millis)
{
    const qint64 from = sim.logSize();
    pump(millis);
    int reads = 0;
    for (const WireEvent &e : sim.readLog(from))
        reads += !e.reply && e.text.startsWith('%') && e.text.endsWith('N') ? 1 : 0;
    return reads / (millis / 1000.0);
}

// A legitimate page request, answered or not within five seconds.
bool served(quint16 port)
{
    QTcpSocket socket;
    socket.connectToHost(QHostAddress::LocalHost, port);
    if (!socket.waitForConnected(2000))
        return false;
    socket.write("GET /?token=" + kToken.toLatin1() + " HTTP/1.1\r\nHost: 127.0.0.1\r\n\r\n");
    QByteArray answer;
    QDeadlineTimer deadline(5000);
    while (!answer.contains("\r\n\r\n") && !deadline.hasExpired() && socket.waitForReadyRead(200))
        answer += socket.readAll();
    return answer.startsWith("HTTP/1.1 200");
}

// Holds count connections that say nothing, from one client address (the
// dashboard listens on loopback: every local process is 127.0.0.1, so the
// attacker is 127.0.0.2 here to tell the legitimate client apart); each
// top-up opens a new one for each the server closed.
class IdleCrowd
{
public:
    IdleCrowd(quint16 port, int count) : m_port(port), m_count(count) {}
    void topUp()
    {
        m_sockets.erase(std::remove_if(m_sockets.begin(), m_sockets.end(),
                                       [](const std::unique_ptr<QTcpSocket> &s) {
                                           return s->state() == QAbstractSocket::UnconnectedState;
                                       }),
                        m_sockets.end());
        while (static_cast<int>(m_sockets.size()) < m_count) {
            auto socket = std::make_unique<QTcpSocket>();
            socket->bind(
                QHostAddress(QStringLiteral("127.0.%1.%2").arg(1 + m_opened / 200).arg(2 + m_opened % 200)));
            socket->connectToHost(QHostAddress::LocalHost, m_port);
            ++m_opened;
            m_sockets.push_back(std::move(socket));
        }
    }
    int open() const
    {
        return static_cast<int>(std::count_if(m_sockets.begin(), m_sockets.end(), [](const auto &s) {
            return s->state() == QAbstractSocket::ConnectedState;
        }));
    }
    int opened() const { return m_opened; }

private:
    quint16 m_port;
    int m_count;
    int m_opened = 0;
    std::vector<std::unique_ptr<QTcpSocket>> m_sockets;
};

// Connections that send a request line without the token and then header
// bytes as fast as the socket takes them; reconnects when closed. What the
// kernel took from them is counted, not what was queued in the sockets.
class HeaderFlood
{
public:
    HeaderFlood(quint16 port, int count) : m_port(port), m_count(count) {}
    void step()
    {
        static const QByteArray filler(64 * 1024, 'h');
        while (static_cast<int>(m_sockets.size()) < m_count) {
            auto socket = std::make_unique<QTcpSocket>();
            QObject::connect(socket.get(), &QTcpSocket::bytesWritten, [this](qint64 n) { m_sent += n; });
            socket->connectToHost(QHostAddress::LocalHost, m_port);
            ++m_connections;
            m_sockets.push_back(std::move(socket));
            m_fresh.push_back(true);
        }
        for (std::size_t i = 0; i < m_sockets.size(); ++i) {
            QTcpSocket &s = *m_sockets[i];
            if (s.state() == QAbstractSocket::UnconnectedState) {
                s.abort();
                s.connectToHost(QHostAddress::LocalHost, m_port);
                ++m_connections;
                m_fresh[i] = true;
                continue;
            }
            if (s.state() != QAbstractSocket::ConnectedState || s.bytesToWrite() > filler.size())
                continue;
            if (m_fresh[i]) {
                s.write("GET / HTTP/1.1\r\nX-Flood: ");
                m_fresh[i] = false;
            }
            s.write(filler);
            s.readAll();
        }
    }
    qint64 sent() const { return m_sent; }
    int connections() const { return m_connections; }

private:
    quint16 m_port;
    int m_count;
    qint64 m_sent = 0;
    int m_connections = 0;
    std::vector<std::unique_ptr<QTcpSocket>> m_sockets;
    std::vector<bool> m_fresh;
};

// seconds is the shortest attack; a flood goes on until it has sent
// floodBytes, for ten minutes at most.
void dashboardAttacks(const QString &bin, const QString &scratch, int seconds, qint64 floodBytes)
{
    SimOptions simOptions;
    SimProcess sim(bin, simOptions, scratch);
    if (!sim.start()) {
        row("dashboard attacks", "the simulator did not start: " + sim.lastError(), "-");
        return;
    }
    const quint16 port = freeLoopbackPort();
    ProgramProcess program(bin, sim.ptyPath(), 115200, scratch, 2, true);
    program.addArguments({"--web", QString::number(port), "--web-token", kToken});
    program.setFileLimit(1024);
    program.start();
    if (!sim.waitForPolling(30000)) {
        row("dashboard attacks", "the program did not poll", "-");
        return;
    }
    pump(2000);
    const double quietRate = pollRate(sim, 5000);
    const qint64 quietKiB = program.residentKiB();

    const auto attack = [&](const QString &name, int idle, int flooders) {
        IdleCrowd crowd(port, idle);
        HeaderFlood flood(port, flooders);
        QElapsedTimer clock;
        clock.start();
        qint64 maxKiB = program.residentKiB();
        int asked = 0, answered = 0, held = 0;
        const qint64 logFrom = sim.logSize();
        qint64 nextTopUp = 0;
        const auto going = [&] {
            const bool flooding = flooders > 0 && flood.sent() < floodBytes;
            return (clock.elapsed() < seconds * 1000LL || (flooding && clock.elapsed() < 600'000)) &&
                   program.running();
        };
        while (going()) {
            if (clock.elapsed() >= nextTopUp) { // as often as the server times idle ones out
                crowd.topUp();
                nextTopUp += 10000;
            }
            for (int i = 0; i < 20; ++i) {
                flood.step();
                pump(5);
            }
            held = std::max(held, crowd.open());
            maxKiB = std::max(maxKiB, program.residentKiB());
            if (clock.elapsed() / 1000 > asked) {
                ++asked;
                answered += served(port) ? 1 : 0;
            }
        }
        int reads = 0;
        for (const WireEvent &e : sim.readLog(logFrom))
            reads += !e.reply && e.text.startsWith('%') && e.text.endsWith('N') ? 1 : 0;
        const double rate = reads / (clock.elapsed() / 1000.0);
        row(name,
            QStringLiteral("resident %1 -> max %2 KiB; polling %3 of %4 reads/s (%5 %); a legitimate page "
                           "request served %6 of %7 times; %8 idle connections open at most, %9 opened; "
                           "%10 MB of headers sent on %11 connections in %12 s%13")
                .arg(quietKiB)
                .arg(maxKiB)
                .arg(rate, 0, 'f', 0)
                .arg(quietRate, 0, 'f', 0)
                .arg(rate / quietRate * 100, 0, 'f', 1)
                .arg(answered)
                .arg(asked)
                .arg(held)
                .arg(crowd.opened())
                .arg(flood.sent() / 1e6, 0, 'f', 0)
                .arg(flood.connections())
                .arg(clock.elapsed() / 1000)
                .arg(program.running() ? QString() : QStringLiteral("; the program ENDED")),
            "memory +20 MB at most, polling >= 95 %, served, no abort");
    };
    attack(QStringLiteral("1,000 idle connections and a header flood without token (4 at a time) until "
                          "%1 MB are sent")
               .arg(floodBytes / 1'000'000),
           1000, 4);
    pump(11000); // the idle ones time out
    attack(QStringLiteral("1,100 idle connections, open-file limit 1,024, %1 s").arg(seconds), 1100, 0);
}

// The import as it runs in the program after the file dialog: a regular
// file, at most 16 MB, read line by line up to the refused line. Beside it
// the steps of the import before it read the file whole: read, decode,
// parse, each timed on its own, so that the time is seen where it goes.
void badScanFile(const QString &scratch)
{
    const QString path = scratch + QStringLiteral("/bad.csv");
    QFile out(path);
    if (!out.open(QIODevice::WriteOnly))
        return;
    out.write("800.000," + QByteArray(15'000'000, '7') + "\n");
    out.close();
    constexpr qint64 kLargest = 16 * 1024 * 1024;
    const auto cpuNow = [] {
        timespec t{};
        ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &t);
        return t.tv_sec * 1e3 + t.tv_nsec / 1e6;
    };
    const auto median = [](std::vector<double> v) {
        std::sort(v.begin(), v.end());
        return v[v.size() / 2];
    };
    std::vector<double> wall, cpu, oldWall, oldCpu, readMs, decodeMs, parseMs;
    QString error, oldError;
    for (int i = 0; i < 5; ++i) {
        QElapsedTimer t;
        t.start();
        const double cpuStart = cpuNow();
        QFile in;
        if (!zun::openRegularFile(in, path).isEmpty())
            return;
        error = zun::readScanCsv(in, 470, 870, kLargest).error;
        wall.push_back(t.nsecsElapsed() / 1e6);
        cpu.push_back(cpuNow() - cpuStart);

        QFile whole;
        t.restart();
        const double oldCpuStart = cpuNow();
        if (!zun::openRegularFile(whole, path).isEmpty())
            return;
        const QByteArray bytes = whole.read(kLargest);
        readMs.push_back(t.nsecsElapsed() / 1e6);
        const QString text = QString::fromUtf8(bytes);
        decodeMs.push_back(t.nsecsElapsed() / 1e6 - readMs.back());
        oldError = zun::parseScanCsv(text, 470, 870).error;
        oldWall.push_back(t.nsecsElapsed() / 1e6);
        oldCpu.push_back(cpuNow() - oldCpuStart);
        parseMs.push_back(oldWall.back() - readMs.back() - decodeMs.back());
    }
    row("a 15 MB scan file of one bad line",
        QStringLiteral("refused in %1 ms (median of 5, max %2 ms; %3 ms of CPU), a message of %4 "
                       "characters, the same as before: %5. Read whole first (before): %6 ms (%7 ms of "
                       "CPU) = reading %8 ms + decoding %9 ms + parsing %10 ms")
            .arg(median(wall), 0, 'f', 2)
            .arg(*std::max_element(wall.begin(), wall.end()), 0, 'f', 2)
            .arg(median(cpu), 0, 'f', 2)
            .arg(error.size())
            .arg(error == oldError ? QStringLiteral("yes") : QStringLiteral("NO"))
            .arg(median(oldWall), 0, 'f', 0)
            .arg(median(oldCpu), 0, 'f', 0)
            .arg(median(readMs), 0, 'f', 0)
            .arg(median(decodeMs), 0, 'f', 0)
            .arg(median(parseMs), 0, 'f', 0),
        "under 100 ms");
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    const bool quick = app.arguments().contains(QStringLiteral("--quick"));
    const QString bin = QFileInfo(QCoreApplication::applicationDirPath() + "/../src").canonicalFilePath();
    rlimit files{};
    ::getrlimit(RLIMIT_NOFILE, &files);
    files.rlim_cur = files.rlim_max; // this side holds more connections than the program may
    ::setrlimit(RLIMIT_NOFILE, &files);
    QTemporaryDir scratch;
    std::printf("| attack | measured | goal |\n|---|---|---|\n");
    badScanFile(scratch.path());
    const qsizetype junkAt = app.arguments().indexOf(QStringLiteral("--junk-seconds"));
    const int junkSeconds = junkAt > 0 ? app.arguments().value(junkAt + 1).toInt() : quick ? 20 : 120;
    junkFlood(bin, scratch.path(), junkSeconds);
    if (!app.arguments().contains(QStringLiteral("--junk-only")))
        dashboardAttacks(bin, scratch.path(), quick ? 15 : 60, quick ? 100'000'000 : 1'000'000'000);
    return 0;
}
