#pragma once

#include <QByteArray>
#include <QList>

#include <optional>

namespace zun {

class BusHealthStats;

// What a line tells others about one address's bus health: counters since
// the last reset and the median round trip (seconds, negative while unknown).
struct BusCounters
{
    int address = 0;
    qint64 exchanges = 0;
    qint64 timeouts = 0;
    double roundTripSeconds = -1;
    bool operator==(const BusCounters &) const = default;
};

// Every address the statistics know, ascending.
[[nodiscard]] QList<BusCounters> busCounters(const BusHealthStats &stats);

// {"addresses":[{"address":3,"exchanges":120,"timeouts":2,"roundTrip":0.0041}]},
// roundTrip left out while unknown.
[[nodiscard]] QByteArray busCountersJson(const QList<BusCounters> &counters);
// Nothing when the text is not such an object; entries with a bad address are skipped.
[[nodiscard]] std::optional<QList<BusCounters>> parseBusCounters(const QByteArray &json);

} // namespace zun
