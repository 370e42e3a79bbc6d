#pragma once

#include "sim/simfaults.h"
#include "sim/simreceiver.h"
#include "sim/simsignal.h"

#include <QByteArray>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace zun {

// One byte on its way to the host and the moment its stop bit is through.
struct SimTimedByte
{
    std::uint64_t micros;
    char byte;
};

// Microseconds the first `bytes` characters take on the wire: 10 bits each.
[[nodiscard]] std::uint64_t simWireMicros(int bytes, int baud);

// The receivers hanging on one serial line. The host hands it the bytes it
// sends with their start time and line speed; the bus answers with the
// reply bytes and their arrival times. Everything a receiver reports is a
// function of (seed, receiver, time), so runs repeat exactly.
class SimBus
{
public:
    explicit SimBus(std::uint64_t seed = 1);

    // Adds a receiver; its transmitter is placed on its frequency unless the
    // caller gave it a code. The reference stays valid until it is removed.
    SimReceiver &addReceiver(const SimReceiver &receiver);
    SimReceiver &addReceiver(int address);
    void removeReceiver(int address);
    // First receiver that currently has this address, or null.
    SimReceiver *receiver(int address);
    std::vector<SimReceiver *> receivers();

    // Another transmitter in the band that no receiver owns.
    void addCarrier(const SimTransmitter &carrier);

    SimFaultInjector &faults() { return m_faults; }
    void setFaultRates(const SimFaultRates &rates) { m_faults.setRates(rates); }
    void scriptFaults(int address, SimFault fault, int count = 1) { m_faults.script(address, fault, count); }

    // Host side: bytes leave the host from startMicros at baud.
    std::vector<SimTimedByte> hostTransmit(const QByteArray &bytes, std::uint64_t startMicros, int baud);

    // The four readings of the "N" and "E" replies.
    struct Levels
    {
        int audio, rfA, rfB, battery;
    };
    Levels levels(const SimReceiver &receiver, int code, std::uint64_t micros) const;
    // Readings fixed by whoever drives the bus where it needs exact levels at
    // exact frequencies; where it returns nothing, the radio is simulated.
    using LevelPin = std::function<std::optional<Levels>(const SimReceiver &receiver, int code)>;
    void pinLevels(LevelPin pin) { m_levelPin = std::move(pin); }

    // Observers of the traffic: every complete frame heard (with the speed
    // the host sent it at) and every reply put on the wire.
    using FrameObserver = std::function<void(std::uint64_t micros, const QByteArray &frame, int baud)>;
    void setFrameObserver(FrameObserver observer) { m_frameObserver = std::move(observer); }
    void setReplyObserver(FrameObserver observer) { m_replyObserver = std::move(observer); }

    std::uint64_t seed() const { return m_seed; }

private:
    struct Entry
    {
        std::uint64_t id;
        int joinAddress;
        std::unique_ptr<SimReceiver> receiver;
    };

    void handleFrame(const QByteArray &frame, std::uint64_t micros, int baud, std::vector<SimTimedByte> &out);
    void broadcast(SimReceiver &r, QByteArrayView body) const;
    [[nodiscard]] std::optional<QByteArray> respond(const Entry &e, char prefix, QByteArrayView body,
                                                    std::uint64_t micros);
    QByteArray levelText(const Entry &e, int code, std::uint64_t micros) const;
    std::vector<SimEmitter> emitters() const;
    const Entry *entryOf(const SimReceiver &r) const;

    std::uint64_t m_seed;
    std::vector<Entry> m_entries;
    std::vector<SimEmitter> m_carriers;
    SimFaultInjector m_faults;
    QByteArray m_rx;
    int m_rxBaud = 0;
    FrameObserver m_frameObserver;
    FrameObserver m_replyObserver;
    LevelPin m_levelPin;
};

} // namespace zun
