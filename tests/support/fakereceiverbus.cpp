#include "support/fakereceiverbus.h"

namespace zun {

ReceiverStatus FakeReceiverBus::receiver(int address, const QString &name)
{
    ReceiverStatus s;
    s.address = address;
    s.name = name;
    s.frequencyMHz = 500.0 + address * 0.125;
    s.rfA = 40 + address;
    s.rfB = 30 + address;
    s.rfADbm = -90.0 + s.rfA * 0.5;
    s.rfBDbm = -90.0 + s.rfB * 0.5;
    s.audio = 20;
    s.batteryPercent = 80;
    s.online = true;
    return s;
}

void FakeReceiverBus::replayDetection(const QList<ReceiverStatus> &receivers)
{
    emit detectionStarted(1);
    for (const ReceiverStatus &s : receivers)
        emit receiverFound(s);
    emit detectionEnded(static_cast<int>(receivers.size()));
    for (const ReceiverStatus &s : receivers)
        emit levelsRead(s);
    emit passEnded(static_cast<int>(receivers.size()));
}

} // namespace zun
