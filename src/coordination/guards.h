#pragma once

#include <QString>

#include <optional>

namespace zun {

// Every frequency in the coordination code is an integer in kHz, so that
// sums and differences of carriers compare exactly.
constexpr int kRasterKHz = 25;

// Minimum distances in kHz. A product closer than its guard to a carrier
// conflicts, so a guard of 1 forbids only exact coincidence and 0 turns that
// check off.
struct Guards
{
    int carrier = 350;   // between two carriers
    int twoTone3 = 100;  // 2fa - fb
    int threeTone3 = 50; // fa + fb - fc
    int twoTone5 = 50;   // 3fa - 2fb

    bool operator==(const Guards &) const = default;
};

// "standard", "tight", "robust", or four kHz values "C,T3,X3,T5" with a
// positive carrier guard. Empty when the text is neither.
[[nodiscard]] std::optional<Guards> parseGuards(const QString &text);

// MHz text with at most three decimals, exactly, as kHz; empty otherwise.
[[nodiscard]] std::optional<int> parseMHz(const QString &text);

// kHz as MHz with three decimals.
[[nodiscard]] QString mhzText(int kHz);

} // namespace zun
