// The real simulator process on a pseudo-terminal, the real serial line and
// the wall clock: what the program does against receivers it cannot see inside.
#include "core/context.h"
#include "core/workloop.h"
#include "link/ports.h"
#include "mainscreen/frmmain.h"
#include "platform/portmap.h"
#include "platform/qtserialline.h"
#include "receivers/replies.h"

#include <QAbstractEventDispatcher>
#include <QAction>
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <memory>

#include <sys/resource.h>

using namespace zun;

namespace {

QString simulatorPath()
{
    // Tests are built in <build>/tests, the simulator in <build>/src.
    const QString here = QCoreApplication::applicationDirPath();
    for (const QString &relative :
         {QStringLiteral("/../src/zunoria-sim"), QStringLiteral("/../../src/zunoria-sim")}) {
        const QFileInfo candidate(here + relative);
        if (candidate.isExecutable())
            return candidate.canonicalFilePath();
    }
    return {};
}

// Stops the simulator however the test ends.
struct SimProcess
{
    ~SimProcess()
    {
        if (process.state() == QProcess::NotRunning)
            return;
        process.terminate();
        if (!process.waitForFinished(3000)) {
            process.kill();
            process.waitForFinished(3000);
        }
    }
    QProcess process;
};

// Starts the simulator and returns the device it serves, empty on failure.
QString startSimulator(SimProcess &sim, const QStringList &arguments)
{
    const QString program = simulatorPath();
    if (program.isEmpty())
        return {};
    sim.process.start(program, arguments);
    if (!sim.process.waitForStarted(5000))
        return {};
    QElapsedTimer startup;
    startup.start();
    while (!sim.process.canReadLine() && startup.elapsed() < 5000)
        sim.process.waitForReadyRead(100);
    const QString device = QString::fromLocal8Bit(sim.process.readLine()).trimmed();
    return device.startsWith('/') ? device : QString();
}

double cpuSeconds()
{
    rusage usage{};
    ::getrusage(RUSAGE_SELF, &usage);
    return usage.ru_utime.tv_sec + usage.ru_stime.tv_sec +
           (usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e6;
}

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
        if (line.trimmed().endsWith(' ' + frame))
            ++count;
    return count;
}

} // namespace

class TestEndToEnd : public QObject
{
    Q_OBJECT
private slots:
    void realLineToTheSimulator()
    {
        QVERIFY2(!simulatorPath().isEmpty(),
                 "zunoria-sim was not built beside the tests (expected in <build>/src)");
        QTemporaryDir dir;
        const QString logPath = dir.filePath("frames.log");

        SimProcess sim;
        const QString device = startSimulator(sim, {"--receivers", "3,7", "--log", logPath});
        QVERIFY2(!device.isEmpty(), qPrintable(sim.process.errorString()));

        // No real device is ever enumerated: COM1 is the simulator and nothing else exists.
        MemorySettingsStore settings;
        PortMap ports(
            settings, [] { return QStringList(); }, QString());
        QVERIFY(ports.addOverride("COM1=" + device));
        QtSerialLine line(ports);
        SystemClock clock;
        ScriptedDialogs dialogs;
        FakeDesktop desktop;
        Context ctx{Platform{clock, line, settings, dialogs, desktop}};
        ctx.bus.options().Retry = 0;
        ctx.bus.options().CommPort = 1;
        ctx.bus.options().Baudrate = 115200;
        ctx.bus.openLine();
        QVERIFY(line.isOpen() && line.portNumber() == 1);

        QString reply;
        QVERIFY(ctx.bus.link().SendCommand("%03M\r", 41, reply, 250));
        const auto identity = parseIdentification(reply, 3);
        QVERIFY2(reply.size() == 41 && identity.has_value(), qPrintable(reply));
        QCOMPARE(identity->name, "VOCAL1");
        QVERIFY(ctx.bus.link().SendCommand("%03N\r", 12, reply, 250));
        QVERIFY2(QRegularExpression("^\\$03[0-9A-F]{8}\r$").match(reply).hasMatch(), qPrintable(reply));

        QElapsedTimer silence;
        silence.start();
        QVERIFY(!ctx.bus.link().SendCommand("%05N\r", 12, reply, 100));
        QVERIFY2(reply.isEmpty() && silence.elapsed() >= 100, qPrintable(QString::number(silence.elapsed())));

        ctx.bus.resizeTable(64);
        int asked = 0;
        QObject::connect(&ctx.bus, &ReceiverBus::detectionProgress, [&] { ++asked; });
        QVERIFY(ctx.bus.CheckReceivers());
        QCOMPARE(ctx.bus.foundCount(), 2);
        QCOMPARE(QList<int>({ctx.bus.record(0).address, ctx.bus.record(1).address}), QList<int>({3, 7}));
        QVERIFY(ctx.bus.record(0).online && ctx.bus.record(1).online);
        QCOMPARE(ctx.bus.record(1).name, "VOCAL2");
        QCOMPARE(asked, 64);
        QCOMPARE(settings.get("KESTA_ZUN", "MSComm", "CommPort"), "1");

        // What the exit says before the program ends.
        for (int i = 0; i < 3; ++i)
            QVERIFY(ctx.bus.link().SendCommand("#00A0\r", 0, reply, 50));
        QTRY_COMPARE_WITH_TIMEOUT(framesInLog(logPath, "#00A0"), 3, 3000);
        QCOMPARE(framesInLog(logPath, "%03M"), 2);
        QCOMPARE(framesInLog(logPath, "#00A1"), 3);

        line.close();
        sim.process.terminate();
        QVERIFY(sim.process.waitForFinished(3000));
    }

    // The adapter is pulled under the running program (the simulator dies and
    // its pseudo-terminal with it) and plugged in again under the same name.
    void unplugAndReplug_data()
    {
        QTest::addColumn<QString>("command");
        QTest::newRow("Reconnect") << "mnuReconnect";
        QTest::newRow("Auto Detect Receivers") << "mnuAuto";
    }
    void unplugAndReplug()
    {
        QFETCH(QString, command);
        QTemporaryDir dir;
        const QString alias = dir.filePath("ttyUSB0"); // re-pointed like a udev link
        auto sim = std::make_unique<SimProcess>();
        const QString device = startSimulator(*sim, {"--receivers", "3,7"});
        QVERIFY2(!device.isEmpty() && QFile::link(device, alias), "simulator not started");

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
        qInfo("idle after the unplug: %d event-loop wakeups, %.1f ms CPU in 3 s (%.2f %% of a core)", wakeups,
              cpu * 1000, cpu / 3 * 100);
        QVERIFY2(wakeups < 100, qPrintable(QString::number(wakeups)));
        QVERIFY(dialogs.messages().isEmpty());

        sim = std::make_unique<SimProcess>();
        const QString again = startSimulator(*sim, {"--receivers", "3,7"});
        QVERIFY(!again.isEmpty() && QFile::remove(alias) && QFile::link(again, alias));
        main.action(command)->trigger();
        QCOMPARE(ctx.bus.foundCount(), 2);
        QVERIFY(line.isOpen() && ctx.bus.record(0).online && ctx.bus.record(1).online);
        QVERIFY(ctx.bus.link().SendCommand("%07N\r", 12, reply, 250));
    }
};

QTEST_MAIN(TestEndToEnd)
#include "tst_endtoend.moc"
