#pragma once

#include "core/context.h"
#include "mainscreen/mainwindow.h"
#include "session/session.h"
#include "sim/simbus.h"
#include "sim/simserialline.h"

#include <QTemporaryDir>

#include <functional>
#include <memory>
#include <vector>

namespace zun {

class StartupWindows;

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

// A whole program on a virtual clock, assembled as the app assembles it: the
// in-process line with simulated buses, an in-memory settings store,
// scripted dialogs.
struct TestBed
{
    explicit TestBed(const SessionOptions &options = {});
    ~TestBed();

    // Receivers at these addresses on port n (the port exists either way).
    SimBus &attachReceivers(int port, const std::vector<int> &addresses, int baud = 115200);
    // Port n exists but nothing answers on it.
    void attachSilentPort(int port);
    // The program started with its windows on COM1, the receivers found and
    // shown; the line log and the dialogs emptied afterwards.
    MainWindow *loadMainScreen();
    // The same without a window.
    bool startHeadless();

    // Frames written so far, as text, optionally only those starting with prefix.
    QStringList framesSent(const QString &prefix = {}) const;

    double virtualSeconds() const { return clock.nowMicros() / 1e6; }

    // The user's data folder, unless the options name one.
    QTemporaryDir dataDir;
    VirtualClock clock;
    SimSerialLine line{clock};
    MemorySettingsStore settings;
    ScriptedDialogs dialogs;
    ScriptedDesktop desktop;
    std::unique_ptr<Session> session;
    Context &ctx;
    std::unique_ptr<StartupWindows> windows;
    int endProgramCalls = 0;

private:
    std::vector<std::unique_ptr<SimBus>> m_buses;
};

} // namespace zun
