#include "session/linejson.h"

#include "alarms/alarmengine.h"
#include "platform/walltime.h"

#include <QJsonDocument>
#include <QJsonObject>

namespace zun {

namespace {
QString kindText(AlarmCondition condition)
{
    switch (condition) {
    case AlarmCondition::BatteryLow:
        return QStringLiteral("battery");
    case AlarmCondition::RfBelowSquelch:
        return QStringLiteral("rf-low");
    case AlarmCondition::Offline:
        return QStringLiteral("offline");
    case AlarmCondition::AudioClipping:
        return QStringLiteral("clipping");
    }
    return {};
}
} // namespace

QByteArray lineInfoJson(const LineInfo &info)
{
    return QJsonDocument(QJsonObject{{QStringLiteral("version"), info.version},
                                     {QStringLiteral("host"), info.host},
                                     {QStringLiteral("port"), info.port},
                                     {QStringLiteral("baud"), info.baudRate},
                                     {QStringLiteral("receivers"), info.receiversFound},
                                     {QStringLiteral("startedAt"), WallTime::iso(info.startedAt)},
                                     {QStringLiteral("pid"), info.pid}})
        .toJson(QJsonDocument::Compact);
}

QByteArray alarmJson(const QString &line, const Alarm &alarm, bool cleared, const QDateTime &time)
{
    return QJsonDocument(QJsonObject{{QStringLiteral("line"), line},
                                     {QStringLiteral("address"), alarm.address},
                                     {QStringLiteral("name"), alarm.receiverName.trimmed()},
                                     {QStringLiteral("kind"), kindText(alarm.condition)},
                                     {QStringLiteral("state"),
                                      cleared ? QStringLiteral("cleared") : QStringLiteral("raised")},
                                     {QStringLiteral("time"), WallTime::iso(time)}})
        .toJson(QJsonDocument::Compact);
}

} // namespace zun
