#pragma once

#include "core/startup.h"

#include <memory>

namespace zun {

struct Context;
class FrmMain;
class frmSplash;

// The windows start-up shows: the splash, then the main screen once its load
// step (detection included) is done, so that while receivers are searched for
// only the splash and the search progress are on screen.
class StartupWindows
{
public:
    explicit StartupWindows(Context &ctx);
    ~StartupWindows();

    StartupViews views();
    FrmMain *mainWindow() const { return m_main.get(); }
    frmSplash *splash() const { return m_splash.get(); }

private:
    Context &m_ctx;
    std::unique_ptr<frmSplash> m_splash;
    std::unique_ptr<FrmMain> m_main;
};

} // namespace zun
