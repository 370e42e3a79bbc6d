#pragma once

#include <QByteArray>
#include <QObject>
#include <QString>
#include <QTimer>

struct mosquitto;

namespace zun {

struct MqttSettings
{
    QString host;
    quint16 port = 1883;
    QString user;
    QString password;
    QString caFile; // set: TLS
    QString clientId;
    QString statusTopic; // retained "online", last will "offline"
};

// The libmosquitto client. It lives on a thread of its own (name look-up and
// connect may block there, never on the work loop), and libmosquitto's own
// network thread reconnects with back-off. Signals reach the owner queued.
class MqttConnection : public QObject
{
    Q_OBJECT
public:
    explicit MqttConnection(MqttSettings settings);
    ~MqttConnection() override;

public slots:
    void start();
    void publish(const QString &topic, const QByteArray &payload, bool retain);
    // Says "offline" on the status topic and ends the session cleanly.
    void stop();

signals:
    void connected();
    void disconnected(const QString &reason);

private:
    void tryConnect();
    static void onConnect(mosquitto *client, void *self, int rc);
    static void onDisconnect(mosquitto *client, void *self, int rc);

    MqttSettings m_settings;
    mosquitto *m_client = nullptr;
    bool m_running = false;
    QTimer m_retryTimer{this};   // a child, so it moves to the connection's thread
    unsigned m_retrySeconds = 1; // doubles up to 30 s
};

} // namespace zun
