#pragma once

#include "sim/simsignal.h"

#include <QByteArray>

#include <array>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>

namespace zun {

// What can go wrong with one reply on the line.
enum class SimFault {
    None,
    NoReply,      // the reply is lost
    Garbled,      // bytes altered so that the frame no longer starts with "$" + address
    CorruptData,  // frame head intact, data characters replaced by non-hex junk
    WrongAddress, // another address answers
    Partial,      // the frame is cut short
    Late,         // the reply lands after the late delay
    Noise,        // junk bytes before the reply
    Replace,      // scripted only: the reply is replaced by given bytes
};

// Probability per reply of each fault, 0..1.
struct SimFaultRates
{
    double noReply = 0;
    double garbled = 0;
    double corruptData = 0;
    double wrongAddress = 0;
    double partial = 0;
    double late = 0;
    double noise = 0;
};

// A reply as it goes onto the wire after fault injection.
struct SimReplyPlan
{
    QByteArray bytes; // empty: nothing is sent
    std::uint64_t delayMicros = 0;
};

// Decides the fate of every reply: first what a test scripted for the
// address, then the rates of the receiver combined with those of the bus.
class SimFaultInjector
{
public:
    explicit SimFaultInjector(std::uint64_t seed);

    void setRates(const SimFaultRates &rates) { m_rates = rates; }
    const SimFaultRates &rates() const { return m_rates; }
    void setLateDelayMicros(std::uint64_t micros) { m_lateDelay = micros; }
    std::uint64_t lateDelayMicros() const { return m_lateDelay; }

    // The next count replies from address get this fault.
    void script(int address, SimFault fault, int count = 1);
    // The next reply from address is replaced by bytes (sent as given).
    void scriptReplacement(int address, const QByteArray &bytes);
    int scriptedCount(int address) const;
    void clearScripts() { m_scripts.clear(); }

    SimReplyPlan apply(int address, const SimFaultRates &own, const QByteArray &reply);

    // How many replies got this fault so far, scripted or drawn.
    std::uint64_t inflicted(SimFault fault) const { return m_inflicted[static_cast<std::size_t>(fault)]; }

private:
    struct Scripted
    {
        SimFault fault;
        QByteArray bytes;
    };
    SimFault draw(const SimFaultRates &own);
    SimReplyPlan inflict(SimFault fault, int address, const QByteArray &reply);

    SimRandom m_random;
    SimFaultRates m_rates;
    std::uint64_t m_lateDelay = 400000;
    std::map<int, std::deque<Scripted>> m_scripts;
    std::array<std::uint64_t, static_cast<std::size_t>(SimFault::Replace) + 1> m_inflicted{};
};

// "noreply", "garbled", "corrupt", "wrongaddr", "partial", "late", "noise";
// false for an unknown name.
[[nodiscard]] bool setFaultRate(SimFaultRates &rates, const QByteArray &name, double rate);
[[nodiscard]] bool faultFromName(const QByteArray &name, SimFault &fault);

} // namespace zun
