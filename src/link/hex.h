#pragma once

#include <QString>

#include <cstdint>

namespace zun {

// Hex text to number. "0" and any character that is not a hex digit both count
// as digit 0; case is ignored; empty text is 0. Digits beyond what 32 bits
// hold are dropped from the top instead of faulting.
[[nodiscard]] std::int32_t parseHex(QStringView text);

// Number to exactly width upper-case hex digits, high digits dropped; a width
// below 1 counts as 1. Negative values are rendered from their 32-bit two's
// complement, never faulting.
[[nodiscard]] QString formatHex(std::int32_t value, int width);

} // namespace zun
