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
    void commandLine_data();
    void commandLine();
    void settingsStore_data();
    void settingsStore();
    void statusText_data();
    void statusText();
};

void TestFeedOptions::commandLine_data()
{
    QTest::addColumn<QStringList>("args");
    QTest::addColumn<QString>("expected"); // describe() of the result, or the error text

    const QString off = QStringLiteral("osc= mqtt=:1883 web=0 token= net=0");
    QTest::newRow("nothing: all off") << QStringList{} << off;
    QTest::newRow("two OSC targets, v6 literal")
        << QStringList{"--osc", "desk.local:9000", "--osc", "[::1]:8000"}
        << "osc=desk.local:9000,::1:8000 mqtt=:1883 web=0 token= net=0";
    QTest::newRow("mqtt default port")
        << QStringList{"--mqtt", "broker"} << "osc= mqtt=broker:1883 web=0 token= net=0";
    QTest::newRow("mqtt with port, web with token")
        << QStringList{"--mqtt", "10.0.0.2:1884", "--web", "8080", "--web-token", "s3cret-_.~"}
        << "osc= mqtt=10.0.0.2:1884 web=8080 token=s3cret-_.~ net=0";
    QTest::newRow("osc without port")
        << QStringList{"--osc", "desk"} << "--osc expects HOST:PORT, not \"desk\"";
    QTest::newRow("bare v6 osc") << QStringList{"--osc", "::1:9000"}
                                 << "--osc expects HOST:PORT, not \"::1:9000\"";
    QTest::newRow("mqtt bad port") << QStringList{"--mqtt", "broker:70000"}
                                   << "--mqtt expects HOST[:PORT], not \"broker:70000\"";
    QTest::newRow("token with a quote") << QStringList{"--web", "1", "--web-token", "a\"b"}
                                        << "--web-token takes letters, digits and . _ ~ - only";
}

void TestFeedOptions::commandLine()
{
    QFETCH(QStringList, args);
    QFETCH(QString, expected);
    QCommandLineParser parser;
    parser.addOptions(feedCommandLineOptions());
    QVERIFY(parser.parse(QStringList{"zunoria"} + args));
    QString error;
    const auto options = applyFeedArguments(parser, FeedOptions{}, &error);
    QCOMPARE(options ? describe(*options) : error, expected);
}

void TestFeedOptions::settingsStore_data()
{
    QTest::addColumn<QStringList>("keyValues");
    QTest::addColumn<QString>("expected");

    QTest::newRow("empty store") << QStringList{} << "osc= mqtt=:1883 web=0 token= net=0";
    QTest::newRow("all set") << QStringList{"OscTargets", "a:1, b:2", "MqttHost",        "broker",
                                            "MqttPort",   "8883",     "WebPort",         "8080",
                                            "WebToken",   "tok",      "WebAllowNetwork", "1"}
                             << "osc=a:1,b:2 mqtt=broker:8883 web=8080 token=tok net=1";
    QTest::newRow("invalid parts dropped") << QStringList{"OscTargets",      "a:1,nonsense,b:99999",
                                                          "MqttHost",        "broker:1",
                                                          "MqttPort",        "x",
                                                          "WebPort",         "-5",
                                                          "WebToken",        "has space",
                                                          "WebAllowNetwork", "yes"}
                                           << "osc=a:1 mqtt=:1883 web=0 token= net=0";
}

void TestFeedOptions::settingsStore()
{
    QFETCH(QStringList, keyValues);
    QFETCH(QString, expected);
    MemorySettingsStore store;
    for (qsizetype i = 0; i + 1 < keyValues.size(); i += 2)
        store.save(kAppName, kFeedSection, keyValues[i], keyValues[i + 1]);
    QCOMPARE(describe(loadFeedOptions(store, kAppName)), expected);
}

void TestFeedOptions::statusText_data()
{
    QTest::addColumn<int>("osc");
    QTest::addColumn<int>("mqtt");
    QTest::addColumn<QString>("web");
    QTest::addColumn<QString>("error");
    QTest::addColumn<QString>("expected");

    QTest::newRow("all off") << 0 << int(FeedStatus::Mqtt::Off) << ""
                             << ""
                             << "";
    QTest::newRow("one target") << 1 << int(FeedStatus::Mqtt::Off) << ""
                                << ""
                                << "OSC: 1 target";
    QTest::newRow("everything") << 2 << int(FeedStatus::Mqtt::Connected) << "http://127.0.0.1:8080/?token=t"
                                << ""
                                << "OSC: 2 targets · MQTT: connected · Web: http://127.0.0.1:8080/?token=t";
    QTest::newRow("broker down") << 0 << int(FeedStatus::Mqtt::Disconnected) << ""
                                 << "MQTT: connection lost"
                                 << "MQTT: disconnected · MQTT: connection lost";
}

void TestFeedOptions::statusText()
{
    QFETCH(int, osc);
    QFETCH(int, mqtt);
    QFETCH(QString, web);
    QFETCH(QString, error);
    QFETCH(QString, expected);
    QCOMPARE(feedStatusText({osc, FeedStatus::Mqtt(mqtt), web, error}), expected);
}

QTEST_GUILESS_MAIN(TestFeedOptions)
#include "tst_feedoptions.moc"
