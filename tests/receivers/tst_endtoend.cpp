// The real simulator process on a pseudo-terminal, the real serial line and
// the wall clock: the program as main() assembles it, against receivers it
// cannot see inside.
#include "core/options.h"
#include "mainscreen/mainwindow.h"
#include "mainscreen/startupwindows.h"
#include "platform/portmap.h"
#include "platform/qtserialline.h"
#include "session/session.h"
#include "support/netsupport.h"

#include <QAbstractEventDispatcher>
#include <QAction>
#include <QDateTime>
#include <QFile>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <QWebSocket>

#include <csignal>

using namespace zun;

namespace {

// The program's own loop, for millis of wall time.
void runProgram(Session &session, int millis)
{
    QTimer::singleShot(millis, [&session] { session.loop().stop(); });
    session.loop().run();
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

// The surroundings main() gives the program, with one port: portName is the
// simulator's pseudo-terminal behind a link that can be re-pointed like a udev name.
struct RealLine
{
    explicit RealLine(const QString &portName, const QString &device)
    {
        // A mapping the port map refuses would leave the test on the wrong device.
        if (!ports.addOverride(portName + '=' + device))
            qFatal("cannot map %s to %s", qPrintable(portName), qPrintable(device));
        settings.save(kAppName, "MSComm", "CommPort", portName.mid(3));
        settings.save(kAppName, "MSComm", "Retry", "0");
    }
    Platform platform() { return Platform{clock, line, settings, dialogs, desktop}; }

    MemorySettingsStore settings;
    // No real device is ever enumerated: only the port named above exists.
    PortMap ports{settings, [] { return QStringList(); }, QString()};
    QtSerialLine line{ports};
    SystemClock clock;
    ScriptedDialogs dialogs;
    FakeDesktop desktop;
};

} // namespace

class TestEndToEnd : public QObject
{
    Q_OBJECT
private slots:
    // A receiver leaves the line and comes back under the program as it runs
    // without a window on COM3: the alarm, the show log, the broker's topics,
    // the dashboard and the bus health all see it, under the port's name.
    // Full lines throughout: an address nobody answers costs a detection
    // time-out of wall time.
    void everyListenerFollowsTheAssembledProgram()
    {
        QTemporaryDir dir;
        Child sim;
        const QString device = startSimulator(sim, {"--count", "64"});
        QVERIFY2(!device.isEmpty(), "zunoria-sim not built beside the tests");
        const quint16 mqttPort = freeLoopbackPort();
        Child broker;
        QVERIFY(startServer(broker, "mosquitto", {"-p", QString::number(mqttPort)}, mqttPort));
        Subscriber topics(mqttPort);

        RealLine real("COM3", device);
        SessionOptions options;
        options.headless = true;
        options.showLogFile = dir.filePath("show.csv");
        options.feeds.mqttHost = "127.0.0.1";
        options.feeds.mqttPort = mqttPort;
        options.feeds.webPort = freeLoopbackPort();
        options.feeds.webToken = "e2e-token-0123456789";
        const auto session = assembleSession(real.platform(), options);
        QVERIFY(session->start({}));
        QCOMPARE(session->bus().table().foundCount(), 64);
        QCOMPARE(session->lineName(), "COM3");
        runProgram(*session, 300);

        QTRY_COMPARE_WITH_TIMEOUT(topics.latest.value("zunoria/COM3/status"), "online", 10000);
        QTRY_COMPARE(topics.field("zunoria/COM3/rx/07/state", "online"), "true");
        QTRY_COMPARE(topics.field("zunoria/COM3/info", "receivers"), "64");
        QCOMPARE(topics.field("zunoria/COM3/info", "port"), "COM3");

        // A second program, zunoria --headless with no display at all, claiming the same line on the
        // broker says so and leaves the first one's topics alone; it polls, and SIGTERM ends it as Exit does.
        {
            Child otherSim, other;
            const QString otherLog = dir.filePath("frames.log");
            const QString otherDevice = startSimulator(otherSim, {"--count", "64", "--log", otherLog});
            const int statusCount = topics.counts.value("zunoria/COM3/status");
            const QString owner = topics.field("zunoria/COM3/info", "pid");
            const QByteArray said =
                startHeadless(other, dir.filePath("other"), otherDevice,
                              {"--line", "COM3", "--mqtt", QStringLiteral("127.0.0.1:%1").arg(mqttPort)});
            QVERIFY2(said.contains("zunoria: COM3: 64 receivers found"), said.constData());
            QVERIFY(QTest::qWaitFor(
                [&] { return (said + other.process.readAllStandardError()).contains("already used"); },
                5000));
            QCOMPARE(topics.field("zunoria/COM3/info", "pid"), owner);
            QCOMPARE(topics.counts.value("zunoria/COM3/status"), statusCount);
            QCOMPARE(topics.latest.value("zunoria/COM3/status"), "online");
            QTRY_VERIFY(framesInLog(otherLog, "%03N") > 5);
            ::kill(static_cast<pid_t>(other.process.processId()), SIGTERM);
            QVERIFY(other.process.waitForFinished(5000));
            QCOMPARE(other.process.exitStatus(), QProcess::NormalExit);
            QCOMPARE(other.process.exitCode(), 0);
            QTRY_COMPARE(framesInLog(otherLog, "#00A0"), 3);
        }
        QWebSocket page(QStringLiteral("http://127.0.0.1:%1").arg(options.feeds.webPort));
        QString dashboard;
        connect(&page, &QWebSocket::textMessageReceived,
                [&dashboard](const QString &text) { dashboard = text; });
        page.open(QUrl(
            QStringLiteral("ws://127.0.0.1:%1/ws?token=e2e-token-0123456789").arg(options.feeds.webPort)));
        QTRY_VERIFY(!dashboard.isEmpty());
        QCOMPARE(QJsonDocument::fromJson(dashboard.toUtf8())["bus"].toString(), "COM3");

        sim.process.write("stop 7\n");
        runProgram(*session, 500);
        QVERIFY(!session->bus().table().at(6).online);
        const QList<Alarm> &alarms = session->alarms().alarms();
        const auto offlineAlarm = [&alarms] {
            return std::find_if(alarms.begin(), alarms.end(), [](const Alarm &a) {
                return a.address == 7 && a.condition == AlarmCondition::Offline;
            });
        };
        QVERIFY(offlineAlarm() != alarms.end());
        QVERIFY(!offlineAlarm()->clearedMicros);
        QTRY_COMPARE(topics.field("zunoria/COM3/rx/07/state", "online"), "false");
        // One event a state change on the broker, named as the alarm list names it.
        const auto alarmOn = [&topics](const QString &state) {
            for (const QByteArray &message : topics.messages) {
                if (!message.startsWith("zunoria/COM3/alarm "))
                    continue;
                const QJsonObject alarm = QJsonDocument::fromJson(message.mid(19)).object();
                if (alarm["line"] == "COM3" && alarm["address"] == 7 && alarm["name"] == "HOST" &&
                    alarm["kind"] == "offline" && alarm["state"] == state &&
                    QDateTime::fromString(alarm["time"].toString(), Qt::ISODateWithMs).isValid())
                    return true;
            }
            return false;
        };
        QTRY_VERIFY(alarmOn("raised"));
        QVERIFY(!alarmOn("cleared"));

        sim.process.write("start 7\n");
        QByteArray simSaid;
        QTRY_VERIFY((simSaid += sim.process.readAllStandardError()).contains("receiver 7 started"));
        QVERIFY(session->bringBack(6)); // what a name click does, and the recovery every 10 s
        runProgram(*session, 200);
        QVERIFY(offlineAlarm()->clearedMicros.has_value());
        QTRY_COMPARE(topics.field("zunoria/COM3/rx/07/state", "online"), "true");
        QTRY_VERIFY(alarmOn("cleared"));

        const AddressHealth *health = session->busHealth().stats().address(3);
        QVERIFY(health);
        QVERIFY(health->exchanges > 3);
        QVERIFY(real.dialogs.messages().isEmpty());
        QVERIFY(topics.latest.keys().filter("COM1").isEmpty());

        session->endProgram();
        QFile log(options.showLogFile);
        QVERIFY(log.open(QIODevice::ReadOnly));
        const QByteArray text = log.readAll();
        const qsizetype offline = text.indexOf(",offline,7,");
        QVERIFY2(offline > 0, text.constData());
        QVERIFY2(text.indexOf(",back,7,", offline) > offline, text.constData());
        QTRY_COMPARE(topics.latest.value("zunoria/COM3/status"), "offline");
    }

    // The adapter is pulled under the running program (the simulator dies and
    // its pseudo-terminal with it) and plugged in again under the same name.
    // "Reconnect" is the one command that reopens a lost line itself; "Auto
    // Detect Receivers" always reopens, as the menus transcript shows.
    void unplugAndReplug()
    {
        QTemporaryDir dir;
        const QString alias = dir.filePath("ttyUSB0"); // re-pointed like a udev link
        auto sim = std::make_unique<Child>();
        const QString device = startSimulator(*sim, {"--count", "64"});
        QVERIFY2(!device.isEmpty(), "zunoria-sim not built beside the tests");
        QVERIFY2(QFile::link(device, alias), "zunoria-sim not built beside the tests");

        RealLine real("COM1", alias);
        const auto session = assembleSession(real.platform(), {});
        StartupWindows windows(*session);
        QVERIFY(session->start(windows.views()));
        MainWindow &main = *windows.mainWindow();
        ReceiverBus &bus = session->bus();
        QCOMPARE(bus.table().foundCount(), 64);
        QCOMPARE(bus.table().at(1).name, "VOCAL2");
        runProgram(*session, 200);
        QVERIFY(bus.table().at(0).online);
        QVERIFY(bus.table().at(1).online);

        QTest::ignoreMessage(QtWarningMsg, QRegularExpression("lost the serial device COM1"));
        sim->process.kill();
        QVERIFY(sim->process.waitForFinished(3000));
        runProgram(*session, 300);
        QVERIFY(!real.line.isOpen());
        QVERIFY(!bus.table().at(0).online);
        QVERIFY(!bus.table().at(1).online);
        QString reply;
        QVERIFY(!bus.link().sendCommand("%03N\r", 12, reply, 250));
        QVERIFY(reply.isEmpty());

        // Left alone, the program sleeps: only the blink timer wakes it. A dead
        // port left open would wake it without pause. Counted per blink, not per
        // second, so a slow machine changes nothing.
        auto *blink = main.findChild<QTimer *>("Timer1");
        QVERIFY(blink);
        int wakeups = 0, blinks = 0;
        const auto counter = connect(QAbstractEventDispatcher::instance(), &QAbstractEventDispatcher::awake,
                                     [&wakeups] { ++wakeups; });
        const auto ticks = connect(blink, &QTimer::timeout, [&] {
            if (++blinks == 1)
                wakeups = 0;
            else if (blinks == 4)
                session->loop().stop();
        });
        runProgram(*session, 30000);
        disconnect(counter);
        disconnect(ticks);
        QCOMPARE(blinks, 4);
        qInfo("idle after the unplug: %d event-loop wakeups in 3 blinks", wakeups);
        QVERIFY2(wakeups <= 3 * 10, qPrintable(QString::number(wakeups)));
        QVERIFY(real.dialogs.messages().isEmpty());

        sim = std::make_unique<Child>();
        const QString logPath = dir.filePath("frames.log");
        const QString again = startSimulator(*sim, {"--count", "64", "--log", logPath});
        QVERIFY(!again.isEmpty());
        QVERIFY(QFile::remove(alias));
        QVERIFY(QFile::link(again, alias));
        main.action("mnuReconnect")->trigger();
        QCOMPARE(bus.table().foundCount(), 64);
        QVERIFY(real.line.isOpen());
        QVERIFY(bus.table().at(0).online);
        QVERIFY(bus.table().at(1).online);
        QVERIFY(bus.link().sendCommand("%07N\r", 12, reply, 250));

        // Broadcasts wait for no reply, yet every one reaches the receivers before the line closes.
        bus.sayGoodbye();
        real.line.close();
        QTRY_COMPARE_WITH_TIMEOUT(framesInLog(logPath, "#00A0"), 3, 3000);
    }
};

QTEST_MAIN(TestEndToEnd)
#include "tst_endtoend.moc"
