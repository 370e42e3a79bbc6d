#pragma once

#include "bushealth/buscounters.h"
#include "receivers/receiver.h"

#include <QByteArray>
#include <QList>
#include <QString>

namespace zun {

// One line as /api/state and /metrics show it, whether it is the program's
// own line or one heard on the broker.
struct LineSnapshot
{
    QString line;
    bool online = true;
    QString host;
    int receiversFound = 0;
    QList<Receiver> receivers; // ascending address
    QList<BusCounters> health; // ascending address
};

// {"lines":[{"line","online","host","receiversFound","receivers":[{"address",
// "name","freq","rfa","rfb","af","battery","mute","online"}]}]}. A receiver on
// a line that is offline is offline too: nobody watches it any more.
[[nodiscard]] QByteArray stateJson(const QList<LineSnapshot> &lines);

// The Prometheus text format (version 0.0.4) of the same, with the bus
// health. Levels of a receiver that is not online are left out rather than
// shown stale; an unknown battery and round trip likewise.
[[nodiscard]] QByteArray metricsText(const QList<LineSnapshot> &lines);

// A label value with backslash, double quote and line feed escaped.
[[nodiscard]] QByteArray metricLabel(const QString &value);

} // namespace zun
