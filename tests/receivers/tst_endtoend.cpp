// The real simulator process on a pseudo-terminal, the real serial line and
// the wall clock: what the program does against receivers it cannot see inside.
#include "core/context.h"
#include "platform/portmap.h"
#include "platform/qtserialline.h"
#include "receivers/replies.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

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
        const QString program = simulatorPath();
        if (program.isEmpty())
            QSKIP("zunoria-sim was not built beside the tests (expected in <build>/src)");
        QTemporaryDir dir;
        const QString logPath = dir.filePath("frames.log");

        SimProcess sim;
        sim.process.start(program, {"--receivers", "3,7", "--log", logPath});
        QVERIFY2(sim.process.waitForStarted(5000), qPrintable(sim.process.errorString()));
        QElapsedTimer startup;
        startup.start();
        while (!sim.process.canReadLine() && startup.elapsed() < 5000)
            sim.process.waitForReadyRead(100);
        const QString device = QString::fromLocal8Bit(sim.process.readLine()).trimmed();
        QVERIFY2(device.startsWith('/'), qPrintable("no device from the simulator: " + device));

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
};

QTEST_GUILESS_MAIN(TestEndToEnd)
#include "tst_endtoend.moc"
