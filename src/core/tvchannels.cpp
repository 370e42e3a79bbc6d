#include "core/tvchannels.h"

#include <cmath>

namespace zun {

namespace {
struct TvBand
{
    int region;
    double low;  // MHz, inclusive
    double high; // MHz, exclusive
    double width;
    int firstChannel;
};

// Taiwan's plan is also the fallback for any region not listed.
constexpr TvBand kBands[] = {
    {TvAustralia, 526, 820, 7, 28}, {TvChina, 470, 566, 8, 13}, {TvChina, 606, 910, 8, 25},
    {TvEurope, 470, 862, 8, 21},    {TvJapan, 470, 770, 6, 13}, {TvUsa, 470, 890, 6, 14},
    {TvTaiwan, 470, 890, 6, 14},
};
} // namespace

int checkedTvRegion(int region)
{
    switch (region) {
    case TvAustralia:
    case TvChina:
    case TvEurope:
    case TvJapan:
    case TvUsa:
        return region;
    default:
        return TvTaiwan;
    }
}

QString tvChannelName(int region, double mhz)
{
    const int plan = checkedTvRegion(region);
    for (const TvBand &band : kBands) {
        if (band.region != plan || !(mhz >= band.low && mhz < band.high))
            continue;
        const double channel = std::floor((mhz - band.low) / band.width) + band.firstChannel;
        return QString::number(static_cast<int>(channel));
    }
    return {};
}

} // namespace zun
