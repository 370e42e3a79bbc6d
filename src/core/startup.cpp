#include "core/startup.h"

#include "core/context.h"
#include "core/options.h"
#include "link/ports.h"

namespace zun {

bool startProgram(Context &ctx, const StartupViews &views)
{
    ctx.state.levelTable = buildLevelTable();
    loadLinkOptions(ctx.platform.settings, ctx.state);
    if (!FindCommPorts(ctx))
        return false;
    if (views.showSplash)
        views.showSplash();
    ctx.state.WorkMode = 0;
    ctx.state.KobActive = false;
    if (views.showMainScreen)
        views.showMainScreen();
    if (views.closeSplash)
        views.closeSplash();
    return true;
}

} // namespace zun
