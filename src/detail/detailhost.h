#pragma once

#include <QString>

namespace zun {

// What the detail window needs from the main screen: the panel of the same
// receiver mirrors mute and name changes, and the screen is rewritten from
// the records when the window closes.
class DetailHost
{
public:
    virtual ~DetailHost() = default;
    virtual void setPanelMute(int index, bool muted) = 0;
    virtual void setPanelNameCaption(int index, const QString &caption) = 0;
    virtual void mnu_PM_Refresh() = 0;
    // The battery text the panel shows now ("OFF", "100%", ...).
    virtual QString panelBatteryText(int index) const = 0;
};

} // namespace zun
