// A venue on one broker: N headless programs, each on a simulator with 64
// receivers, and one --fleet program. Prints the broker's message rate, the
// fleet's CPU, the lines' polling with and without 50 browsers on the fleet
// page, and how long a receiver the line declares offline takes to show in
// /api/state and on the fleet page's WebSocket while those browsers watch.
#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QHash>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QWebSocket>

#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <memory>
#include <vector>

namespace {

const QByteArray kToken = "bench-fleet-token-0123456789";

quint16 freePort()
{
    QTcpServer server;
    server.listen(QHostAddress::LocalHost, 0);
    return server.serverPort();
}

void pump(int ms)
{
    QDeadlineTimer deadline(ms);
    while (!deadline.hasExpired())
        QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
}

template <class F> bool waitFor(F done, int ms)
{
    for (QDeadlineTimer deadline(ms); !deadline.hasExpired(); pump(10))
        if (done())
            return true;
    return done();
}

bool listening(quint16 port)
{
    QTcpSocket socket;
    socket.connectToHost(QHostAddress::LocalHost, port);
    return socket.waitForConnected(200);
}

// One blocking request; the body of the answer, read up to its length
// (the server keeps the connection open).
QByteArray httpGet(quint16 port, const QByteArray &target)
{
    QTcpSocket socket;
    socket.connectToHost(QHostAddress::LocalHost, port);
    if (!socket.waitForConnected(1000))
        return {};
    socket.write("GET " + target + " HTTP/1.1\r\nHost: localhost\r\n\r\n");
    QByteArray answer;
    while (socket.waitForReadyRead(2000)) {
        answer += socket.readAll();
        const qsizetype end = answer.indexOf("\r\n\r\n");
        if (end < 0)
            continue;
        const qsizetype at = answer.toLower().indexOf("content-length:");
        if (at >= 0 && at < end) {
            const qsizetype length =
                answer.mid(at + 15, answer.indexOf("\r\n", at) - at - 15).trimmed().toLongLong();
            if (answer.size() - end - 4 >= length)
                return answer.mid(end + 4, length);
        }
    }
    return answer.mid(answer.indexOf("\r\n\r\n") + 4);
}

double cpuSecondsOf(qint64 pid)
{
    QFile stat(QStringLiteral("/proc/%1/stat").arg(pid));
    if (!stat.open(QIODevice::ReadOnly))
        return 0;
    const QByteArray text = stat.readAll();
    const QList<QByteArray> fields = text.mid(text.lastIndexOf(')') + 2).split(' ');
    return (fields.value(11).toDouble() + fields.value(12).toDouble()) / double(sysconf(_SC_CLK_TCK));
}

// Level reads the simulators have heard so far, on every line together.
qint64 levelReads(const std::vector<QString> &logs)
{
    qint64 reads = 0;
    for (const QString &path : logs) {
        QFile log(path);
        if (log.open(QIODevice::ReadOnly))
            for (const QByteArray &frame : log.readAll().split('\n'))
                reads += frame.endsWith('N') && frame.contains(" %");
    }
    return reads;
}

double percentile(std::vector<double> v, double p)
{
    if (v.empty())
        return -1;
    std::sort(v.begin(), v.end());
    const size_t rank = static_cast<size_t>(std::ceil(p * double(v.size())));
    return v[std::clamp<size_t>(rank, 1, v.size()) - 1];
}

struct Line
{
    QString name;
    QString log; // every frame the simulator heard
    QProcess sim;
    QProcess program;
    QByteArray said;
};

void stop(QProcess &p)
{
    if (p.state() == QProcess::NotRunning)
        return;
    p.terminate();
    if (!p.waitForFinished(3000)) {
        p.kill();
        p.waitForFinished(3000);
    }
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    const QStringList args = app.arguments();
    const auto value = [&args](const QString &name, const QString &fallback) {
        const qsizetype i = args.indexOf(name);
        return i >= 0 && i + 1 < args.size() ? args.at(i + 1) : fallback;
    };
    const QString bin = value("--bin", QCoreApplication::applicationDirPath() + "/../src");
    const int lineCount = value("--lines", "8").toInt();
    const int windowSeconds = args.contains("--quick") ? 3 : value("--seconds", "10").toInt();
    const int rounds = value("--rounds", "40").toInt();
    QTemporaryDir scratch;

    const quint16 mqttPort = freePort();
    QProcess broker;
    broker.start("mosquitto", {"-p", QString::number(mqttPort)});
    if (!broker.waitForStarted(5000) || !waitFor([&] { return listening(mqttPort); }, 5000)) {
        std::fprintf(stderr, "bench_fleet: mosquitto did not start\n");
        return 1;
    }
    const QString mqtt = "127.0.0.1:" + QString::number(mqttPort);

    std::vector<std::unique_ptr<Line>> lines;
    for (int i = 0; i < lineCount; ++i) {
        auto line = std::make_unique<Line>();
        line->name = QStringLiteral("line%1").arg(i + 1);
        line->log = scratch.path() + "/" + line->name + ".frames";
        line->sim.start(bin + "/zunoria-sim",
                        {"--count", "64", "--seed", QString::number(i + 1), "--log", line->log});
        line->sim.waitForStarted(5000);
        waitFor([&] { return line->sim.canReadLine(); }, 5000);
        const QString pty = QString::fromLocal8Bit(line->sim.readLine()).trimmed();
        const QString config = scratch.path() + "/" + line->name;
        QDir(config).mkpath("KESTA_ZUN");
        QFile ini(config + "/KESTA_ZUN/KESTA_ZUN.ini");
        if (pty.isEmpty() || !ini.open(QIODevice::WriteOnly) ||
            ini.write("[MSComm]\nCommPort=1\nBaudrate=115200\n") <= 0) {
            std::fprintf(stderr, "bench_fleet: simulator %d did not start\n", i + 1);
            return 1;
        }
        ini.close();
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        for (const char *name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"})
            env.remove(name);
        env.insert("XDG_CONFIG_HOME", config);
        line->program.setProcessEnvironment(env);
        Line *l = line.get();
        QObject::connect(&l->program, &QProcess::readyReadStandardError,
                         [l] { l->said += l->program.readAllStandardError(); });
        line->program.start(bin + "/zunoria",
                            {"--headless", "--port", "COM1=" + pty, "--line", line->name, "--mqtt", mqtt});
        lines.push_back(std::move(line));
    }
    const quint16 web = freePort();
    QProcess fleet;
    fleet.setStandardErrorFile(QProcess::nullDevice());
    fleet.start(bin + "/zunoria",
                {"--fleet", "--mqtt", mqtt, "--web", QString::number(web), "--web-token", kToken});
    if (!fleet.waitForStarted(5000) || !waitFor([&] { return listening(web); }, 10000)) {
        std::fprintf(stderr, "bench_fleet: the fleet did not start\n");
        return 1;
    }
    const auto state = [&] {
        return QJsonDocument::fromJson(httpGet(web, "/api/state?token=" + kToken))
            .object()["lines"]
            .toArray();
    };
    int found = 0;
    const bool allThere = waitFor(
        [&] {
            found = 0;
            for (const QJsonValue &line : state())
                found += line["online"].toBool() ? int(line["receivers"].toArray().size()) : 0;
            return found == lineCount * 64;
        },
        120000);
    if (!allThere) {
        std::fprintf(stderr, "bench_fleet: the fleet shows %d of %d receivers\n", found, lineCount * 64);
        return 1;
    }

    // The broker's traffic and the fleet's CPU over one window.
    QProcess counter;
    qint64 messages = 0;
    QObject::connect(&counter, &QProcess::readyReadStandardOutput, [&] {
        while (counter.canReadLine()) {
            counter.readLine();
            ++messages;
        }
    });
    counter.start("mosquitto_sub",
                  {"-h", "127.0.0.1", "-p", QString::number(mqttPort), "-t", "zunoria/#", "-v"});
    counter.waitForStarted(5000);
    pump(1000); // the retained messages arrive first
    std::vector<QString> logs;
    for (const auto &line : lines)
        logs.push_back(line->log);
    // One window: the broker's traffic, the fleet's CPU and the lines' polling.
    struct Window
    {
        double seconds, cpu, messagesPerSecond, pollsPerSecond;
    };
    const auto measureWindow = [&] {
        messages = 0;
        const qint64 pollsBefore = levelReads(logs);
        QElapsedTimer window;
        window.start();
        const double cpuBefore = cpuSecondsOf(fleet.processId());
        pump(windowSeconds * 1000);
        const double seconds = window.elapsed() / 1000.0;
        return Window{seconds, (cpuSecondsOf(fleet.processId()) - cpuBefore) / seconds * 100,
                      messages / seconds, (levelReads(logs) - pollsBefore) / seconds};
    };
    const Window quiet = measureWindow();
    const double seconds = quiet.seconds;
    const double cpu = quiet.cpu;
    const double rate = quiet.messagesPerSecond;

    // Fifty browsers on the fleet page: the lines must not poll slower for them.
    const int browserCount = value("--browsers", "50").toInt();
    std::vector<std::unique_ptr<QWebSocket>> browsers;
    std::vector<qint64> browserMessages(size_t(browserCount), 0);
    for (int b = 0; b < browserCount; ++b) {
        browsers.push_back(std::make_unique<QWebSocket>(QStringLiteral("http://127.0.0.1:%1").arg(web)));
        QObject::connect(browsers.back().get(), &QWebSocket::textMessageReceived,
                         [&browserMessages, b] { ++browserMessages[size_t(b)]; });
        browsers.back()->open(
            QUrl(QStringLiteral("ws://127.0.0.1:%1/ws?token=%2").arg(web).arg(QString::fromLatin1(kToken))));
    }
    const auto connectedBrowsers = [&] {
        return int(std::count_if(browsers.begin(), browsers.end(), [](const auto &socket) {
            return socket->state() == QAbstractSocket::ConnectedState;
        }));
    };
    waitFor([&] { return connectedBrowsers() == browserCount; }, 20000);
    const Window busy = measureWindow();
    const qint64 fewestMessages =
        browserMessages.empty() ? 0 : *std::min_element(browserMessages.begin(), browserMessages.end());

    // The page's own feed, as a browser gets it.
    QWebSocket page(QStringLiteral("http://127.0.0.1:%1").arg(web));
    QElapsedTimer clock;
    clock.start();
    QHash<QString, qint64> pageSawOffline; // "line/address" → ms
    QObject::connect(&page, &QWebSocket::textMessageReceived, [&](const QString &text) {
        for (const QJsonValue &line : QJsonDocument::fromJson(text.toUtf8()).object()["lines"].toArray())
            for (const QJsonValue &rx : line["receivers"].toArray())
                if (!rx["online"].toBool(true))
                    pageSawOffline.insert(line["line"].toString() + '/' +
                                              QString::number(rx["address"].toInt()),
                                          clock.elapsed());
    });
    page.open(
        QUrl(QStringLiteral("ws://127.0.0.1:%1/ws?token=%2").arg(web).arg(QString::fromLatin1(kToken))));
    waitFor([&] { return page.state() == QAbstractSocket::ConnectedState; }, 5000);
    pump(500);
    pageSawOffline.clear();

    // Receivers leave one after another, across the lines; the clock starts
    // when the line's program says the receiver is offline.
    std::vector<double> toState, toPage, fromStop;
    for (int k = 0; k < rounds && k < lineCount * 64; ++k) {
        Line &line = *lines[size_t(k % lineCount)];
        const int address = k / lineCount + 1;
        const QByteArray event =
            QStringLiteral(": receiver %1").arg(address, 2, 10, QLatin1Char('0')).toUtf8();
        const qsizetype from = line.said.size();
        const qint64 stopped = clock.elapsed();
        line.sim.write(QByteArray("stop ") + QByteArray::number(address) + '\n');
        qint64 declared = -1, shown = -1;
        const QString key = line.name + '/' + QString::number(address);
        waitFor(
            [&] {
                if (declared < 0) {
                    const QByteArray fresh = line.said.mid(from);
                    const qsizetype at = fresh.indexOf(event);
                    if (at >= 0 && fresh.indexOf("offline", at) >= 0)
                        declared = clock.elapsed();
                }
                if (declared >= 0 && shown < 0) {
                    for (const QJsonValue &l : state())
                        if (l["line"].toString() == line.name)
                            for (const QJsonValue &rx : l["receivers"].toArray())
                                if (rx["address"].toInt() == address && !rx["online"].toBool())
                                    shown = clock.elapsed();
                }
                return shown >= 0 && pageSawOffline.contains(key);
            },
            30000);
        if (declared < 0 || shown < 0 || !pageSawOffline.contains(key))
            continue;
        toState.push_back(double(shown - declared));
        toPage.push_back(double(pageSawOffline.value(key) - declared));
        fromStop.push_back(double(shown - stopped));
    }

    std::printf("fleet: %d headless lines x 64 simulated receivers on one mosquitto broker, %d samples\n",
                lineCount, int(toState.size()));
    std::printf("  broker messages/s (all topics, %0.0f s)      %8.0f\n", seconds, rate);
    std::printf("  CPU of the --fleet process                 %7.1f %% of a core\n", cpu);
    std::printf("  level reads/s on all lines, no browser     %8.0f\n", quiet.pollsPerSecond);
    std::printf(
        "  with %d browsers on the page (%d connected): level reads/s %0.0f (%.3f of the above), fleet CPU "
        "%.1f %%, every browser got >= %lld messages\n",
        browserCount, connectedBrowsers(), busy.pollsPerSecond,
        quiet.pollsPerSecond > 0 ? busy.pollsPerSecond / quiet.pollsPerSecond : 0.0, busy.cpu,
        static_cast<long long>(fewestMessages));
    std::printf("  offline on the line -> /api/state     p50 %6.0f ms   p99 %6.0f ms (goal <= 1000)\n",
                percentile(toState, 0.5), percentile(toState, 0.99));
    std::printf("  offline on the line -> page WebSocket p50 %6.0f ms   p99 %6.0f ms (goal <= 1000)\n",
                percentile(toPage, 0.5), percentile(toPage, 0.99));
    std::printf(
        "  receiver silent -> /api/state         p50 %6.0f ms   p99 %6.0f ms (includes the line's retries)\n",
        percentile(fromStop, 0.5), percentile(fromStop, 0.99));

    page.close();
    for (auto &socket : browsers)
        socket->close();
    stop(counter);
    stop(fleet);
    for (auto &line : lines) {
        stop(line->program);
        stop(line->sim);
    }
    stop(broker);
    return toState.empty() ? 1 : 0;
}
