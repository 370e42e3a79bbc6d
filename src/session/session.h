#pragma once

#include "alarms/alarmengine.h"
#include "bushealth/bushealthmodel.h"
#include "core/context.h"
#include "core/workloop.h"
#include "platform/walltime.h"
#include "session/frequencydeploy.h"
#include "session/scanmemory.h"
#include "session/sessionoptions.h"
#include "session/watcheddialogs.h"
#include "showlog/showlog.h"

#include <QDateTime>
#include <QObject>
#include <QTimer>

#include <cstdint>
#include <functional>
#include <memory>

namespace zun {

class FeedHub;
class RemoteControl;

// The views start-up shows, supplied by the windows; a session without a
// window leaves them empty.
struct StartupViews
{
    std::function<void()> showSplash;
    // The main screen's load up to the receiver search: menus, panels, table size.
    std::function<void()> loadMainScreen;
    // After the search: the main screen appears.
    std::function<void()> showMainScreen;
    std::function<void()> closeSplash;
};

// The receivers' life on one line, with or without a window: the receiver
// layer, start-up detection, polling, recovery, and every listener (alarms,
// show log, feeds, bus health). Windows draw what it reports and call its
// operations; they never wire a listener themselves.
class Session : public QObject
{
    Q_OBJECT
public:
    Session(const Platform &platform, SessionOptions options);
    ~Session() override;

    Context &context() { return m_ctx; }
    ReceiverBus &bus() { return m_ctx.bus; }
    WorkLoop &loop() { return m_loop; }
    const SessionOptions &options() const { return m_options; }

    AlarmEngine &alarms() { return m_alarms; }
    ShowLog &showLog() { return m_showLog; }
    const WallTime &wallTime() const { return m_wallTime; }
    BusHealthModel &busHealth() { return m_busHealth; }
    // Null until the first detection at start, and when no feed is on.
    FeedHub *feeds() const { return m_feeds; }
    QString feedStatusText() const;
    // Retuning many receivers: runs in the poll's place until it is through.
    FrequencyDeploy &deploy() { return m_deploy; }
    const ScanMemory &lastScan() const { return m_lastScan; }
    // The line's settings as a ".zun" file named with the date and time in
    // the data folder; the path, or empty with the reason in *error.
    QString saveLineBackup(QString *error);

    // The name listeners give the line: --line, else the port in use ("COM3").
    QString lineName() const { return m_lineName; }

    // Start-up: options, port discovery, splash, the main screen's load, the
    // receiver search, polling on. False when the program has to end (no
    // serial port at all).
    [[nodiscard]] bool start(const StartupViews &views);

    // "Auto Detect Receivers": this port first, then the others.
    bool detectReceivers();
    // "Reconnect": the same port, reopened when the line was lost.
    bool reconnect();
    // A name click on an offline receiver, or the automatic recovery.
    bool bringBack(int index);

    [[nodiscard]] bool autoRecover() const { return m_options.autoRecover; }
    void setAutoRecover(bool on);
    // Runs what recovery is due on the session's clock; true when it used the line.
    [[nodiscard]] bool recoverIfDue();

    // Nothing on the line is being polled although the session runs: a modal
    // dialog is open, a KOB wait runs, the line is lost, or another work
    // than the main screen's poll has the line. What the feeds show is then
    // the last known state, not a live one.
    [[nodiscard]] bool pollingPaused() const { return m_paused; }

    // The exit path after the user confirmed (or SIGTERM): goodbye on the
    // line, the log and the feeds closed, then the program ends.
    void endProgram();

signals:
    // A search begins: every panel goes blank.
    void receiversCleared();
    // A search (start, menu, recovery) ended.
    void receiversDetected(bool found);
    // "Reconnect" ended.
    void receiversReconnected(bool found);
    void receiverBackOnPoll(int index);
    void lineNameChanged(const QString &name);
    void feedStatusChanged(const QString &text);
    void pollingPausedChanged(bool paused);
    // One event for the status line, or a line on standard error without a window.
    void notice(const QString &text);
    // A request from the broker changed this receiver's mute or name.
    void receiverEdited(int index);

private:
    [[nodiscard]] bool pollStep();
    void startFeeds();
    void describeLine();
    void publishAlarm(int id, bool cleared);
    void updateLineName();
    void scheduleRecoveryWake();
    void startRemoteControl();
    void tellFeedsWhoIsPresent();
    void shareHealth();
    void updatePaused();

    SessionOptions m_options;
    WatchedDialogs m_dialogs;
    Context m_ctx;
    WorkLoop m_loop;
    WallTime m_wallTime;
    AlarmEngine m_alarms;
    ShowLog m_showLog;
    BusHealthModel m_busHealth;
    FrequencyDeploy m_deploy;
    ScanMemory m_lastScan;
    FeedHub *m_feeds = nullptr;
    // Null unless the options ask for control over MQTT.
    RemoteControl *m_control = nullptr;
    QString m_lineName;
    QDateTime m_startedAt;
    bool m_started = false;
    bool m_recovering = false;
    bool m_paused = false;
    bool m_kobWaiting = false;
    std::uint64_t m_nextLineTryMicros = 0;
    std::uint64_t m_nextBringBackMicros = 0;
    // Wakes an idle work loop so that recovery is looked at while nobody answers.
    QTimer m_recoveryWake;
    // Hands the bus health to the feeds, at most once a second.
    QTimer m_healthTimer;
};

// The one assembly of a session from its options, for the program and its tests.
std::unique_ptr<Session> assembleSession(const Platform &platform, const SessionOptions &options);

} // namespace zun
