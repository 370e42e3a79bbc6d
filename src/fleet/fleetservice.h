#pragma once

#include "feeds/feedoptions.h"
#include "fleet/fleetmodel.h"

#include <QHash>
#include <QObject>
#include <QSet>
#include <QThread>
#include <QTimer>

#include <memory>

namespace zun {

class DashboardServer;
class MqttConnection;

// The fleet: no serial line, only the broker. It listens to every line's
// topics, keeps the fleet model and serves the fleet page (changes sent
// every 100 ms), /api/state and /metrics through the dashboard server.
class FleetService : public QObject
{
    Q_OBJECT
public:
    static constexpr int kFlushIntervalMs = 100;

    explicit FleetService(const FeedOptions &options, QObject *parent = nullptr);
    ~FleetService() override;

    // Listens on the web port and connects to the broker; false with
    // errorText when the port cannot be had.
    [[nodiscard]] bool start();
    QString errorText() const { return m_error; }
    QString url() const;
    const FleetModel &model() const { return m_model; }
    DashboardServer *dashboard() const { return m_dashboard; }

    // The page's first message: every line, every receiver, the alarm list.
    QByteArray greeting() const;

public slots:
    void onMessage(const QString &topic, const QByteArray &payload);
    // Sends what changed since the last flush; the timer calls it.
    void flush();

signals:
    // Connection news for standard error.
    void notice(const QString &text);

private:
    QJsonObject lineView(const FleetLine &line, const QList<int> &addresses) const;

    FeedOptions m_options;
    FleetModel m_model;
    QThread m_thread;
    MqttConnection *m_connection = nullptr;
    DashboardServer *m_dashboard = nullptr;
    QString m_error;
    QTimer m_flushTimer;
    QHash<QString, QSet<int>> m_dirty; // line → changed receivers (maybe none)
    qint64 m_alarmsSent = 0;
};

// The one assembly of the fleet process from its options.
std::unique_ptr<FleetService> assembleFleet(const FeedOptions &options);

} // namespace zun
