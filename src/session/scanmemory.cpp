#include "session/scanmemory.h"

#include "receivers/levelreading.h"
#include "receivers/receiverbus.h"

#include <algorithm>

namespace zun {

ScanMemory::ScanMemory(ReceiverBus &bus, QObject *parent) : QObject(parent)
{
    connect(&bus, &ReceiverBus::scanPointRead, this, &ScanMemory::take);
}

void ScanMemory::take(int address, int index, double frequencyMHz, int rfA, int rfB)
{
    if (index == 0 || address != m_address) {
        m_points.clear();
        m_address = address;
    }
    // A point measured again in a continuous sweep replaces the old one.
    const auto same = std::find_if(m_points.begin(), m_points.end(),
                                   [&](const ScanPoint &p) { return p.frequencyMHz == frequencyMHz; });
    const ScanPoint point{frequencyMHz, levelDbm(std::max(rfA, rfB))};
    if (same != m_points.end())
        *same = point;
    else
        m_points.push_back(point);
    emit changed();
}

} // namespace zun
