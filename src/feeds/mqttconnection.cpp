#include "feeds/mqttconnection.h"

#include <mosquitto.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <mutex>

namespace zun {
namespace {

constexpr int kKeepAliveSeconds = 30;
constexpr unsigned kMinRetrySeconds = 1;
constexpr unsigned kMaxRetrySeconds = 30;

QString errorText(int rc)
{
    return QString::fromUtf8(mosquitto_strerror(rc));
}

} // namespace

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
    const QByteArray online("online");
    mosquitto_publish(client, nullptr, connection->m_settings.statusTopic.toUtf8().constData(),
                      static_cast<int>(online.size()), online.constData(), 1, true);
    emit connection->connected();
}

void MqttConnection::onDisconnect(mosquitto *, void *self, int rc)
{
    auto *connection = static_cast<MqttConnection *>(self);
    if (rc != 0)
        emit connection->disconnected(QStringLiteral("MQTT: connection lost"));
}

} // namespace zun
