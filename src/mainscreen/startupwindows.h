#pragma once

#include "session/session.h"

#include <QtGlobal>

#include <memory>

namespace zun {

struct Context;
class MainWindow;
class PortMap;
class SplashWindow;

// Gives the context the factories of the detail window and of the RF tools it
// hosts; the windows meet here so that neither includes the other.
void wireWindows(Context &ctx);

// The windows start-up shows: the splash, then the main screen once the
// receiver search is done, so that while receivers are searched for only the
// splash and the search progress are on screen.
class StartupWindows
{
public:
    // ports, when given, names the serial ports in the main screen's port menu.
    explicit StartupWindows(Session &session, PortMap *ports = nullptr);
    ~StartupWindows();

    StartupViews views();
    MainWindow *mainWindow() const { return m_main.get(); }
    SplashWindow *splash() const { return m_splash.get(); }
    // How long the main screen's load and the receiver search took.
    qint64 loadMillis() const { return m_loadMillis; }

private:
    Session &m_session;
    PortMap *m_ports;
    std::unique_ptr<SplashWindow> m_splash;
    std::unique_ptr<MainWindow> m_main;
    qint64 m_loadStarted = 0;
    qint64 m_loadMillis = 0;
};

} // namespace zun
