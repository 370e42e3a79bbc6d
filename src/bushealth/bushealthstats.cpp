#include "bushealth/bushealthstats.h"

#include <algorithm>
#include <cmath>

namespace zun {

void BusHealthStats::add(const ExchangeRecord &record)
{
    m_busyMicros += record.roundTripMicros;
    m_lineNoiseSeen = std::max(m_lineNoiseSeen, record.lineNoise);
    m_firstStart = m_firstStart < 0 ? record.startMicros : std::min(m_firstStart, record.startMicros);
    m_lastEnd = std::max(m_lastEnd, record.startMicros + record.roundTripMicros);
    if (record.result == ExchangeRecord::Result::Broadcast)
        return;

    AddressHealth &h = m_addresses[record.address];
    ++h.exchanges;
    h.retries += std::max(0, record.attempts - 1);
    if (h.roundTrips.size() < kMaxSamples)
        h.roundTrips.push_back(record.roundTripMicros);
    else
        h.roundTrips[h.nextSample] = record.roundTripMicros;
    h.nextSample = (h.nextSample + 1) % kMaxSamples;

    switch (record.result) {
    case ExchangeRecord::Result::NoReply:
        ++h.timeouts;
        h.lastError = QStringLiteral("no reply to %1").arg(record.command);
        break;
    case ExchangeRecord::Result::Garbled:
        ++h.garbled;
        h.lastError = QStringLiteral("garbled reply to %1").arg(record.command);
        break;
    case ExchangeRecord::Result::Ok: {
        h.wireChars = record.commandChars + record.replyChars;
        // The same command frame always gets the same reply length; the
        // shortest seen anywhere is the real one, and more means two answers.
        const quint64 key = (quint64(record.command.unicode()) << 32) | quint32(record.commandChars);
        const auto shortest = m_shortestReply.constFind(key);
        if (shortest == m_shortestReply.cend() || record.replyChars < *shortest) {
            m_shortestReply.insert(key, record.replyChars);
        } else if (record.replyChars > *shortest) {
            ++h.doubled;
            h.lastError = QStringLiteral("doubled reply to %1").arg(record.command);
        }
        break;
    }
    case ExchangeRecord::Result::Broadcast:
        break;
    }
}

void BusHealthStats::reset()
{
    m_addresses.clear();
    m_busyMicros = 0;
    m_firstStart = m_lastEnd = -1;
    m_passes = 0;
    m_lineNoiseBase = m_lineNoiseSeen;
}

QList<int> BusHealthStats::addresses() const
{
    QList<int> list = m_addresses.keys();
    std::sort(list.begin(), list.end());
    return list;
}

const AddressHealth *BusHealthStats::address(int address) const
{
    const auto it = m_addresses.constFind(address);
    return it == m_addresses.cend() ? nullptr : &*it;
}

double BusHealthStats::percentileMs(int address, double fraction) const
{
    const AddressHealth *h = this->address(address);
    if (!h || h->roundTrips.empty())
        return -1;
    std::vector<qint64> sorted = h->roundTrips;
    std::sort(sorted.begin(), sorted.end());
    const size_t n = sorted.size();
    if (fraction == 0.5)
        return (n % 2 ? sorted[n / 2] : (sorted[n / 2 - 1] + sorted[n / 2]) / 2.0) / 1000.0;
    const size_t rank = static_cast<size_t>(std::ceil(fraction * static_cast<double>(n)));
    return sorted[std::clamp<size_t>(rank, 1, n) - 1] / 1000.0;
}

double BusHealthStats::medianMs(int address) const
{
    return percentileMs(address, 0.5);
}

double BusHealthStats::p99Ms(int address) const
{
    return percentileMs(address, 0.99);
}

double BusHealthStats::wireLimitMs(int address) const
{
    const AddressHealth *h = this->address(address);
    if (!h || h->wireChars == 0)
        return -1;
    return h->wireChars * 10.0 * 1000.0 / m_baud;
}

double BusHealthStats::utilisation() const
{
    const qint64 elapsed = m_lastEnd - m_firstStart;
    return elapsed > 0 ? std::min(1.0, double(m_busyMicros) / double(elapsed)) : 0.0;
}

double BusHealthStats::passesPerSecond() const
{
    const qint64 elapsed = m_lastEnd - m_firstStart;
    return elapsed > 0 ? m_passes * 1e6 / double(elapsed) : 0.0;
}

bool BusHealthStats::suspectDuplicate(int address) const
{
    const AddressHealth *h = this->address(address);
    if (!h || h->exchanges < kMinExchanges)
        return false;
    const double rate = double(h->garbled + h->doubled) / h->exchanges;
    int otherExchanges = 0, otherAnomalies = 0;
    for (auto it = m_addresses.cbegin(); it != m_addresses.cend(); ++it) {
        if (it.key() == address)
            continue;
        otherExchanges += it->exchanges;
        otherAnomalies += it->garbled + it->doubled;
    }
    if (otherExchanges < kMinExchanges)
        return false; // nothing to compare with
    return rate >= kMinAnomalyRate && rate >= kAnomalyFactor * otherAnomalies / otherExchanges;
}

} // namespace zun
