#include "coordination/guards.h"

#include <QRegularExpression>
#include <QStringList>

namespace zun {

std::optional<Guards> parseGuards(const QString &text)
{
    const QString name = text.trimmed().toLower();
    if (name == QLatin1String("standard"))
        return Guards{350, 100, 50, 50};
    if (name == QLatin1String("tight"))
        return Guards{250, 50, 25, 0};
    if (name == QLatin1String("robust"))
        return Guards{400, 150, 75, 75};
    const QStringList parts = name.split(QLatin1Char(','));
    if (parts.size() != 4)
        return std::nullopt;
    int values[4] = {};
    static const QRegularExpression digits(QStringLiteral("^[0-9]{1,7}$"));
    for (int i = 0; i < 4; ++i) {
        const QString part = parts.at(i).trimmed();
        if (!digits.match(part).hasMatch())
            return std::nullopt;
        values[i] = part.toInt();
    }
    // Without a carrier guard two receivers could share one frequency.
    if (values[0] < 1)
        return std::nullopt;
    return Guards{values[0], values[1], values[2], values[3]};
}

std::optional<int> parseMHz(const QString &text)
{
    // Parsed by hand: a double would turn 470.125 into 470124.99... kHz.
    static const QRegularExpression form(QStringLiteral("^([0-9]{1,6})(?:\\.([0-9]{0,3}))?$"));
    const QRegularExpressionMatch m = form.match(text.trimmed());
    if (!m.hasMatch())
        return std::nullopt;
    QString decimals = m.captured(2);
    while (decimals.size() < 3)
        decimals += QLatin1Char('0');
    return m.captured(1).toInt() * 1000 + decimals.toInt();
}

QString mhzText(int kHz)
{
    const QString sign = kHz < 0 ? QStringLiteral("-") : QString();
    const int magnitude = kHz < 0 ? -kHz : kHz;
    return sign + QString::number(magnitude / 1000) + QLatin1Char('.') +
           QStringLiteral("%1").arg(magnitude % 1000, 3, 10, QLatin1Char('0'));
}

} // namespace zun
