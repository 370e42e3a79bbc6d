// Tuning by preset (group/channel) and by frequency.
#include "detail/frmmore.h"

#include "core/context.h"
#include "core/options.h"
#include "detail/freqconvert.h"
#include "detail/freqstep.h"
#include "detail/settingstab.h"
#include "link/hex.h"

#include <QLineEdit>

namespace zun {

namespace {
const QString kManual = QStringLiteral("**");
}

void FrmMore::stepPreset(bool groupButton, Preset next)
{
    SettingsTab &s = *m_settings;
    ReceiverRecord &r = record();
    // The record takes the new preset before the receiver is asked, and keeps
    // it even when the receiver does not answer.
    r.group = next.group;
    r.channel = next.channel;
    if (groupButton) {
        s.txtGroup->setText(QString::number(r.group));
        s.txtChannel->setText(QString::number(r.channel));
    }
    QString reply;
    if (send(QLatin1Char('#'), QLatin1Char('D') + NumToHex(r.group, 1) + NumToHex(r.channel, 1), 8, reply,
             250)) {
        ReceiverRecord &now = record();
        now.manualFreq = false;
        now.channelFreqCode = reply.mid(3, 4);
        s.txtChannel->setText(QString::number(now.channel));
        if (groupButton)
            s.txtGroup->setText(QString::number(now.group));
        s.txtFreq->setText(formatFreq(ComputeFreq(now.channelFreqCode)));
    } else {
        noResponse();
    }
    m_ctx.link.Delay(50);
}

void FrmMore::cmdChanUpClick()
{
    if (m_settings->txtChannel->text() == kManual)
        return;
    stepPreset(false, channelUp(m_presets, Preset{record().group, record().channel}));
}

void FrmMore::cmdChanDownClick()
{
    if (m_settings->txtChannel->text() == kManual)
        return;
    stepPreset(false, channelDown(m_presets, Preset{record().group, record().channel}));
}

void FrmMore::cmdGroupUpClick()
{
    if (m_settings->txtGroup->text() == kManual)
        return;
    stepPreset(true, groupUp(m_presets, Preset{record().group, record().channel}));
}

void FrmMore::cmdGroupDownClick()
{
    if (m_settings->txtGroup->text() == kManual)
        return;
    stepPreset(true, groupDown(m_presets, Preset{record().group, record().channel}));
}

void FrmMore::tuneManual(const QString &code)
{
    SettingsTab &s = *m_settings;
    ReceiverRecord &r = record();
    s.txtGroup->setText(kManual);
    s.txtChannel->setText(kManual);
    r.manualFreq = true;
    r.manualFreqCode = code;
    // Shown as the receiver will tune: on the 25 kHz raster.
    s.txtFreq->setText(formatFreq(ComputeFreq(code)));
    if (!send(QLatin1Char('#'), QLatin1Char('K') + code, 4, 250))
        noResponse();
}

void FrmMore::cmdFreqUpClick()
{
    SettingsTab &s = *m_settings;
    if (s.txtFreq->text().isEmpty())
        return;
    const QString next =
        stepFrequencyUp(s.txtFreq->text(), m_stepMultiplier, s.txtBandStart->text(), s.txtBandStop->text());
    s.txtFreq->setText(formatFreq(leadingValue(next)));
    tuneManual(ComputeNA(leadingValue(next)));
    m_ctx.link.Delay(50);
}

void FrmMore::cmdFreqDownClick()
{
    SettingsTab &s = *m_settings;
    if (s.txtFreq->text().isEmpty())
        return;
    const QString next =
        stepFrequencyDown(s.txtFreq->text(), m_stepMultiplier, s.txtBandStart->text(), s.txtBandStop->text());
    s.txtFreq->setText(formatFreq(leadingValue(next)));
    tuneManual(ComputeNA(leadingValue(next)));
    m_ctx.link.Delay(50);
}

void FrmMore::txtFreqKeyPress(int keyAscii)
{
    SettingsTab &s = *m_settings;
    if (keyAscii != 13)
        return;
    const QString text = s.txtFreq->text();
    if (text.isEmpty())
        return;
    if (!isNumericText(text)) {
        m_ctx.platform.dialogs.message(QStringLiteral("Please input numeric data!"));
        s.txtFreq->setText(formatFreq(ComputeFreq(record().channelFreqCode)));
        return;
    }
    if (frequencyInBand(text, s.txtBandStart->text(), s.txtBandStop->text())) {
        tuneManual(ComputeNA(leadingValue(text)));
        return;
    }
    m_ctx.platform.dialogs.message(QStringLiteral("Frequency out of range!"));
    s.txtFreq->setText(formatFreq(ComputeFreq(record().channelFreqCode)));
}

} // namespace zun
