#pragma once

#include "coordination/guards.h"

#include <QString>

#include <vector>

namespace zun {

enum class ConflictKind {
    Carriers,   // a and b closer than the carrier guard
    TwoTone3,   // 2fa - fb near victim
    ThreeTone3, // fa + fb - fc near victim
    TwoTone5,   // 3fa - 2fb near victim
};

// Indices refer to the checked list. For Carriers, victim is b and c, product
// are unused (-1, fb).
struct Conflict
{
    ConflictKind kind = ConflictKind::Carriers;
    int a = -1;
    int b = -1;
    int c = -1;
    int victim = -1;
    int productKHz = 0;

    bool operator==(const Conflict &) const = default;
};

// Every conflict of a set of carriers (kHz): each unordered carrier pair, each
// ordered maker pair of a two-transmitter product, each fa + fb - fc once with
// a < b, each against every carrier that did not make it.
[[nodiscard]] std::vector<Conflict> findConflicts(const std::vector<int> &carriersKHz, const Guards &guards);

// "470.000 MHz and 470.200 MHz are 200 kHz apart" and the like, for people.
[[nodiscard]] QString describeConflict(const Conflict &conflict, const std::vector<int> &carriersKHz);

} // namespace zun
