// Tuning by preset (group/channel) and by frequency.
#include "detail/detailwindow.h"

#include "core/context.h"
#include "detail/freqstep.h"
#include "detail/settingstab.h"
#include "receivers/frequency.h"

#include <QLineEdit>

namespace zun {

void DetailWindow::stepPreset(bool groupButton, Preset next)
{
    SettingsTab &s = *m_settings;
    if (groupButton) {
        s.groupEdit->setText(QString::number(next.group));
        s.channelEdit->setText(QString::number(next.channel));
    }
    // The record keeps the new preset even when the receiver does not answer.
    if (const auto code = m_ctx.detail.selectPreset(next.group, next.channel)) {
        s.channelEdit->setText(QString::number(next.channel));
        if (groupButton)
            s.groupEdit->setText(QString::number(next.group));
        showFrequency(mhzFromCode(*code));
    } else {
        noResponse();
    }
}

void DetailWindow::channelUpPressed()
{
    if (m_offPreset)
        return;
    stepPreset(false, channelUp(m_presets, Preset{record().group, record().channel}));
}

void DetailWindow::channelDownPressed()
{
    if (m_offPreset)
        return;
    stepPreset(false, channelDown(m_presets, Preset{record().group, record().channel}));
}

void DetailWindow::groupUpPressed()
{
    if (m_offPreset)
        return;
    stepPreset(true, groupUp(m_presets, Preset{record().group, record().channel}));
}

void DetailWindow::groupDownPressed()
{
    if (m_offPreset)
        return;
    stepPreset(true, groupDown(m_presets, Preset{record().group, record().channel}));
}

void DetailWindow::tuneManual(const QString &code, int settleMillis)
{
    showOffPreset();
    // Shown as the receiver will tune: on the 25 kHz raster.
    showFrequency(mhzFromCode(code));
    if (!m_ctx.detail.tuneManual(code, settleMillis))
        noResponse();
}

void DetailWindow::frequencyUpPressed()
{
    if (m_frequency.empty)
        return;
    tuneManual(codeFromMhz(stepFrequencyUp(m_frequency.mhz, m_stepMultiplier, m_band)), 50);
}

void DetailWindow::frequencyDownPressed()
{
    if (m_frequency.empty)
        return;
    tuneManual(codeFromMhz(stepFrequencyDown(m_frequency.mhz, m_stepMultiplier, m_band)), 50);
}

void DetailWindow::frequencyKeyPressed(int keyAscii)
{
    if (keyAscii != 13 || m_frequency.empty)
        return;
    if (!m_frequency.numeric) {
        m_ctx.platform.dialogs.message(QStringLiteral("Please input numeric data!"));
        showFrequency(mhzFromCode(record().channelFreqCode));
        return;
    }
    if (frequencyInBand(m_frequency.mhz, m_band)) {
        tuneManual(codeFromMhz(m_frequency.mhz));
        return;
    }
    m_ctx.platform.dialogs.message(QStringLiteral("Frequency out of range!"));
    showFrequency(mhzFromCode(record().channelFreqCode));
}

} // namespace zun
