#include "receivers/receivertable.h"

#include <algorithm>

namespace zun {

void ReceiverTable::resize(int count)
{
    m_rows.assign(static_cast<std::size_t>(std::max(count, 0)), Receiver{});
    m_batteries.assign(m_rows.size(), BatteryAverager{});
    m_foundCount = 0;
}

const Receiver &ReceiverTable::at(int index) const
{
    return validIndex(index) ? m_rows[static_cast<std::size_t>(index)] : m_none;
}

Receiver *ReceiverTable::find(int index)
{
    return validIndex(index) ? &m_rows[static_cast<std::size_t>(index)] : nullptr;
}

QList<Receiver> ReceiverTable::found() const
{
    const auto found = static_cast<std::ptrdiff_t>(std::min(m_foundCount, size()));
    return QList<Receiver>(m_rows.begin(), m_rows.begin() + found);
}

void ReceiverTable::forgetAll()
{
    for (Receiver &r : m_rows)
        r.online = false;
    m_foundCount = 0;
}

int ReceiverTable::addFound(int address, const Identification &id)
{
    // More answers than panels would overflow the table: the extra ones are not kept.
    if (m_foundCount >= size())
        return -1;
    const int index = m_foundCount++;
    m_rows[static_cast<std::size_t>(index)].address = address;
    fill(index, id);
    return index;
}

void ReceiverTable::fill(int index, const Identification &id)
{
    Receiver *r = find(index);
    if (!r)
        return;
    r->name = id.name;
    r->group = id.group;
    r->channel = id.channel;
    r->channelFreqCode = id.frequencyCode;
    r->manualFreqCode = id.frequencyCode;
    r->squelch = id.squelch;
    r->secondLevel = id.secondLevel;
    r->groupTable = id.groupTable;
    r->bandStartCode = id.bandStartCode;
    r->bandWidth = id.bandWidth;
    r->mute = id.mute;
    r->manualFreq = id.manualFreq;
    r->online = true;
}

void ReceiverTable::takeLevels(int index, const LevelReading &reading)
{
    Receiver *r = find(index);
    if (!r)
        return;
    r->levels = reading;
    if (reading.batteryPercent >= 0)
        r->batteryPercent = reading.batteryPercent;
}

BatteryAverager &ReceiverTable::battery(int index)
{
    return validIndex(index) ? m_batteries[static_cast<std::size_t>(index)] : m_noBattery;
}

} // namespace zun
