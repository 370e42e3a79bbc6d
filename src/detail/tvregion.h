#pragma once

#include <QString>

#include <array>

class QAction;
class QMenu;

namespace zun {

struct Context;

// The region values the "TVtype" setting holds.
enum TvRegion { TvAustralia = 0, TvChina = 1, TvEurope = 2, TvJapan = 3, TvTaiwan = 4, TvUsa = 5 };

// The TV channel a frequency falls in under a region's channel plan, as
// decimal text; empty outside every band. Unknown regions use Taiwan's plan.
QString TvChannel(int region, double mhz);

// The region whose menu item carries the check mark: unknown values fall to Taiwan.
int checkedTvRegion(int region);

// The six region items of the option menu, in region order.
using TvRegionItems = std::array<QAction *, 6>;

// Adds the region items (mnuTV_Australia .. mnuTV_USA) to a "TV Channel"
// submenu of menu. Each item sets the region and applies it.
TvRegionItems addTvRegionMenu(QMenu *menu, Context &ctx);

// Moves the check mark to the current region and saves "TVtype".
void ApplyTvRegion(const TvRegionItems &items, Context &ctx);

// Start of the main screen: reads "TVtype" (repaired to 4 when it is not a
// number 0..5), then applies it, which also saves the repair.
void loadTvRegion(const TvRegionItems &items, Context &ctx);

} // namespace zun
