#include "feeds/mqttconnection.h"

#include <QDeadlineTimer>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRandomGenerator>

#include <mosquitto.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <mutex>

namespace zun {
namespace {

constexpr int kKeepAliveSeconds = 30;
constexpr unsigned kMinRetrySeconds = 1;
constexpr unsigned kMaxRetrySeconds = 30;
// Retained messages follow the subscription at once; this is ample on any network.
constexpr int kClaimMillis = 500;

QString errorText(int rc)
{
    return QString::fromUtf8(mosquitto_strerror(rc));
}

} // namespace

QString lineOwner(const QByteArray &status, const QByteArray &info, const QString &selfHost, qint64 selfPid)
{
    // A paused program is alive: it only reads nothing for a while.
    if (status != "online" && status != "paused")
        return {};
    const QJsonObject owner = QJsonDocument::fromJson(info).object();
    const QString host = owner.value(QStringLiteral("host")).toString();
    const qint64 pid = owner.value(QStringLiteral("pid")).toInteger();
    if (!host.isEmpty() && host == selfHost) {
        if (pid == selfPid)
            return {};
        if (pid > 0 && ::kill(static_cast<pid_t>(pid), 0) != 0 && errno == ESRCH)
            return {};
    }
    if (host.isEmpty())
        return QStringLiteral("another program");
    return QStringLiteral("%1 (process %2)").arg(host).arg(pid);
}

MqttConnection::MqttConnection(MqttSettings settings) : m_settings(std::move(settings))
{
    m_retryTimer.setSingleShot(true);
    connect(&m_retryTimer, &QTimer::timeout, this, &MqttConnection::tryConnect);
    static std::once_flag initOnce;
    std::call_once(initOnce, [] { mosquitto_lib_init(); });
}

MqttConnection::~MqttConnection()
{
    stop();
    if (m_client)
        mosquitto_destroy(m_client);
}

void MqttConnection::start()
{
    m_client = mosquitto_new(m_settings.clientId.toUtf8().constData(), true, this);
    if (!m_client) {
        emit disconnected(QStringLiteral("MQTT: cannot create a client"));
        return;
    }
    mosquitto_connect_callback_set(m_client, &MqttConnection::onConnect);
    mosquitto_disconnect_callback_set(m_client, &MqttConnection::onDisconnect);
    mosquitto_message_callback_set(m_client, &MqttConnection::onMessage);
    mosquitto_reconnect_delay_set(m_client, kMinRetrySeconds, kMaxRetrySeconds, true);
    const QByteArray offline("offline");
    if (!m_settings.statusTopic.isEmpty())
        mosquitto_will_set(m_client, m_settings.statusTopic.toUtf8().constData(), offline.size(),
                           offline.constData(), 1, true);
    else
        m_claimed = true; // a listener claims no line name
    if (const int rc = configure(m_client); rc != MOSQ_ERR_SUCCESS) {
        emit disconnected(QStringLiteral("MQTT: TLS: %1").arg(errorText(rc)));
        return;
    }
    tryConnect();
}

int MqttConnection::configure(mosquitto *client) const
{
    if (!m_settings.user.isEmpty())
        mosquitto_username_pw_set(client, m_settings.user.toUtf8().constData(),
                                  m_settings.password.isEmpty() ? nullptr
                                                                : m_settings.password.toUtf8().constData());
    if (m_settings.caFile.isEmpty())
        return MOSQ_ERR_SUCCESS;
    return mosquitto_tls_set(client, m_settings.caFile.toUtf8().constData(), nullptr, nullptr, nullptr,
                             nullptr);
}

namespace {
// What the broker keeps for a line, as the probe hears it.
struct Retained
{
    QByteArray statusTopic;
    QByteArray infoTopic;
    QByteArray markerTopic;
    QByteArray status;
    QByteArray info;
    bool markerBack = false;
};

void onProbeMessage(mosquitto *, void *data, const mosquitto_message *message)
{
    auto *retained = static_cast<Retained *>(data);
    const QByteArray payload(static_cast<const char *>(message->payload), message->payloadlen);
    if (retained->statusTopic == message->topic)
        retained->status = payload;
    else if (retained->infoTopic == message->topic)
        retained->info = payload;
    else if (retained->markerTopic == message->topic)
        retained->markerBack = true;
}
} // namespace

std::optional<QString> MqttConnection::askOwner(int *rc) const
{
    const QByteArray statusTopic = m_settings.statusTopic.toUtf8();
    // Beside the status topic, so that whoever may publish the line's topics may publish it.
    const QByteArray marker = statusTopic.left(statusTopic.lastIndexOf('/')) + "/probe/" +
                              QByteArray::number(m_settings.selfPid) + '-' +
                              QByteArray::number(QRandomGenerator::global()->generate());
    Retained retained{statusTopic, m_settings.infoTopic.toUtf8(), marker, {}, {}, false};
    mosquitto *probe = mosquitto_new(nullptr, true, &retained);
    if (!probe) {
        *rc = MOSQ_ERR_NOMEM;
        return std::nullopt;
    }
    mosquitto_message_callback_set(probe, onProbeMessage);
    *rc = configure(probe);
    if (*rc == MOSQ_ERR_SUCCESS)
        *rc = mosquitto_connect(probe, m_settings.host.toUtf8().constData(), m_settings.port,
                                kKeepAliveSeconds);
    const bool asked = *rc == MOSQ_ERR_SUCCESS;
    if (asked) {
        mosquitto_subscribe(probe, nullptr, retained.statusTopic.constData(), 1);
        mosquitto_subscribe(probe, nullptr, retained.infoTopic.constData(), 1);
        // Retained messages follow each subscription at once, and nothing
        // says when there are none. A message of our own, sent after the
        // subscriptions, comes back after them: once it is here, the broker
        // has said all it keeps. A broker that does not let it through costs
        // the whole wait.
        mosquitto_subscribe(probe, nullptr, marker.constData(), 1);
        mosquitto_publish(probe, nullptr, marker.constData(), 0, nullptr, 1, false);
        for (QDeadlineTimer deadline(kClaimMillis); !deadline.hasExpired() && !retained.markerBack;)
            if (mosquitto_loop(probe, 50, 1) != MOSQ_ERR_SUCCESS)
                break;
        mosquitto_disconnect(probe);
        mosquitto_loop(probe, 50, 1);
    }
    mosquitto_destroy(probe);
    if (!asked)
        return std::nullopt;
    return lineOwner(retained.status, retained.info, m_settings.selfHost, m_settings.selfPid);
}

void MqttConnection::failed(int rc)
{
    emit disconnected(
        QStringLiteral("MQTT: %1:%2: %3")
            .arg(m_settings.host)
            .arg(m_settings.port)
            .arg(rc == MOSQ_ERR_ERRNO ? QString::fromLocal8Bit(std::strerror(errno)) : errorText(rc)));
    // Until the first connection libmosquitto's thread has nothing to
    // retry; this thread's event loop does it, with the same back-off.
    m_retryTimer.start(static_cast<int>(m_retrySeconds * 1000));
    m_retrySeconds = std::min(m_retrySeconds * 2, kMaxRetrySeconds);
}

void MqttConnection::tryConnect()
{
    if (!m_client)
        return;
    // The name is asked for before the first connection, which carries the
    // line's will: a refused name must never make the broker say "offline"
    // for the program that owns it.
    if (!m_claimed) {
        int rc = MOSQ_ERR_SUCCESS;
        const auto owner = askOwner(&rc);
        if (!owner) {
            failed(rc);
            return;
        }
        if (!owner->isEmpty()) {
            emit nameTaken(*owner);
            return;
        }
        m_claimed = true;
    }
    const int rc = mosquitto_connect_async(m_client, m_settings.host.toUtf8().constData(), m_settings.port,
                                           kKeepAliveSeconds);
    if (rc != MOSQ_ERR_SUCCESS) {
        failed(rc);
        return;
    }
    // From here on libmosquitto's own thread keeps the session up.
    m_running = mosquitto_loop_start(m_client) == MOSQ_ERR_SUCCESS;
}

void MqttConnection::publish(const QString &topic, const QByteArray &payload, bool retain)
{
    if (m_client)
        mosquitto_publish(m_client, nullptr, topic.toUtf8().constData(), static_cast<int>(payload.size()),
                          payload.constData(), 0, retain);
}

void MqttConnection::stop()
{
    m_retryTimer.stop();
    if (!m_running)
        return;
    m_running = false;
    const QByteArray offline("offline");
    if (!m_settings.statusTopic.isEmpty())
        mosquitto_publish(m_client, nullptr, m_settings.statusTopic.toUtf8().constData(),
                          static_cast<int>(offline.size()), offline.constData(), 1, true);
    mosquitto_disconnect(m_client);
    mosquitto_loop_stop(m_client, false);
}

void MqttConnection::onConnect(mosquitto *client, void *self, int rc)
{
    auto *connection = static_cast<MqttConnection *>(self);
    if (rc != 0) {
        emit connection->disconnected(
            QStringLiteral("MQTT: refused: %1").arg(QString::fromUtf8(mosquitto_connack_string(rc))));
        return;
    }
    const MqttSettings &settings = connection->m_settings;
    const QByteArray online("online");
    // A listener with no line of its own (the fleet) has no status to give.
    if (!settings.statusTopic.isEmpty())
        mosquitto_publish(client, nullptr, settings.statusTopic.toUtf8().constData(),
                          static_cast<int>(online.size()), online.constData(), 1, true);
    // A clean session forgets subscriptions: each connection asks anew.
    for (const QString &topic : settings.subscriptions)
        mosquitto_subscribe(client, nullptr, topic.toUtf8().constData(), 1);
    emit connection->connected();
}

void MqttConnection::onMessage(mosquitto *, void *self, const mosquitto_message *message)
{
    auto *connection = static_cast<MqttConnection *>(self);
    const QByteArray payload(static_cast<const char *>(message->payload), message->payloadlen);
    emit connection->messageReceived(QString::fromUtf8(message->topic), payload, message->retain);
}

void MqttConnection::onDisconnect(mosquitto *, void *self, int rc)
{
    auto *connection = static_cast<MqttConnection *>(self);
    if (rc != 0)
        emit connection->disconnected(QStringLiteral("MQTT: connection lost"));
}

} // namespace zun
