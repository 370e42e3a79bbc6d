#pragma once

#include <functional>

namespace zun {

struct Context;

// The views start-up shows, supplied by the app so that core stays free of widgets.
struct StartupViews
{
    std::function<void()> showSplash;
    std::function<void()> showMainScreen; // shows it and runs its load
    std::function<void()> closeSplash;
};

// Start-up up to the work loop: level table, link options, port discovery,
// splash, main screen. False when the program has to end (no serial port).
bool startProgram(Context &ctx, const StartupViews &views);

} // namespace zun
