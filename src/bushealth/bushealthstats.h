#pragma once

#include "receivers/exchangerecord.h"

#include <QHash>
#include <QList>
#include <QString>

#include <vector>

namespace zun {

// Counters of one bus address since the last reset.
struct AddressHealth
{
    int exchanges = 0;
    int timeouts = 0;  // exchanges that ended without a reply
    int retries = 0;   // attempts beyond the first
    int garbled = 0;   // exchanges that ended on a garbled reply
    int doubled = 0;   // replies longer than that command ever got elsewhere
    int wireChars = 0; // command + reply characters of the last good exchange
    QString lastError;
    std::vector<qint64> roundTrips; // the latest kMaxSamples, in microseconds
    size_t nextSample = 0;
};

// The health of the line, from the record of every exchange: per address
// counts and round-trip times, line utilisation, passes per second, and
// which address looks like two receivers answering on top of each other.
class BusHealthStats
{
public:
    static constexpr size_t kMaxSamples = 1000;
    // An address is suspected when at least this many exchanges were seen,
    // at least this share of them was garbled or doubled, and that share is
    // this many times the share at all other addresses together.
    static constexpr int kMinExchanges = 20;
    static constexpr double kMinAnomalyRate = 0.1;
    static constexpr double kAnomalyFactor = 5.0;

    explicit BusHealthStats(int baudRate = 9600) : m_baud(baudRate) {}

    void add(const ExchangeRecord &record);
    void passEnded() { ++m_passes; }
    void setBaudRate(int baudRate) { m_baud = baudRate > 0 ? baudRate : m_baud; }
    void reset();

    QList<int> addresses() const; // ascending
    const AddressHealth *address(int address) const;
    int baudRate() const { return m_baud; }

    // Milliseconds; -1 while there is nothing to say.
    double medianMs(int address) const;
    double p99Ms(int address) const;
    // The time the characters of one exchange take on the wire at the
    // current speed: (command + reply characters) × 10 bits / baud.
    double wireLimitMs(int address) const;

    double utilisation() const;     // busy time on the wire / elapsed, 0..1
    double passesPerSecond() const; // over the same elapsed time
    [[nodiscard]] bool suspectDuplicate(int address) const;
    // Characters the line dropped since the last reset: more than any reply needs.
    quint64 lineNoise() const { return m_lineNoiseSeen - m_lineNoiseBase; }

private:
    double percentileMs(int address, double fraction) const;

    int m_baud;
    QHash<int, AddressHealth> m_addresses;
    QHash<quint64, int> m_shortestReply; // by command letter and length
    qint64 m_busyMicros = 0;
    quint64 m_lineNoiseSeen = 0;
    quint64 m_lineNoiseBase = 0;
    qint64 m_firstStart = -1;
    qint64 m_lastEnd = -1;
    int m_passes = 0;
};

} // namespace zun
