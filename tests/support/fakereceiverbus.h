#pragma once

#include "receivers/receiverstatus.h"

#include <QObject>
#include <QString>

namespace zun {

// Stands in for the receiver layer: the same signals, emitted by the test.
class FakeReceiverBus : public QObject
{
    Q_OBJECT
public:
    // A receiver as detection would report it, levels filled from address.
    static ReceiverStatus receiver(int address, const QString &name);

    // Detection finds each receiver, then one polling pass reads its levels.
    void replayDetection(const QList<ReceiverStatus> &receivers);

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
};

} // namespace zun
