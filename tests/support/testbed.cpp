#include "support/testbed.h"

#include "detail/frmmore.h"
#include "rftools/rftools.h"
#include "sim/demobus.h"

namespace zun {

void wireWindows(Context &ctx)
{
    ctx.makeDetailWindow = [](Context &c, DetailHost &host) { return new FrmMore(c, host); };
    ctx.makeRfTools = [](Context &c, RfToolsHost &host, QWidget *parent) {
        return new RfTools(c, host, parent);
    };
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
