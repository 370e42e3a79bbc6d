// ser2net serving the simulator's pseudo-terminal on loopback, once raw and
// once with RFC 2217: the program's line to receivers behind a serial server.
#include "core/context.h"
#include "link/ports.h"
#include "platform/mappedserialline.h"
#include "platform/portmap.h"
#include "support/netsupport.h"

#include <QFile>
#include <QSignalSpy>
#include <QStandardPaths>
#include <QTest>

#include <fcntl.h>
#include <termios.h>
#include <unistd.h>

using namespace zun;

namespace {

// The speed the far side set on the pseudo-terminal, as stty would show it.
speed_t ptySpeed(const QString &device)
{
    const int fd = ::open(QFile::encodeName(device).constData(), O_RDWR | O_NOCTTY | O_NONBLOCK);
    termios t{};
    const bool ok = fd >= 0 && ::tcgetattr(fd, &t) == 0;
    ::close(fd);
    return ok ? cfgetospeed(&t) : B0;
}

} // namespace

class TestNetLine : public QObject
{
    Q_OBJECT

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
        Child sim;
        // A full line: an address nobody answers costs a detection time-out.
        const QString device = startSimulator(sim, {"--count", "64"});
        QVERIFY2(!device.isEmpty(), qPrintable(sim.process.errorString()));

        const quint16 port = freeLoopbackPort();
        const QString ser2net = QStandardPaths::findExecutable("ser2net", {"/usr/sbin", "/usr/bin"});
        // "#" starts a new line of the configuration.
        const QStringList serverArguments{
            "-n", "-d", "-Y",
            QStringLiteral(
                "connection: &sim#  accepter: %1,127.0.0.1,%2#  connector: serialdev,%3,115200n81,local")
                .arg(accepter)
                .arg(port)
                .arg(device)};
        Child server;
        QVERIFY2(startServer(server, ser2net, serverArguments, port),
                 "ser2net (scripts/setup.sh installs it)");

        MemorySettingsStore settings;
        PortMap ports(
            settings, [] { return QStringList(); }, QString());
        QVERIFY(ports.addOverride(QStringLiteral("COM2=%1://127.0.0.1:%2").arg(scheme).arg(port)));
        MappedSerialLine line(ports);
        SystemClock clock;
        ScriptedDialogs dialogs;
        FakeDesktop desktop;
        Context ctx{Platform{clock, line, settings, dialogs, desktop}};
        LineOptions &options = ctx.bus.options();
        options.retries = 0;
        options.baudRate = 115200;
        QVERIFY(findPorts(line, dialogs, options.portAvailable, options.port));
        QCOMPARE(options.port, 2);
        ctx.bus.table().resize(64);

        if (scheme == "rfc2217" && !portControl)
            QTest::ignoreMessage(QtWarningMsg, QRegularExpression("does not set the serial port's speed"));
        QSignalSpy levels(&ctx.bus, &ReceiverBus::panelLevels), offline(&ctx.bus, &ReceiverBus::panelOffline);
        const auto detectAndPoll = [&] {
            const bool opened = ctx.bus.openLine();
            levels.clear();
            offline.clear();
            // A server that refuses port control may say so while the speed is
            // being set: the line is then open but reported as not set up.
            if (scheme != "rfc2217" || portControl)
                QVERIFY(opened);
            QVERIFY(line.isOpen());
            QVERIFY(ctx.bus.detectReceivers(PortSearch::CurrentPort));
            QCOMPARE(ctx.bus.table().foundCount(), 64);
            QCOMPARE(ctx.bus.table().at(6).address, 7);
            QVERIFY(ctx.bus.pollAllLevels());
            QCOMPARE(levels.size(), 64);
            QCOMPARE(offline.size(), 0);
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
        QVERIFY(!ctx.bus.link().sendCommand("%03N\r", 12, reply, 100));
        QVERIFY(!line.isOpen());
        QVERIFY(!ctx.bus.pollAllLevels() || !offline.isEmpty());
        // It stays down until the user reconnects: no exchange opens it behind their back.
        for (int i = 0; i < 5; ++i)
            QVERIFY(!ctx.bus.link().sendCommand("%03N\r", 12, reply, 100));
        QVERIFY(!line.isOpen());

        // Back on: "Reconnect" opens the same port again.
        QVERIFY(startServer(server, ser2net, serverArguments, port));
        detectAndPoll();
        if (QTest::currentTestFailed())
            return;
        QVERIFY2(line.takeNotice().isEmpty(), "warned twice about the same server");

        // The new speed reaches the far port only through RFC 2217; on a raw
        // line the receivers switch and the server's port stays as it was.
        QVERIFY(ctx.bus.changeBaudRate(9600));
        QVERIFY(line.isOpen());
        QCOMPARE(ptySpeed(device), portControl ? B9600 : B115200);
        QCOMPARE(ctx.bus.link().sendCommand("%07N\r", 12, reply, 250), portControl);
    }
};

QTEST_GUILESS_MAIN(TestNetLine)
#include "tst_netline.moc"
