#include "link/hex.h"

namespace zun {

std::int32_t parseHex(QStringView text)
{
    // The digit string starts at "1" on purpose: "0" sits at position 16 and a
    // foreign character at position 0, and both are digit 0 modulo 16.
    static const QString digits = QStringLiteral("123456789ABCDEF0");
    std::uint32_t result = 0;
    for (QChar c : text) {
        const int position = digits.indexOf(c.toUpper()) + 1;
        result = result * 16u + static_cast<std::uint32_t>(position % 16);
    }
    return static_cast<std::int32_t>(result);
}

QString formatHex(std::int32_t value, int width)
{
    static const char digits[] = "0123456789ABCDEF";
    if (width < 1)
        width = 1;
    std::uint32_t v = static_cast<std::uint32_t>(value);
    QString result(width, QLatin1Char('0'));
    for (int i = width - 1; i >= 0; --i) {
        result[i] = QLatin1Char(digits[v % 16u]);
        v /= 16u;
    }
    return result;
}

} // namespace zun
