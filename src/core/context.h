#pragma once

#include "core/appstate.h"
#include "link/transaction.h"
#include "platform/platform.h"

#include <functional>

namespace zun {

// Everything a view or routine of the program needs: the platform seams, the
// shared state and the command transaction. One per run, passed by reference.
struct Context
{
    explicit Context(const Platform &p) : platform(p), link(p.line, p.clock, state.Retry) {}
    Context(const Context &) = delete;
    Context &operator=(const Context &) = delete;

    Platform platform;
    AppState state;
    Link link;

    // Ends the program at once; the app ends the process, tests record the call.
    std::function<void()> endProgram = [] {};
};

} // namespace zun
