#pragma once

#include "support/testbed.h"

// A detail window on the simulated line and a virtual clock, with the
// dialogs, the desktop and the main screen replaced by doubles.

#include "core/context.h"
#include "core/detailwindow.h"
#include "detail/frmmore.h"
#include "detail/settingstab.h"
#include "sim/simbus.h"
#include "sim/simserialline.h"

#include <QCoreApplication>
#include <QPointer>

#include <functional>

namespace zun::test {

// DoEvents that runs the waiting events, then what the test scripted for the
// n-th call (a release, a second click).
class ScriptedDesktop final : public Desktop
{
public:
    void processEvents() override
    {
        QCoreApplication::processEvents();
        if (script)
            script(++calls);
    }
    void openDocument(const QString &) override {}
    int screenWidth() const override { return 1920; }
    int calls = 0;
    std::function<void(int call)> script;
};

class FakeHost final : public DetailHost
{
public:
    void setPanelMute(int, bool) override {}
    void setPanelNameCaption(int, const QString &caption) override { captions << caption; }
    void mnu_PM_Refresh() override {}
    QString panelBatteryText(int) const override { return QStringLiteral("OFF"); }
    QStringList captions;
};

struct DetailRig
{
    DetailRig()
    {
        line.attachBus(1, &bus);
        line.applySettings(QStringLiteral("115200,N,8,1"));
        line.open();
        wireWindows(ctx);
    }
    ~DetailRig() { delete form.data(); }

    // Detects the receivers added to the bus, then opens the first one's
    // window as the main screen does; the line log starts empty.
    void open()
    {
        ctx.bus.resizeTable(4);
        ctx.bus.CheckReceivers();
        ctx.bus.openDetail(0);
        form = new FrmMore(ctx, host);
        form->load();
        form->show();
        ctx.bus.setWorkMode(WorkMode::DetailRead);
        line.clearWritten();
    }

    SettingsTab &tab() { return form->settings(); }

    // Frames written since the window opened, carriage returns dropped.
    QString frames() const
    {
        QString out;
        for (const auto &w : line.written())
            out += QString::fromLatin1(w.bytes).remove(QLatin1Char('\r'));
        return out;
    }

    VirtualClock clock;
    SimBus bus{11};
    SimSerialLine line{clock};
    MemorySettingsStore settings;
    ScriptedDialogs dialogs;
    ScriptedDesktop desktop;
    Platform platform{clock, line, settings, dialogs, desktop};
    Context ctx{platform};
    FakeHost host;
    QPointer<FrmMore> form;
};

} // namespace zun::test
