// ser2net serving the simulator's pseudo-terminal on loopback, once raw and
// once with RFC 2217: the program's line to receivers behind a serial server.
#include "core/context.h"
#include "link/ports.h"
#include "platform/mappedserialline.h"
#include "platform/portmap.h"
#include "support/netsupport.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>

#include <fcntl.h>
#include <sys/resource.h>
#include <termios.h>
#include <unistd.h>

using namespace zun;

namespace {

// Killed however the test ends.
struct Child
{
    ~Child() { stop(); }
    void stop()
    {
        process.kill();
        process.waitForFinished(3000);
    }
    QProcess process;
};

// The speed the far side set on the pseudo-terminal, as stty would show it.
speed_t ptySpeed(const QString &device)
{
    const int fd = ::open(QFile::encodeName(device).constData(), O_RDWR | O_NOCTTY | O_NONBLOCK);
    termios t{};
    const bool ok = fd >= 0 && ::tcgetattr(fd, &t) == 0;
    ::close(fd);
    return ok ? cfgetospeed(&t) : B0;
}

double cpuSeconds()
{
    rusage u{};
    ::getrusage(RUSAGE_SELF, &u);
    return u.ru_utime.tv_sec + u.ru_stime.tv_sec + (u.ru_utime.tv_usec + u.ru_stime.tv_usec) / 1e6;
}

// What a polling pass hands the panels.
struct Panels
{
    explicit Panels(ReceiverBus &bus)
    {
        QObject::connect(&bus, &ReceiverBus::panelLevels, [this](int index) { levels << index; });
        QObject::connect(&bus, &ReceiverBus::panelOffline, [this](int index) { offline << index; });
    }
    QList<int> levels;
    QList<int> offline;
};

} // namespace

class TestNetLine : public QObject
{
    Q_OBJECT

    void startServer(Child &server, const QString &config)
    {
        const QString ser2net = QStandardPaths::findExecutable("ser2net", {"/usr/sbin", "/usr/bin"});
        QVERIFY2(!ser2net.isEmpty(), "ser2net is not installed (scripts/setup.sh installs it)");
        server.process.start(ser2net, {"-n", "-d", "-c", config, "-P", config + ".pid"});
        QVERIFY2(server.process.waitForStarted(5000), qPrintable(server.process.errorString()));
        QTRY_VERIFY_WITH_TIMEOUT(acceptsConnections(m_port), 5000);
    }

    quint16 m_port = 0;

private slots:
    void throughSer2net_data()
    {
        QTest::addColumn<QString>("scheme");
        QTest::addColumn<QString>("accepter");
        QTest::addColumn<bool>("portControl");
        QTest::newRow("raw") << QString("tcp") << "tcp" << false;
        QTest::newRow("rfc2217") << QString("rfc2217") << "telnet(rfc2217),tcp" << true;
        // A Telnet server without the option: raw data, one warning.
        QTest::newRow("rfc2217 refused") << QString("rfc2217") << "telnet,tcp" << false;
    }
    void throughSer2net()
    {
        QFETCH(QString, scheme);
        QFETCH(QString, accepter);
        QFETCH(bool, portControl);
        const QString program = QCoreApplication::applicationDirPath() + "/../src/zunoria-sim";

        Child sim;
        sim.process.start(program, {"--receivers", "3,7"});
        QVERIFY2(sim.process.waitForStarted(5000), qPrintable(program + ": " + sim.process.errorString()));
        QTRY_VERIFY_WITH_TIMEOUT(sim.process.canReadLine(), 5000);
        const QString device = QString::fromLocal8Bit(sim.process.readLine()).trimmed();
        QVERIFY2(device.startsWith("/dev/"), qPrintable(device));

        QTemporaryDir dir;
        m_port = freeLoopbackPort();
        QVERIFY(m_port != 0);
        const QString config = dir.filePath("ser2net.yaml");
        QFile file(config);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(QStringLiteral("connection: &sim\n"
                                  "  accepter: %1,127.0.0.1,%2\n"
                                  "  connector: serialdev,%3,115200n81,local\n")
                       .arg(accepter)
                       .arg(m_port)
                       .arg(device)
                       .toUtf8());
        file.close();
        Child server;
        startServer(server, config);

        MemorySettingsStore settings;
        PortMap ports(
            settings, [] { return QStringList(); }, QString());
        QVERIFY(ports.addOverride(QStringLiteral("COM2=%1://127.0.0.1:%2").arg(scheme).arg(m_port)));
        MappedSerialLine line(ports);
        SystemClock clock;
        ScriptedDialogs dialogs;
        FakeDesktop desktop;
        Context ctx{Platform{clock, line, settings, dialogs, desktop}};
        LineOptions &options = ctx.bus.options();
        options.Retry = 0;
        options.Baudrate = 115200;
        QVERIFY(FindCommPorts(line, dialogs, options.PortAvailable, options.CommPort));
        QCOMPARE(options.CommPort, 2);
        ctx.bus.resizeTable(64);

        if (scheme == "rfc2217" && !portControl)
            QTest::ignoreMessage(QtWarningMsg, QRegularExpression("does not set the serial port's speed"));
        Panels panels(ctx.bus);
        const auto detectAndPoll = [&] {
            ctx.bus.openLine();
            QVERIFY(line.isOpen());
            QVERIFY(ctx.bus.CheckReceivers());
            QCOMPARE(ctx.bus.foundCount(), 2);
            QCOMPARE(ctx.bus.record(1).address, 7);
            panels.levels.clear();
            panels.offline.clear();
            for (int pass = 0; pass < 5; ++pass)
                QVERIFY(ctx.bus.ReadAllAD());
            QCOMPARE(panels.levels.size(), 10);
            QVERIFY(panels.offline.isEmpty());
        };
        detectAndPoll();
        if (QTest::currentTestFailed())
            return;
        const bool warned = !line.takeNotice().isEmpty();
        QCOMPARE(warned, scheme == "rfc2217" && !portControl);

        // The server goes away: the line is lost, the receivers drop out, and
        // the program waits without working.
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression("lost the connection to COM2"));
        server.stop();
        QString reply;
        QVERIFY(!ctx.bus.link().SendCommand("%03N\r", 12, reply, 100));
        QVERIFY(!line.isOpen());
        QVERIFY(!ctx.bus.ReadAllAD() || !panels.offline.isEmpty());
        const double cpuBefore = cpuSeconds();
        QElapsedTimer wall;
        wall.start();
        for (int i = 0; i < 5; ++i)
            ctx.bus.link().SendCommand("%03N\r", 12, reply, 100);
        QVERIFY2(cpuSeconds() - cpuBefore < 0.1 * wall.elapsed() / 1000.0 + 0.02,
                 "busy while the line is lost");

        // Back on: "Reconnect" opens the same port again.
        startServer(server, config);
        detectAndPoll();
        if (QTest::currentTestFailed())
            return;
        QVERIFY2(line.takeNotice().isEmpty(), "warned twice about the same server");

        // The new speed reaches the far port only through RFC 2217; on a raw
        // line the receivers switch and the server's port stays as it was.
        QVERIFY(ctx.bus.changeBaudRate(9600));
        QVERIFY(line.isOpen());
        QCOMPARE(ptySpeed(device), portControl ? B9600 : B115200);
        QCOMPARE(ctx.bus.link().SendCommand("%07N\r", 12, reply, 250), portControl);
    }
};

QTEST_GUILESS_MAIN(TestNetLine)
#include "tst_netline.moc"
