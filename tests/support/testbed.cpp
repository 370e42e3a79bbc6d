#include "support/testbed.h"

#include "core/options.h"
#include "mainscreen/startupwindows.h"
#include "sim/demobus.h"

#include <QCoreApplication>
#include <QEvent>

namespace zun {

void ScriptedDesktop::processEvents()
{
    QCoreApplication::processEvents();
    if (script)
        script(++calls);
}

namespace {
SessionOptions withDataFolder(SessionOptions options, const QString &folder)
{
    if (options.dataFolder.isEmpty())
        options.dataFolder = folder;
    return options;
}
} // namespace

TestBed::TestBed(const SessionOptions &options)
    : session(assembleSession(Platform{clock, line, settings, dialogs, desktop},
                              withDataFolder(options, dataDir.path()))),
      ctx(session->context())
{
    ctx.endProgram = [this] { ++endProgramCalls; };
    wireWindows(ctx);
}

TestBed::~TestBed()
{
    windows.reset();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
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

MainWindow *TestBed::loadMainScreen()
{
    if (settings.get(kAppName, QStringLiteral("MSComm"), QStringLiteral("CommPort")).isEmpty())
        settings.save(kAppName, QStringLiteral("MSComm"), QStringLiteral("CommPort"), QStringLiteral("1"));
    windows = std::make_unique<StartupWindows>(*session);
    if (!session->start(windows->views()))
        return nullptr;
    line.clearWritten();
    dialogs.clear();
    return windows->mainWindow();
}

bool TestBed::startHeadless()
{
    if (settings.get(kAppName, QStringLiteral("MSComm"), QStringLiteral("CommPort")).isEmpty())
        settings.save(kAppName, QStringLiteral("MSComm"), QStringLiteral("CommPort"), QStringLiteral("1"));
    return session->start({});
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
