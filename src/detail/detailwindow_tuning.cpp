// Tuning by preset (group/channel) and by frequency.
#include "detail/detailwindow.h"

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
        s.frequencyEdit->setText(formatFreq(mhzFromCode(*code)));
    } else {
        noResponse();
    }
}

void DetailWindow::channelUpPressed()
{
    if (m_settings->channelEdit->text() == kManual)
        return;
    stepPreset(false, channelUp(m_presets, Preset{record().group, record().channel}));
}

void DetailWindow::channelDownPressed()
{
    if (m_settings->channelEdit->text() == kManual)
        return;
    stepPreset(false, channelDown(m_presets, Preset{record().group, record().channel}));
}

void DetailWindow::groupUpPressed()
{
    if (m_settings->groupEdit->text() == kManual)
        return;
    stepPreset(true, groupUp(m_presets, Preset{record().group, record().channel}));
}

void DetailWindow::groupDownPressed()
{
    if (m_settings->groupEdit->text() == kManual)
        return;
    stepPreset(true, groupDown(m_presets, Preset{record().group, record().channel}));
}

void DetailWindow::tuneManual(const QString &code, int settleMillis)
{
    SettingsTab &s = *m_settings;
    s.groupEdit->setText(kManual);
    s.channelEdit->setText(kManual);
    // Shown as the receiver will tune: on the 25 kHz raster.
    s.frequencyEdit->setText(formatFreq(mhzFromCode(code)));
    if (!m_ctx.detail.tuneManual(code, settleMillis))
        noResponse();
}

void DetailWindow::frequencyUpPressed()
{
    SettingsTab &s = *m_settings;
    if (s.frequencyEdit->text().isEmpty())
        return;
    const QString next = stepFrequencyUp(s.frequencyEdit->text(), m_stepMultiplier, s.bandStartEdit->text(),
                                         s.bandStopEdit->text());
    s.frequencyEdit->setText(formatFreq(leadingValue(next)));
    tuneManual(codeFromMhz(leadingValue(next)), 50);
}

void DetailWindow::frequencyDownPressed()
{
    SettingsTab &s = *m_settings;
    if (s.frequencyEdit->text().isEmpty())
        return;
    const QString next = stepFrequencyDown(s.frequencyEdit->text(), m_stepMultiplier, s.bandStartEdit->text(),
                                           s.bandStopEdit->text());
    s.frequencyEdit->setText(formatFreq(leadingValue(next)));
    tuneManual(codeFromMhz(leadingValue(next)), 50);
}

void DetailWindow::frequencyKeyPressed(int keyAscii)
{
    SettingsTab &s = *m_settings;
    if (keyAscii != 13)
        return;
    const QString text = s.frequencyEdit->text();
    if (text.isEmpty())
        return;
    if (!isNumericText(text)) {
        m_ctx.platform.dialogs.message(QStringLiteral("Please input numeric data!"));
        s.frequencyEdit->setText(formatFreq(mhzFromCode(record().channelFreqCode)));
        return;
    }
    if (frequencyInBand(text, s.bandStartEdit->text(), s.bandStopEdit->text())) {
        tuneManual(codeFromMhz(leadingValue(text)));
        return;
    }
    m_ctx.platform.dialogs.message(QStringLiteral("Frequency out of range!"));
    s.frequencyEdit->setText(formatFreq(mhzFromCode(record().channelFreqCode)));
}

} // namespace zun
