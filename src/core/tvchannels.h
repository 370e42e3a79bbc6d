#pragma once

#include <QString>

namespace zun {

// The region values the "TVtype" setting holds.
enum TvRegion { TvAustralia = 0, TvChina = 1, TvEurope = 2, TvJapan = 3, TvTaiwan = 4, TvUsa = 5 };

// The TV channel a frequency falls in under a region's channel plan, as
// decimal text; empty outside every band. Unknown regions use Taiwan's plan.
[[nodiscard]] QString tvChannelName(int region, double mhz);

// The region in force for a stored value: unknown values fall to Taiwan.
[[nodiscard]] int checkedTvRegion(int region);

} // namespace zun
