#pragma once

#include "platform/clock.h"
#include "platform/desktop.h"
#include "platform/dialogs.h"
#include "platform/serialline.h"
#include "platform/settingsstore.h"

namespace zun {

// The seams the rest of the program talks to the outside world through.
// The app wires the real ones; tests wire doubles.
struct Platform
{
    Clock &clock;
    SerialLine &line;
    SettingsStore &settings;
    Dialogs &dialogs;
    Desktop &desktop;
};

} // namespace zun
