#include "feeds/hadiscovery.h"

#include "feeds/statusjson.h"

#include <QCryptographicHash>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace zun {

namespace {

struct Entity
{
    const char *component;
    const char *key;
    const char *name;
    const char *valueTemplate;
    const char *unit;        // empty: none
    const char *deviceClass; // empty: none
};

// Unknown readings (battery -1) are no state rather than a false zero.
const Entity kEntities[] = {
    {"sensor", "battery", "Battery", "{{ value_json.battery if value_json.battery >= 0 else none }}", "%",
     "battery"},
    {"sensor", "rf_a", "RF A", "{{ value_json.rfaDbm }}", "dBm", "signal_strength"},
    {"sensor", "rf_b", "RF B", "{{ value_json.rfbDbm }}", "dBm", "signal_strength"},
    {"sensor", "audio", "Audio", "{{ value_json.af }}", "", ""},
    {"binary_sensor", "online", "Online", "{{ 'ON' if value_json.online else 'OFF' }}", "", "connectivity"},
};
const char kMuteTemplate[] = "{{ 'ON' if value_json.mute else 'OFF' }}";

QString deviceId(const QString &line, int address)
{
    return QStringLiteral("zunoria_%1_%2").arg(discoveryId(line), addressText(address));
}

QString configTopic(const QString &prefix, const QString &component, const QString &device,
                    const QString &key)
{
    return QStringLiteral("%1/%2/%3/%4/config").arg(prefix, component, device, key);
}

} // namespace

QString discoveryId(const QString &text)
{
    QString id;
    for (const QChar c : text) {
        const bool plain = (c >= QLatin1Char('a') && c <= QLatin1Char('z')) ||
                           (c >= QLatin1Char('A') && c <= QLatin1Char('Z')) ||
                           (c >= QLatin1Char('0') && c <= QLatin1Char('9')) || c == QLatin1Char('_') ||
                           c == QLatin1Char('-');
        id += plain ? c : QLatin1Char('_');
    }
    if (id == text)
        return id;
    const QByteArray digest = QCryptographicHash::hash(text.toUtf8(), QCryptographicHash::Sha1).toHex();
    return id + QLatin1Char('-') + QString::fromLatin1(digest.left(8));
}

QList<DiscoveryMessage> discoveryMessages(const QString &prefix, const QString &line, const Receiver &status,
                                          bool control)
{
    const QString device = deviceId(line, status.address);
    const QString rx = QStringLiteral("zunoria/%1/rx/%2").arg(line, addressText(status.address));
    const QString label = status.shownName().trimmed().isEmpty()
                              ? addressText(status.address)
                              : addressText(status.address) + QLatin1Char(' ') + status.shownName().trimmed();
    const QJsonObject deviceInfo{
        {QStringLiteral("identifiers"), QJsonArray{device}},
        {QStringLiteral("name"), QStringLiteral("%1 %2").arg(line, label)},
        {QStringLiteral("model"), QStringLiteral("Wireless receiver")},
        {QStringLiteral("manufacturer"), QStringLiteral("Zunoria")},
    };
    const auto config = [&](const QString &key, const QString &name, const QString &valueTemplate) {
        return QJsonObject{
            {QStringLiteral("name"), name},
            {QStringLiteral("unique_id"), device + QLatin1Char('_') + key},
            {QStringLiteral("state_topic"), rx + QStringLiteral("/state")},
            {QStringLiteral("value_template"), valueTemplate},
            {QStringLiteral("availability_topic"), QStringLiteral("zunoria/%1/status").arg(line)},
            {QStringLiteral("payload_available"), QStringLiteral("online")},
            {QStringLiteral("payload_not_available"), QStringLiteral("offline")},
            {QStringLiteral("device"), deviceInfo},
            {QStringLiteral("origin"), QJsonObject{{QStringLiteral("name"), QStringLiteral("Zunoria")}}},
        };
    };
    const auto text = [](const QJsonObject &object) {
        return QJsonDocument(object).toJson(QJsonDocument::Compact);
    };

    QList<DiscoveryMessage> messages;
    for (const Entity &e : kEntities) {
        QJsonObject object =
            config(QLatin1String(e.key), QLatin1String(e.name), QLatin1String(e.valueTemplate));
        if (*e.unit)
            object.insert(QStringLiteral("unit_of_measurement"), QLatin1String(e.unit));
        if (*e.deviceClass)
            object.insert(QStringLiteral("device_class"), QLatin1String(e.deviceClass));
        if (QLatin1String(e.component) == QLatin1String("sensor"))
            object.insert(QStringLiteral("state_class"), QStringLiteral("measurement"));
        messages.append(
            {configTopic(prefix, QLatin1String(e.component), device, QLatin1String(e.key)), text(object)});
    }
    QJsonObject mute = config(QStringLiteral("mute"), QStringLiteral("Mute"), QLatin1String(kMuteTemplate));
    const QString muteSwitch = configTopic(prefix, QStringLiteral("switch"), device, QStringLiteral("mute"));
    const QString muteSensor =
        configTopic(prefix, QStringLiteral("binary_sensor"), device, QStringLiteral("mute"));
    if (control) {
        mute.insert(QStringLiteral("command_topic"), rx + QStringLiteral("/set"));
        mute.insert(QStringLiteral("payload_on"), QStringLiteral("{\"mute\":true}"));
        mute.insert(QStringLiteral("payload_off"), QStringLiteral("{\"mute\":false}"));
        mute.insert(QStringLiteral("state_on"), QStringLiteral("ON"));
        mute.insert(QStringLiteral("state_off"), QStringLiteral("OFF"));
        messages.append({muteSwitch, text(mute)});
        messages.append({muteSensor, QByteArray()});
    } else {
        messages.append({muteSensor, text(mute)});
        messages.append({muteSwitch, QByteArray()});
    }
    return messages;
}

QList<DiscoveryMessage> discoveryRemoval(const QString &prefix, const QString &line, int address)
{
    Receiver status;
    status.address = address;
    QList<DiscoveryMessage> messages = discoveryMessages(prefix, line, status, false);
    for (DiscoveryMessage &m : messages)
        m.payload.clear();
    return messages;
}

} // namespace zun
