#pragma once

#include "sim/simbus.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace zun {

// A receiver at address with settings varied by variant (names, groups,
// channels, squelch, transmitters that come and go), all at baud.
[[nodiscard]] SimReceiver makeSampleReceiver(int address, int variant, int baud = 115200);

// Receivers at the given addresses, each varied, plus two foreign carriers
// in the band.
std::unique_ptr<SimBus> makeSimBus(const std::vector<int> &addresses, std::uint64_t seed = 1,
                                   int baud = 115200);

// The demonstration line: a receiver at every address 1..64, some muted, one
// tuned off the presets, one with a weak battery, one with a faint
// transmitter near its squelch, transmitters that come and go.
std::unique_ptr<SimBus> makeDemoBus(std::uint64_t seed = 1, int baud = 115200);

} // namespace zun
