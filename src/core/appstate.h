#pragma once

#include "core/leveltable.h"
#include "core/receiverrecord.h"

#include <array>
#include <vector>

namespace zun {

// The program's shared state: one instance, created at start and passed to
// whoever needs it. Tests build a fresh one instead of resetting globals.
struct AppState
{
    int CommPort = 2;
    int Retry = 2;
    int Baudrate = 115200;
    std::array<bool, 9> PortAvailable{}; // index 1..8; 0 unused
    LevelTable levelTable = buildLevelTable();
    int WorkMode = 0;
    bool KobActive = false;
    int TVtype = 4;

    // Sized to the number of panels when the main screen loads.
    std::vector<ReceiverRecord> receivers;
    int foundCount = 0;
    int selectedReceiver = 0;

    // Non-zero while other work on the line must not be interrupted by
    // opening a detail window.
    int moreBlocked = 0;

    int receiverCount() const { return static_cast<int>(receivers.size()); }
};

} // namespace zun
