// The session as the program assembles it, on the virtual clock: how it names
// the line, reads its options, brings receivers and a lost line back, and
// tells its feeds (a real mosquitto broker, the dashboard's WebSocket) when
// nothing is polled.
#include "core/options.h"
#include "mainscreen/mainwindow.h"
#include "mainscreen/rcvpanel.h"
#include "session/session.h"
#include "support/netsupport.h"
#include "support/testbed.h"

#include <QAction>
#include <QCommandLineParser>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTest>
#include <QWebSocket>

using namespace zun;

namespace {

// Every option that differs from its default.
QString describe(const SessionOptions &o)
{
    const FeedOptions &f = o.feeds, d;
    QStringList out, osc;
    for (const OscTarget &t : f.oscTargets)
        osc << QStringLiteral("%1:%2").arg(t.host).arg(t.port);
    if (!osc.isEmpty())
        out << "osc=" + osc.join(',');
    if (f.mqttHost != d.mqttHost || f.mqttPort != d.mqttPort)
        out << QStringLiteral("mqtt=%1:%2").arg(f.mqttHost).arg(f.mqttPort);
    if (f.webPort != d.webPort)
        out << QStringLiteral("web=%1").arg(f.webPort);
    if (f.webToken != d.webToken)
        out << "token=" + f.webToken;
    for (const auto &[on, name] :
         {std::pair{f.webAllowNetwork, "net"}, {f.mqttControl, "control"}, {f.mqttDiscovery, "discovery"}})
        if (on)
            out << name;
    if (f.mqttDiscoveryPrefix != d.mqttDiscoveryPrefix)
        out << "prefix=" + f.mqttDiscoveryPrefix;
    if (f.mqttUser != d.mqttUser || f.mqttPassword != d.mqttPassword || f.mqttCaFile != d.mqttCaFile)
        out << "credentials";
    if (!o.lineName.isEmpty())
        out << "line=" + o.lineName;
    for (const auto &[on, name] : {std::pair{o.autoRecover, "recover"},
                                   {o.headless, "headless"},
                                   {o.fleet, "fleet"},
                                   {!o.showLogFile.isEmpty(), "log"}})
        if (on)
            out << name;
    return out.join(' ');
}

// Runs passes of the program's loop, each after the given virtual time.
void passes(TestBed &bed, int count, int millisBetween = 0)
{
    for (int i = 0; i < count; ++i) {
        bed.clock.advanceMillis(static_cast<std::uint64_t>(millisBetween));
        bed.session->loop().runSteps();
    }
}

// What the feeds of a running program say about its line: the retained MQTT
// status and the dashboard's latest "paused".
struct FeedWatch
{
    explicit FeedWatch(quint16 brokerPort, quint16 webPort)
        : sub(brokerPort), web(QStringLiteral("http://127.0.0.1:%1").arg(webPort))
    {
        QObject::connect(&web, &QWebSocket::textMessageReceived, [this](const QString &text) {
            webPaused = QJsonDocument::fromJson(text.toUtf8()).object().value("paused").toBool();
            ++webMessages;
        });
    }
    // Waits until both feeds say it; false when they do not within five seconds.
    bool show(bool paused)
    {
        const QByteArray status = paused ? "paused" : "online";
        return QTest::qWaitFor([&] { return sub.latest.value("zunoria/COM1/status") == status; }, 5000) &&
               QTest::qWaitFor([&] { return webMessages > 0 && webPaused == paused; }, 5000);
    }
    Subscriber sub;
    QWebSocket web;
    bool webPaused = false;
    int webMessages = 0;
};

} // namespace

class TestSession : public QObject
{
    Q_OBJECT
private slots:
    // What the store holds ("Key=Value;…", in section Feeds unless named) with
    // the command line laid over it: every option that differs from its
    // default, or the error. A malformed stored value is dropped silently.
    void optionsComeFromTheCommandLineOverTheStore_data()
    {
        QTest::addColumn<QString>("stored");
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QString>("expected");
        const auto row = [](const char *tag, const char *stored, const QStringList &arguments,
                            const char *expected) {
            QTest::newRow(tag) << QString(stored) << arguments << QString(expected);
        };
        row("nothing: all off", "", {}, "");
        row("feeds stored",
            "OscTargets=a:1, b:2;MqttHost=broker;MqttPort=8883;WebPort=8080;WebToken=tok;WebAllowNetwork=1",
            {}, "osc=a:1,b:2 mqtt=broker:8883 web=8080 token=tok net");
        row("invalid stored feeds dropped",
            "OscTargets=a:1,nonsense,b:99999;MqttHost=broker:0;MqttPort=x;WebPort=-5;WebToken=has space;"
            "WebAllowNetwork=yes",
            {}, "osc=a:1");
        row("mqtt host with its port", "MqttHost=broker:1884;MqttPort=8883", {}, "mqtt=broker:1884");
        row("command line over stored", "OscTargets=a:1;MqttPort=8883",
            {"--osc", "desk:9000", "--osc", "[::1]:8000", "--mqtt", "b"},
            "osc=desk:9000,::1:8000 mqtt=b:1883");
        row("mqtt with port, web with token", "",
            {"--mqtt", "10.0.0.2:1884", "--web", "8080", "--web-token", "s3cret-_.~"},
            "mqtt=10.0.0.2:1884 web=8080 token=s3cret-_.~");
        row("osc without port", "", {"--osc", "desk"}, "--osc expects HOST:PORT, not \"desk\"");
        row("bare v6 osc", "", {"--osc", "::1:9000"}, "--osc expects HOST:PORT, not \"::1:9000\"");
        row("mqtt bad port", "", {"--mqtt", "broker:70000"},
            "--mqtt expects HOST[:PORT], not \"broker:70000\"");
        row("web port 0", "", {"--web", "0"}, "--web expects a port 1..65535, not \"0\"");
        row("token with a quote", "", {"--web", "1", "--web-token", "a\"b"},
            "--web-token takes letters, digits and . _ ~ - only");
        row("control and discovery stored",
            "MqttHost=b;MqttControl=1;MqttDiscovery=1;MqttDiscoveryPrefix=ha/venue", {},
            "mqtt=b:1883 control discovery prefix=ha/venue");
        row("control and discovery malformed", "MqttHost=b;MqttControl=yes;MqttDiscoveryPrefix=ha/+/x", {},
            "mqtt=b:1883");
        row("control and discovery given", "",
            {"--mqtt", "b", "--mqtt-control", "--mqtt-discovery", "--mqtt-discovery-prefix", "hass"},
            "mqtt=b:1883 control discovery prefix=hass");
        row("control without a broker", "", {"--mqtt-control"},
            "--mqtt-control and --mqtt-discovery need a broker: --mqtt HOST[:PORT]");
        const char *prefixRule = "--mqtt-discovery-prefix expects topic levels without '+', '#' or blanks, ";
        row("prefix with a wildcard", "MqttHost=b", {"--mqtt-discovery-prefix", "ha/#"},
            qPrintable(prefixRule + QString("not \"ha/#\"")));
        row("prefix with an empty level", "MqttHost=b", {"--mqtt-discovery-prefix", "ha//x"},
            qPrintable(prefixRule + QString("not \"ha//x\"")));
        row("stored line", "Line=stageA;Monitor/AutoRecover=1", {}, "line=stageA recover");
        row("command line wins", "Line=stageA", {"--line", "rack-2"}, "line=rack-2");
        row("stored line with a blank", "Line=stage A;Monitor/AutoRecover=01", {}, "");
        const char *lineRule = "--line expects 1 to 64 characters without blanks, '/', '+' or '#', ";
        row("slash refused", "", {"--line", "a/b"}, qPrintable(lineRule + QString("not \"a/b\"")));
        row("wildcard refused", "", {"--line", "a+"}, qPrintable(lineRule + QString("not \"a+\"")));
        row("empty refused", "", {"--line="}, qPrintable(lineRule + QString("not \"\"")));
        row("headless recovers", "", {"--headless"}, "recover headless");
    }
    void optionsComeFromTheCommandLineOverTheStore()
    {
        QFETCH(QString, stored);
        QFETCH(QStringList, arguments);
        MemorySettingsStore store;
        for (const QString &pair : stored.split(';', Qt::SkipEmptyParts)) {
            const QStringList key = pair.section('=', 0, 0).split('/'); // [section/]key
            store.save(kAppName, key.size() > 1 ? key[0] : kFeedSection, key.last(), pair.section('=', 1));
        }
        QCommandLineParser parser;
        parser.addOptions(sessionCommandLineOptions());
        QVERIFY(parser.parse(QStringList{"zunoria"} + arguments));
        QString error;
        const auto options = readSessionOptions(parser, store, &error);
        QTEST(options ? describe(*options) : error, "expected");
    }

    void theLineIsNamedForThePortTheReceiversWereFoundOn_data()
    {
        QTest::addColumn<QString>("given");
        QTest::addColumn<QString>("named");
        QTest::newRow("the port") << QString() << QString("COM3");
        QTest::newRow("--line") << QString("stageA") << QString("stageA");
    }
    void theLineIsNamedForThePortTheReceiversWereFoundOn()
    {
        QFETCH(QString, given);
        SessionOptions options;
        options.lineName = given;
        TestBed bed(options);
        bed.attachSilentPort(1);
        bed.attachReceivers(3, {5});
        QStringList announced;
        connect(bed.session.get(), &Session::lineNameChanged,
                [&](const QString &name) { announced << name; });
        QVERIFY(bed.startHeadless());
        QCOMPARE(bed.ctx.bus.table().foundCount(), 1);
        QTEST(bed.session->lineName(), "named");
        QCOMPARE(announced, given.isEmpty() ? QStringList{"COM3"} : QStringList());
    }

    // Without a window nobody clicks: an offline receiver is tried every 10 s
    // and a lost line reopened every 5 s. In the window only the user's click
    // (or the "Monitor" option) does it.
    void recoveryWithoutAClick_data()
    {
        QTest::addColumn<bool>("headless");
        QTest::newRow("headless") << true;
        QTest::newRow("window, option off") << false;
    }
    void recoveryWithoutAClick()
    {
        QFETCH(bool, headless);
        SessionOptions options;
        options.headless = headless;
        options.autoRecover = headless;
        TestBed bed(options);
        SimBus &bus = bed.attachReceivers(1, {3, 7});
        MainWindow *main = nullptr;
        if (headless)
            QVERIFY(bed.startHeadless());
        else
            QVERIFY(main = bed.loadMainScreen());
        const ReceiverBus &receivers = bed.ctx.bus;

        bus.receiver(7)->powered = false;
        passes(bed, 1);
        QVERIFY(!receivers.table().at(1).online);
        bus.receiver(7)->powered = true;
        passes(bed, 1, 9000);
        QVERIFY(!receivers.table().at(1).online);
        bed.line.clearWritten();
        passes(bed, 1, 1100);
        QCOMPARE(receivers.table().at(1).online, headless);
        QCOMPARE(bed.framesSent("#07A1"), headless ? QStringList{"#07A1\r"} : QStringList());
        passes(bed, 1, 60000);
        QCOMPARE(receivers.table().at(1).online, headless);

        if (!headless) { // the user switches it on, and it stays on
            main->action("mnuAutoRecover")->trigger();
            QCOMPARE(bed.settings.get(kAppName, kMonitorSection, kAutoRecoverKey), "1");
            passes(bed, 1, 10000);
            QVERIFY(receivers.table().at(1).online);
            QVERIFY(main->panel(1)->isEnabled());
            return;
        }

        bed.line.removePort(1); // the adapter is pulled
        passes(bed, 2);
        QVERIFY(!bed.line.isOpen());
        QVERIFY(!receivers.table().at(0).online);
        passes(bed, 1, 4000);
        QVERIFY(!bed.line.isOpen());
        bed.line.attachBus(1, &bus); // and plugged in again
        passes(bed, 1, 1100);
        QVERIFY(bed.line.isOpen());
        QCOMPARE(receivers.table().foundCount(), 2);
        QVERIFY(receivers.table().at(0).online);
        QVERIFY(receivers.table().at(1).online);
        QVERIFY(bed.dialogs.messages().isEmpty());
    }

    // A spoiled level reply comes from a receiver that is there: with the
    // recovery on, its status is read again at once and it stays on the
    // poll, unannounced. Only when those reads fail too does it go offline,
    // raise its alarm and wait for the slow recovery.
    void aSpoiledReplyCostsNoReceiver_data()
    {
        QTest::addColumn<bool>("recover");
        QTest::addColumn<int>("fault");
        QTest::addColumn<int>("spoiled");
        QTest::addColumn<bool>("online");
        QTest::addColumn<int>("statusReads");
        QTest::addColumn<int>("offlineAlarms");
        QTest::newRow("garbled") << true << int(SimFault::Garbled) << 1 << true << 1 << 0;
        QTest::newRow("wrong address") << true << int(SimFault::WrongAddress) << 1 << true << 1 << 0;
        QTest::newRow("noise before it") << true << int(SimFault::Noise) << 1 << true << 1 << 0;
        QTest::newRow("first status read spoiled too")
            << true << int(SimFault::Garbled) << 2 << true << 2 << 0;
        QTest::newRow("both status reads spoiled") << true << int(SimFault::Garbled) << 3 << false << 2 << 1;
        QTest::newRow("recovery off") << false << int(SimFault::Garbled) << 1 << false << 0 << 1;
    }
    void aSpoiledReplyCostsNoReceiver()
    {
        QFETCH(bool, recover);
        QFETCH(int, fault);
        QFETCH(int, spoiled);
        SessionOptions options;
        options.headless = true;
        options.autoRecover = recover;
        TestBed bed(options);
        SimBus &bus = bed.attachReceivers(1, {3, 7, 9});
        QVERIFY(bed.startHeadless());
        bed.line.clearWritten();
        bus.scriptFaults(7, SimFault(fault), spoiled);
        passes(bed, 1);
        QTEST(bed.ctx.bus.table().at(1).online, "online");
        QTEST(int(bed.framesSent("%07M").size()), "statusReads");
        qsizetype alarms = 0;
        for (const Alarm &alarm : bed.session->alarms().alarms())
            alarms += alarm.condition == AlarmCondition::Offline ? 1 : 0;
        QTEST(int(alarms), "offlineAlarms");
        // The receivers after it were read as usual in the same pass.
        QCOMPARE(bed.framesSent("%09N").size(), 1);
        passes(bed, 1);
        QVERIFY(bed.ctx.bus.table().at(0).online);
        QVERIFY(bed.ctx.bus.table().at(2).online);
        QCOMPARE(bed.framesSent("%07N").size(), bed.ctx.bus.table().at(1).online ? 2 : 1);
    }

    // A modal dialog, a KOB wait and a lost line stop the poll: both feeds
    // mark the line paused while it lasts and live again after.
    void feedsMarkTheLinePausedWhileNothingIsPolled_data()
    {
        QTest::addColumn<QString>("pause");
        for (const char *pause : {"dialog", "kob", "lost"}) // the KOB wait, a lost line
            QTest::newRow(pause) << QString(pause);
    }
    void feedsMarkTheLinePausedWhileNothingIsPolled()
    {
        QFETCH(QString, pause);
        const quint16 brokerPort = freeLoopbackPort();
        Child broker;
        QVERIFY(startServer(broker, "mosquitto", {"-p", QString::number(brokerPort)}, brokerPort));
        SessionOptions options;
        options.feeds.mqttHost = QStringLiteral("127.0.0.1");
        options.feeds.mqttPort = brokerPort;
        options.feeds.webPort = freeLoopbackPort();
        options.feeds.webToken = QStringLiteral("paused-0123456789");
        TestBed bed(options);
        SimBus &bus = bed.attachReceivers(1, {3, 7});
        MainWindow *main = bed.loadMainScreen();
        QVERIFY(main);
        FeedWatch feeds(brokerPort, options.feeds.webPort);
        feeds.web.open(QUrl(QStringLiteral("ws://127.0.0.1:%1/ws?token=%2")
                                .arg(options.feeds.webPort)
                                .arg(options.feeds.webToken)));
        passes(bed, 1);
        QVERIFY(feeds.show(false));

        bool shownWhilePaused = false;
        if (pause == "dialog") {
            bed.dialogs.whileShown = [&](const ScriptedDialogs::Shown &) {
                shownWhilePaused = feeds.show(true);
            };
            main->action("mnuLoad")->trigger(); // and the user cancels
        } else if (pause == "kob") {
            // The receiver leaves the line for its KOB function; the wait asks until it is back.
            bed.desktop.script = [&](int call) {
                if (call == 1)
                    shownWhilePaused = feeds.show(true);
            };
            main->pilotClicked(1);
            QVERIFY(!bed.framesSent("%07O").isEmpty());
            QVERIFY(bed.framesSent("#07A1").size() > 1);
        } else {
            bed.line.removePort(1);
            passes(bed, 2);
            shownWhilePaused = feeds.show(true);
            bed.line.attachBus(1, &bus);
            main->action("mnuReconnect")->trigger();
        }
        QVERIFY(shownWhilePaused);
        QVERIFY(bed.session->pollingPaused() == false);
        passes(bed, 1);
        QVERIFY(feeds.show(false));
        QVERIFY(bed.ctx.bus.table().at(0).online);
        QVERIFY(bed.ctx.bus.table().at(1).online);
    }
};

QTEST_MAIN(TestSession)
#include "tst_session.moc"
