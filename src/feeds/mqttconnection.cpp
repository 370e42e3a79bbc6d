#include "feeds/mqttconnection.h"

#include <QJsonDocument>
#include <QJsonObject>

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
    if (status != "online")
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
    m_claimTimer.setSingleShot(true);
    connect(&m_claimTimer, &QTimer::timeout, this, &MqttConnection::claim);
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
    mosquitto_will_set(m_client, m_settings.statusTopic.toUtf8().constData(), offline.size(),
                       offline.constData(), 1, true);
    if (!m_settings.user.isEmpty())
        mosquitto_username_pw_set(m_client, m_settings.user.toUtf8().constData(),
                                  m_settings.password.isEmpty() ? nullptr
                                                                : m_settings.password.toUtf8().constData());
    if (!m_settings.caFile.isEmpty()) {
        const int rc = mosquitto_tls_set(m_client, m_settings.caFile.toUtf8().constData(), nullptr, nullptr,
                                         nullptr, nullptr);
        if (rc != MOSQ_ERR_SUCCESS) {
            emit disconnected(QStringLiteral("MQTT: TLS: %1").arg(errorText(rc)));
            return;
        }
    }
    tryConnect();
}

void MqttConnection::tryConnect()
{
    if (!m_client)
        return;
    const int rc = mosquitto_connect_async(m_client, m_settings.host.toUtf8().constData(), m_settings.port,
                                           kKeepAliveSeconds);
    if (rc != MOSQ_ERR_SUCCESS) {
        emit disconnected(
            QStringLiteral("MQTT: %1:%2: %3")
                .arg(m_settings.host)
                .arg(m_settings.port)
                .arg(rc == MOSQ_ERR_ERRNO ? QString::fromLocal8Bit(std::strerror(errno)) : errorText(rc)));
        // Until the first connection libmosquitto's thread has nothing to
        // retry; this thread's event loop does it, with the same back-off.
        m_retryTimer.start(static_cast<int>(m_retrySeconds * 1000));
        m_retrySeconds = std::min(m_retrySeconds * 2, kMaxRetrySeconds);
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
    // Before saying "online", hear what the broker keeps for this line:
    // another program may already own the name.
    mosquitto_subscribe(client, nullptr, connection->m_settings.statusTopic.toUtf8().constData(), 1);
    mosquitto_subscribe(client, nullptr, connection->m_settings.infoTopic.toUtf8().constData(), 1);
    QMetaObject::invokeMethod(
        connection, [connection] { connection->m_claimTimer.start(kClaimMillis); }, Qt::QueuedConnection);
}

void MqttConnection::onMessage(mosquitto *, void *self, const mosquitto_message *message)
{
    auto *connection = static_cast<MqttConnection *>(self);
    const QString topic = QString::fromUtf8(message->topic);
    const QByteArray payload(static_cast<const char *>(message->payload), message->payloadlen);
    QMetaObject::invokeMethod(
        connection, [connection, topic, payload] { connection->heard(topic, payload); },
        Qt::QueuedConnection);
}

void MqttConnection::heard(const QString &topic, const QByteArray &payload)
{
    if (!m_claimTimer.isActive())
        return;
    if (topic == m_settings.statusTopic)
        m_heardStatus = payload;
    else if (topic == m_settings.infoTopic)
        m_heardInfo = payload;
}

void MqttConnection::claim()
{
    if (!m_client)
        return;
    mosquitto_unsubscribe(m_client, nullptr, m_settings.statusTopic.toUtf8().constData());
    mosquitto_unsubscribe(m_client, nullptr, m_settings.infoTopic.toUtf8().constData());
    const QString owner = lineOwner(m_heardStatus, m_heardInfo, m_settings.selfHost, m_settings.selfPid);
    m_heardStatus.clear();
    m_heardInfo.clear();
    if (!owner.isEmpty()) {
        // A clean disconnect leaves the will unsaid, so the owner's "online" stays.
        m_running = false;
        mosquitto_disconnect(m_client);
        mosquitto_loop_stop(m_client, false);
        emit nameTaken(owner);
        return;
    }
    const QByteArray online("online");
    mosquitto_publish(m_client, nullptr, m_settings.statusTopic.toUtf8().constData(),
                      static_cast<int>(online.size()), online.constData(), 1, true);
    emit connected();
}

void MqttConnection::onDisconnect(mosquitto *, void *self, int rc)
{
    auto *connection = static_cast<MqttConnection *>(self);
    if (rc != 0)
        emit connection->disconnected(QStringLiteral("MQTT: connection lost"));
}

} // namespace zun
