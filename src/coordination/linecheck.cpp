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

std::vector<LineCarrier> lineCarriers(const QList<Receiver> &found)
{
    std::vector<LineCarrier> out;
    for (int i = 0; i < found.size(); ++i) {
        const Receiver &r = found[i];
        LineCarrier c;
        c.index = i;
        c.address = r.address;
        c.name = r.name.trimmed();
        c.bandLowKHz = toKHz(mhzFromCode(r.bandStartCode));
        c.bandHighKHz = c.bandLowKHz + std::max(r.bandWidth, 0) * kRasterKHz;
        c.frequencyKHz = toKHz(mhzFromCode(r.manualFreq ? r.manualFreqCode : r.channelFreqCode));
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

QStringList carrierStates(const std::vector<Conflict> &conflicts, const std::vector<int> &carriersKHz,
                          int lineCount, const QStringList &labels)
{
    constexpr int kNamesShown = 4;
    struct Suffered
    {
        std::set<int> others;
        QString first;
        int count = 0;
    };
    std::vector<Suffered> per(static_cast<std::size_t>(std::max(lineCount, 0)));
    // One pass: a crowded line has far more conflicts than receivers.
    for (const Conflict &k : conflicts) {
        // A carrier pair is one conflict seen from both sides.
        for (const int v : {k.victim, k.kind == ConflictKind::Carriers ? k.a : -1}) {
            if (v < 0 || v >= lineCount)
                continue;
            Suffered &s = per[static_cast<std::size_t>(v)];
            for (const int i : {k.a, k.b, k.c, k.victim})
                if (i >= 0 && i != v)
                    s.others.insert(i);
            if (s.count++ == 0)
                s.first = describeConflict(k, carriersKHz);
        }
    }
    QStringList states;
    for (const Suffered &s : per) {
        if (s.count == 0) {
            states << QStringLiteral("clean");
            continue;
        }
        QStringList names;
        for (const int i : s.others) {
            if (names.size() == kNamesShown)
                break;
            names << labels.value(i);
        }
        const int hidden = static_cast<int>(s.others.size()) - static_cast<int>(names.size());
        QString who = names.join(QStringLiteral(", "));
        if (hidden > 0)
            who += QStringLiteral(" and %1 more").arg(hidden);
        QString text = QStringLiteral("conflict with %1: %2").arg(who, s.first);
        if (s.count > 1)
            text += QStringLiteral(" (%1 conflicts)").arg(s.count);
        states << text;
    }
    return states;
}

} // namespace zun
