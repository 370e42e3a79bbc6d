#pragma once

#include "core/receiverrecord.h"
#include "detail/battery.h"
#include "detail/presets.h"
#include "rftools/rftools.h"
#include "rftools/rftoolshost.h"

#include <QString>
#include <QStringView>
#include <QWidget>

#include <functional>

class QGroupBox;
class QPushButton;
class QRadioButton;
class QTabWidget;

namespace zun {

struct Context;
class DetailHost;
class SettingsTab;

// The detail window of one receiver: settings, live levels and the tabs of
// the RF tools. It works on the record of the receiver that was selected when
// it was made. The opener calls load(), shows it and sets WorkMode 2; from
// then on the work loop calls ReadOneAD() until the window closes itself.
// The window deletes itself when closed.
class FrmMore : public QWidget, public RfToolsHost
{
    Q_OBJECT
public:
    FrmMore(Context &ctx, DetailHost &host, QWidget *parent = nullptr);

    // Reads the record into the settings tab, repairing a corrupt preset.
    void load();

    // One level read of the receiver for the meters. True when it sent
    // something; a silent receiver closes the window after one message.
    bool ReadOneAD() override;

    // Meter update from one level reading: the first byte of the reply is the
    // audio level, the fourth the battery reading; RF levels already 0..99.
    void ShowMeters(int audio, int rfA, int rfB, int battery) override;
    // Squelch bar (and, through the hook, the RF tools' squelch lines).
    void ShowSquelch();

    // Code text to MHz; the TV box follows every conversion made here.
    double ComputeFreq(QStringView code);

    // --- for the RF tools -------------------------------------------------
    QWidget *spectrumTab() const { return m_spectrumTab; }
    QWidget *recorderTab() const { return m_recorderTab; }
    SettingsTab &settings() const { return *m_settings; }
    QTabWidget *tabs() const { return m_tabs; }

    int receiverIndex() const { return m_index; }
    QString addressText() const override { return m_addressText; }
    RfTools &tools() const { return *m_tools; }

    // What the RF tools ask of this window.
    ReceiverRecord &record() override;
    double bandStart() const override;
    QString ComputeNA(double mhz) const override;
    void setTxtFreq(const QString &text) override;
    void showOffPreset() override;
    void showTvChannel(double mhz) override;
    void unloadForm() override;
    void drawSquelchBar(int fromLevel, int toLevel) override;
    const PresetTable &presetTable() const { return m_presets; }
    int lastRfA() const { return m_rfA; }
    int lastRfB() const { return m_rfB; }
    int lastAudio() const { return m_audio; }
    int lastBattery() const { return m_batteryReading; }
    int squelchLevel() const { return m_squelchLevel; }
    // The step chosen with Option1..Option4 in 25 kHz units: 1, 2, 4 or 5.
    int stepMultiplier() const { return m_stepMultiplier; }
    // Points 0..N of the band (N = the record's band width), sized at load.

    // Called after every meter update with the mapped levels and the squelch level.
    void setMeterHook(std::function<void(int rfA, int rfB, int squelchLevel)> hook)
    {
        m_meterHook = std::move(hook);
    }
    // Called whenever the squelch level is shown anew.
    void setSquelchHook(std::function<void(int squelchLevel)> hook) { m_squelchHook = std::move(hook); }
    // cmdNext (+1) / cmdPrev (-1) move the scan marker.
    void setMarkerHook(std::function<void(int direction)> hook) { m_markerHook = std::move(hook); }
    // Called when the step option changes.
    void setStepHook(std::function<void(int multiplier)> hook) { m_stepHook = std::move(hook); }

protected:
    void closeEvent(QCloseEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void buildWindow();
    void connectControls();
    void showMuteImage(bool muted);
    void setStep(int multiplier);
    void showBattery(const QString &text);
    // Frames prefix + this receiver's address + body and sends it.
    bool send(QChar prefix, const QString &body, int replyLength, QString &reply, int timeoutMillis);
    bool send(QChar prefix, const QString &body, int replyLength = 4, int timeoutMillis = 250);
    void noResponse();
    // DoEvents; false when the window was deleted meanwhile.
    bool doEvents();
    void setKobLock(bool locked);
    void showPanelName();

    // Tuning.
    void stepPreset(bool groupButton, Preset next);
    void cmdChanUpClick();
    void cmdChanDownClick();
    void cmdGroupUpClick();
    void cmdGroupDownClick();
    void cmdFreqUpClick();
    void cmdFreqDownClick();
    void tuneManual(const QString &code);
    void txtFreqKeyPress(int keyAscii);

    // Address, name, squelch, mute, KOB.
    void txtAddrKeyPress(int keyAscii);
    void txtRNameKeyPress(int &keyAscii);
    void txtRNameEdited(const QString &text);
    // Left press and release on a squelch button arm and end a hold; true for
    // any event of those buttons, which then go on to Qt unchanged.
    bool squelchMouse(QObject *watched, QEvent *event);
    void cmdSQdecMouseDown();
    void cmdSQincMouseDown();
    void holdSquelch(int direction);
    void squelchRelease();
    void MuteClick();
    void cmdKobClick();

    Context &m_ctx;
    DetailHost &m_host;
    int m_index;

    QTabWidget *m_tabs = nullptr;
    SettingsTab *m_settings = nullptr;
    QWidget *m_spectrumTab = nullptr;
    QWidget *m_recorderTab = nullptr;
    QWidget *m_frameA = nullptr;
    QGroupBox *m_frameB = nullptr;
    QRadioButton *m_option[4] = {};
    QPushButton *m_cmdKob = nullptr;
    QPushButton *m_cmdWrite = nullptr;
    QPushButton *m_cmdExit = nullptr;
    QPushButton *m_cmdNext = nullptr;
    QPushButton *m_cmdPrev = nullptr;

    QString m_addressText;
    PresetTable m_presets;
    bool m_squelchHeld = false;
    // Set by a left mouse press on a squelch button until its pressed() starts the hold.
    bool m_squelchArmed = false;
    QString m_nameBefore; // the name box's text before the latest edit
    bool m_closed = false;
    int m_stepMultiplier = 1;
    int m_audio = 0;
    int m_rfA = 0;
    int m_rfB = 0;
    int m_batteryReading = 0;
    int m_squelchLevel = 0;
    BatteryMean m_battery;
    RfTools *m_tools = nullptr;
    int m_shownTab = 0;
    ReceiverRecord m_spare; // stands in when the selected index is stale

    std::function<void(int, int, int)> m_meterHook;
    std::function<void(int)> m_squelchHook;
    std::function<void(int)> m_markerHook;
    std::function<void(int)> m_stepHook;
};

} // namespace zun
