#include "support/testbed.h"

#include "detail/frmmore.h"
#include "link/ports.h"
#include "rftools/rftools.h"
#include "sim/demobus.h"

#include <QCoreApplication>

namespace zun {

void wireWindows(Context &ctx)
{
    ctx.makeDetailWindow = [](Context &c, DetailHost &host) { return new FrmMore(c, host); };
    ctx.makeRfTools = [](Context &c, RfToolsHost &host, QWidget *parent) {
        return new RfTools(c, host, parent);
    };
}

std::unique_ptr<FrmMain> loadMainScreen(Context &ctx)
{
    LineOptions &options = ctx.bus.options();
    options.CommPort = 1;
    FindCommPorts(ctx.platform.line, ctx.platform.dialogs, options.PortAvailable, options.CommPort);
    auto main = std::make_unique<FrmMain>(ctx);
    main->load();
    return main;
}

void ScriptedDesktop::processEvents()
{
    QCoreApplication::processEvents();
    if (script)
        script(++calls);
}

TestBed::TestBed()
{
    ctx.endProgram = [this] { ++endProgramCalls; };
    wireWindows(ctx);
}

SimBus &TestBed::attachReceivers(int port, const std::vector<int> &addresses, int baud)
{
    m_buses.push_back(makeSimBus(addresses, 7, baud));
    line.attachBus(port, m_buses.back().get());
    return *m_buses.back();
}

void TestBed::attachSilentPort(int port)
{
    line.attachBus(port, nullptr);
}

std::unique_ptr<FrmMain> TestBed::loadMainScreen()
{
    auto main = zun::loadMainScreen(ctx);
    line.clearWritten();
    dialogs.clear();
    return main;
}

QStringList TestBed::framesSent(const QString &prefix) const
{
    QStringList frames;
    for (const auto &w : line.written()) {
        const QString text = QString::fromLatin1(w.bytes);
        if (text.startsWith(prefix))
            frames << text;
    }
    return frames;
}

} // namespace zun
