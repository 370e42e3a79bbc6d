#pragma once

#include <cstdint>
#include <vector>

namespace zun {

// The worst cases of a scan: per point, the highest and the lowest level
// measured across sweeps since the trace was switched on or cleared. Only
// what was measured counts; points a sweep skipped keep their value.
class HoldTraces
{
public:
    enum Kind { Max = 0, Min = 1 };
    static constexpr std::int16_t kNone = -1; // never measured while holding

    // The band has points 0..pointCount; both traces start empty.
    void resize(int pointCount);
    // Switching a trace off drops what it held.
    void setEnabled(Kind kind, bool on);
    bool enabled(Kind kind) const { return m_on[kind]; }

    // One measured point, level on the 0..99 scale.
    void record(int index, int level);
    void clear();

    const std::vector<std::int16_t> &trace(Kind kind) const { return m_traces[kind]; }
    [[nodiscard]] bool holdsAny(Kind kind) const;

private:
    std::vector<std::int16_t> m_traces[2];
    bool m_on[2] = {false, false};
};

} // namespace zun
