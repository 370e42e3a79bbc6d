// Hex text from the wire to numbers and back.
#include "link/hex.h"

#include <QString>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QString text =
        QString::fromLatin1(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size));
    const std::int32_t value = zun::parseHex(text);

    // Every width, including the ones a caller gets wrong, and back again.
    for (int width = -2; width <= 9; ++width) {
        const QString hex = zun::formatHex(value, width);
        const int w = std::max(width, 1);
        if (w < 1 || hex.size() != w)
            __builtin_trap();
        const std::uint32_t mask = w >= 8 ? 0xFFFFFFFFu : (1u << (4 * w)) - 1;
        if ((static_cast<std::uint32_t>(zun::parseHex(hex)) & mask) !=
            (static_cast<std::uint32_t>(value) & mask))
            __builtin_trap();
    }
    return 0;
}
