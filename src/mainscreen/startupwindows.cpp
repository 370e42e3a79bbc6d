#include "mainscreen/startupwindows.h"

#include "core/context.h"
#include "mainscreen/frmmain.h"
#include "mainscreen/frmsplash.h"

namespace zun {

StartupWindows::StartupWindows(Context &ctx) : m_ctx(ctx) {}

StartupWindows::~StartupWindows() = default;

StartupViews StartupWindows::views()
{
    StartupViews views;
    views.showSplash = [this] {
        m_splash = std::make_unique<frmSplash>();
        m_splash->show();
        m_ctx.platform.desktop.processEvents();
    };
    views.showMainScreen = [this] {
        m_main = std::make_unique<FrmMain>(m_ctx);
        // A form's load step runs before the form appears.
        m_main->load();
        m_main->show();
    };
    views.closeSplash = [this] { m_splash.reset(); };
    return views;
}

} // namespace zun
