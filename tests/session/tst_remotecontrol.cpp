// Mute, name and bring-back requests over a real mosquitto broker, and the
// Home Assistant discovery messages, against the program as it is assembled:
// what the simulated line hears is compared with what the window makes it
// hear for the same action.
#include "detail/detailwindow.h"
#include "detail/settingstab.h"
#include "feeds/controlrequest.h"
#include "feeds/hadiscovery.h"
#include "mainscreen/mainwindow.h"
#include "mainscreen/rcvpanel.h"
#include "support/netsupport.h"
#include "support/testbed.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QLineEdit>
#include <QRegularExpression>
#include <QTest>
#include <QToolButton>

using namespace zun;

namespace {

// The frames a step put on the line, the level polls left out: they run
// between anybody's actions and say nothing about them.
QStringList actionFrames(const TestBed &bed)
{
    static const QRegularExpression poll(QStringLiteral("^%..N\r$"));
    QStringList frames = bed.framesSent();
    frames.removeIf([](const QString &f) { return poll.match(f).hasMatch(); });
    return frames;
}

// The receiver at address 7 (table index 1) stops answering and is marked offline.
void takeOffline(TestBed &bed, SimBus &sim)
{
    sim.receiver(7)->powered = false;
    bed.session->loop().runSteps();
    sim.receiver(7)->powered = true;
}

// What the window sends for the same actions, one per entry: "mute" (the
// panel's Mute button), "name TEXT" (typed in the detail window, Enter),
// "bringBack" (a click on the offline name).
QStringList windowFrames(const QStringList &actions, bool offline)
{
    TestBed bed;
    SimBus &sim = bed.attachReceivers(1, {3, 7});
    MainWindow *main = bed.loadMainScreen();
    if (!main)
        return {"no window"};
    main->show();
    if (offline)
        takeOffline(bed, sim);
    bed.line.clearWritten();
    for (const QString &action : actions) {
        if (action == "mute") {
            main->panel(1)->muteButton()->click();
        } else if (action == "bringBack") {
            main->nameClicked(1);
        } else if (action.startsWith("name ")) {
            main->moreClicked(1);
            auto *form = qobject_cast<DetailWindow *>(main->detailWindow());
            if (!form)
                return {"no detail window"};
            const std::size_t before = bed.line.written().size();
            QLineEdit *box = form->settings().nameEdit;
            box->clear();
            QTest::keyClicks(box, action.mid(5));
            QTest::keyClick(box, Qt::Key_Return);
            // Only the name's own frames: opening the window reads the receiver.
            QStringList typed;
            for (std::size_t i = before; i < bed.line.written().size(); ++i)
                typed << QString::fromLatin1(bed.line.written()[i].bytes);
            return typed;
        }
    }
    return actionFrames(bed);
}

// A headless program on COM1 with receivers 3 and 7, publishing to the broker.
struct BrokerBed
{
    BrokerBed(quint16 port, const QString &line, bool control, bool discovery)
        : bed(options(port, line, control, discovery)), sim(bed.attachReceivers(1, {3, 7}))
    {
    }
    static SessionOptions options(quint16 port, const QString &line, bool control, bool discovery)
    {
        SessionOptions o;
        o.headless = true;
        // Recovery on the virtual clock would race the requests under test.
        o.autoRecover = false;
        o.lineName = line;
        o.feeds.mqttHost = "127.0.0.1";
        o.feeds.mqttPort = port;
        o.feeds.mqttControl = control;
        o.feeds.mqttDiscovery = discovery;
        return o;
    }
    bool start()
    {
        return bed.startHeadless() &&
               QTest::qWaitFor([this] { return bed.session->feedStatusText() == "MQTT: connected"; }, 10000);
    }
    // Runs the program's passes until the condition holds.
    bool runUntil(const std::function<bool()> &done)
    {
        return QTest::qWaitFor(
            [&] {
                bed.session->loop().runSteps();
                return done();
            },
            10000);
    }
    TestBed bed;
    SimBus &sim;
};

bool publish(quint16 port, const QString &topic, const QByteArray &payload)
{
    return QProcess::execute("mosquitto_pub", {"-h", "127.0.0.1", "-p", QString::number(port), "-q", "1",
                                               "-t", topic, "-m", QString::fromUtf8(payload)}) == 0;
}

} // namespace

class TestRemoteControl : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase()
    {
        m_port = freeLoopbackPort();
        QVERIFY(startServer(m_broker, "mosquitto", {"-p", QString::number(m_port)}, m_port));
    }

    void requestsOverTheBroker_data()
    {
        QTest::addColumn<QString>("address");
        QTest::addColumn<QStringList>("payloads"); // sent in order; the last one's result is checked
        QTest::addColumn<bool>("offline");         // receiver 07 stopped answering first
        QTest::addColumn<QStringList>("window");   // the same actions in the window; empty: nothing sent
        QTest::addColumn<QString>("error");        // empty: {"ok":true}
        const auto row = [](const char *tag, const QString &address, const QStringList &payloads,
                            bool offline, const QStringList &window, const QString &error = {}) {
            QTest::newRow(tag) << address << payloads << offline << window << error;
        };
        row("mute on", "07", {"{\"mute\":true}"}, false, {"mute"});
        row("mute on, then off", "07", {"{\"mute\":true}", "{\"mute\":false}"}, false, {"mute", "mute"});
        row("mute off while not muted", "07", {"{\"mute\":false}"}, false, {});
        row("name", "07", {"{\"name\":\"VOX1\"}"}, false, {"name VOX1"});
        row("name with signs and a blank", "07", {"{\"name\":\"A-1 /*\"}"}, false, {"name A-1 /*"});
        row("empty name", "07", {"{\"name\":\"\"}"}, false, {"name "});
        row("bring back", "07", {"{\"bringBack\":true}"}, true, {"bringBack"});
        row("bring back an online receiver", "07", {"{\"bringBack\":true}"}, false, {});
        row("malformed JSON", "07", {"{\"mute\":"}, false, {}, "the request is not a JSON object");
        row("not an object", "07", {"[true]"}, false, {}, "the request is not a JSON object");
        row("unknown key", "07", {"{\"volume\":3}"}, false, {},
            "unknown key \"volume\": mute, name or bringBack");
        row("two keys", "07", {"{\"mute\":true,\"name\":\"X\"}"}, false, {},
            "one key per request: mute, name or bringBack");
        row("mute as text", "07", {"{\"mute\":\"yes\"}"}, false, {}, "mute expects true or false");
        row("name as number", "07", {"{\"name\":5}"}, false, {}, "name expects a text");
        const QString nameRule = "name takes up to 6 characters: 0-9, A-Z, blank and * + , - . /";
        row("lower-case name", "07", {"{\"name\":\"vox\"}"}, false, {}, nameRule);
        row("name too long", "07", {"{\"name\":\"VOCALS1\"}"}, false, {}, nameRule);
        row("name with a quote", "07", {"{\"name\":\"A\\\"B\"}"}, false, {}, nameRule);
        row("bringBack false", "07", {"{\"bringBack\":false}"}, true, {}, "bringBack expects true");
        row("address not on the line", "05", {"{\"mute\":true}"}, false, {},
            "no receiver at address 05 on this line");
        row("address out of range", "65", {"{\"mute\":true}"}, false, {},
            "the address must be 01 to 64, not \"65\"");
        row("address in one digit", "7", {"{\"mute\":true}"}, false, {},
            "the address must be 01 to 64, not \"7\"");
        row("mute an offline receiver", "07", {"{\"mute\":true}"}, true, {}, "receiver 07 is offline");
        row("rename an offline receiver", "07", {"{\"name\":\"X\"}"}, true, {}, "receiver 07 is offline");
    }
    void requestsOverTheBroker()
    {
        QFETCH(QString, address);
        QFETCH(QStringList, payloads);
        QFETCH(bool, offline);
        QFETCH(QStringList, window);
        QFETCH(QString, error);
        const QString line = QStringLiteral("row%1").arg(++m_rows);
        BrokerBed program(m_port, line, true, false);
        QVERIFY(program.start());
        if (offline)
            takeOffline(program.bed, program.sim);
        Subscriber topics(m_port);
        QTRY_VERIFY(topics.latest.contains(QStringLiteral("zunoria/%1/status").arg(line)));
        program.bed.line.clearWritten();

        const QString base = QStringLiteral("zunoria/%1/rx/%2/").arg(line, address);
        for (int i = 0; i < payloads.size(); ++i) {
            QVERIFY(publish(m_port, base + "set", payloads[i].toUtf8()));
            QVERIFY(program.runUntil([&] { return topics.counts.value(base + "result") == i + 1; }));
        }
        QCOMPARE(topics.latest.value(base + "result"), controlResultJson(error));
        const QStringList windowSent = windowFrames(window, offline);
        QCOMPARE(windowSent.isEmpty(), window.isEmpty());
        QCOMPARE(actionFrames(program.bed), windowSent);
        if (error.isEmpty() && payloads.last().contains("mute")) {
            const bool muted = payloads.last().contains("true");
            QCOMPARE(program.bed.ctx.bus.table().at(1).mute, muted);
            QTRY_COMPARE(topics.field(base + "state", "mute"), muted ? "true" : "false");
        }
        if (window.size() == 1 && window[0].startsWith("bringBack"))
            QVERIFY(program.bed.ctx.bus.table().at(1).online);
    }

    // Without --mqtt-control the set topic is not even subscribed: a request
    // published before a message the program does hear (Home Assistant's
    // "online", which makes it announce again) has no effect and no answer.
    void withoutControlNothingIsHeardOrSent()
    {
        BrokerBed program(m_port, "plain", false, true);
        QVERIFY(program.start());
        Subscriber discovery(m_port, "homeassistant/#");
        Subscriber topics(m_port);
        const QString battery = "homeassistant/sensor/zunoria_plain_07/battery/config";
        QTRY_VERIFY(discovery.counts.value(battery) > 0);
        QTRY_VERIFY(topics.latest.contains("zunoria/plain/status"));
        program.bed.line.clearWritten();
        const int announced = discovery.counts.value(battery);

        QVERIFY(publish(m_port, "zunoria/plain/rx/07/set", "{\"mute\":true}"));
        QVERIFY(publish(m_port, "homeassistant/status", "online"));
        QVERIFY(program.runUntil([&] { return discovery.counts.value(battery) > announced; }));
        program.bed.session->loop().runSteps();
        QCOMPARE(actionFrames(program.bed), QStringList());
        QVERIFY(!program.bed.ctx.bus.table().at(1).mute);
        QVERIFY(topics.latest.keys().filter("result").isEmpty());
        // Read-only, the mute entity cannot write.
        QVERIFY(!discovery.latest.value("homeassistant/binary_sensor/zunoria_plain_07/mute/config")
                     .contains("set"));
        QTRY_COMPARE(discovery.latest.value("homeassistant/switch/zunoria_plain_07/mute/config"), "(null)");
    }

    // One device per receiver, its entities read from the state topic and
    // available with the line; a receiver gone after a new detection is
    // emptied; Home Assistant's restart brings the present ones back.
    void discoveryFollowsTheReceivers()
    {
        const QString line = "stage.A"; // a dot is fine in a topic but not in an ID
        const QString id = discoveryId(line);
        QVERIFY(QRegularExpression("^stage_A-[0-9a-f]{8}$").match(id).hasMatch());
        QVERIFY(id != discoveryId("stage_A"));
        BrokerBed program(m_port, line, true, true);
        QVERIFY(program.start());
        Subscriber discovery(m_port, "homeassistant/#");

        // What the broker keeps for this line: the emptied configs (mute as a
        // binary sensor, with control on) are not kept, so not seen here.
        QStringList expected;
        for (const QString address : {"03", "07"})
            for (const QString entity : {"sensor/%1/battery", "sensor/%1/rf_a", "sensor/%1/rf_b",
                                         "sensor/%1/audio", "binary_sensor/%1/online", "switch/%1/mute"})
                expected << "homeassistant/" + entity.arg("zunoria_" + id + "_" + address) + "/config";
        expected.sort();
        // The configs of this line that say something (an emptied one reads "(null)").
        const auto configured = [&] {
            QStringList topics;
            for (auto it = discovery.latest.cbegin(); it != discovery.latest.cend(); ++it)
                if (it.key().contains("zunoria_" + id + "_") && it.value() != "(null)")
                    topics << it.key();
            topics.sort();
            return topics;
        };
        QTRY_COMPARE(configured(), expected);

        const QString device = "zunoria_" + id + "_07";
        const QJsonObject battery =
            QJsonDocument::fromJson(
                discovery.latest.value("homeassistant/sensor/" + device + "/battery/config"))
                .object();
        QCOMPARE(battery["unique_id"].toString(), device + "_battery");
        QCOMPARE(battery["state_topic"].toString(), "zunoria/stage.A/rx/07/state");
        QCOMPARE(battery["availability_topic"].toString(), "zunoria/stage.A/status");
        QCOMPARE(battery["device_class"].toString(), "battery");
        QCOMPARE(battery["device"]["identifiers"].toArray(), QJsonArray{device});
        QVERIFY(battery["value_template"].toString().contains("value_json.battery"));
        const QJsonObject mute =
            QJsonDocument::fromJson(discovery.latest.value("homeassistant/switch/" + device + "/mute/config"))
                .object();
        QCOMPARE(mute["command_topic"].toString(), "zunoria/stage.A/rx/07/set");
        QCOMPARE(mute["payload_on"].toString(), "{\"mute\":true}");
        static const QRegularExpression plainId("^[a-zA-Z0-9_-]+$");
        for (const QByteArray &payload : std::as_const(discovery.latest))
            if (payload != "(null)")
                QVERIFY(plainId.match(QJsonDocument::fromJson(payload)["unique_id"].toString()).hasMatch());

        // Receiver 7 leaves the line; the next detection finds only 3.
        program.sim.removeReceiver(7);
        QVERIFY(program.bed.session->detectReceivers());
        QCOMPARE(program.bed.ctx.bus.table().foundCount(), 1);
        QTRY_COMPARE(configured(), expected.filter("_03/"));
        for (const QString &topic : expected.filter("_07/"))
            QCOMPARE(discovery.latest.value(topic), "(null)");
        const int before3 = discovery.counts.value(expected.first());
        const int before7 = discovery.counts.value(expected.last());
        QVERIFY(publish(m_port, "homeassistant/status", "online"));
        QTRY_COMPARE(discovery.counts.value(expected.first()), before3 + 1);
        QCOMPARE(discovery.counts.value(expected.last()), before7);
    }

private:
    quint16 m_port = 0;
    Child m_broker;
    int m_rows = 0;
};

QTEST_MAIN(TestRemoteControl)
#include "tst_remotecontrol.moc"
