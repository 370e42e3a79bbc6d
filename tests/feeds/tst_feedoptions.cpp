#include "core/options.h"
#include "feeds/feedoptions.h"
#include "feeds/feedstatus.h"
#include "platform/settingsstore.h"

#include <QCommandLineParser>
#include <QTest>

using namespace zun;

namespace {

QString describe(const FeedOptions &o)
{
    QStringList osc;
    for (const OscTarget &t : o.oscTargets)
        osc << QStringLiteral("%1:%2").arg(t.host).arg(t.port);
    return QStringLiteral("osc=%1 mqtt=%2:%3 web=%4 token=%5 net=%6")
        .arg(osc.join(QLatin1Char(',')), o.mqttHost)
        .arg(o.mqttPort)
        .arg(o.webPort)
        .arg(o.webToken)
        .arg(o.webAllowNetwork);
}

} // namespace

class TestFeedOptions : public QObject
{
    Q_OBJECT
private slots:
    void options_data();
    void options();
    void statusText();
};

void TestFeedOptions::options_data()
{
    QTest::addColumn<QString>("stored"); // Key=Value;Key=Value in section "Feeds"
    QTest::addColumn<QStringList>("args");
    QTest::addColumn<QString>("expected"); // describe() of the result, or the error text

    const QString off = QStringLiteral("osc= mqtt=:1883 web=0 token= net=0");
    QTest::newRow("nothing: all off") << "" << QStringList{} << off;
    QTest::newRow("all stored")
        << "OscTargets=a:1, b:2;MqttHost=broker;MqttPort=8883;WebPort=8080;WebToken=tok;WebAllowNetwork=1"
        << QStringList{} << "osc=a:1,b:2 mqtt=broker:8883 web=8080 token=tok net=1";
    QTest::newRow("invalid stored parts dropped")
        << "OscTargets=a:1,nonsense,b:99999;MqttHost=broker:1;MqttPort=x;WebPort=-5;WebToken=has space;"
           "WebAllowNetwork=yes"
        << QStringList{} << "osc=a:1 mqtt=:1883 web=0 token= net=0";
    QTest::newRow("command line over stored")
        << "OscTargets=a:1;MqttPort=8883"
        << QStringList{"--osc", "desk:9000", "--osc", "[::1]:8000", "--mqtt", "b"}
        << "osc=desk:9000,::1:8000 mqtt=b:1883 web=0 token= net=0";
    QTest::newRow("mqtt with port, web with token")
        << "" << QStringList{"--mqtt", "10.0.0.2:1884", "--web", "8080", "--web-token", "s3cret-_.~"}
        << "osc= mqtt=10.0.0.2:1884 web=8080 token=s3cret-_.~ net=0";
    QTest::newRow("osc without port")
        << "" << QStringList{"--osc", "desk"} << "--osc expects HOST:PORT, not \"desk\"";
    QTest::newRow("bare v6 osc") << "" << QStringList{"--osc", "::1:9000"}
                                 << "--osc expects HOST:PORT, not \"::1:9000\"";
    QTest::newRow("mqtt bad port") << "" << QStringList{"--mqtt", "broker:70000"}
                                   << "--mqtt expects HOST[:PORT], not \"broker:70000\"";
    QTest::newRow("web port 0") << "" << QStringList{"--web", "0"}
                                << "--web expects a port 1..65535, not \"0\"";
    QTest::newRow("token with a quote") << "" << QStringList{"--web", "1", "--web-token", "a\"b"}
                                        << "--web-token takes letters, digits and . _ ~ - only";
}

void TestFeedOptions::options()
{
    QFETCH(QString, stored);
    QFETCH(QStringList, args);
    QFETCH(QString, expected);
    MemorySettingsStore store;
    for (const QString &pair : stored.split(QLatin1Char(';'), Qt::SkipEmptyParts))
        store.save(kAppName, kFeedSection, pair.section(QLatin1Char('='), 0, 0),
                   pair.section(QLatin1Char('='), 1));
    QCommandLineParser parser;
    parser.addOptions(feedCommandLineOptions());
    QVERIFY(parser.parse(QStringList{"zunoria"} + args));
    QString error;
    const auto options = applyFeedArguments(parser, loadFeedOptions(store, kAppName), &error);
    QCOMPARE(options ? describe(*options) : error, expected);
}

void TestFeedOptions::statusText()
{
    using M = FeedStatus::Mqtt;
    QCOMPARE(feedStatusText({0, M::Off, {}, {}}), QString());
    QCOMPARE(feedStatusText({1, M::Connecting, {}, {}}), QStringLiteral("OSC: 1 target · MQTT: connecting"));
    QCOMPARE(feedStatusText({2, M::Connected, QStringLiteral("http://h:1/?token=t"), {}}),
             QStringLiteral("OSC: 2 targets · MQTT: connected · Web: http://h:1/?token=t"));
    QCOMPARE(feedStatusText({0, M::Disconnected, {}, QStringLiteral("MQTT: connection lost")}),
             QStringLiteral("MQTT: disconnected · MQTT: connection lost"));
}

QTEST_GUILESS_MAIN(TestFeedOptions)
#include "tst_feedoptions.moc"
