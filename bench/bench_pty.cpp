// What the tests no longer bound because it is the machine's timing, not the
// program's logic: how soon a transaction on a real pseudo-terminal ends once
// its reply is whole, how much CPU the wait takes when the device goes in the
// middle of it, and how often the frame pacer lets a window paint in real time.
#include "link/transaction.h"
#include "platform/clock.h"
#include "platform/portmap.h"
#include "platform/qtserialline.h"
#include "platform/settingsstore.h"
#include "windowing/framepacer.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QWidget>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

using namespace zun;

namespace {

double cpuSeconds()
{
    timespec ts{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &ts);
    return static_cast<double>(ts.tv_sec) + static_cast<double>(ts.tv_nsec) / 1e9;
}

// COM3 on the slave of a fresh pseudo-terminal; the bench plays the receiver on the master.
struct Pty
{
    Pty()
    {
        master = ::posix_openpt(O_RDWR | O_NOCTTY);
        if (master < 0 || ::grantpt(master) != 0 || ::unlockpt(master) != 0)
            return;
        (void)map.addOverride("COM3=" + QString::fromLocal8Bit(::ptsname(master)));
        line.selectPort(3);
        ok = line.open();
    }
    ~Pty()
    {
        if (master >= 0)
            ::close(master);
    }
    // Waits for a command, then answers in chunks gapMillis apart; closes the master instead when hangUp.
    std::thread answer(QList<QByteArray> chunks, int gapMillis, bool hangUp = false)
    {
        return std::thread([this, chunks, gapMillis, hangUp] {
            pollfd pfd{master, POLLIN, 0};
            char buf[64];
            if (::poll(&pfd, 1, 1000) <= 0 || ::read(master, buf, sizeof buf) <= 0)
                return;
            if (hangUp) {
                std::this_thread::sleep_for(std::chrono::milliseconds(gapMillis));
                ::close(std::exchange(master, -1));
                return;
            }
            for (const QByteArray &chunk : chunks) {
                if (&chunk != &chunks.first())
                    std::this_thread::sleep_for(std::chrono::milliseconds(gapMillis));
                (void)!::write(master, chunk.data(), static_cast<size_t>(chunk.size()));
            }
        });
    }

    int master = -1;
    MemorySettingsStore store;
    PortMap map{store, [] { return QStringList(); }, QString()};
    QtSerialLine line{map};
    SystemClock clock;
    int retry = 2;
    Link link{line, clock, retry};
    bool ok = false;
};

double median(std::vector<double> v)
{
    std::sort(v.begin(), v.end());
    return v.empty() ? -1 : v[v.size() / 2];
}

void exchangeRow(const char *name, const QList<QByteArray> &chunks, int length, int timeout, int gap,
                 const char *expected)
{
    std::vector<double> millis;
    for (int run = 0; run < 7; ++run) {
        Pty pty;
        if (!pty.ok)
            break;
        pty.retry = 0;
        std::thread receiver = pty.answer(chunks, gap);
        QString reply;
        QElapsedTimer wall;
        wall.start();
        // Only the time counts here; the reply is whatever the device gave.
        (void)pty.link.sendCommand("%01N\r", length, reply, timeout);
        millis.push_back(static_cast<double>(wall.nsecsElapsed()) / 1e6);
        receiver.join();
    }
    std::printf("| %s | %.1f ms | %s |\n", name, median(millis), expected);
}

} // namespace

int main(int argc, char *argv[])
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);

    std::printf("| exchange on a pseudo-terminal (median of 7) | took | the rule |\n|---|---|---|\n");
    exchangeRow("reply in two pieces 80 ms apart, time-out 250", {"$01N8", "0A0B0C9"}, 12, 250, 80,
                "ends with the reply: 80 ms");
    exchangeRow("no reply length, delay 100", {"$01"}, 0, 100, 0, "the whole delay: 100 ms");
    exchangeRow("short reply, time-out 250", {"$01N8"}, 12, 250, 0, "the whole time-out: 250 ms");

    {
        Pty pty;
        qInstallMessageHandler([](QtMsgType, const QMessageLogContext &, const QString &) {});
        std::thread unplug = pty.answer({}, 30, true);
        QString reply;
        QElapsedTimer wall;
        wall.start();
        const double cpuBefore = cpuSeconds();
        (void)pty.link.sendCommand("%01N\r", 12, reply, 250);
        const double cpu = cpuSeconds() - cpuBefore;
        const double elapsed = static_cast<double>(wall.nsecsElapsed()) / 1e6;
        unplug.join();
        qInstallMessageHandler(nullptr);
        std::printf(
            "| device gone 30 ms into a time-out of 250, 2 retries | %.1f ms, %.1f %% CPU | one attempt, "
            "one time-out, < 25 %% CPU |\n",
            elapsed, elapsed > 0 ? cpu * 1e5 / elapsed : 0.0);
    }

    QWidget window;
    QWidget meter(&window);
    meter.resize(20, 100);
    auto *pacer = new FramePacer(&window);
    window.show();
    for (int i = 0; i < 20; ++i)
        QCoreApplication::processEvents();
    const int before = pacer->framesPainted();
    QElapsedTimer wall;
    wall.start();
    while (wall.elapsed() < 300) {
        meter.update();
        QCoreApplication::processEvents();
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    std::printf("| a change every ms for %lld ms of real time | %d paints | at most one a frame: %d |\n",
                static_cast<long long>(wall.elapsed()), pacer->framesPainted() - before,
                static_cast<int>(wall.elapsed() / 16) + 1);
    return 0;
}
