// The main screen's receiver panels: their looks, their live update from the
// level reads, and what a click on one of them does on the line.
#include "core/context.h"
#include "link/detection.h"
#include "mainscreen/displaymode.h"
#include "mainscreen/frmmain.h"
#include "mainscreen/panelgrid.h"
#include "mainscreen/rcvpanel.h"

#include <QLabel>
#include <QTimer>

namespace zun {

bool FrmMain::validIndex(int index) const
{
    return index >= 0 && index < m_ctx.state.receiverCount() && m_grid->panel(index);
}

void FrmMain::EnableRcvPanel(int index)
{
    if (!validIndex(index))
        return;
    RcvPanel *p = m_grid->panel(index);
    // The battery average runs on across enables: a receiver brought back
    // keeps the mean it had, so its battery shows at the next reading.
    p->enableLive(m_ctx.state.receivers[index].mute);
    refreshNameCaption(index);
}

void FrmMain::DisableRcvPanel(int index)
{
    if (RcvPanel *p = m_grid->panel(index))
        p->disableBlank();
}

void FrmMain::UpdateRcvPanel(int index, const QString &reply)
{
    if (!validIndex(index))
        return;
    const PanelReadout readout =
        readPanelReply(reply, m_ctx.state.receivers[index].squelch, m_ctx.state.levelTable, m_battery[index]);
    m_grid->panel(index)->showReadout(readout);
}

void FrmMain::showOffline(int index)
{
    if (validIndex(index))
        m_grid->panel(index)->setOffline();
}

void FrmMain::refreshNameCaption(int index)
{
    const QString caption = nameCaption(m_ctx.state.receivers[index], m_displayMode);
    if (!caption.isNull())
        m_grid->panel(index)->setNameText(caption);
}

void FrmMain::muteClicked(int index)
{
    if (!validIndex(index))
        return;
    ReceiverRecord &record = m_ctx.state.receivers[index];
    record.mute = !record.mute;
    m_grid->panel(index)->setMutePicture(record.mute);
    QString reply;
    m_ctx.link.SendCommand(
        frame(QLatin1Char('#'), record.address, record.mute ? QStringLiteral("B1") : QStringLiteral("B0")), 4,
        reply, 250);
}

void FrmMain::pilotClicked(int index)
{
    if (!validIndex(index) || m_ctx.state.KobActive)
        return;
    RcvPanel *p = m_grid->panel(index);
    const int address = m_ctx.state.receivers[index].address;
    p->setPilotPicture(QStringLiteral("RedBall"));
    // While the receiver runs its KOB function nobody else may start work on it.
    m_ctx.state.KobActive = true;
    QString reply;
    m_ctx.link.SendCommand(frame(QLatin1Char('%'), address, QStringLiteral("O")), 0, reply, 200);
    const QString backOnLine = frame(QLatin1Char('#'), address, QStringLiteral("A1"));
    while (!m_ctx.link.SendCommand(backOnLine, 4, reply, 100)) {
        m_ctx.link.Delay(500);
        m_ctx.platform.desktop.processEvents();
    }
    m_ctx.state.KobActive = false;
    p->setPilotPicture(QStringLiteral("GreenBall"));
}

void FrmMain::nameClicked(int index)
{
    if (!validIndex(index))
        return;
    m_ctx.state.selectedReceiver = index;
    ReceiverRecord &record = m_ctx.state.receivers[index];
    if (record.online)
        return;
    QString reply;
    m_ctx.link.SendCommand(frame(QLatin1Char('#'), record.address, QStringLiteral("A1")), 0, reply, 50);
    if (!m_ctx.link.SendCommand(frame(QLatin1Char('%'), record.address, QStringLiteral("M")), 41, reply, 100))
        return;
    if (applyIdentification(record, reply, record.address))
        EnableRcvPanel(index);
}

void FrmMain::Timer1Tick()
{
    m_timer1->setInterval(300);
    m_blinkPhase = (m_blinkPhase + 1) % 2;
    for (int i = 0; i < m_grid->panelCount(); ++i)
        m_grid->panel(i)->blinkPhase(m_blinkPhase);
}

} // namespace zun
