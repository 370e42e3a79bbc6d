#include "bushealth/buscounters.h"

#include "bushealth/bushealthstats.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace zun {

QList<BusCounters> busCounters(const BusHealthStats &stats)
{
    QList<BusCounters> counters;
    for (int address : stats.addresses()) {
        const AddressHealth *health = stats.address(address);
        const double medianMs = stats.medianMs(address);
        counters.append({address, health->exchanges, health->timeouts,
                         medianMs < 0 ? -1 : double(qRound64(medianMs * 1000)) / 1e6});
    }
    return counters;
}

QByteArray busCountersJson(const QList<BusCounters> &counters)
{
    QJsonArray addresses;
    for (const BusCounters &c : counters) {
        QJsonObject entry{{QStringLiteral("address"), c.address},
                          {QStringLiteral("exchanges"), c.exchanges},
                          {QStringLiteral("timeouts"), c.timeouts}};
        if (c.roundTripSeconds >= 0)
            entry.insert(QStringLiteral("roundTrip"), c.roundTripSeconds);
        addresses.append(entry);
    }
    return QJsonDocument(QJsonObject{{QStringLiteral("addresses"), addresses}})
        .toJson(QJsonDocument::Compact);
}

std::optional<QList<BusCounters>> parseBusCounters(const QByteArray &json)
{
    const QJsonDocument document = QJsonDocument::fromJson(json);
    const QJsonValue addresses = document.object().value(QStringLiteral("addresses"));
    if (!document.isObject() || !addresses.isArray())
        return std::nullopt;
    QList<BusCounters> counters;
    for (const QJsonValue &value : addresses.toArray()) {
        const QJsonObject entry = value.toObject();
        const int address = entry.value(QStringLiteral("address")).toInt(-1);
        if (address < 0 || address > 64)
            continue;
        counters.append({address, entry.value(QStringLiteral("exchanges")).toInteger(),
                         entry.value(QStringLiteral("timeouts")).toInteger(),
                         entry.value(QStringLiteral("roundTrip")).toDouble(-1)});
    }
    return counters;
}

} // namespace zun
