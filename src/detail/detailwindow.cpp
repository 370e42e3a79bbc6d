#include "detail/detailwindow.h"

#include "core/context.h"
#include "core/tvchannels.h"
#include "detail/battery.h"
#include "detail/detailmeters.h"
#include "detail/settingstab.h"
#include "receivers/frequency.h"
#include "receivers/levelreading.h"
#include "windowing/framepacer.h"

#include <QAbstractButton>
#include <QCloseEvent>
#include <QFrame>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <QTabWidget>
#include <QToolButton>
#include <QVBoxLayout>

#include "windowing/widgetname.h"
#include <algorithm>
#include <initializer_list>
#include <utility>

namespace zun {

namespace {
const QColor kLowRf(255, 0, 0);
const QColor kRfA(0, 0, 255);
const QColor kRfB(0x80, 0x80, 0xFF);
const QColor kDeviation(0x00, 0xC0, 0x00);
const QColor kOverDeviation(255, 0, 0);
} // namespace

DetailWindow::DetailWindow(Context &ctx, DetailHost &host, QWidget *parent)
    : AbstractDetailWindow(parent, Qt::Window), m_ctx(ctx), m_host(host), m_index(ctx.detail.index())
{
    setObjectName(QStringLiteral("frmMore"));
    setWindowTitle(QStringLiteral("Detail Functions"));
    setAttribute(Qt::WA_DeleteOnClose);
    new FramePacer(this); // a sweep draws some 300 points a second
    buildWindow();
    connectControls();
}

void DetailWindow::buildWindow()
{
    m_tabs = named(new QTabWidget(this), QStringLiteral("SSTab1"));
    m_settings = new SettingsTab(m_tabs);
    m_tools = m_ctx.makeRfTools(m_ctx, *this, this);
    m_spectrumTab = m_tools->spectrumPage();
    m_recorderTab = m_tools->recorderPage();
    m_settings->extraArea->addWidget(m_tools->dropCounterPage());
    m_tabs->addTab(m_settings, QStringLiteral("Settings"));
    m_tabs->addTab(m_spectrumTab, QStringLiteral("Spectrum"));
    m_tabs->addTab(m_recorderTab, QStringLiteral("RF-Monitor"));

    // The step options stay in the scan's tab as its frame Frame1; the
    // frequency buttons of the settings tab use the same choice.
    for (int i = 0; i < 4; ++i)
        m_option[i] = m_tools->stepOption(i + 1);

    // Outside the tabs, what the KOB lock holds besides the tab control and
    // Exit: FrameB, the scan marker, which retunes the receiver from any tab,
    // and FrameA around Write. KOB itself stays usable, as a second press is
    // how the user stops waiting.
    m_frameB = named(new QGroupBox(QStringLiteral("Scan marker"), this), QStringLiteral("FrameB"));
    auto *markerRow = new QHBoxLayout(m_frameB);
    m_cmdPrev = named(new QPushButton(QStringLiteral("◀ Prev"), m_frameB), QStringLiteral("cmdPrev"));
    m_cmdNext = named(new QPushButton(QStringLiteral("Next ▶"), m_frameB), QStringLiteral("cmdNext"));
    m_cmdPrev->setToolTip(QStringLiteral("Tune to the previous point of the spectrum scan"));
    m_cmdNext->setToolTip(QStringLiteral("Tune to the next point of the spectrum scan"));
    markerRow->addWidget(m_cmdPrev);
    markerRow->addWidget(m_cmdNext);

    m_cmdKob = named(new QPushButton(QStringLiteral("KOB"), this), QStringLiteral("cmdKob"));
    m_cmdKob->setToolTip(QStringLiteral("Start the receiver's KOB function; press again to stop waiting"));
    m_frameA = named(new QFrame(this), QStringLiteral("FrameA"));
    auto *writeRow = new QHBoxLayout(m_frameA);
    writeRow->setContentsMargins(0, 0, 0, 0);
    m_cmdWrite = named(new QPushButton(QStringLiteral("Write"), m_frameA), QStringLiteral("cmdWrite"));
    writeRow->addWidget(m_cmdWrite);
    m_cmdExit = named(new QPushButton(QStringLiteral("Exit"), this), QStringLiteral("cmdExit"));
    for (QPushButton *b : {m_cmdKob, m_cmdWrite, m_cmdExit})
        b->setMinimumWidth(80);

    auto *buttons = new QVBoxLayout;
    buttons->addStretch(1);
    auto *buttonRow = new QHBoxLayout;
    buttonRow->addWidget(m_cmdKob);
    buttonRow->addSpacing(16);
    buttonRow->addWidget(m_frameA);
    buttonRow->addWidget(m_cmdExit);
    buttons->addLayout(buttonRow);

    auto *bottom = new QHBoxLayout;
    bottom->addWidget(m_frameB);
    bottom->addStretch(1);
    bottom->addLayout(buttons);

    auto *page = new QVBoxLayout(this);
    page->addWidget(m_tabs, 1);
    page->addLayout(bottom);
}

void DetailWindow::connectControls()
{
    SettingsTab &s = *m_settings;
    connect(s.channelUpButton, &QToolButton::clicked, this, &DetailWindow::channelUpPressed);
    connect(s.channelDownButton, &QToolButton::clicked, this, &DetailWindow::channelDownPressed);
    connect(s.groupUpButton, &QToolButton::clicked, this, &DetailWindow::groupUpPressed);
    connect(s.groupDownButton, &QToolButton::clicked, this, &DetailWindow::groupDownPressed);
    connect(s.frequencyUpButton, &QToolButton::clicked, this, &DetailWindow::frequencyUpPressed);
    connect(s.frequencyDownButton, &QToolButton::clicked, this, &DetailWindow::frequencyDownPressed);

    // A hold starts on the mouse press (seen by the event filter) once the
    // button shows itself down; the mouse release ends it. pressed() alone
    // would start another hold each time the pointer slides back onto the
    // button, and released() would end one each time it slides off.
    connect(s.squelchDownButton, &QPushButton::pressed, this, &DetailWindow::squelchDownHeld);
    connect(s.squelchUpButton, &QPushButton::pressed, this, &DetailWindow::squelchUpHeld);
    connect(s.muteButton, &QPushButton::clicked, this, &DetailWindow::toggleMute);

    connect(m_cmdKob, &QPushButton::clicked, this, &DetailWindow::kobPressed);
    connect(m_cmdExit, &QPushButton::clicked, this, &QWidget::close);
    const int multipliers[4] = {1, 2, 4, 5};
    for (int i = 0; i < 4; ++i) {
        const int multiplier = multipliers[i];
        connect(m_option[i], &QAbstractButton::toggled, this, [this, multiplier](bool on) {
            if (on)
                setStep(multiplier);
        });
    }
    connect(m_cmdNext, &QPushButton::clicked, this, [this] { m_tools->nextPressed(); });
    connect(m_cmdPrev, &QPushButton::clicked, this, [this] { m_tools->previousPressed(); });
    connect(&m_ctx.detail, &DetailSession::kobPhase, this, &DetailWindow::showKobPhase);
    // Squelch steps come from the receiver layer while a button is held.
    connect(&m_ctx.bus, &ReceiverBus::receiverChanged, this, [this](const Receiver &status) {
        if (status.address == record().address)
            showSquelch();
    });
    // The scan wants to know which tab was left.
    connect(m_tabs, &QTabWidget::currentChanged, this, [this](int now) {
        const int left = m_shownTab;
        m_shownTab = now;
        m_tools->tabSwitched(left);
    });

    // Whatever way text enters the name box, it passes the key filter.
    connect(s.nameEdit, &QLineEdit::textEdited, this, &DetailWindow::nameEdited);
    connect(s.nameEdit, &QLineEdit::textChanged, this,
            [this] { m_nameBefore = m_settings->nameEdit->text(); });
    // The one place text in the box becomes a frequency, however it came
    // (typed, pasted, or set by a screen reader); what the window shows there
    // itself is taken as the value it came from, see showFrequency.
    connect(s.frequencyEdit, &QLineEdit::textChanged, this,
            [this](const QString &text) { m_frequency = typedFrequency(text); });

    for (QObject *watched : std::initializer_list<QObject *>{s.addressEdit, s.nameEdit, s.frequencyEdit,
                                                             s.squelchDownButton, s.squelchUpButton})
        watched->installEventFilter(this);
}

const Receiver &DetailWindow::record() const
{
    return m_ctx.bus.table().at(m_index);
}

void DetailWindow::load()
{
    SettingsTab &s = *m_settings;
    const Receiver &r = record();
    QStringList messages;
    m_presets = parseGroupTable(r.groupTable, messages);
    const Preset repaired = repairPreset(m_presets, Preset{r.group, r.channel}, messages);
    for (const QString &message : messages)
        m_ctx.platform.dialogs.message(message);
    m_ctx.detail.storePreset(repaired.group, repaired.channel);

    s.addressEdit->setText(QString::number(r.address));
    s.nameEdit->setText(r.name);
    m_offPreset = r.manualFreq;
    s.groupEdit->setText(r.manualFreq ? QStringLiteral("**") : QString::number(r.group));
    s.channelEdit->setText(r.manualFreq ? QStringLiteral("**") : QString::number(r.channel));
    // All three codes are converted every time, manual first and band start
    // last: the TV box keeps the last conversion.
    const double manual = mhzFromCode(r.manualFreqCode);
    const double preset = mhzFromCode(r.channelFreqCode);
    showFrequency(r.manualFreq ? manual : preset);
    m_band = bandFrom(mhzFromCode(r.bandStartCode), r.bandWidth);
    s.bandStartEdit->setText(formatFreq(m_band.startMhz));
    s.bandStopEdit->setText(formatFreq(m_band.stopMhz));

    showSquelch();
    showBattery(m_host.panelBatteryText(m_index));
    showMuteImage(r.mute);
    s.rfAMeter->setLevel(0, kLowRf);
    s.rfBMeter->setLevel(0, kLowRf);
    s.deviationMeter->setLevel(0, kDeviation);
    s.rfAValueLabel->setText(QStringLiteral("— dBm"));
    s.rfBValueLabel->setText(QStringLiteral("— dBm"));
    m_tools->load();
}

double DetailWindow::bandStart() const
{
    return m_band.startMhz;
}

QString DetailWindow::codeFromMhz(double mhz) const
{
    return zun::codeFromMhz(mhz);
}

void DetailWindow::rfTuned(const RfTuning &tuning)
{
    if (tuning.kind == RfTuning::Kind::OffPresets)
        showOffPreset();
    showFrequency(tuning.mhz);
    // The cursor's tunes have always left the TV box where it was.
    if (tuning.kind == RfTuning::Kind::OffPresets)
        showTvChannel(tuning.mhz);
}

void DetailWindow::showFrequency(double mhz)
{
    m_settings->frequencyEdit->setText(formatFreq(mhz));
    m_frequency = shownFrequency(mhz);
}

void DetailWindow::showOffPreset()
{
    // A scan comes here for every point, and a line edit lays its text out
    // again even when it is unchanged.
    if (std::exchange(m_offPreset, true))
        return;
    m_settings->groupEdit->setText(QStringLiteral("**"));
    m_settings->channelEdit->setText(QStringLiteral("**"));
}

void DetailWindow::showTvChannel(double mhz)
{
    m_settings->tvChannelEdit->setText(tvChannelName(m_ctx.state.tvRegion, mhz));
}

void DetailWindow::unloadForm()
{
    // The window deletes itself later, after the step that asked is over.
    close();
}

double DetailWindow::mhzFromCode(QStringView code)
{
    const double mhz = zun::mhzFromCode(code);
    showTvChannel(mhz);
    return mhz;
}

bool DetailWindow::readDetailLevels()
{
    if (m_closed)
        return false;
    if (const auto reading = m_ctx.detail.readLevels()) {
        showMeters(*reading);
        return true;
    }
    const Receiver &r = record();
    m_ctx.platform.dialogs.message(r.name + QStringLiteral(" no response!, address=") +
                                   QString::number(r.address) + QStringLiteral("\r\n"));
    close();
    return true;
}

bool DetailWindow::scanStep()
{
    return m_tools->scanStep();
}

bool DetailWindow::recorderStep()
{
    return m_tools->recorderStep();
}

void DetailWindow::recorderRead()
{
    if (m_closed)
        return;
    if (const auto reading = m_ctx.detail.recorderStep()) {
        showMeters(*reading);
        return;
    }
    const Receiver &r = record();
    m_ctx.platform.dialogs.message(r.name + QStringLiteral(" no response!, address=") +
                                   QString::number(r.address) + QStringLiteral("\r\n"));
    close();
}

void DetailWindow::showMeters(const LevelReading &reading)
{
    SettingsTab &s = *m_settings;
    const int rfA = reading.rfA;
    const int rfB = reading.rfB;
    s.rfAMeter->setLevel(rfA, rfA < 15 ? kLowRf : kRfA);
    s.rfBMeter->setLevel(rfB, rfB < 15 ? kLowRf : kRfB);
    s.rfAValueLabel->setText(QStringLiteral("%1 dBm").arg(levelDbm(rfA), 0, 'f', 1));
    s.rfBValueLabel->setText(QStringLiteral("%1 dBm").arg(levelDbm(rfB), 0, 'f', 1));
    const int deviation = audioTaper(reading.raw.audio);
    s.deviationMeter->setLevel(deviation, deviation > kAudioClipLevel ? kOverDeviation : kDeviation);
    if (reading.batteryPercent >= 0)
        showBattery(batteryText(reading.batteryPercent));
    m_tools->meterReading(reading);
}

void DetailWindow::showSquelch()
{
    const int squelch = record().squelch;
    m_squelchLevel = zun::squelchLevel(m_ctx.bus.levelTable(), squelch);
    m_settings->squelchBar->setSquelchLevel(m_squelchLevel);
    m_settings->squelchValueLabel->setText(QStringLiteral("SQ %1").arg(squelch));
    m_tools->showSquelch();
}

void DetailWindow::showBattery(const QString &text)
{
    QLabel *label = m_settings->batteryLabel;
    label->setText(text);
    QPalette palette = label->palette();
    const auto colour = batteryColour(text);
    palette.setColor(QPalette::Window, colour ? *colour : palette.color(QPalette::Button));
    palette.setColor(QPalette::WindowText, colour && colour->lightness() < 100 ? Qt::white : Qt::black);
    label->setPalette(palette);
}

void DetailWindow::showMuteImage(bool muted)
{
    m_settings->muteButton->setIcon(
        QPixmap(muted ? QStringLiteral(":/SpeakerOFF.png") : QStringLiteral(":/SpeakerON.png")));
    m_settings->muteButton->setProperty("image",
                                        muted ? QStringLiteral("SpeakerOFF") : QStringLiteral("SpeakerON"));
    m_settings->muteStateLabel->setText(muted ? QStringLiteral("Muted") : QStringLiteral("Audio on"));
}

void DetailWindow::setStep(int multiplier)
{
    m_stepMultiplier = multiplier;
}

void DetailWindow::noResponse()
{
    m_ctx.platform.dialogs.message(QStringLiteral("No Response from receiver!"));
}

void DetailWindow::showPanelName()
{
    const Receiver &r = record();
    m_host.setPanelNameCaption(m_index,
                               QStringLiteral("%1 ").arg(r.address, 2, 10, QLatin1Char('0')) + r.name);
}

void DetailWindow::closeEvent(QCloseEvent *event)
{
    if (m_closed) {
        event->accept();
        return;
    }
    if (m_ctx.detail.kobActive()) {
        event->ignore();
        return;
    }
    m_closed = true;
    event->accept();
    hide();
    m_ctx.detail.close();
    m_host.refreshPanels();
}

} // namespace zun
