#include "mainscreen/startupwindows.h"

#include "detail/detailwindow.h"
#include "mainscreen/mainwindow.h"
#include "mainscreen/splashwindow.h"
#include "rftools/rftools.h"

#include <QDateTime>
#include <QStatusBar>

namespace zun {

void wireWindows(Context &ctx)
{
    ctx.makeDetailWindow = [](Context &c, DetailHost &host) { return new DetailWindow(c, host); };
    ctx.makeRfTools = [](Context &c, RfToolsHost &host, QWidget *parent) {
        return new RfTools(c, host, parent);
    };
}

StartupWindows::StartupWindows(Session &session, PortMap *ports) : m_session(session), m_ports(ports)
{
    wireWindows(session.context());
}

StartupWindows::~StartupWindows() = default;

StartupViews StartupWindows::views()
{
    StartupViews views;
    views.showSplash = [this] {
        m_splash = std::make_unique<SplashWindow>();
        m_splash->show();
        m_session.context().platform.desktop.processEvents();
    };
    views.loadMainScreen = [this] {
        m_loadStarted = QDateTime::currentMSecsSinceEpoch();
        m_main = std::make_unique<MainWindow>(m_session);
        m_main->setPortMap(m_ports);
        m_main->installSteps(m_session.loop());
        m_main->load();
    };
    // A form's load step (the search included) runs before the form appears.
    views.showMainScreen = [this] {
        m_loadMillis = QDateTime::currentMSecsSinceEpoch() - m_loadStarted;
        if (const QString feeds = m_session.feedStatusText(); !feeds.isEmpty())
            m_main->statusBar()->showMessage(feeds);
        m_main->show();
    };
    views.closeSplash = [this] { m_splash.reset(); };
    return views;
}

} // namespace zun
