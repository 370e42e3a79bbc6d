#include "support/fakereceiverbus.h"

#include "receivers/frequency.h"

namespace zun {

Receiver FakeReceiverBus::receiver(int address, const QString &name)
{
    Receiver s;
    s.address = address;
    s.name = name;
    s.manualFreq = true;
    s.manualFreqCode = codeFromMhz(500.0 + address * 0.125);
    s.levels.rfA = 40 + address;
    s.levels.rfB = 30 + address;
    s.levels.audio = 24; // 20 on the feeds' 0..99 scale
    s.batteryPercent = 80;
    s.online = true;
    return s;
}

void FakeReceiverBus::replayDetection(const QList<Receiver> &receivers)
{
    emit detectionStarted(1);
    for (const Receiver &s : receivers)
        emit receiverFound(s);
    emit detectionEnded(static_cast<int>(receivers.size()));
    for (const Receiver &s : receivers)
        emit levelsRead(s);
    emit passEnded(static_cast<int>(receivers.size()));
}

} // namespace zun
