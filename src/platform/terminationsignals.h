#pragma once

#include <QObject>

class QSocketNotifier;

namespace zun {

// SIGTERM and SIGINT as a Qt signal, delivered on the event loop (the work
// loop runs it between exchanges), so the exit path runs as the user's Exit
// would and never inside a transaction.
class TerminationSignals : public QObject
{
    Q_OBJECT
public:
    explicit TerminationSignals(QObject *parent = nullptr);
    ~TerminationSignals() override;

signals:
    void requested(int signalNumber);

private:
    void readPipe();
    QSocketNotifier *m_notifier = nullptr;
};

} // namespace zun
