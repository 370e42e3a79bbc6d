#include "session/session.h"

#include "alarms/alarmsettings.h"
#include "bushealth/buscounters.h"
#include "core/options.h"
#include "feeds/feedhub.h"
#include "link/ports.h"
#include "session/consolereport.h"
#include "session/linejson.h"
#include "session/receiverlisteners.h"
#include "session/remotecontrol.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>

#include <QScopedValueRollback>
#include <QSysInfo>

namespace zun {

namespace {
constexpr int kTableSize = 64;
constexpr std::uint64_t kLineRetryMicros = 5'000'000;
constexpr std::uint64_t kBringBackMicros = 10'000'000;
// Status reads a spoiled level reply earns before its receiver is given up
// to the slow recovery. One is not enough: at 5 % spoiled replies one in
// twenty of them fails too, some forty receivers a minute then wait 10 s,
// and at moments a quarter of the line is dark.
constexpr int kSecondChances = 2;
constexpr int kWakeMillis = 1000;
constexpr int kHealthMillis = 1000;
} // namespace

Session::Session(const Platform &platform, SessionOptions options)
    : m_options(std::move(options)), m_dialogs(platform.dialogs),
      m_ctx(Platform{platform.clock, platform.line, platform.settings, m_dialogs, platform.desktop}),
      m_loop(m_ctx.bus), m_wallTime(platform.clock), m_alarms(platform.clock), m_showLog(m_wallTime),
      m_deploy(m_ctx.bus), m_lastScan(m_ctx.bus), m_lineName(m_options.lineName)
{
    m_alarms.setSettings(AlarmSettings::load(platform.settings));
    connectMonitoring(&m_ctx.bus, &m_alarms, &m_showLog);
    connectBusHealth(&m_ctx.bus, &m_busHealth);
    m_loop.setStep(WorkMode::Polling, [this] { return pollStep(); });
    m_loop.setHousekeeping([this] {
        // A lost line shows only here: the port closes between two passes.
        updatePaused();
        const bool remote = m_control && m_control->runWaiting();
        return recoverIfDue() || remote;
    });
    m_dialogs.setOpenChanged([this](bool) { updatePaused(); });
    connect(&m_ctx.bus, &ReceiverBus::kobWaitChanged, this, [this](bool waiting) {
        m_kobWaiting = waiting;
        updatePaused();
    });
    connect(&m_ctx.bus, &ReceiverBus::workModeChanged, this, &Session::updatePaused);
    connect(&m_ctx.bus, &ReceiverBus::lineProblem, this, &Session::notice);
    // The first try comes a full period after a receiver went away, not at once.
    connect(&m_ctx.bus, &ReceiverBus::wentOffline, this, [this] {
        const std::uint64_t now = m_ctx.platform.clock.nowMicros();
        if (m_nextBringBackMicros <= now)
            m_nextBringBackMicros = now + kBringBackMicros;
    });
    // The timer only wakes a loop that sleeps because nobody answers; the
    // work itself runs in the loop's pass, never inside an exchange.
    m_recoveryWake.setInterval(kWakeMillis);
    connect(&m_recoveryWake, &QTimer::timeout, this, [] {});
}

Session::~Session()
{
    // The feeds listen to members that are about to go; they go first.
    delete std::exchange(m_feeds, nullptr);
    m_showLog.stop();
}

QString Session::feedStatusText() const
{
    return m_feeds ? m_feeds->statusText() : QString();
}

bool Session::start(const StartupViews &views)
{
    ReceiverBus &bus = m_ctx.bus;
    LineOptions &line = bus.options();
    loadLinkOptions(m_ctx.platform.settings, line);
    if (!findPorts(m_ctx.platform.line, m_ctx.platform.dialogs, line.portAvailable, line.port))
        return false;
    m_busHealth.onBaudRateChanged(line.baudRate);
    m_startedAt = m_wallTime.now();
    if (views.showSplash)
        views.showSplash();
    bus.setWorkMode(WorkMode::Idle);
    if (views.loadMainScreen)
        views.loadMainScreen();
    if (bus.table().size() == 0)
        bus.table().resize(kTableSize);

    // The log opens before the search so that it records every receiver found.
    if (!m_options.showLogFile.isEmpty()) {
        QString error;
        if (!m_showLog.start(m_options.showLogFile, &error))
            m_ctx.platform.dialogs.message(
                QStringLiteral("The show log cannot be written to %1: %2").arg(m_options.showLogFile, error));
    }
    detectReceivers();
    startFeeds();
    bus.setWorkMode(WorkMode::Polling);
    bus.readTextFields();
    m_started = true;
    updatePaused();
    setAutoRecover(m_options.autoRecover);

    if (views.showMainScreen)
        views.showMainScreen();
    if (views.closeSplash)
        views.closeSplash();
    return true;
}

void Session::startFeeds()
{
    updateLineName();
    m_feeds = attachFeeds(m_options.feeds, &m_ctx.bus, this, m_lineName);
    connect(m_feeds, &FeedHub::statusTextChanged, this, &Session::feedStatusChanged);
    connect(this, &Session::lineNameChanged, m_feeds, &FeedHub::setLineName);
    connect(this, &Session::pollingPausedChanged, m_feeds, &FeedHub::setPaused);
    // The feeds begin after the search so that they carry the line's real
    // name from their first message; what the search found is told now.
    for (int i = 0; i < m_ctx.bus.table().foundCount(); ++i)
        m_feeds->receiverFound(m_ctx.bus.table().at(i));
    describeLine();
    connect(this, &Session::receiversDetected, this, &Session::describeLine);
    connect(this, &Session::receiversReconnected, this, &Session::describeLine);
    connect(&m_ctx.bus, &ReceiverBus::baudRateChanged, this, &Session::describeLine);
    connect(&m_alarms, &AlarmEngine::alarmRaised, this, [this](int id) { publishAlarm(id, false); });
    if (m_feeds->carriesHealth()) {
        m_healthTimer.setInterval(kHealthMillis);
        connect(&m_healthTimer, &QTimer::timeout, this, &Session::shareHealth);
        m_healthTimer.start();
    }
    // An acknowledgement is the desk's own business; the broker hears raise and clear.
    connect(&m_alarms, &AlarmEngine::alarmCleared, this, [this](int id) { publishAlarm(id, true); });
    connect(this, &Session::receiversDetected, this, &Session::tellFeedsWhoIsPresent);
    connect(this, &Session::receiversReconnected, this, &Session::tellFeedsWhoIsPresent);
    startRemoteControl();
}

void Session::startRemoteControl()
{
    if (!m_options.feeds.mqttControl || !m_feeds->mqtt())
        return;
    m_control = new RemoteControl(*this, this);
    connect(m_feeds, &FeedHub::controlRequested, m_control, &RemoteControl::enqueue);
    connect(m_control, &RemoteControl::resultReady, m_feeds, &FeedHub::publishControlResult);
    connect(m_control, &RemoteControl::receiverEdited, this, &Session::receiverEdited);
}

void Session::tellFeedsWhoIsPresent()
{
    if (!m_feeds)
        return;
    QList<int> addresses;
    for (int i = 0; i < m_ctx.bus.table().foundCount(); ++i)
        addresses << m_ctx.bus.table().at(i).address;
    m_feeds->setPresent(addresses);
}

void Session::describeLine()
{
    if (!m_feeds)
        return;
    const SerialLine &line = m_ctx.platform.line;
    LineInfo info;
    info.version = QCoreApplication::applicationVersion();
    info.host = QSysInfo::machineHostName();
    info.port = QStringLiteral("COM%1").arg(line.isOpen() ? line.portNumber() : m_ctx.bus.options().port);
    info.baudRate = m_ctx.bus.options().baudRate;
    info.receiversFound = m_ctx.bus.table().foundCount();
    info.startedAt = m_startedAt;
    info.pid = QCoreApplication::applicationPid();
    m_feeds->setLineInfo(lineInfoJson(info));
}

void Session::shareHealth()
{
    if (m_feeds)
        m_feeds->setHealth(busCounters(m_busHealth.stats()));
}

void Session::publishAlarm(int id, bool cleared)
{
    const Alarm *alarm = m_alarms.alarm(id);
    if (!m_feeds || !alarm)
        return;
    const std::uint64_t micros = cleared ? alarm->clearedMicros.value_or(0) : alarm->raisedMicros;
    m_feeds->publishAlarm(alarmJson(m_lineName, *alarm, cleared, m_wallTime.at(micros)));
}

void Session::updateLineName()
{
    QString name = m_options.lineName;
    if (name.isEmpty()) {
        const SerialLine &line = m_ctx.platform.line;
        name = QStringLiteral("COM%1").arg(line.isOpen() ? line.portNumber() : m_ctx.bus.options().port);
    }
    if (name == m_lineName)
        return;
    m_lineName = name;
    emit lineNameChanged(name);
}

bool Session::detectReceivers()
{
    emit receiversCleared();
    const bool found = m_ctx.bus.detectReceivers(PortSearch::EveryPort);
    updateLineName();
    updatePaused();
    emit receiversDetected(found);
    return found;
}

bool Session::reconnect()
{
    emit receiversCleared();
    // A lost line (adapter pulled, server gone) comes back here, on the same port.
    const bool opened = m_ctx.platform.line.isOpen() || m_ctx.bus.openLine();
    const bool found = opened && m_ctx.bus.detectReceivers(PortSearch::CurrentPort);
    updateLineName();
    updatePaused();
    emit receiversReconnected(found);
    return found;
}

bool Session::bringBack(int index)
{
    if (!m_ctx.bus.bringBack(index))
        return false;
    emit receiverBackOnPoll(index);
    return true;
}

void Session::setAutoRecover(bool on)
{
    m_options.autoRecover = on;
    m_ctx.bus.setSecondChances(on ? kSecondChances : 0);
    if (on && m_started)
        m_recoveryWake.start();
    else
        m_recoveryWake.stop();
}

bool Session::pollStep()
{
    if (m_deploy.busy())
        return m_deploy.step();
    const bool worked = m_ctx.bus.pollAllLevels();
    updatePaused();
    return worked;
}

void Session::updatePaused()
{
    const bool paused = m_started && (m_dialogs.open() || m_kobWaiting || !m_ctx.platform.line.isOpen() ||
                                      m_ctx.bus.workMode() != WorkMode::Polling);
    if (paused == m_paused)
        return;
    m_paused = paused;
    emit pollingPausedChanged(paused);
}

QString Session::saveLineBackup(QString *error)
{
    QString folder = m_options.dataFolder;
    if (folder.isEmpty())
        folder = QStandardPaths::writableLocation(QStandardPaths::AppDataLocation);
    if (!QDir().mkpath(folder)) {
        *error = QStringLiteral("the folder %1 cannot be made").arg(folder);
        return {};
    }
    const QString stamp = m_wallTime.now().toString(QStringLiteral("yyyy-MM-dd_HH-mm-ss"));
    QString path = QDir(folder).filePath(QStringLiteral("line-%1.zun").arg(stamp));
    // Two deploys in one second keep both files.
    for (int n = 2; QFileInfo::exists(path); ++n)
        path = QDir(folder).filePath(QStringLiteral("line-%1-%2.zun").arg(stamp).arg(n));
    *error = saveSettingsFile(path, formatSettings(m_ctx.bus.table().found()));
    return error->isEmpty() ? path : QString();
}

bool Session::recoverIfDue()
{
    if (!m_options.autoRecover || !m_started || m_recovering)
        return false;
    ReceiverBus &bus = m_ctx.bus;
    // The detail window's work owns the line while it runs.
    if (bus.workMode() != WorkMode::Idle && bus.workMode() != WorkMode::Polling)
        return false;
    const QScopedValueRollback<bool> guard(m_recovering, true);
    const Clock &clock = m_ctx.platform.clock;
    if (!m_ctx.platform.line.isOpen() || bus.table().foundCount() == 0) {
        if (clock.nowMicros() < m_nextLineTryMicros)
            return false;
        emit notice(QStringLiteral("Searching the receivers on %1 again").arg(m_lineName));
        reconnect();
        m_nextLineTryMicros = clock.nowMicros() + kLineRetryMicros;
        return true;
    }
    if (clock.nowMicros() < m_nextBringBackMicros)
        return false;
    m_nextBringBackMicros = clock.nowMicros() + kBringBackMicros;
    bool worked = false;
    for (int i = 0; i < bus.table().foundCount(); ++i) {
        if (!bus.table().at(i).online) {
            bringBack(i);
            worked = true;
        }
    }
    return worked;
}

void Session::endProgram()
{
    m_showLog.stop();
    // The feeds say goodbye (MQTT "offline") before the process goes.
    delete std::exchange(m_feeds, nullptr);
    m_ctx.endProgram();
}

std::unique_ptr<Session> assembleSession(const Platform &platform, const SessionOptions &options)
{
    auto session = std::make_unique<Session>(platform, options);
    if (options.headless)
        attachConsoleReport(*session);
    return session;
}

} // namespace zun
