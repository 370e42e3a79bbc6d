#pragma once

#include "core/tvchannels.h"

#include <QString>

#include <array>

class QAction;
class QMenu;

namespace zun {

struct Context;

// The six region items of the option menu, in region order.
using TvRegionItems = std::array<QAction *, 6>;

// Adds the region items (mnuTV_Australia .. mnuTV_USA) to a "TV Channel"
// submenu of menu. Each item sets the region and applies it.
[[nodiscard]] TvRegionItems addTvRegionMenu(QMenu *menu, Context &ctx);

// Moves the check mark to the current region and saves "TVtype".
void applyTvRegion(const TvRegionItems &items, Context &ctx);

// Start of the main screen: reads "TVtype" (repaired to 4 when it is not a
// number 0..5), then applies it, which also saves the repair.
void loadTvRegion(const TvRegionItems &items, Context &ctx);

} // namespace zun
