#pragma once

#include "receivers/exchangerecord.h"
#include "receivers/levelreading.h"
#include "receivers/receiver.h"
#include "receivers/workmode.h"

#include <QObject>

namespace zun {

// Everything the receiver layer tells its listeners, declared once. The bus
// emits these; a test or a benchmark that stands in for the bus derives from
// this too, so every listener connects to the same list.
class ReceiverEvents : public QObject
{
    Q_OBJECT
public:
    using QObject::QObject;

signals:
    void detectionStarted(int commPort);
    void detectionEnded(int foundCount);
    void receiverFound(const zun::Receiver &receiver);
    void receiverChanged(const zun::Receiver &receiver);
    void levelsRead(const zun::Receiver &receiver);
    void wentOffline(const zun::Receiver &receiver);
    void cameBack(const zun::Receiver &receiver);
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
    // A KOB wait began (true) or the last one running ended (false): until
    // then the loop that polls the line stands still.
    void kobWaitChanged(bool waiting);
};

} // namespace zun

Q_DECLARE_METATYPE(zun::WorkMode)
