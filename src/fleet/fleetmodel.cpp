#include "fleet/fleetmodel.h"

#include "feeds/statusjson.h"
#include "session/sessionoptions.h"

#include <QJsonDocument>

namespace zun {

QStringList FleetModel::subscriptions()
{
    return {QStringLiteral("zunoria/+/status"), QStringLiteral("zunoria/+/info"),
            QStringLiteral("zunoria/+/health"), QStringLiteral("zunoria/+/alarm"),
            QStringLiteral("zunoria/+/rx/+/state")};
}

FleetChange FleetModel::apply(const QString &topic, const QByteArray &payload)
{
    const QStringList levels = topic.split(QLatin1Char('/'));
    if (levels.size() < 3 || levels.at(0) != QLatin1String("zunoria") || !validLineName(levels.at(1)))
        return {};
    const QString name = levels.at(1);
    const QString &what = levels.at(2);
    // A line is known from any of its topics; a cleared retained topic of a
    // line never heard of says nothing.
    if (!m_lines.contains(name) && payload.isEmpty())
        return {};
    FleetLine &line = m_lines[name];
    line.name = name;
    if (levels.size() == 3 && what == QLatin1String("status")) {
        // A paused line is alive: its program waits for a dialog or a KOB.
        line.online = payload == "online" || payload == "paused";
        return {FleetChange::Line, name, 0};
    }
    if (levels.size() == 3 && what == QLatin1String("info")) {
        const QJsonObject info = QJsonDocument::fromJson(payload).object();
        line.host = info.value(QStringLiteral("host")).toString();
        line.receiversFound = info.value(QStringLiteral("receivers")).toInt();
        return {FleetChange::Line, name, 0};
    }
    if (levels.size() == 3 && what == QLatin1String("health")) {
        const auto counters = parseBusCounters(payload);
        if (!counters && !payload.isEmpty())
            return {};
        line.health = counters.value_or(QList<BusCounters>());
        return {FleetChange::Health, name, 0};
    }
    if (levels.size() == 3 && what == QLatin1String("alarm"))
        return applyAlarm(line, payload);
    if (levels.size() == 5 && what == QLatin1String("rx") && levels.at(4) == QLatin1String("state")) {
        bool ok = false;
        const int address = levels.at(3).toInt(&ok);
        if (!ok || address < 1 || address > 64)
            return {};
        if (payload.isEmpty()) {
            line.receivers.remove(address);
            return {FleetChange::Receiver, name, address};
        }
        auto status = parseReceiverJson(payload);
        if (!status || status->address != address)
            return {};
        line.receivers.insert(address, *status);
        return {FleetChange::Receiver, name, address};
    }
    return {};
}

FleetChange FleetModel::applyAlarm(FleetLine &line, const QByteArray &payload)
{
    QJsonObject event = QJsonDocument::fromJson(payload).object();
    const int address = event.value(QStringLiteral("address")).toInt(0);
    const QString kind = event.value(QStringLiteral("kind")).toString();
    const QString state = event.value(QStringLiteral("state")).toString();
    if (address < 1 || address > 64 || kind.isEmpty() ||
        (state != QLatin1String("raised") && state != QLatin1String("cleared")))
        return {};
    // The topic names the line; a payload cannot speak for another one.
    event.insert(QStringLiteral("line"), line.name);
    if (state == QLatin1String("raised"))
        line.raised[address].insert(kind);
    else if (line.raised.contains(address) && line.raised[address].remove(kind) &&
             line.raised[address].isEmpty())
        line.raised.remove(address);
    m_alarms.push_back(event);
    if (m_alarms.size() > kMaxAlarms)
        m_alarms.pop_front();
    ++m_alarmCount;
    return {FleetChange::Alarm, line.name, address};
}

QList<LineSnapshot> FleetModel::snapshot() const
{
    QList<LineSnapshot> lines;
    for (const FleetLine &line : m_lines) {
        LineSnapshot s{line.name,  line.online, line.host, line.receiversFound, line.receivers.values(),
                       line.health};
        lines.append(s);
    }
    return lines;
}

} // namespace zun
