#include "coordination/planinputs.h"

#include "coordination/guards.h"
#include "core/tvchannels.h"

#include <QRegularExpression>

#include <algorithm>

namespace zun {

namespace {
QStringList items(const QString &text)
{
    static const QRegularExpression separators(QStringLiteral("[,\\s]+"));
    return text.split(separators, Qt::SkipEmptyParts);
}
} // namespace

std::optional<std::vector<std::pair<int, int>>> parseRanges(const QString &text)
{
    std::vector<std::pair<int, int>> out;
    for (const QString &item : items(text)) {
        const QStringList ends = item.split(QLatin1Char('-'));
        if (ends.size() != 2)
            return std::nullopt;
        const auto low = parseMHz(ends[0]);
        const auto high = parseMHz(ends[1]);
        if (!low || !high || *high < *low)
            return std::nullopt;
        out.emplace_back(*low, *high);
    }
    return out;
}

std::optional<std::vector<int>> parseChannels(const QString &text)
{
    std::vector<int> out;
    for (const QString &item : items(text)) {
        bool ok = false;
        const int channel = item.toInt(&ok);
        if (!ok || channel < 0)
            return std::nullopt;
        out.push_back(channel);
    }
    return out;
}

std::vector<std::pair<int, int>> tvChannelRanges(int region, const std::vector<int> &channels, int lowKHz,
                                                 int highKHz)
{
    std::vector<std::pair<int, int>> out;
    if (channels.empty())
        return out;
    bool open = false;
    for (int f = lowKHz; f <= highKHz; f += kRasterKHz) {
        const QString channel = tvChannelName(region, f / 1000.0);
        const bool inUse = !channel.isEmpty() &&
                           std::find(channels.begin(), channels.end(), channel.toInt()) != channels.end();
        if (inUse && !open)
            out.emplace_back(f, f);
        if (inUse)
            out.back().second = f;
        open = inUse;
    }
    return out;
}

} // namespace zun
