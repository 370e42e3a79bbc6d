#pragma once

#include <QString>

#include <optional>
#include <utility>
#include <vector>

namespace zun {

// "470.000-478.000, 500-501.5": MHz ranges separated by commas or blanks, as
// kHz with both ends inclusive. Empty text gives no range; a reversed or
// malformed range gives nothing.
[[nodiscard]] std::optional<std::vector<std::pair<int, int>>> parseRanges(const QString &text);

// "21, 22 35": TV channel numbers; nothing when one is not a number.
[[nodiscard]] std::optional<std::vector<int>> parseChannels(const QString &text);

// The stretches of low..high (kHz) that lie in the given channels of a TV
// region, on the 25 kHz raster, as inclusive ranges.
[[nodiscard]] std::vector<std::pair<int, int>> tvChannelRanges(int region, const std::vector<int> &channels,
                                                               int lowKHz, int highKHz);

} // namespace zun
