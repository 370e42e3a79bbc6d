#include "coordination/linecheck.h"

#include "coordination/guards.h"
#include "receivers/frequency.h"

#include <cmath>
#include <set>

namespace zun {

int toKHz(double mhz)
{
    return static_cast<int>(std::lround(mhz * 1000.0));
}

std::vector<LineCarrier> lineCarriers(const QList<ReceiverRecord> &found)
{
    std::vector<LineCarrier> out;
    for (int i = 0; i < found.size(); ++i) {
        const ReceiverRecord &r = found[i];
        LineCarrier c;
        c.index = i;
        c.address = r.address;
        c.name = r.name.trimmed();
        c.bandLowKHz = toKHz(ComputeFreq(r.bandStartCode));
        c.bandHighKHz = c.bandLowKHz + std::max(r.bandWidth, 0) * kRasterKHz;
        c.frequencyKHz = toKHz(ComputeFreq(r.manualFreq ? r.manualFreqCode : r.channelFreqCode));
        c.online = r.online;
        out.push_back(c);
    }
    return out;
}

std::vector<bool> conflictedCarriers(const std::vector<Conflict> &conflicts, int count)
{
    std::vector<bool> out(static_cast<std::size_t>(count), false);
    for (const Conflict &k : conflicts)
        for (const int i : {k.victim, k.kind == ConflictKind::Carriers ? k.a : -1})
            if (i >= 0 && i < count)
                out[static_cast<std::size_t>(i)] = true;
    return out;
}

QStringList carrierStates(const std::vector<int> &carriersKHz, int lineCount, const QStringList &labels,
                          const Guards &guards)
{
    const std::vector<Conflict> conflicts = findConflicts(carriersKHz, guards);
    QStringList states;
    for (int v = 0; v < lineCount; ++v) {
        std::set<int> others;
        QString first;
        int count = 0;
        for (const Conflict &k : conflicts) {
            // A carrier pair is one conflict seen from both sides.
            const bool involved = k.victim == v || (k.kind == ConflictKind::Carriers && k.a == v);
            if (!involved)
                continue;
            for (const int i : {k.a, k.b, k.c, k.victim})
                if (i >= 0 && i != v)
                    others.insert(i);
            if (count++ == 0)
                first = describeConflict(k, carriersKHz);
        }
        if (count == 0) {
            states << QStringLiteral("clean");
            continue;
        }
        QStringList names;
        for (const int i : others)
            names << labels.value(i);
        QString text = QStringLiteral("conflict with %1: %2").arg(names.join(QStringLiteral(", ")), first);
        if (count > 1)
            text += QStringLiteral(" (%1 more)").arg(count - 1);
        states << text;
    }
    return states;
}

} // namespace zun
