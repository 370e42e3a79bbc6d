#include "detail/tvregion.h"

#include "core/context.h"
#include "core/options.h"

#include <QAction>
#include <QMenu>

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

struct RegionItem
{
    const char *name;
    const char *caption;
};
constexpr RegionItem kItems[6] = {
    {"mnuTV_Australia", "Australia"}, {"mnuTV_China", "China"},   {"mnuTV_Europe", "Europe"},
    {"mnuTV_Japan", "Japan"},         {"mnuTV_Taiwan", "Taiwan"}, {"mnuTV_USA", "USA"},
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

QString TvChannel(int region, double mhz)
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

TvRegionItems addTvRegionMenu(QMenu *menu, Context &ctx)
{
    QMenu *sub = menu->addMenu(QStringLiteral("TV Channel"));
    sub->setObjectName(QStringLiteral("mnuTV"));
    TvRegionItems items{};
    for (int region = 0; region < 6; ++region) {
        QAction *item = sub->addAction(QString::fromLatin1(kItems[region].caption));
        item->setObjectName(QString::fromLatin1(kItems[region].name));
        item->setCheckable(true);
        items[region] = item;
    }
    for (int region = 0; region < 6; ++region) {
        QObject::connect(items[region], &QAction::triggered, items[region], [items, region, &ctx](bool) {
            ctx.state.TVtype = region;
            ApplyTvRegion(items, ctx);
        });
    }
    return items;
}

void ApplyTvRegion(const TvRegionItems &items, Context &ctx)
{
    const int checked = checkedTvRegion(ctx.state.TVtype);
    for (int region = 0; region < 6; ++region)
        if (items[region])
            items[region]->setChecked(region == checked);
    ctx.platform.settings.save(kAppName, QStringLiteral("Function"), QStringLiteral("TVtype"),
                               QString::number(ctx.state.TVtype));
}

void loadTvRegion(const TvRegionItems &items, Context &ctx)
{
    ctx.state.TVtype = readTvType(ctx.platform.settings);
    ApplyTvRegion(items, ctx);
}

} // namespace zun
