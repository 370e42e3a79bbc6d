// A polling pass over 64 receivers through a serial server on loopback
// (ser2net serving zunoria-sim's pseudo-terminal), against the wire limit:
// every command and reply character at 10 bits and 115200 baud, plus the
// simulated receivers' turnaround. The pty itself is measured alongside.
#include "core/context.h"
#include "platform/mappedserialline.h"
#include "platform/portmap.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QStandardPaths>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QThread>

#include <algorithm>
#include <cstdio>
#include <vector>

namespace {

constexpr int kReceivers = 64;
constexpr int kPasses = 30;
constexpr int kTurnaroundMicros = 1500;

quint16 freeLoopbackPort()
{
    QTcpServer probe;
    return probe.listen(QHostAddress::LocalHost, 0) ? probe.serverPort() : 0;
}

bool waitForServer(quint16 port)
{
    for (int i = 0; i < 50; ++i) {
        QTcpSocket socket;
        socket.connectToHost(QHostAddress::LocalHost, port);
        if (socket.waitForConnected(200))
            return true;
        QThread::msleep(100);
    }
    return false;
}

// Median pass time in microseconds, or a negative value when receivers were lost.
double medianPass(const QString &target)
{
    zun::MemorySettingsStore settings;
    zun::PortMap ports(
        settings, [] { return QStringList(); }, QString());
    if (!ports.addOverride(QStringLiteral("COM1=") + target)) {
        std::fprintf(stderr, "bench_netpoll: cannot map COM1 to %s\n", qPrintable(target));
        return -1;
    }
    zun::MappedSerialLine line(ports);
    zun::SystemClock clock;
    zun::ScriptedDialogs dialogs;
    zun::FakeDesktop desktop;
    zun::Context ctx(zun::Platform{clock, line, settings, dialogs, desktop});
    zun::LineOptions &options = ctx.bus.options();
    options.retries = 0;
    options.port = 1;
    options.baudRate = 115200;
    ctx.bus.table().resize(kReceivers);
    if (!ctx.bus.openLine()) {
        std::fprintf(stderr, "%s: cannot open\n", qPrintable(target));
        return -1;
    }
    if (!ctx.bus.detectReceivers(zun::PortSearch::CurrentPort) ||
        ctx.bus.table().foundCount() != kReceivers) {
        std::fprintf(stderr, "%s: found %d receivers\n", qPrintable(target), ctx.bus.table().foundCount());
        return -1;
    }
    int offline = 0;
    QObject::connect(&ctx.bus, &zun::ReceiverBus::panelOffline, [&offline] { ++offline; });
    ctx.bus.pollAllLevels(); // warm-up
    std::vector<double> micros;
    for (int pass = 0; pass < kPasses; ++pass) {
        QElapsedTimer timer;
        timer.start();
        ctx.bus.pollAllLevels();
        micros.push_back(timer.nsecsElapsed() / 1000.0);
    }
    if (offline > 0) {
        std::fprintf(stderr, "%s: %d receivers missed a reply\n", qPrintable(target), offline);
        return -1;
    }
    std::sort(micros.begin(), micros.end());
    return micros[micros.size() / 2];
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    const QString sim =
        QFileInfo(QCoreApplication::applicationDirPath() + "/../src/zunoria-sim").canonicalFilePath();
    const QString ser2net = QStandardPaths::findExecutable("ser2net", {"/usr/sbin", "/usr/bin"});
    if (sim.isEmpty() || ser2net.isEmpty()) {
        std::fprintf(stderr, "needs zunoria-sim (built) and ser2net (installed)\n");
        return 1;
    }
    QProcess simProcess;
    simProcess.start(
        sim, {"--count", QString::number(kReceivers), "--turnaround-us", QString::number(kTurnaroundMicros)});
    if (!simProcess.waitForStarted(5000) || !simProcess.waitForReadyRead(5000))
        return 1;
    const QString device = QString::fromLocal8Bit(simProcess.readLine()).trimmed();

    // "%01N" + CR out, "$01" + 8 level digits + CR back.
    const double wireMicros = kReceivers * ((5 + 12) * 10 * 1e6 / 115200 + kTurnaroundMicros);
    std::printf("| line | median pass, 64 receivers | wire limit | ratio |\n|---|---|---|---|\n");
    const auto row = [&](const char *name, double micros) {
        if (micros < 0)
            std::printf("| %s | failed | | |\n", name);
        else
            std::printf("| %s | %.1f ms | %.1f ms | %.2f |\n", name, micros / 1000, wireMicros / 1000,
                        micros / wireMicros);
    };
    row("pty (direct)", medianPass(device));

    QTemporaryDir dir;
    // ser2net gathers serial input for some character times before it sends
    // it on (its "chardelay"); the last row turns that off.
    for (const auto &[name, accepter, scheme, options] :
         {std::tuple{"ser2net raw, loopback TCP", "tcp", "tcp", ""},
          std::tuple{"ser2net RFC 2217, loopback TCP", "telnet(rfc2217),tcp", "rfc2217", ""},
          std::tuple{"ser2net raw, chardelay off", "tcp", "tcp", "  options:\n    chardelay: false\n"}}) {
        const quint16 port = freeLoopbackPort();
        const QString config = dir.filePath(QStringLiteral("%1.yaml").arg(scheme));
        QFile file(config);
        if (!file.open(QIODevice::WriteOnly))
            return 1;
        file.write(QStringLiteral("connection: &sim\n  accepter: %1,127.0.0.1,%2\n"
                                  "  connector: serialdev,%3,115200n81,local\n%4")
                       .arg(QString::fromLatin1(accepter))
                       .arg(port)
                       .arg(device, QString::fromLatin1(options))
                       .toUtf8());
        file.close();
        QProcess server;
        server.start(ser2net, {"-n", "-d", "-c", config, "-P", config + ".pid"});
        if (!server.waitForStarted(5000) || !waitForServer(port))
            return 1;
        row(name, medianPass(QStringLiteral("%1://127.0.0.1:%2").arg(QString::fromLatin1(scheme)).arg(port)));
        server.kill();
        server.waitForFinished(3000);
    }
    simProcess.kill();
    simProcess.waitForFinished(3000);
    return 0;
}
