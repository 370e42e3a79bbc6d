#pragma once

#include "link/transaction.h"
#include "receivers/frames.h"
#include "receivers/leveltable.h"
#include "receivers/receiverevents.h"
#include "receivers/receivertable.h"
#include "receivers/settingsfile.h"
#include "receivers/workmode.h"

#include <algorithm>
#include <array>
#include <functional>
#include <optional>

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

// Where detection looks for receivers.
enum class PortSearch {
    CurrentPort, // only the port now selected, as it is
    EveryPort,   // open the line, then every other existing port until one has receivers
};

// The receivers on the line and every operation on them by table index. It
// owns the receiver table and the command transaction; windows call its
// operations and draw what its signals and results carry. All work is
// synchronous and on the caller's thread; the loops that wait on a receiver
// (detection, the poll, KOB) let the UI run between exchanges.
class ReceiverBus : public ReceiverEvents
{
    Q_OBJECT
public:
    ReceiverBus(Clock &clock, SerialLine &line, SettingsStore &settings, Desktop &desktop,
                QObject *parent = nullptr);

    LineOptions &options() { return m_options; }
    const LineOptions &options() const { return m_options; }
    const LevelTable &levelTable() const { return m_levelTable; }
    Link &link() { return m_link; }
    Clock &clock() { return m_clock; }
    ReceiverTable &table() { return m_table; }
    const ReceiverTable &table() const { return m_table; }

    WorkMode workMode() const { return m_workMode; }
    void setWorkMode(WorkMode mode);

    // One exchange on the line, reported to the listeners whether it
    // succeeded or not. True for a reply that starts with "$" and the address.
    bool exchange(const Exchange &exchange, QString *reply = nullptr);
    // Lets the UI run between two exchanges.
    void processEvents();
    // A listener changed a receiver: everybody hears of it.
    void announceChange(int index);

    // --- detection ---------------------------------------------------------
    // Asked after every address; true stops the scan ("SKIP").
    void setSkipCheck(std::function<bool()> skip) { m_skip = std::move(skip); }
    // Text mode, request-to-send, line speed; then the port already open or
    // CommPort. False when the line is not open afterwards.
    [[nodiscard]] bool openLine();
    // Scans addresses 1..64 and refills the table from row 0. True when
    // anybody answered.
    bool detectReceivers(PortSearch where);

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
    [[nodiscard]] bool addressAnswers(int address);
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
    // Asks a receiver for its whole status ("M") and takes it into the table:
    // what a receiver really runs on after a command it may not have taken.
    [[nodiscard]] std::optional<Identification> readBack(int index);
    // Direct tuning: off the presets, to this code. settleMillis is waited after.
    bool tuneManual(int index, const QString &code, int settleMillis = 0);
    // The table takes the preset first and keeps it whatever the receiver
    // says; the receiver's frequency code when it answered.
    [[nodiscard]] std::optional<QString> selectPreset(int index, int group, int channel);
    bool changeAddress(int index, int newAddress);
    // Upper case, blank padded to 6; returns the name as stored and sent.
    QString setName(int index, const QString &text);
    // One squelch step within 1..99, not yet sent; false at either end.
    bool stepSquelch(int index, int direction);
    void sendSquelch(int index);
    // A KOB wait on some receiver: the poll stands still until the last ends.
    void enterKobWait();
    void leaveKobWait();

    // --- the whole line -------------------------------------------------------
    void showDisplayMode(int mode);
    // Every receiver to the new speed, then the port. False (nothing saved)
    // for a speed the receivers lack or when the port does not reopen.
    [[nodiscard]] bool changeBaudRate(int baudrate);
    // "#00A0" three times when the port is open.
    void sayGoodbye();

private:
    bool searchCurrentPort();
    [[nodiscard]] bool answersAgain(int index);
    // Opens the selected port; says so when it does not open.
    [[nodiscard]] bool openSelectedPort();
    void forgetReceivers();

    Clock &m_clock;
    SerialLine &m_line;
    SettingsStore &m_settings;
    Desktop &m_desktop;
    LineOptions m_options;
    Link m_link;
    LevelTable m_levelTable;
    ReceiverTable m_table;

    WorkMode m_workMode = WorkMode::Idle;
    int m_kobWaits = 0;
    int m_secondChances = 0;
    std::function<bool()> m_skip;
};

} // namespace zun
