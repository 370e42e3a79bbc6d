#pragma once

#include "feeds/dashboardserver.h"
#include "feeds/feedoptions.h"
#include "feeds/feedstatus.h"
#include "feeds/mqttfeed.h"
#include "feeds/oscfeed.h"
#include "receivers/receiverevents.h"

#include <QObject>

namespace zun {

// Owns the feeds the options switch on and keeps the status-line text.
class FeedHub : public QObject
{
    Q_OBJECT
public:
    FeedHub(const FeedOptions &options, const QString &busName, QObject *parent = nullptr);

    // Null when that feed is off.
    OscFeed *osc() const { return m_osc; }
    MqttFeed *mqtt() const { return m_mqtt; }
    DashboardServer *dashboard() const { return m_dashboard; }

    FeedStatus status() const { return m_status; }
    QString statusText() const { return feedStatusText(m_status); }

    // Every feed names the line anew (topics, paths, the dashboard's title).
    void setLineName(const QString &lineName);
    // The line's description and its alarms, for the feeds that carry them.
    void setLineInfo(const QByteArray &json);
    void publishAlarm(const QByteArray &json);
    // The bus health, for the broker and the dashboard's /metrics.
    void setHealth(const QList<zun::BusCounters> &health);
    [[nodiscard]] bool carriesHealth() const { return m_mqtt || m_dashboard; }
    // Polling stopped (true) or runs again: every feed marks the line's
    // values as the last known ones rather than live.
    void setPaused(bool paused);
    // Tells every feed of a receiver found before the feeds began.
    void receiverFound(const zun::Receiver &status);
    // After a detection, the addresses now on the line.
    void setPresent(const QList<int> &addresses);
    void publishControlResult(const QString &addressLevel, const QByteArray &json);

signals:
    void statusTextChanged(const QString &text);
    // A request on zunoria/<line>/rx/<addressLevel>/set, with control on.
    void controlRequested(const QString &addressLevel, const QByteArray &payload);

private:
    void setError(const QString &message);

    OscFeed *m_osc = nullptr;
    MqttFeed *m_mqtt = nullptr;
    DashboardServer *m_dashboard = nullptr;
    FeedStatus m_status;
};

// Connects one listener to the receiver layer's status signals.
template <class Listener> void connectStatusSignals(const ReceiverEvents *source, Listener *listener)
{
    QObject::connect(source, &ReceiverEvents::receiverFound, listener, &Listener::onReceiverFound);
    QObject::connect(source, &ReceiverEvents::receiverChanged, listener, &Listener::onReceiverChanged);
    QObject::connect(source, &ReceiverEvents::levelsRead, listener, &Listener::onLevelsRead);
    QObject::connect(source, &ReceiverEvents::wentOffline, listener, &Listener::onWentOffline);
    QObject::connect(source, &ReceiverEvents::cameBack, listener, &Listener::onCameBack);
}

// Starts the feeds the options switch on, named for lineName, and subscribes
// them to the receiver layer's signals. The hub belongs to owner; its
// statusTextChanged feeds the status line.
inline FeedHub *attachFeeds(const FeedOptions &options, const ReceiverEvents *source, QObject *owner,
                            const QString &lineName)
{
    auto *hub = new FeedHub(options, lineName, owner);
    if (OscFeed *osc = hub->osc()) {
        connectStatusSignals(source, osc);
        QObject::connect(source, &ReceiverEvents::passEnded, osc, &OscFeed::onPassEnded);
    }
    if (MqttFeed *mqtt = hub->mqtt()) {
        connectStatusSignals(source, mqtt);
    }
    if (DashboardServer *web = hub->dashboard()) {
        connectStatusSignals(source, web);
    }
    return hub;
}

} // namespace zun
