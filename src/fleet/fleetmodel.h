#pragma once

#include "bushealth/buscounters.h"
#include "feeds/lineexport.h"
#include "receivers/receiver.h"

#include <QByteArray>
#include <QHash>
#include <QJsonObject>
#include <QMap>
#include <QSet>
#include <QString>
#include <QStringList>

#include <deque>

namespace zun {

// One line as its program describes it on the broker.
struct FleetLine
{
    QString name;
    bool online = false;
    QString host;
    int receiversFound = 0;
    QMap<int, Receiver> receivers;
    QList<BusCounters> health;
    QHash<int, QSet<QString>> raised; // address → kinds of the alarms not cleared yet

    [[nodiscard]] bool alarmed(int address) const { return !raised.value(address).isEmpty(); }
};

// What one message changed, so that a view can send only that.
struct FleetChange
{
    enum Kind { Nothing, Line, Receiver, Health, Alarm };
    Kind kind = Nothing;
    QString line;
    int address = 0;
};

// Every line heard on the broker, from its retained status, info, receiver
// states and health and its alarm events. Knows nothing of the connection:
// it is fed topic and payload.
class FleetModel
{
public:
    static constexpr int kMaxAlarms = 200;

    // The topics a fleet listens to.
    [[nodiscard]] static QStringList subscriptions();

    FleetChange apply(const QString &topic, const QByteArray &payload);

    // By name; the map keeps them sorted.
    const QMap<QString, FleetLine> &lines() const { return m_lines; }
    // The latest alarm events, oldest first, each with "line" as the topic names it.
    const std::deque<QJsonObject> &alarms() const { return m_alarms; }
    // Alarm events taken in so far, including those the list no longer holds.
    qint64 alarmCount() const { return m_alarmCount; }

    QList<LineSnapshot> snapshot() const;

private:
    FleetChange applyAlarm(FleetLine &line, const QByteArray &payload);

    QMap<QString, FleetLine> m_lines;
    std::deque<QJsonObject> m_alarms;
    qint64 m_alarmCount = 0;
};

} // namespace zun
