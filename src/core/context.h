#pragma once

#include "core/appstate.h"
#include "core/detailhost.h"
#include "core/rftoolspanel.h"
#include "platform/platform.h"
#include "receivers/detailsession.h"
#include "receivers/receiverbus.h"

#include <functional>

namespace zun {

// Everything a view or routine of the program needs: the platform seams, the
// shared settings and the receivers on the line. One per run, passed by reference.
struct Context
{
    explicit Context(const Platform &p)
        : platform(p), bus(p.clock, p.line, p.settings, p.desktop), detail(bus)
    {
    }
    Context(const Context &) = delete;
    Context &operator=(const Context &) = delete;

    Platform platform;
    AppState state;
    ReceiverBus bus;
    // The receiver the detail window has open.
    DetailSession detail;

    // Ends the program at once; the app ends the process, tests record the call.
    std::function<void()> endProgram = [] {};
    // Opens a receiver's detail window; without it the detail button does nothing.
    DetailWindowFactory makeDetailWindow;
    // Makes the RF tools a detail window hosts; a detail window needs it.
    RfToolsFactory makeRfTools;
};

} // namespace zun
