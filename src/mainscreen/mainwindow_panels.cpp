// The main screen's receiver panels: their live update from the level reads
// and what a click on one of them asks of the receivers.
#include "core/context.h"
#include "mainscreen/displaymode.h"
#include "mainscreen/mainwindow.h"
#include "mainscreen/panelgrid.h"
#include "mainscreen/panelreadout.h"
#include "mainscreen/rcvpanel.h"
#include "session/session.h"

#include <QLabel>
#include <QTimer>

namespace zun {

bool MainWindow::validIndex(int index) const
{
    return m_ctx.bus.table().validIndex(index) && m_grid->panel(index);
}

void MainWindow::enablePanel(int index)
{
    if (!validIndex(index))
        return;
    m_grid->panel(index)->enableLive(m_ctx.bus.table().at(index).mute);
    refreshNameCaption(index);
}

void MainWindow::disablePanel(int index)
{
    if (RcvPanel *p = m_grid->panel(index))
        p->disableBlank();
}

void MainWindow::updatePanel(int index, const LevelReading &reading)
{
    if (validIndex(index))
        m_grid->panel(index)->showReadout(panelReadout(reading));
}

void MainWindow::showOffline(int index)
{
    if (validIndex(index))
        m_grid->panel(index)->setOffline();
}

void MainWindow::refreshNameCaption(int index)
{
    const QString caption = nameCaption(m_ctx.bus.table().at(index), m_displayMode);
    if (!caption.isNull())
        m_grid->panel(index)->setNameText(caption);
}

void MainWindow::muteClicked(int index)
{
    if (!validIndex(index))
        return;
    m_grid->panel(index)->setMutePicture(!m_ctx.bus.table().at(index).mute);
    m_ctx.bus.toggleMute(index);
}

void MainWindow::pilotClicked(int index)
{
    if (!validIndex(index) || m_ctx.detail.kobActive())
        return;
    RcvPanel *p = m_grid->panel(index);
    p->setPilotPicture(QStringLiteral("RedBall"));
    m_ctx.bus.pilotKob(index);
    p->setPilotPicture(QStringLiteral("GreenBall"));
}

void MainWindow::nameClicked(int index)
{
    if (!validIndex(index))
        return;
    m_session.bringBack(index);
}

void MainWindow::blinkOfflineNames()
{
    m_timer1->setInterval(300);
    m_blinkPhase = (m_blinkPhase + 1) % 2;
    for (int i = 0; i < m_grid->panelCount(); ++i)
        m_grid->panel(i)->blinkPhase(m_blinkPhase);
}

} // namespace zun
