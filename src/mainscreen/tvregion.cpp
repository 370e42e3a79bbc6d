#include "mainscreen/tvregion.h"

#include "core/context.h"
#include "core/options.h"

#include <QAction>
#include <QMenu>

namespace zun {

namespace {

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
            ctx.state.tvRegion = region;
            applyTvRegion(items, ctx);
        });
    }
    return items;
}

void applyTvRegion(const TvRegionItems &items, Context &ctx)
{
    const int checked = checkedTvRegion(ctx.state.tvRegion);
    for (int region = 0; region < 6; ++region)
        if (items[region])
            items[region]->setChecked(region == checked);
    ctx.platform.settings.save(kAppName, QStringLiteral("Function"), QStringLiteral("TVtype"),
                               QString::number(ctx.state.tvRegion));
}

void loadTvRegion(const TvRegionItems &items, Context &ctx)
{
    ctx.state.tvRegion = readTvType(ctx.platform.settings);
    applyTvRegion(items, ctx);
}

} // namespace zun
