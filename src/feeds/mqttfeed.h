#pragma once

#include "feeds/feedoptions.h"
#include "feeds/feedstatus.h"
#include "feeds/ratelimiter.h"
#include "receivers/receiver.h"

#include <QElapsedTimer>
#include <QHash>
#include <QObject>
#include <QSet>
#include <QThread>
#include <QTimer>

namespace zun {

class MqttConnection;

// Publishes every receiver's state as one retained JSON object on
// zunoria/<bus>/rx/<address>/state, on change and at most every 500 ms per
// receiver, with zunoria/<bus>/status "online" ("paused" while nothing is
// polled, so the values are the last known) / last will "offline", the
// line's description retained on zunoria/<bus>/info, its bus health on
// zunoria/<bus>/health and each alarm as an
// event on zunoria/<bus>/alarm. The slots only store; publishing is handed,
// queued, to the connection's thread.
class MqttFeed : public QObject
{
    Q_OBJECT
public:
    static constexpr qint64 kMinPublishIntervalMs = 500;

    MqttFeed(const FeedOptions &options, const QString &busName, QObject *parent = nullptr);
    ~MqttFeed() override;

    FeedStatus::Mqtt state() const { return m_state; }
    QString busName() const { return m_bus; }

public slots:
    void onReceiverFound(const zun::Receiver &status) { store(status); }
    void onReceiverChanged(const zun::Receiver &status) { store(status); }
    void onLevelsRead(const zun::Receiver &status) { store(status); }
    void onWentOffline(const zun::Receiver &status) { store(status); }
    void onCameBack(const zun::Receiver &status) { store(status); }
    // A new bus name means new topics and a new last will: the session restarts.
    void onPortChanged(const QString &portName);
    // Retained on zunoria/<bus>/info and said again on every connection.
    void setInfo(const QByteArray &json);
    // Retained on zunoria/<bus>/health; the caller paces it.
    void setHealth(const QByteArray &json);
    void setPaused(bool paused);
    // Not retained: an alarm is an event, not a state. Lost while the broker is away.
    void publishAlarm(const QByteArray &json);
    // After a detection: receivers not among these are gone from the line,
    // and their discovery configs are emptied.
    void setPresent(const QList<int> &addresses);
    // The outcome of a set request, on zunoria/<bus>/rx/<addressLevel>/result.
    void publishControlResult(const QString &addressLevel, const QByteArray &json);

signals:
    void stateChanged(zun::FeedStatus::Mqtt state);
    void failed(const QString &message);
    void publishRequested(const QString &topic, const QByteArray &payload, bool retain);
    // A live message on zunoria/<bus>/rx/<addressLevel>/set, with control on.
    void controlRequested(const QString &addressLevel, const QByteArray &payload);

private:
    void store(const Receiver &status);
    void flush();
    void publishPaused();
    void startSession();
    void endSession();
    void setState(FeedStatus::Mqtt state);
    void onMessage(const QString &topic, const QByteArray &payload, bool retained);
    void announce(const Receiver &status);
    void announceAll();
    void withdraw(int address);

    FeedOptions m_options;
    QString m_bus;
    QByteArray m_info;
    QByteArray m_health;
    bool m_paused = false;
    bool m_publishedPaused = false; // what the status topic says beside "offline"
    QThread m_thread;
    MqttConnection *m_connection = nullptr;
    FeedStatus::Mqtt m_state = FeedStatus::Mqtt::Off;
    QHash<int, Receiver> m_receivers;
    QHash<int, QByteArray> m_published;
    QSet<int> m_dirty;
    QHash<int, QString> m_announced; // address: the name its discovery config carries
    QTimer m_flushTimer;
    QElapsedTimer m_clock;
    RateLimiter m_limiter{kMinPublishIntervalMs};
};

} // namespace zun
