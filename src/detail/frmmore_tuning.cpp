// Tuning by preset (group/channel) and by frequency.
#include "detail/frmmore.h"

#include "core/context.h"
#include "core/options.h"
#include "detail/freqstep.h"
#include "detail/settingstab.h"
#include "receivers/frequency.h"

#include <QLineEdit>

namespace zun {

namespace {
const QString kManual = QStringLiteral("**");
}

void FrmMore::stepPreset(bool groupButton, Preset next)
{
    SettingsTab &s = *m_settings;
    if (groupButton) {
        s.txtGroup->setText(QString::number(next.group));
        s.txtChannel->setText(QString::number(next.channel));
    }
    // The record keeps the new preset even when the receiver does not answer.
    if (const auto code = m_ctx.bus.selectPreset(next.group, next.channel)) {
        s.txtChannel->setText(QString::number(next.channel));
        if (groupButton)
            s.txtGroup->setText(QString::number(next.group));
        s.txtFreq->setText(formatFreq(ComputeFreq(*code)));
    } else {
        noResponse();
    }
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

void FrmMore::tuneManual(const QString &code, int settleMillis)
{
    SettingsTab &s = *m_settings;
    s.txtGroup->setText(kManual);
    s.txtChannel->setText(kManual);
    // Shown as the receiver will tune: on the 25 kHz raster.
    s.txtFreq->setText(formatFreq(ComputeFreq(code)));
    if (!m_ctx.bus.tuneManual(code, settleMillis))
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
    tuneManual(ComputeNA(leadingValue(next)), 50);
}

void FrmMore::cmdFreqDownClick()
{
    SettingsTab &s = *m_settings;
    if (s.txtFreq->text().isEmpty())
        return;
    const QString next =
        stepFrequencyDown(s.txtFreq->text(), m_stepMultiplier, s.txtBandStart->text(), s.txtBandStop->text());
    s.txtFreq->setText(formatFreq(leadingValue(next)));
    tuneManual(ComputeNA(leadingValue(next)), 50);
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
