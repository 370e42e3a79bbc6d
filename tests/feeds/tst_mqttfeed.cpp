#include "feeds/feedhub.h"
#include "support/fakereceiverbus.h"

#include <QElapsedTimer>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMutex>
#include <QProcess>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTest>

#include <mosquitto.h>

using namespace zun;

namespace {

quint16 freePort()
{
    QTcpServer server;
    server.listen(QHostAddress::LocalHost, 0);
    return server.serverPort();
}

// A real broker on a loopback port, in the foreground of a child process.
struct Broker
{
    explicit Broker(quint16 port) : port(port) {}
    ~Broker() { stop(); }
    bool start()
    {
        process.start(QStringLiteral("mosquitto"), {QStringLiteral("-p"), QString::number(port)});
        if (!process.waitForStarted(5000))
            return false;
        for (int i = 0; i < 100; ++i) {
            QTcpSocket probe;
            probe.connectToHost(QHostAddress::LocalHost, port);
            if (probe.waitForConnected(100))
                return true;
            QTest::qWait(50);
        }
        return false;
    }
    void stop()
    {
        process.kill();
        process.waitForFinished(5000);
    }
    quint16 port;
    QProcess process;
};

// A subscriber to zunoria/#, keeping the latest payload and a count per topic.
struct Subscriber
{
    explicit Subscriber(quint16 port)
    {
        client = mosquitto_new(nullptr, true, this);
        mosquitto_message_callback_set(client, [](mosquitto *, void *self, const mosquitto_message *m) {
            auto *s = static_cast<Subscriber *>(self);
            QMutexLocker lock(&s->mutex);
            const QString topic = QString::fromUtf8(m->topic);
            s->latest[topic] = QByteArray(static_cast<const char *>(m->payload), m->payloadlen);
            ++s->counts[topic];
        });
        mosquitto_connect_callback_set(
            client, [](mosquitto *c, void *, int) { mosquitto_subscribe(c, nullptr, "zunoria/#", 0); });
        mosquitto_connect(client, "127.0.0.1", port, 30);
        mosquitto_loop_start(client);
    }
    ~Subscriber()
    {
        mosquitto_disconnect(client);
        mosquitto_loop_stop(client, false);
        mosquitto_destroy(client);
    }
    QByteArray value(const QString &topic)
    {
        QMutexLocker lock(&mutex);
        return latest.value(topic);
    }
    int count(const QString &topic)
    {
        QMutexLocker lock(&mutex);
        return counts.value(topic);
    }
    QString field(const QString &topic, const QString &key)
    {
        return QJsonDocument::fromJson(value(topic)).object().value(key).toVariant().toString();
    }

    mosquitto *client;
    QMutex mutex;
    QHash<QString, QByteArray> latest;
    QHash<QString, int> counts;
};

} // namespace

class TestMqttFeed : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase() { mosquitto_lib_init(); }
    void publishesToARealBroker();
};

void TestMqttFeed::publishesToARealBroker()
{
    Broker broker(freePort());
    FeedOptions options;
    options.mqttHost = QStringLiteral("127.0.0.1");
    options.mqttPort = broker.port;
    FakeReceiverBus bus;
    auto hub = std::unique_ptr<FeedHub>(attachFeeds(options, &bus, &bus));

    // The broker is not there yet: the polling side must not notice.
    const ReceiverStatus quoted = FakeReceiverBus::receiver(3, QStringLiteral("Vox \"1\" ü\\"));
    QElapsedTimer t;
    t.start();
    for (int i = 0; i < 1000; ++i)
        emit bus.levelsRead(quoted);
    qInfo("levelsRead with the broker down: %.2f us per signal", t.nsecsElapsed() / 1000.0 / 1000);
    QTRY_VERIFY_WITH_TIMEOUT(hub->statusText().startsWith(QStringLiteral("MQTT: disconnected · MQTT:")),
                             5000);

    QVERIFY(broker.start());
    Subscriber sub(broker.port);
    bus.replayDetection({FakeReceiverBus::receiver(1, QStringLiteral("Gtr")), quoted});
    // The feed finds the broker on its own, with back-off.
    QTRY_COMPARE_WITH_TIMEOUT(hub->statusText(), QStringLiteral("MQTT: connected"), 15000);
    QTRY_COMPARE(sub.value(QStringLiteral("zunoria/COM1/status")), QByteArray("online"));
    const QString state3 = QStringLiteral("zunoria/COM1/rx/03/state");
    QTRY_VERIFY(!sub.value(state3).isEmpty());
    QCOMPARE(sub.field(state3, QStringLiteral("name")), quoted.name);
    QVERIFY(sub.value(state3).contains(R"(\"1\")"));
    QCOMPARE(sub.field(state3, QStringLiteral("freq")), QStringLiteral("500.375"));
    QTRY_COMPARE(sub.field(QStringLiteral("zunoria/COM1/rx/01/state"), QStringLiteral("name")),
                 QStringLiteral("Gtr"));

    // Ten level changes in quick succession: the last one arrives, at most
    // one publish per 500 ms carries the ones in between.
    const int before = sub.count(state3);
    ReceiverStatus moving = quoted;
    for (int level = 60; level < 70; ++level) {
        moving.rfA = level;
        emit bus.levelsRead(moving);
        QTest::qWait(20);
    }
    QTRY_COMPARE(sub.field(state3, QStringLiteral("rfa")), QStringLiteral("69"));
    QVERIFY2(sub.count(state3) - before <= 2, qPrintable(QString::number(sub.count(state3) - before)));

    // A new port name moves the topics; the old bus says goodbye.
    emit bus.portChanged(QStringLiteral("COM2"));
    QTRY_COMPARE(sub.value(QStringLiteral("zunoria/COM1/status")), QByteArray("offline"));
    QTRY_COMPARE_WITH_TIMEOUT(sub.field(QStringLiteral("zunoria/COM2/rx/03/state"), QStringLiteral("rfa")),
                              QStringLiteral("69"), 10000);
    hub.reset();
    QTRY_COMPARE(sub.value(QStringLiteral("zunoria/COM2/status")), QByteArray("offline"));
}

QTEST_GUILESS_MAIN(TestMqttFeed)
#include "tst_mqttfeed.moc"
