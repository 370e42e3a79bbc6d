#pragma once

#include <QByteArray>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QTimer>

#include <optional>

struct mosquitto;
struct mosquitto_message;

namespace zun {

struct MqttSettings
{
    QString host;
    quint16 port = 1883;
    QString user;
    QString password;
    QString caFile; // set: TLS
    QString clientId;
    QString statusTopic; // retained "online", last will "offline"; empty: a listener owning no line
    QString infoTopic;   // retained JSON with "host" and "pid" of the program owning the line
    QString selfHost;
    qint64 selfPid = 0;
    QStringList subscriptions; // asked for again on every connection
};

// Who owns a line name on the broker, judged from its retained status and
// info; empty when the name is free or ours (a run of ours on this host
// that died keeps "online" until the broker says its will).
[[nodiscard]] QString lineOwner(const QByteArray &status, const QByteArray &info, const QString &selfHost,
                                qint64 selfPid);

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
    // Another program says "online" under this line's name: nothing was
    // published, and no connection with this line's will was ever made.
    void nameTaken(const QString &owner);
    // A message on one of the subscriptions, from libmosquitto's thread.
    // retained: the broker kept it from before this connection subscribed.
    void messageReceived(const QString &topic, const QByteArray &payload, bool retained);

private:
    void tryConnect();
    static void onConnect(mosquitto *client, void *self, int rc);
    static void onDisconnect(mosquitto *client, void *self, int rc);
    static void onMessage(mosquitto *client, void *self, const mosquitto_message *message);
    // Sets the user, password and TLS of a client; a libmosquitto result.
    int configure(mosquitto *client) const;
    // Who owns the line on the broker, asked by a short connection without a
    // will; empty when nobody else does, nothing when the broker could not be asked.
    [[nodiscard]] std::optional<QString> askOwner(int *rc) const;
    void failed(int rc);

    MqttSettings m_settings;
    mosquitto *m_client = nullptr;
    bool m_running = false;
    QTimer m_retryTimer{this};   // a child, so it moves to the connection's thread
    bool m_claimed = false;      // the line's name was found free on this broker
    unsigned m_retrySeconds = 1; // doubles up to 30 s
};

} // namespace zun
