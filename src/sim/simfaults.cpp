#include "sim/simfaults.h"

#include <algorithm>
#include <array>

namespace zun {

namespace {
QByteArray hex2(int value)
{
    return QByteArray::number(value & 0xFF, 16).toUpper().rightJustified(2, '0');
}

struct Named
{
    const char *name;
    SimFault fault;
    double SimFaultRates::*rate;
};

constexpr std::array<Named, 7> kNames{{
    {"noreply", SimFault::NoReply, &SimFaultRates::noReply},
    {"garbled", SimFault::Garbled, &SimFaultRates::garbled},
    {"corrupt", SimFault::CorruptData, &SimFaultRates::corruptData},
    {"wrongaddr", SimFault::WrongAddress, &SimFaultRates::wrongAddress},
    {"partial", SimFault::Partial, &SimFaultRates::partial},
    {"late", SimFault::Late, &SimFaultRates::late},
    {"noise", SimFault::Noise, &SimFaultRates::noise},
}};
} // namespace

SimFaultInjector::SimFaultInjector(std::uint64_t seed) : m_random(simHash(seed, 0xFA17)) {}

void SimFaultInjector::script(int address, SimFault fault, int count)
{
    for (int i = 0; i < count; ++i)
        m_scripts[address].push_back({fault, {}});
}

void SimFaultInjector::scriptReplacement(int address, const QByteArray &bytes)
{
    m_scripts[address].push_back({SimFault::Replace, bytes});
}

int SimFaultInjector::scriptedCount(int address) const
{
    const auto it = m_scripts.find(address);
    return it == m_scripts.end() ? 0 : static_cast<int>(it->second.size());
}

SimReplyPlan SimFaultInjector::apply(int address, const SimFaultRates &own, const QByteArray &reply)
{
    const auto it = m_scripts.find(address);
    if (it != m_scripts.end() && !it->second.empty()) {
        const Scripted next = it->second.front();
        it->second.pop_front();
        ++m_inflicted[static_cast<std::size_t>(next.fault)];
        if (next.fault == SimFault::Replace)
            return {next.bytes, 0};
        return inflict(next.fault, address, reply);
    }
    const SimFault fault = draw(own);
    ++m_inflicted[static_cast<std::size_t>(fault)];
    return inflict(fault, address, reply);
}

SimFault SimFaultInjector::draw(const SimFaultRates &own)
{
    // One draw against the stacked probabilities, receiver and bus combined.
    double u = m_random.uniform();
    for (const Named &n : kNames) {
        const double p =
            1.0 - (1.0 - std::clamp(own.*n.rate, 0.0, 1.0)) * (1.0 - std::clamp(m_rates.*n.rate, 0.0, 1.0));
        if (u < p)
            return n.fault;
        u -= p;
    }
    return SimFault::None;
}

SimReplyPlan SimFaultInjector::inflict(SimFault fault, int address, const QByteArray &reply)
{
    SimReplyPlan plan{reply, 0};
    QByteArray &b = plan.bytes;
    static const char junk[] = "GHJKXZ?!*~";
    switch (fault) {
    case SimFault::None:
    case SimFault::Replace:
        break;
    case SimFault::NoReply:
        b.clear();
        break;
    case SimFault::Garbled:
        if (b.isEmpty())
            break;
        b[0] = "#%&*!?"[m_random.below(6)];
        for (int i = 0, n = 1 + m_random.below(2); i < n; ++i)
            b[m_random.below(static_cast<int>(b.size()))] ^= static_cast<char>(1 << m_random.below(7));
        break;
    case SimFault::CorruptData: {
        // Data lies between the address and the carriage return; a bare
        // acknowledgement has none and passes unchanged.
        const int first = 3;
        const int last = static_cast<int>(b.size()) - 2;
        if (last < first)
            break;
        b[first + m_random.below(last - first + 1)] = junk[m_random.below(10)];
        for (int i = first; i <= last; ++i)
            if (m_random.below(3) == 0)
                b[i] = junk[m_random.below(10)];
        break;
    }
    case SimFault::WrongAddress:
        if (b.size() >= 3)
            b.replace(1, 2, hex2(address % 64 + 1));
        break;
    case SimFault::Partial:
        if (b.size() > 1)
            b.truncate(1 + m_random.below(static_cast<int>(b.size()) - 1));
        break;
    case SimFault::Late:
        plan.delayMicros = m_lateDelay;
        break;
    case SimFault::Noise: {
        // Junk of the kind a line at the wrong speed produces; never a "$".
        QByteArray noise;
        for (int i = 0, n = 1 + m_random.below(4); i < n; ++i)
            noise.append(static_cast<char>(0x80 + m_random.below(0x80)));
        b.prepend(noise);
        break;
    }
    }
    return plan;
}

bool setFaultRate(SimFaultRates &rates, const QByteArray &name, double rate)
{
    for (const Named &n : kNames)
        if (name == n.name) {
            rates.*n.rate = rate;
            return true;
        }
    return false;
}

bool faultFromName(const QByteArray &name, SimFault &fault)
{
    for (const Named &n : kNames)
        if (name == n.name) {
            fault = n.fault;
            return true;
        }
    return false;
}

} // namespace zun
