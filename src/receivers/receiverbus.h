#pragma once

#include "link/transaction.h"
#include "receivers/dropcounter.h"
#include "receivers/levelreading.h"
#include "receivers/leveltable.h"
#include "receivers/receiverrecord.h"
#include "receivers/receiverstatus.h"
#include "receivers/replies.h"
#include "receivers/settingsfile.h"
#include "receivers/workmode.h"

#include <QObject>

#include <algorithm>
#include <array>
#include <functional>
#include <optional>
#include <vector>

namespace zun {

class Clock;
class Desktop;
class SerialLine;
class SettingsStore;

// The line's persisted settings and what port discovery found.
struct LineOptions
{
    int port = 2;
    int retries = 2;
    int baudRate = 115200;
    std::array<bool, 9> portAvailable{}; // index 1..8; 0 unused
};

// One level read of the open detail window (poll "N", scan "E" alike).
struct DetailReading
{
    LevelReply raw;
    int rfA = 0; // display levels 0..99, raised by 5 before the table
    int rfB = 0;
    int squelchLevel = 0;    // the receiver's squelch on the same scale
    int batteryPercent = -1; // -1: the battery label keeps what it shows
};

// One spectrum point as measured.
struct ScanReading
{
    DetailReading levels;
    QString code;        // the frequency code the receiver was tuned to
    double frequencyMHz; // the point's frequency as asked
};

// The steps of a running KOB function, for the window that shows them.
enum class KobPhase {
    Started,     // the function was started; lock what must not be touched
    Performing,  // blink on: "Performing KOB function now ..."
    Waiting,     // blink off
    Complete,    // the receiver answered again
    UserAborted, // the user stopped waiting
    Ended,       // after the closing wait: unlock
};

// The receivers on the line and every operation on them. It owns the
// receiver table and the command transaction; windows call its operations and
// draw what its signals and results carry. All work is synchronous and on the
// caller's thread; the loops that wait on a receiver (detection, the poll,
// squelch repeat, KOB) let the UI run between exchanges.
class ReceiverBus : public QObject
{
    Q_OBJECT
public:
    ReceiverBus(Clock &clock, SerialLine &line, SettingsStore &settings, Desktop &desktop,
                QObject *parent = nullptr);

    LineOptions &options() { return m_options; }
    const LineOptions &options() const { return m_options; }
    const LevelTable &levelTable() const { return m_levelTable; }
    Link &link() { return m_link; }

    WorkMode workMode() const { return m_workMode; }
    void setWorkMode(WorkMode mode);
    [[nodiscard]] bool kobActive() const { return m_kobActive; }

    // --- the receiver table ----------------------------------------------
    // Sized to the number of panels when the main screen loads.
    void resizeTable(int count);
    int receiverCount() const { return static_cast<int>(m_table.size()); }
    int foundCount() const { return m_foundCount; }
    [[nodiscard]] bool validIndex(int index) const { return index >= 0 && index < receiverCount(); }
    // A stale index reads an empty record rather than failing.
    const ReceiverRecord &record(int index) const;
    ReceiverStatus status(int index) const;
    // The records of the last detection, in table order.
    QList<ReceiverRecord> foundRecords() const;
    int selected() const { return m_selected; }
    void select(int index) { m_selected = index; }

    // --- detection ---------------------------------------------------------
    // Asked after every address; true stops the scan ("SKIP").
    void setSkipCheck(std::function<bool()> skip) { m_skip = std::move(skip); }
    // Text mode, request-to-send, line speed; then the port already open or
    // CommPort. False when the line is not open afterwards.
    [[nodiscard]] bool openLine();
    // Scans addresses 1..64 on the current port and refills the table from
    // record 0. True when anybody answered.
    bool searchCurrentPort();
    // Opens the line and detects on the current port, then on every other
    // existing port until one has receivers.
    bool detectReceivers();

    // --- polling -------------------------------------------------------------
    // One level read of every online receiver, all reads before any report.
    // False when there was nobody to ask.
    bool pollAllLevels();
    // With the automatic recovery on: a receiver whose level reply came back
    // spoiled is asked for its full status up to this many times before the
    // pass goes on, and one that answers stays on the poll without anybody
    // hearing it had left. 0 (the default): it goes offline at once and only
    // a name click or the slow recovery brings it back.
    void setSecondChances(int reads) { m_secondChances = std::max(reads, 0); }
    int secondChances() const { return m_secondChances; }
    bool addressAnswers(int address);
    void readTextA(int index);
    void readTextB(int index);
    // Both text fields of every online receiver, in table order.
    void readTextFields();

    // --- one receiver ------------------------------------------------------------
    // Flips the mute flag and tells the receiver; returns the new flag.
    bool toggleMute(int index);
    // A name click on an offline receiver: wake it and read its status anew.
    // True when it is back on the poll.
    bool bringBack(int index);
    // The pilot click: start KOB and ask until the receiver is back.
    void pilotKob(int index);
    // Writes a settings-file line's fields to the detected receiver with that
    // address and sends them; the index changed, or nothing.
    [[nodiscard]] std::optional<int> programReceiver(const SettingsLine &fields);
    // Asks a receiver for its whole status ("M") and takes it into the record:
    // what a receiver really runs on after a command it may not have taken.
    [[nodiscard]] std::optional<Identification> readBack(int index);

    // --- the detail window's receiver (the selected one) ----------------------------------
    // Fresh battery mean and drop counters for a newly opened window.
    void openDetail(int index);
    // "NS" after the window closed, polling again.
    void closeDetail();
    [[nodiscard]] std::optional<DetailReading> readDetailLevels();
    // A repaired preset goes into the record; nothing is sent.
    void storePreset(int group, int channel);
    // The record takes the preset first and keeps it whatever the receiver
    // says; the receiver's frequency code when it answered.
    [[nodiscard]] std::optional<QString> selectPreset(int group, int channel);
    // Direct tuning: off the presets, to this code. settleMillis is waited after.
    bool tuneManual(const QString &code, int settleMillis = 0);
    // The scan cursor's point becomes the code of the next tune.
    void setCursorCode(const QString &code);
    bool tuneCursor(int timeoutMillis);
    bool changeAddress(int newAddress);
    // Upper case, blank padded to 6; returns the name as stored and sent.
    QString setName(const QString &text) { return setName(m_selected, text); }
    QString setName(int index, const QString &text);
    // Press and hold: one step now, then after 400 ms one every 20 ms until
    // released or at the end of 1..99. The release sends the value once.
    void squelchPressed(int direction);
    void squelchReleased();
    // The window went away during a hold: stop without sending.
    void squelchCancelled() { m_squelchHeld = false; }
    [[nodiscard]] bool squelchHeld() const { return m_squelchHeld; }
    // Runs the receiver's KOB function to its end; a second call from inside
    // (the user's second press) goes to stopKob().
    void runKob();
    void stopKob() { m_kobActive = false; }
    DropCounter &drops() { return m_drops; }
    const DropCounter &drops() const { return m_drops; }

    // --- RF tools -----------------------------------------------------------
    // Tunes to the point and reads its levels; nothing when the receiver did
    // not answer (polling is then back on).
    [[nodiscard]] std::optional<ScanReading> scanStep(int pointIndex, double frequencyMHz);
    [[nodiscard]] std::optional<DetailReading> recorderStep();

    // --- the whole line -------------------------------------------------------
    void showDisplayMode(int mode);
    // Every receiver to the new speed, then the port. False (nothing saved)
    // for a speed the receivers lack or when the port does not reopen.
    [[nodiscard]] bool changeBaudRate(int baudrate);
    // "#00A0" three times when the port is open.
    void sayGoodbye();

signals:
    void detectionStarted(int commPort);
    void detectionEnded(int foundCount);
    void receiverFound(const zun::ReceiverStatus &status);
    void receiverChanged(const zun::ReceiverStatus &status);
    void levelsRead(const zun::ReceiverStatus &status);
    void wentOffline(const zun::ReceiverStatus &status);
    void cameBack(const zun::ReceiverStatus &status);
    void passEnded(int receiversAsked);
    void exchanged(const zun::ExchangeRecord &record);
    void scanPointRead(int address, int index, double frequencyMHz, int rfA, int rfB);
    void recorderSampled(int address, int rfA, int rfB);
    void signalDropped(int address, QChar antenna, int count);
    void baudRateChanged(int baudRate);
    void portChanged(const QString &portName);
    // The port did not open or refused the line settings; the text says which.
    void lineProblem(const QString &text);

    // For the windows, which work by table index.
    void workModeChanged(zun::WorkMode mode);
    void detectionProgress(int address); // 1..64, before the address is asked
    void panelLevels(int index, const zun::LevelReading &reading);
    void panelOffline(int index);
    void kobPhase(zun::KobPhase phase);
    // A KOB wait began (true) or the last one running ended (false): until
    // then the loop that polls the line stands still.
    void kobWaitChanged(bool waiting);

private:
    struct Live
    {
        BatteryAverager battery;
        int batteryPercent = -1;
        int rfA = 0;
        int rfB = 0;
        int audio = 0;
        bool audioClip = false;
    };

    // The transaction with its report.
    bool send(const QString &frame, int replyLength, int timeoutMillis, QString &reply);
    bool send(const QString &frame, int replyLength, int timeoutMillis);
    void fill(int index, const Identification &id);
    [[nodiscard]] bool answersAgain(int index);
    // Opens the selected port; says so when it does not open.
    [[nodiscard]] bool openSelectedPort();
    void forgetReceivers();
    ReceiverRecord *selectedRecord();
    [[nodiscard]] std::optional<DetailReading> detailReading(const LevelReply &raw);
    void stepSquelch(int direction);
    void processEvents();
    void enterKobWait();
    void leaveKobWait();

    Clock &m_clock;
    SerialLine &m_line;
    SettingsStore &m_settings;
    Desktop &m_desktop;
    LineOptions m_options;
    Link m_link;
    LevelTable m_levelTable;

    std::vector<ReceiverRecord> m_table;
    std::vector<Live> m_live;
    int m_foundCount = 0;
    int m_selected = 0;
    WorkMode m_workMode = WorkMode::Idle;
    bool m_kobActive = false;
    int m_kobWaits = 0;
    bool m_squelchHeld = false;
    int m_secondChances = 0;
    std::function<bool()> m_skip;
    BatteryAverager m_detailBattery;
    DropCounter m_drops;
    ReceiverRecord m_none;
};

} // namespace zun

Q_DECLARE_METATYPE(zun::WorkMode)
