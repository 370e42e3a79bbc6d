#include "feeds/feedhub.h"
#include "support/fakereceiverbus.h"
#include "support/netsupport.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTest>

using namespace zun;

namespace {

// mosquitto_sub -v on zunoria/#: the latest payload and a count per topic.
struct Subscriber
{
    explicit Subscriber(quint16 port)
    {
        QObject::connect(&process, &QProcess::readyReadStandardOutput, [this] {
            while (process.canReadLine()) {
                const QByteArray line = process.readLine().chopped(1);
                const QString topic = QString::fromUtf8(line.left(line.indexOf(' ')));
                latest[topic] = line.mid(line.indexOf(' ') + 1);
                ++counts[topic];
            }
        });
        process.start(QStringLiteral("mosquitto_sub"),
                      {"-h", "127.0.0.1", "-p", QString::number(port), "-v", "-t", "zunoria/#"});
    }
    ~Subscriber()
    {
        process.kill();
        process.waitForFinished();
    }
    QString field(const QString &topic, const QString &key) const
    {
        return QJsonDocument::fromJson(latest.value(topic)).object().value(key).toVariant().toString();
    }
    QProcess process;
    QHash<QString, QByteArray> latest;
    QHash<QString, int> counts;
};

} // namespace

class TestMqttFeed : public QObject
{
    Q_OBJECT
private slots:
    void publishesToARealBroker();
};

void TestMqttFeed::publishesToARealBroker()
{
    const quint16 port = freeLoopbackPort();
    FeedOptions options;
    options.mqttHost = QStringLiteral("127.0.0.1");
    options.mqttPort = port;
    FakeReceiverBus bus;
    auto hub = std::unique_ptr<FeedHub>(attachFeeds(options, &bus, &bus));

    // The broker is not there yet: the feed says so and keeps trying.
    const ReceiverStatus quoted = FakeReceiverBus::receiver(3, QStringLiteral("Vox \"1\" ü\\"));
    emit bus.levelsRead(quoted);
    QTRY_VERIFY(hub->statusText().startsWith(QStringLiteral("MQTT: disconnected · MQTT: 127.0.0.1:")));

    QProcess broker;
    broker.start(QStringLiteral("mosquitto"), {"-p", QString::number(port)});
    QTRY_VERIFY(acceptsConnections(port));
    Subscriber sub(port);
    bus.replayDetection({FakeReceiverBus::receiver(1, QStringLiteral("Gtr")), quoted});
    // The feed finds the broker on its own, with back-off.
    QTRY_COMPARE_WITH_TIMEOUT(hub->statusText(), QStringLiteral("MQTT: connected"), 15000);
    QTRY_COMPARE(sub.latest.value(QStringLiteral("zunoria/COM1/status")), QByteArray("online"));
    const QString state3 = QStringLiteral("zunoria/COM1/rx/03/state");
    QTRY_COMPARE(sub.field(state3, QStringLiteral("name")), quoted.name);
    QVERIFY(sub.latest.value(state3).contains(R"(\"1\")"));
    QCOMPARE(sub.field(state3, QStringLiteral("freq")), QStringLiteral("500.375"));
    QTRY_COMPARE(sub.field(QStringLiteral("zunoria/COM1/rx/01/state"), QStringLiteral("name")),
                 QStringLiteral("Gtr"));

    // Ten level changes in quick succession: the last one arrives, at most
    // one publish per 500 ms carries the ones in between.
    const int before = sub.counts.value(state3);
    ReceiverStatus moving = quoted;
    for (moving.rfA = 60; moving.rfA < 70; ++moving.rfA) {
        emit bus.levelsRead(moving);
        QTest::qWait(20);
    }
    QTRY_COMPARE(sub.field(state3, QStringLiteral("rfa")), QStringLiteral("69"));
    QVERIFY2(sub.counts.value(state3) - before <= 2,
             qPrintable(QString::number(sub.counts[state3] - before)));

    // A new port name moves the topics; the old bus says goodbye.
    emit bus.portChanged(QStringLiteral("COM2"));
    QTRY_COMPARE(sub.latest.value(QStringLiteral("zunoria/COM1/status")), QByteArray("offline"));
    QTRY_COMPARE_WITH_TIMEOUT(sub.field(QStringLiteral("zunoria/COM2/rx/03/state"), QStringLiteral("rfa")),
                              QStringLiteral("69"), 10000);
    hub.reset();
    QTRY_COMPARE(sub.latest.value(QStringLiteral("zunoria/COM2/status")), QByteArray("offline"));
    broker.kill();
    broker.waitForFinished();
}

QTEST_GUILESS_MAIN(TestMqttFeed)
#include "tst_mqttfeed.moc"
