#include "coordination/conflicts.h"

#include <cstdlib>

namespace zun {

std::vector<Conflict> findConflicts(const std::vector<int> &f, const Guards &guards)
{
    std::vector<Conflict> out;
    const int n = static_cast<int>(f.size());
    auto near = [](int product, int carrier, int guard) {
        return guard > 0 && std::abs(product - carrier) < guard;
    };

    for (int a = 0; a < n; ++a)
        for (int b = a + 1; b < n; ++b)
            if (near(f[a], f[b], guards.carrier))
                out.push_back({ConflictKind::Carriers, a, b, -1, b, f[b]});

    for (int a = 0; a < n; ++a) {
        for (int b = 0; b < n; ++b) {
            if (a == b)
                continue;
            const int p3 = 2 * f[a] - f[b];
            const int p5 = 3 * f[a] - 2 * f[b];
            for (int v = 0; v < n; ++v) {
                if (v == a || v == b)
                    continue;
                if (near(p3, f[v], guards.twoTone3))
                    out.push_back({ConflictKind::TwoTone3, a, b, -1, v, p3});
                if (near(p5, f[v], guards.twoTone5))
                    out.push_back({ConflictKind::TwoTone5, a, b, -1, v, p5});
            }
        }
    }

    if (guards.threeTone3 > 0) {
        for (int a = 0; a < n; ++a)
            for (int b = a + 1; b < n; ++b)
                for (int c = 0; c < n; ++c) {
                    if (c == a || c == b)
                        continue;
                    const int p = f[a] + f[b] - f[c];
                    for (int v = 0; v < n; ++v)
                        if (v != a && v != b && v != c && near(p, f[v], guards.threeTone3))
                            out.push_back({ConflictKind::ThreeTone3, a, b, c, v, p});
                }
    }
    return out;
}

QString describeConflict(const Conflict &k, const std::vector<int> &f)
{
    const auto mhz = [&](int i) { return mhzText(f[static_cast<size_t>(i)]); };
    const QString victim = mhz(k.victim);
    switch (k.kind) {
    case ConflictKind::Carriers:
        return QStringLiteral("carriers %1 and %2 are %3 kHz apart")
            .arg(mhz(k.a), victim)
            .arg(std::abs(f[static_cast<size_t>(k.a)] - f[static_cast<size_t>(k.b)]));
    case ConflictKind::TwoTone3:
        return QStringLiteral("2x%1 - %2 = %3 lies %4 kHz from %5")
            .arg(mhz(k.a), mhz(k.b), mhzText(k.productKHz))
            .arg(std::abs(k.productKHz - f[static_cast<size_t>(k.victim)]))
            .arg(victim);
    case ConflictKind::ThreeTone3:
        return QStringLiteral("%1 + %2 - %3 = %4 lies %5 kHz from %6")
            .arg(mhz(k.a), mhz(k.b), mhz(k.c), mhzText(k.productKHz))
            .arg(std::abs(k.productKHz - f[static_cast<size_t>(k.victim)]))
            .arg(victim);
    case ConflictKind::TwoTone5:
        return QStringLiteral("3x%1 - 2x%2 = %3 lies %4 kHz from %5")
            .arg(mhz(k.a), mhz(k.b), mhzText(k.productKHz))
            .arg(std::abs(k.productKHz - f[static_cast<size_t>(k.victim)]))
            .arg(victim);
    }
    return {};
}

} // namespace zun
