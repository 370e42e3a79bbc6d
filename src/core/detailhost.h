#pragma once

#include <QString>

#include <functional>

namespace zun {

class AbstractDetailWindow;
struct Context;

// What the detail window needs from the main screen: the panel of the same
// receiver mirrors mute and name changes, and the screen is rewritten from
// the records when the window closes.
class DetailHost
{
public:
    virtual ~DetailHost() = default;
    virtual void setPanelMute(int index, bool muted) = 0;
    virtual void setPanelNameCaption(int index, const QString &caption) = 0;
    virtual void refreshPanels() = 0;
    // The battery text the panel shows now ("OFF", "100%", ...).
    virtual QString panelBatteryText(int index) const = 0;
};

// Makes the detail window for the selected receiver; the app supplies it so
// that the main screen needs no knowledge of the window's insides.
using DetailWindowFactory = std::function<AbstractDetailWindow *(Context &ctx, DetailHost &host)>;

} // namespace zun
