#pragma once

#include "receivers/receiverevents.h"

#include <QList>
#include <QString>

namespace zun {

// Stands in for the receiver layer: the same signals, emitted by the test.
class FakeReceiverBus : public ReceiverEvents
{
public:
    // A receiver as detection would report it, levels filled from address.
    static Receiver receiver(int address, const QString &name);

    // Detection finds each receiver, then one polling pass reads its levels.
    void replayDetection(const QList<Receiver> &receivers);
};

} // namespace zun
