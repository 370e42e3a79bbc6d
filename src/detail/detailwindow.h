#pragma once

#include "core/rftoolspanel.h"
#include "detail/abstractdetailwindow.h"
#include "detail/freqstep.h"
#include "receivers/detailsession.h"
#include "receivers/presets.h"
#include "receivers/receiver.h"
#include "receivers/receiverbus.h"

#include <QString>
#include <QStringView>
#include <QWidget>

class QFrame;
class QGroupBox;
class QPushButton;
class QAbstractButton;
class QTabWidget;

namespace zun {

struct Context;
class SettingsTab;

// The detail window of one receiver: settings, live levels and the tabs of
// the RF tools. It works on the record of the receiver that was selected when
// it was made. The opener calls load(), shows it and sets WorkMode 2; from
// then on the work loop calls readDetailLevels() until the window closes itself.
// The window deletes itself when closed.
class DetailWindow : public AbstractDetailWindow, public RfToolsHost
{
    Q_OBJECT
public:
    DetailWindow(Context &ctx, DetailHost &host, QWidget *parent = nullptr);

    // Reads the record into the settings tab, repairing a corrupt preset.
    void load() override;

    // One level read of the receiver for the meters. True when it sent
    // something; a silent receiver closes the window after one message.
    [[nodiscard]] bool readDetailLevels() override;
    [[nodiscard]] bool scanStep() override;
    [[nodiscard]] bool recorderStep() override;
    void recorderRead() override;

    // Meter update from one level reading.
    void showMeters(const LevelReading &reading) override;
    // Squelch bar (and, through the hook, the RF tools' squelch lines).
    void showSquelch();

    // Code text to MHz; the TV box follows every conversion made here.
    [[nodiscard]] double mhzFromCode(QStringView code);

    // --- for the RF tools -------------------------------------------------
    QWidget *spectrumTab() const { return m_spectrumTab; }
    QWidget *recorderTab() const { return m_recorderTab; }
    SettingsTab &settings() const { return *m_settings; }
    QTabWidget *tabs() const { return m_tabs; }

    int receiverIndex() const { return m_index; }
    RfToolsPanel &tools() const { return *m_tools; }

    // What the RF tools ask of this window.
    [[nodiscard]] const Receiver &record() const override;
    [[nodiscard]] double bandStart() const override;
    [[nodiscard]] QString codeFromMhz(double mhz) const override;
    void rfTuned(const RfTuning &tuning) override;
    void unloadForm() override;
    const PresetTable &presetTable() const { return m_presets; }

protected:
    void closeEvent(QCloseEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void buildWindow();
    void connectControls();
    void showMuteImage(bool muted);
    void setStep(int multiplier);
    void showBattery(const QString &text);
    void noResponse();
    void setKobLock(bool locked);
    void showKobPhase(KobPhase phase);
    void showPanelName();
    void showFrequency(double mhz);
    void showOffPreset();
    void showTvChannel(double mhz);

    // Tuning.
    void stepPreset(bool groupButton, Preset next);
    void channelUpPressed();
    void channelDownPressed();
    void groupUpPressed();
    void groupDownPressed();
    void frequencyUpPressed();
    void frequencyDownPressed();
    // Off the presets to this code; settleMillis is waited after the command.
    void tuneManual(const QString &code, int settleMillis = 0);
    void frequencyKeyPressed(int keyAscii);

    // Address, name, squelch, mute, KOB.
    void addressKeyPressed(int keyAscii);
    void nameKeyPressed(int &keyAscii);
    void nameEdited(const QString &text);
    // Left press and release on a squelch button arm and end a hold; true for
    // any event of those buttons, which then go on to Qt unchanged.
    bool squelchMouse(QObject *watched, QEvent *event);
    void squelchDownHeld();
    void squelchUpHeld();
    void squelchRelease();
    // Press and hold: steps the squelch until released or at its end.
    void holdSquelch(int direction);
    [[nodiscard]] bool canStepSquelch(int direction) const;
    void toggleMute();
    void kobPressed();

    Context &m_ctx;
    DetailHost &m_host;
    int m_index;

    QTabWidget *m_tabs = nullptr;
    SettingsTab *m_settings = nullptr;
    QWidget *m_spectrumTab = nullptr;
    QWidget *m_recorderTab = nullptr;
    QFrame *m_frameA = nullptr;
    QGroupBox *m_frameB = nullptr;
    QAbstractButton *m_option[4] = {};
    QPushButton *m_cmdKob = nullptr;
    QPushButton *m_cmdWrite = nullptr;
    QPushButton *m_cmdExit = nullptr;
    QPushButton *m_cmdNext = nullptr;
    QPushButton *m_cmdPrev = nullptr;

    PresetTable m_presets;
    // The band as load() found it in the record; the band boxes show it.
    Band m_band;
    // Group and channel show "**" and the preset buttons do nothing until the
    // window is opened again on a receiver that reports a preset.
    bool m_offPreset = false;
    // What the frequency box stands for: the frequency the window showed
    // there last, or what the user typed since.
    FrequencyEntry m_frequency;
    // Set by a left mouse press on a squelch button until its pressed() starts the hold.
    bool m_squelchArmed = false;
    bool m_squelchHeld = false;
    QString m_nameBefore; // the name box's text before the latest edit
    bool m_closed = false;
    int m_stepMultiplier = 1;
    int m_squelchLevel = 0;
    RfToolsPanel *m_tools = nullptr;
    int m_shownTab = 0;
    QString m_captionBeforeKob;
};

} // namespace zun
