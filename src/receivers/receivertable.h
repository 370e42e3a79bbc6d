#pragma once

#include "receivers/levelreading.h"
#include "receivers/receiver.h"
#include "receivers/replies.h"

#include <QList>

#include <vector>

namespace zun {

// The receivers found on the line, one row per panel, in detection order.
// Rows past the found count are empty; a stale index reads an empty receiver
// rather than failing. Plain data: the bus and the detail session change it,
// and say so to the listeners.
class ReceiverTable
{
public:
    // Sized to the number of panels when the main screen loads.
    void resize(int count);
    [[nodiscard]] int size() const { return static_cast<int>(m_rows.size()); }
    [[nodiscard]] bool validIndex(int index) const { return index >= 0 && index < size(); }
    [[nodiscard]] const Receiver &at(int index) const;
    // Null for a stale index.
    [[nodiscard]] Receiver *find(int index);

    [[nodiscard]] int foundCount() const { return m_foundCount; }
    // The receivers of the last detection, in table order.
    [[nodiscard]] QList<Receiver> found() const;
    // Detection starts over: nobody is online, nobody found.
    void forgetAll();
    // Takes a newly found receiver into the next free row; its index, or -1
    // when every row is taken.
    int addFound(int address, const Identification &id);
    // A receiver's full status as it answered it.
    void fill(int index, const Identification &id);
    // A poll reading: levels, and the battery when this reading shows it.
    void takeLevels(int index, const LevelReading &reading);
    // The running battery mean the poll feeds for this row.
    [[nodiscard]] BatteryAverager &battery(int index);

private:
    std::vector<Receiver> m_rows;
    std::vector<BatteryAverager> m_batteries;
    int m_foundCount = 0;
    Receiver m_none;
    BatteryAverager m_noBattery;
};

} // namespace zun
