#include "support/testbed.h"

#include "detail/frmmore.h"
#include "sim/demobus.h"

namespace zun {

TestBed::TestBed()
{
    ctx.endProgram = [this] { ++endProgramCalls; };
    ctx.makeDetailWindow = [](Context &c, DetailHost &host) { return new FrmMore(c, host); };
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
