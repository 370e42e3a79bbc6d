#pragma once

#include "core/context.h"
#include "mainscreen/frmmain.h"
#include "sim/simbus.h"
#include "sim/simserialline.h"

#include <functional>
#include <memory>
#include <vector>

namespace zun {

// The window factories the app sets, for tests that build their own context.
void wireWindows(Context &ctx);

// The main screen as start-up leaves it with the line on COM1: the receivers found and shown.
std::unique_ptr<FrmMain> loadMainScreen(Context &ctx);

// DoEvents that runs the waiting events, then what the test scripted for the
// n-th call (a release, a second click, the user giving up).
class ScriptedDesktop final : public Desktop
{
public:
    void processEvents() override;
    void openDocument(const QString &) override {}
    int screenWidth() const override { return width; }
    int width = 1920;
    int calls = 0;
    std::function<void(int call)> script;
};

// A whole program's surroundings on a virtual clock: the in-process line with
// simulated buses, an in-memory settings store, scripted dialogs.
struct TestBed
{
    TestBed();

    // Receivers at these addresses on port n (the port exists either way).
    SimBus &attachReceivers(int port, const std::vector<int> &addresses, int baud = 115200);
    // Port n exists but nothing answers on it.
    void attachSilentPort(int port);
    // As loadMainScreen(ctx), with the line log and the dialogs emptied afterwards.
    std::unique_ptr<FrmMain> loadMainScreen();

    // Frames written so far, as text, optionally only those starting with prefix.
    QStringList framesSent(const QString &prefix = {}) const;

    double virtualSeconds() const { return clock.nowMicros() / 1e6; }

    VirtualClock clock;
    SimSerialLine line{clock};
    MemorySettingsStore settings;
    ScriptedDialogs dialogs;
    ScriptedDesktop desktop;
    Context ctx{Platform{clock, line, settings, dialogs, desktop}};
    int endProgramCalls = 0;

private:
    std::vector<std::unique_ptr<SimBus>> m_buses;
};

} // namespace zun
