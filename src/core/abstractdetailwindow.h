#pragma once

#include <QString>
#include <QWidget>

#include <functional>

namespace zun {

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

// The detail window as the main screen and the work loop see it. It works on
// the receiver selected when it was made and deletes itself when closed.
class AbstractDetailWindow : public QWidget
{
public:
    using QWidget::QWidget;

    // Reads the record into the window.
    virtual void load() = 0;
    // The window's work-loop steps: level read, scan point, recorder sample.
    virtual bool readDetailLevels() = 0;
    virtual bool scanStep() = 0;
    virtual bool recorderStep() = 0;
};

// Makes the detail window for the selected receiver; the app supplies it so
// that the main screen needs no knowledge of the window's insides.
using DetailWindowFactory = std::function<AbstractDetailWindow *(Context &ctx, DetailHost &host)>;

} // namespace zun
