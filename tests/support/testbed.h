#pragma once

#include "core/context.h"
#include "sim/simbus.h"
#include "sim/simserialline.h"

#include <memory>
#include <vector>

namespace zun {

// The window factories the app sets, for tests that build their own context.
void wireWindows(Context &ctx);

// A whole program's surroundings on a virtual clock: the in-process line with
// simulated buses, an in-memory settings store, scripted dialogs.
struct TestBed
{
    TestBed();

    // Receivers at these addresses on port n (the port exists either way).
    SimBus &attachReceivers(int port, const std::vector<int> &addresses, int baud = 115200);
    // Port n exists but nothing answers on it.
    void attachSilentPort(int port);

    // Frames written so far, as text, optionally only those starting with prefix.
    QStringList framesSent(const QString &prefix = {}) const;

    double virtualSeconds() const { return clock.nowMicros() / 1e6; }

    VirtualClock clock;
    SimSerialLine line{clock};
    MemorySettingsStore settings;
    ScriptedDialogs dialogs;
    FakeDesktop desktop;
    Context ctx{Platform{clock, line, settings, dialogs, desktop}};
    int endProgramCalls = 0;

private:
    std::vector<std::unique_ptr<SimBus>> m_buses;
};

} // namespace zun
