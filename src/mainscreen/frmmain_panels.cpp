// The main screen's receiver panels: their live update from the level reads
// and what a click on one of them asks of the receivers.
#include "core/context.h"
#include "mainscreen/displaymode.h"
#include "mainscreen/frmmain.h"
#include "mainscreen/panelgrid.h"
#include "mainscreen/panelreadout.h"
#include "mainscreen/rcvpanel.h"
#include "session/session.h"

#include <QLabel>
#include <QTimer>

namespace zun {

bool FrmMain::validIndex(int index) const
{
    return m_ctx.bus.validIndex(index) && m_grid->panel(index);
}

void FrmMain::EnableRcvPanel(int index)
{
    if (!validIndex(index))
        return;
    m_grid->panel(index)->enableLive(m_ctx.bus.record(index).mute);
    refreshNameCaption(index);
}

void FrmMain::DisableRcvPanel(int index)
{
    if (RcvPanel *p = m_grid->panel(index))
        p->disableBlank();
}

void FrmMain::UpdateRcvPanel(int index, const LevelReading &reading)
{
    if (validIndex(index))
        m_grid->panel(index)->showReadout(panelReadout(reading));
}

void FrmMain::showOffline(int index)
{
    if (validIndex(index))
        m_grid->panel(index)->setOffline();
}

void FrmMain::refreshNameCaption(int index)
{
    const QString caption = nameCaption(m_ctx.bus.record(index), m_displayMode);
    if (!caption.isNull())
        m_grid->panel(index)->setNameText(caption);
}

void FrmMain::muteClicked(int index)
{
    if (!validIndex(index))
        return;
    m_grid->panel(index)->setMutePicture(!m_ctx.bus.record(index).mute);
    m_ctx.bus.toggleMute(index);
}

void FrmMain::pilotClicked(int index)
{
    if (!validIndex(index) || m_ctx.bus.kobActive())
        return;
    RcvPanel *p = m_grid->panel(index);
    p->setPilotPicture(QStringLiteral("RedBall"));
    m_ctx.bus.pilotKob(index);
    p->setPilotPicture(QStringLiteral("GreenBall"));
}

void FrmMain::nameClicked(int index)
{
    if (!validIndex(index))
        return;
    m_ctx.bus.select(index);
    m_session.bringBack(index);
}

void FrmMain::Timer1Tick()
{
    m_timer1->setInterval(300);
    m_blinkPhase = (m_blinkPhase + 1) % 2;
    for (int i = 0; i < m_grid->panelCount(); ++i)
        m_grid->panel(i)->blinkPhase(m_blinkPhase);
}

} // namespace zun
