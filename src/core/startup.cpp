#include "core/startup.h"

#include "core/context.h"
#include "core/options.h"
#include "link/ports.h"

namespace zun {

bool startProgram(Context &ctx, const StartupViews &views)
{
    loadLinkOptions(ctx.platform.settings, ctx.bus.options());
    LineOptions &options = ctx.bus.options();
    if (!FindCommPorts(ctx.platform.line, ctx.platform.dialogs, options.PortAvailable, options.CommPort))
        return false;
    if (views.showSplash)
        views.showSplash();
    ctx.bus.setWorkMode(WorkMode::Idle);
    if (views.showMainScreen)
        views.showMainScreen();
    if (views.closeSplash)
        views.closeSplash();
    return true;
}

} // namespace zun
