// What the live feeds cost the work loop: the time the receiver layer's
// signals take to return with every feed on (OSC to a port nobody listens
// on, MQTT to a broker that is down, the dashboard with one live client),
// and the process CPU used over passes of 64 receivers at the wire pace of
// 115200 baud, with and without the feeds.
#include "feeds/feedhub.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QTcpServer>
#include <QTimer>
#include <QUdpSocket>
#include <QWebSocket>

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <vector>

namespace {

using Source = zun::ReceiverEvents;

quint16 closedPort()
{
    QTcpServer server;
    server.listen(QHostAddress::LocalHost, 0);
    return server.serverPort();
}

double cpuSeconds()
{
    timespec ts{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &ts);
    return ts.tv_sec + ts.tv_nsec / 1e9;
}

struct Run
{
    double medianSignalMicros;
    double cpuPerPassMicros;
};

// Passes every passMs for seconds; returns the signal cost and CPU per pass.
Run run(Source &source, double passMs, double seconds)
{
    std::vector<zun::Receiver> receivers(64);
    for (int i = 0; i < 64; ++i) {
        receivers[i].address = i + 1;
        receivers[i].name = QStringLiteral("Mic %1").arg(i + 1);
        receivers[i].online = true;
        emit source.receiverFound(receivers[i]);
    }
    std::vector<double> signalMicros;
    int pass = 0;
    QTimer passTimer;
    passTimer.setTimerType(Qt::PreciseTimer);
    QObject::connect(&passTimer, &QTimer::timeout, [&] {
        QElapsedTimer t;
        t.start();
        for (zun::Receiver &r : receivers) {
            r.levels.rfA = (r.levels.rfA + 7 + pass) % 100;
            r.levels.audio = (r.levels.audio + 13) % 130;
            emit source.levelsRead(r);
        }
        emit source.passEnded(64);
        signalMicros.push_back(t.nsecsElapsed() / 1000.0);
        ++pass;
    });
    const double cpuBefore = cpuSeconds();
    passTimer.start(static_cast<int>(passMs));
    QEventLoop loop;
    QTimer::singleShot(static_cast<int>(seconds * 1000), &loop, &QEventLoop::quit);
    loop.exec();
    passTimer.stop();
    const double cpu = cpuSeconds() - cpuBefore;
    std::sort(signalMicros.begin(), signalMicros.end());
    return {signalMicros[signalMicros.size() / 2], cpu * 1e6 / pass};
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    const double wireMs = 64 * (5 + 12) * 10 * 1e3 / 115200;
    // Default: ten times faster than the wire allows; "bench_feeds 95" runs at the wire pace.
    const double passMs = argc > 1 ? QByteArray(argv[1]).toDouble() : 10;

    Source bare;
    const Run without = run(bare, passMs, 5);

    Source source;
    zun::FeedOptions options;
    options.oscTargets = {{QStringLiteral("127.0.0.1"), closedPort()},
                          {QStringLiteral("no-such-host.invalid"), 9000}};
    options.mqttHost = QStringLiteral("127.0.0.1");
    options.mqttPort = closedPort();
    options.webPort = closedPort();
    options.webToken = QStringLiteral("bench");
    zun::FeedHub *hub = zun::attachFeeds(options, &source, &source, QStringLiteral("COM1"));
    QWebSocket client;
    int messages = 0;
    QObject::connect(&client, &QWebSocket::textMessageReceived, [&] { ++messages; });
    client.open(QUrl(QStringLiteral("ws://127.0.0.1:%1/ws?token=bench").arg(options.webPort)));
    const Run with = run(source, passMs, 5);

    std::printf("status line: %s\n", qPrintable(hub->statusText()));
    std::printf("dashboard messages received by one client: %d\n", messages);
    std::printf("wire time of one pass over 64 receivers at 115200 baud: %.0f us\n", wireMs * 1000);
    std::printf("signals of one pass return after (median): %.1f us without feeds, %.1f us with all three\n",
                without.medianSignalMicros, with.medianSignalMicros);
    std::printf(
        "process CPU per pass: %.0f us without feeds, %.0f us with all three (+%.1f%% of the wire time)\n",
        without.cpuPerPassMicros, with.cpuPerPassMicros,
        100.0 * (with.cpuPerPassMicros - without.cpuPerPassMicros) / (wireMs * 1000));
    return 0;
}
