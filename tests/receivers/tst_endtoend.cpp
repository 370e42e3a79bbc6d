// The real simulator process on a pseudo-terminal, the real serial line and
// the wall clock: what the program does against receivers it cannot see inside.
#include "core/context.h"
#include "core/workloop.h"
#include "link/ports.h"
#include "mainscreen/frmmain.h"
#include "platform/portmap.h"
#include "platform/qtserialline.h"
#include "support/netsupport.h"

#include <QAbstractEventDispatcher>
#include <QAction>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

using namespace zun;

namespace {

// The program's own loop with the main screen's steps, for millis of wall time.
void runProgram(FrmMain &main, ReceiverBus &bus, int millis)
{
    WorkLoop loop(bus);
    main.installSteps(loop);
    QTimer::singleShot(millis, [&loop] { loop.stop(); });
    loop.run();
}

int framesInLog(const QString &path, const QByteArray &frame)
{
    QFile log(path);
    if (!log.open(QIODevice::ReadOnly))
        return -1;
    int count = 0;
    for (const QByteArray &line : log.readAll().split('\n'))
        count += line.trimmed().endsWith(' ' + frame);
    return count;
}

} // namespace

class TestEndToEnd : public QObject
{
    Q_OBJECT
private slots:
    // The adapter is pulled under the running program (the simulator dies and
    // its pseudo-terminal with it) and plugged in again under the same name.
    // "Reconnect" is the one command that reopens a lost line itself; "Auto
    // Detect Receivers" always reopens, as the menus transcript shows.
    void unplugAndReplug()
    {
        QTemporaryDir dir;
        const QString alias = dir.filePath("ttyUSB0"); // re-pointed like a udev link
        auto sim = std::make_unique<Child>();
        const QString device = startSimulator(*sim, {"--receivers", "3,7"});
        QVERIFY2(!device.isEmpty() && QFile::link(device, alias), "zunoria-sim not built beside the tests");

        // No real device is ever enumerated: COM1 is the simulator and nothing else exists.
        MemorySettingsStore settings;
        PortMap ports(
            settings, [] { return QStringList(); }, QString());
        QVERIFY(ports.addOverride("COM1=" + alias));
        QtSerialLine line(ports);
        SystemClock clock;
        ScriptedDialogs dialogs;
        FakeDesktop desktop;
        Context ctx{Platform{clock, line, settings, dialogs, desktop}};
        LineOptions &options = ctx.bus.options();
        options.Retry = 0;
        options.CommPort = 1;
        options.Baudrate = 115200;
        QVERIFY(FindCommPorts(line, dialogs, options.PortAvailable, options.CommPort));
        FrmMain main(ctx);
        main.load();
        QCOMPARE(ctx.bus.foundCount(), 2);
        QCOMPARE(ctx.bus.record(1).name, "VOCAL2");
        runProgram(main, ctx.bus, 200);
        QVERIFY(ctx.bus.record(0).online && ctx.bus.record(1).online);

        QTest::ignoreMessage(QtWarningMsg, QRegularExpression("lost the serial device COM1"));
        sim->process.kill();
        QVERIFY(sim->process.waitForFinished(3000));
        runProgram(main, ctx.bus, 300);
        QVERIFY(!line.isOpen());
        QVERIFY(!ctx.bus.record(0).online && !ctx.bus.record(1).online);
        QString reply;
        QVERIFY(!ctx.bus.link().SendCommand("%03N\r", 12, reply, 250) && reply.isEmpty());

        // Left alone, the program sleeps: only the blink timer wakes it. A dead
        // port left open would wake it without pause.
        int wakeups = 0;
        const auto counter = connect(QAbstractEventDispatcher::instance(), &QAbstractEventDispatcher::awake,
                                     [&wakeups] { ++wakeups; });
        const double cpuBefore = cpuSeconds();
        runProgram(main, ctx.bus, 3000);
        const double cpu = cpuSeconds() - cpuBefore;
        disconnect(counter);
        qInfo("idle after the unplug: %d event-loop wakeups, %.1f ms CPU in 3 s", wakeups, cpu * 1000);
        QVERIFY2(wakeups < 100, qPrintable(QString::number(wakeups)));
        QVERIFY(dialogs.messages().isEmpty());

        sim = std::make_unique<Child>();
        const QString logPath = dir.filePath("frames.log");
        const QString again = startSimulator(*sim, {"--receivers", "3,7", "--log", logPath});
        QVERIFY(!again.isEmpty() && QFile::remove(alias) && QFile::link(again, alias));
        main.action("mnuReconnect")->trigger();
        QCOMPARE(ctx.bus.foundCount(), 2);
        QVERIFY(line.isOpen() && ctx.bus.record(0).online && ctx.bus.record(1).online);
        QVERIFY(ctx.bus.link().SendCommand("%07N\r", 12, reply, 250));

        // Broadcasts wait for no reply, yet every one reaches the receivers before the line closes.
        ctx.bus.sayGoodbye();
        line.close();
        QTRY_COMPARE_WITH_TIMEOUT(framesInLog(logPath, "#00A0"), 3, 3000);
    }
};

QTEST_MAIN(TestEndToEnd)
#include "tst_endtoend.moc"
