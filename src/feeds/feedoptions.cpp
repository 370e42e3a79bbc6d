#include "feeds/feedoptions.h"

#include "platform/settingsstore.h"

#include <QCommandLineParser>
#include <QRegularExpression>

namespace zun {
namespace {

// Tokens travel in URLs, so they keep to the characters a URL leaves alone.
bool isUrlSafeToken(const QString &token)
{
    static const QRegularExpression unsafe(QStringLiteral("[^A-Za-z0-9._~-]"));
    return !token.isEmpty() && !token.contains(unsafe);
}

std::optional<quint16> parsePort(const QString &text)
{
    bool ok = false;
    const uint port = text.toUInt(&ok);
    if (!ok || port == 0 || port > 65535)
        return std::nullopt;
    return static_cast<quint16>(port);
}

// Splits "host:port" / "[v6]:port" / "host"; port stays empty when absent.
bool splitHostPort(const QString &text, QString *host, QString *port)
{
    const QString t = text.trimmed();
    if (t.startsWith(QLatin1Char('['))) {
        const qsizetype close = t.indexOf(QLatin1Char(']'));
        if (close < 0)
            return false;
        *host = t.mid(1, close - 1);
        const QString rest = t.mid(close + 1);
        if (!rest.isEmpty() && !rest.startsWith(QLatin1Char(':')))
            return false;
        *port = rest.mid(1);
        return !host->isEmpty() && (rest.isEmpty() || !port->isEmpty());
    }
    const qsizetype colon = t.lastIndexOf(QLatin1Char(':'));
    if (colon >= 0 && t.indexOf(QLatin1Char(':')) != colon)
        return false; // a bare IPv6 address is ambiguous without brackets
    *host = colon < 0 ? t : t.left(colon);
    *port = colon < 0 ? QString() : t.mid(colon + 1);
    return !host->isEmpty() && !host->contains(QLatin1Char(' ')) && (colon < 0 || !port->isEmpty());
}

} // namespace

bool validTopicPrefix(const QString &text)
{
    static const QRegularExpression level(QStringLiteral("^[^/+#\\s]+(/[^/+#\\s]+)*$"));
    return text.size() <= 128 && level.match(text).hasMatch();
}

std::optional<OscTarget> parseOscTarget(const QString &text)
{
    QString host, port;
    if (!splitHostPort(text, &host, &port) || port.isEmpty())
        return std::nullopt;
    const auto p = parsePort(port);
    if (!p)
        return std::nullopt;
    return OscTarget{host, *p};
}

FeedOptions loadFeedOptions(const SettingsStore &store, const QString &app)
{
    const auto get = [&](const char *key) {
        return store.get(app, kFeedSection, QLatin1String(key)).trimmed();
    };
    FeedOptions options;
    for (const QString &item : get("OscTargets").split(QLatin1Char(','), Qt::SkipEmptyParts)) {
        if (const auto target = parseOscTarget(item))
            options.oscTargets.append(*target);
    }
    // "host:port" as the command line takes it; MqttPort serves a bare host.
    QString host, port;
    if (splitHostPort(get("MqttHost"), &host, &port)) {
        const auto fromHost = parsePort(port);
        const auto fromKey = parsePort(get("MqttPort"));
        if (port.isEmpty() || fromHost)
            options.mqttHost = host;
        if (fromHost)
            options.mqttPort = *fromHost;
        else if (fromKey && port.isEmpty())
            options.mqttPort = *fromKey;
    } else if (const auto p = parsePort(get("MqttPort"))) {
        options.mqttPort = *p;
    }
    options.mqttUser = get("MqttUser");
    options.mqttPassword = store.get(app, kFeedSection, QStringLiteral("MqttPassword"));
    options.mqttCaFile = get("MqttCaFile");
    options.mqttControl = get("MqttControl") == QLatin1String("1");
    options.mqttDiscovery = get("MqttDiscovery") == QLatin1String("1");
    if (validTopicPrefix(get("MqttDiscoveryPrefix")))
        options.mqttDiscoveryPrefix = get("MqttDiscoveryPrefix");
    if (const auto p = parsePort(get("WebPort")))
        options.webPort = *p;
    if (isUrlSafeToken(get("WebToken")))
        options.webToken = get("WebToken");
    options.webAllowNetwork = get("WebAllowNetwork") == QLatin1String("1");
    return options;
}

QList<QCommandLineOption> feedCommandLineOptions()
{
    return {
        {QStringLiteral("osc"), QStringLiteral("Send live status as OSC to HOST:PORT (repeatable)."),
         QStringLiteral("HOST:PORT")},
        {QStringLiteral("mqtt"), QStringLiteral("Publish live status to the MQTT broker at HOST[:PORT]."),
         QStringLiteral("HOST[:PORT]")},
        {QStringLiteral("mqtt-control"),
         QStringLiteral("Obey mute, name and bring-back requests on zunoria/<line>/rx/<address>/set.")},
        {QStringLiteral("mqtt-discovery"),
         QStringLiteral("Announce every receiver to Home Assistant by MQTT discovery.")},
        {QStringLiteral("mqtt-discovery-prefix"),
         QStringLiteral("Topic prefix of the discovery messages (default: homeassistant)."),
         QStringLiteral("PREFIX")},
        {QStringLiteral("web"), QStringLiteral("Serve the live dashboard on PORT."), QStringLiteral("PORT")},
        {QStringLiteral("web-token"), QStringLiteral("Access token of the dashboard (default: random)."),
         QStringLiteral("TOKEN")},
    };
}

std::optional<FeedOptions> applyFeedArguments(const QCommandLineParser &parser, FeedOptions options,
                                              QString *error)
{
    const auto fail = [&](const QString &message) {
        if (error)
            *error = message;
        return std::nullopt;
    };
    const QStringList osc = parser.values(QStringLiteral("osc"));
    if (!osc.isEmpty())
        options.oscTargets.clear();
    for (const QString &text : osc) {
        const auto target = parseOscTarget(text);
        if (!target)
            return fail(QStringLiteral("--osc expects HOST:PORT, not \"%1\"").arg(text));
        options.oscTargets.append(*target);
    }
    if (parser.isSet(QStringLiteral("mqtt"))) {
        const QString text = parser.value(QStringLiteral("mqtt"));
        QString host, port;
        std::optional<quint16> p = options.mqttPort;
        if (splitHostPort(text, &host, &port) && !port.isEmpty())
            p = parsePort(port);
        if (host.isEmpty() || !p)
            return fail(QStringLiteral("--mqtt expects HOST[:PORT], not \"%1\"").arg(text));
        options.mqttHost = host;
        options.mqttPort = port.isEmpty() ? 1883 : *p;
    }
    options.mqttControl = options.mqttControl || parser.isSet(QStringLiteral("mqtt-control"));
    options.mqttDiscovery = options.mqttDiscovery || parser.isSet(QStringLiteral("mqtt-discovery"));
    if (parser.isSet(QStringLiteral("mqtt-discovery-prefix"))) {
        const QString prefix = parser.value(QStringLiteral("mqtt-discovery-prefix"));
        if (!validTopicPrefix(prefix))
            return fail(QStringLiteral("--mqtt-discovery-prefix expects topic levels without '+', '#' "
                                       "or blanks, not \"%1\"")
                            .arg(prefix));
        options.mqttDiscoveryPrefix = prefix;
    }
    if (options.mqttHost.isEmpty() &&
        (parser.isSet(QStringLiteral("mqtt-control")) || parser.isSet(QStringLiteral("mqtt-discovery"))))
        return fail(QStringLiteral("--mqtt-control and --mqtt-discovery need a broker: --mqtt HOST[:PORT]"));
    if (parser.isSet(QStringLiteral("web"))) {
        const QString text = parser.value(QStringLiteral("web"));
        const auto p = parsePort(text);
        if (!p)
            return fail(QStringLiteral("--web expects a port 1..65535, not \"%1\"").arg(text));
        options.webPort = *p;
    }
    if (parser.isSet(QStringLiteral("web-token"))) {
        const QString token = parser.value(QStringLiteral("web-token"));
        if (!isUrlSafeToken(token))
            return fail(QStringLiteral("--web-token takes letters, digits and . _ ~ - only"));
        options.webToken = token;
    }
    return options;
}

} // namespace zun
