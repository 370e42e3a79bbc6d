#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QString>

namespace zun {

struct Alarm;

// What a line tells the broker about itself (retained on zunoria/<line>/info).
struct LineInfo
{
    QString version;
    QString host;
    QString port; // "COM3"
    int baudRate = 0;
    int receiversFound = 0;
    QDateTime startedAt;
    qint64 pid = 0;
};

[[nodiscard]] QByteArray lineInfoJson(const LineInfo &info);

// One alarm event: {"line","address","name","kind","state","time"}, kind
// "battery", "rf-low", "offline" or "clipping", state "raised" or "cleared",
// time in ISO 8601 with the UTC offset.
[[nodiscard]] QByteArray alarmJson(const QString &line, const Alarm &alarm, bool cleared,
                                   const QDateTime &time);

} // namespace zun
