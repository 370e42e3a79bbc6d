#include "receivers/frequency.h"

#include "link/hex.h"

#include <QRegularExpression>

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>

namespace zun {

namespace {
constexpr std::int64_t kInt32Max = std::numeric_limits<std::int32_t>::max();
constexpr std::int64_t kInt32Min = std::numeric_limits<std::int32_t>::min();

// |value| x 1000 rounded half away from zero, judged on the value's 15
// significant decimal digits so that 182.2755 rounds up as it reads.
std::int64_t thousandthsHalfAway(double magnitude)
{
    char buffer[64];
    std::snprintf(buffer, sizeof buffer, "%.14e", magnitude);
    // "d.dddddddddddddde[+-]x"
    std::int64_t mantissa = 0;
    for (const char *p = buffer; *p && *p != 'e'; ++p)
        if (*p >= '0' && *p <= '9')
            mantissa = mantissa * 10 + (*p - '0');
    const char *e = std::strchr(buffer, 'e');
    const int exponent = e ? std::atoi(e + 1) : 0;

    // magnitude x 1000 = mantissa x 10^(exponent + 3 - 14)
    int shift = exponent + 3 - 14;
    if (shift >= 0) {
        while (shift-- > 0)
            mantissa *= 10;
        return mantissa;
    }
    if (shift < -15)
        return 0;
    std::int64_t divisor = 1;
    for (int i = 0; i < -shift; ++i)
        divisor *= 10;
    const std::int64_t kept = mantissa / divisor;
    const std::int64_t dropped = mantissa % divisor;
    return dropped * 2 >= divisor ? kept + 1 : kept;
}
} // namespace

double mhzFromCode(QStringView code)
{
    if (code.size() < 4)
        return 0;
    const std::int64_t kHz = 25 * static_cast<std::int64_t>(parseHex(code)) + 65750;
    if (kHz > kInt32Max || kHz < kInt32Min)
        return 0;
    return static_cast<double>(kHz) / 1000.0;
}

QString codeFromMhz(double mhz)
{
    const double exact = (mhz * 1000.0 - 65750.0) / 25.0;
    if (!std::isfinite(exact))
        return QStringLiteral("0000");
    // nearbyint rounds halves to even under the default rounding mode.
    const double rounded = std::nearbyint(exact);
    if (rounded > static_cast<double>(kInt32Max) || rounded < static_cast<double>(kInt32Min))
        return QStringLiteral("0000");
    return formatHex(static_cast<std::int32_t>(rounded), 4);
}

QString formatFreq(double mhz)
{
    if (!std::isfinite(mhz))
        return QStringLiteral("000.000");
    if (std::fabs(mhz) >= 1e15)
        return QString::asprintf("%.3f", mhz);
    const std::int64_t thousandths = thousandthsHalfAway(std::fabs(mhz));
    QString text = QStringLiteral("%1.%2")
                       .arg(thousandths / 1000, 3, 10, QLatin1Char('0'))
                       .arg(thousandths % 1000, 3, 10, QLatin1Char('0'));
    if (mhz < 0 && thousandths != 0)
        text.prepend(QLatin1Char('-'));
    return text;
}

double leadingValue(QStringView text)
{
    // Val() reads through blanks, tabs and line feeds wherever they stand.
    QString packed;
    packed.reserve(text.size());
    for (QChar c : text)
        if (c != QLatin1Char(' ') && c != QLatin1Char('\t') && c != QLatin1Char('\n') &&
            c != QLatin1Char('\r'))
            packed.append(c);
    static const QRegularExpression number(QStringLiteral(R"(^[+-]?(\d+\.?\d*|\.\d+)([eEdD][+-]?\d+)?)"));
    const QRegularExpressionMatch match = number.match(packed);
    if (!match.hasMatch())
        return 0;
    QString digits = match.captured(0);
    digits.replace(QLatin1Char('d'), QLatin1Char('e')).replace(QLatin1Char('D'), QLatin1Char('e'));
    bool ok = false;
    const double value = digits.toDouble(&ok);
    return ok && std::isfinite(value) ? value : 0;
}

QString numberText(double value)
{
    return QString::number(value, 'g', 15).toUpper();
}

} // namespace zun
