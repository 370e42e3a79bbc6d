#pragma once

#include "receivers/dropcounter.h"
#include "receivers/levelreading.h"
#include "receivers/receiver.h"

#include <QObject>

#include <optional>

namespace zun {

class ReceiverBus;

// The steps of a running KOB function, for the window that shows them.
enum class KobPhase {
    Started,     // the function was started; lock what must not be touched
    Performing,  // blink on: "Performing KOB function now ..."
    Waiting,     // blink off
    Complete,    // the receiver answered again
    UserAborted, // the user stopped waiting
    Ended,       // after the closing wait: unlock
};

// One spectrum point as measured.
struct ScanReading
{
    LevelReading levels;
    QString code;        // the frequency code the receiver was tuned to
    double frequencyMHz; // the point's frequency as asked
};

// The receiver the detail window has open, and what only that window keeps:
// its own battery mean, the drop counters, the KOB function, the scan
// cursor. Everything goes through the bus, so the listeners hear of it as of
// any other change.
class DetailSession : public QObject
{
    Q_OBJECT
public:
    explicit DetailSession(ReceiverBus &bus, QObject *parent = nullptr);

    // Fresh battery mean and drop counters for a newly opened window.
    void open(int index);
    // "NS" after the window closed, polling again.
    void close();
    [[nodiscard]] int index() const { return m_index; }
    [[nodiscard]] const Receiver &receiver() const;

    [[nodiscard]] std::optional<LevelReading> readLevels();
    // A repaired preset goes into the table; nothing is sent.
    void storePreset(int group, int channel);
    [[nodiscard]] std::optional<QString> selectPreset(int group, int channel);
    bool tuneManual(const QString &code, int settleMillis = 0);
    // The scan cursor's point becomes the code of the next tune.
    void setCursorCode(const QString &code);
    bool tuneCursor(int timeoutMillis);
    bool changeAddress(int newAddress);
    QString setName(const QString &text);
    // One squelch step, shown at once and sent when the hold ends.
    bool stepSquelch(int direction);
    void sendSquelch();

    // Runs the receiver's KOB function to its end; a second call from inside
    // (the user's second press) goes to stopKob().
    void runKob();
    void stopKob() { m_kobActive = false; }
    [[nodiscard]] bool kobActive() const { return m_kobActive; }

    DropCounter &drops() { return m_drops; }
    const DropCounter &drops() const { return m_drops; }

    // --- RF tools -----------------------------------------------------------
    // Tunes to the point and reads its levels; nothing when the receiver did
    // not answer (polling is then back on).
    [[nodiscard]] std::optional<ScanReading> scanStep(int pointIndex, double frequencyMHz);
    [[nodiscard]] std::optional<LevelReading> recorderStep();

signals:
    void kobPhase(zun::KobPhase phase);

private:
    [[nodiscard]] LevelReading reading(const LevelReply &raw);

    ReceiverBus &m_bus;
    int m_index = 0;
    bool m_kobActive = false;
    BatteryAverager m_battery;
    DropCounter m_drops;
};

} // namespace zun
