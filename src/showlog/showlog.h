#pragma once

#include "receivers/receiver.h"
#include "showlog/showlogwriter.h"

#include <QHash>
#include <QObject>

namespace zun {

struct ShowLogRow;
class WallTime;

// The record of a show: one line per reading the receiver layer reports
// (poll, detail read, scan point, recorder sample), one per signal drop and
// one when a receiver goes offline or comes back. Off until start(). Each
// slot only formats a line into the writer's buffer.
class ShowLog : public QObject
{
    Q_OBJECT
public:
    explicit ShowLog(const WallTime &wallTime, QObject *parent = nullptr);

    [[nodiscard]] bool start(const QString &path, QString *error);
    void stop();
    [[nodiscard]] bool isLogging() const { return m_writer.isOpen(); }
    QString path() const { return m_writer.path(); }
    ShowLogWriter &writer() { return m_writer; }

public slots:
    void onReceiverFound(const zun::Receiver &status);
    void onReceiverChanged(const zun::Receiver &status);
    void onLevelsRead(const zun::Receiver &status);
    void onWentOffline(const zun::Receiver &status);
    void onCameBack(const zun::Receiver &status);
    void onScanPointRead(int address, int index, double frequencyMHz, int rfA, int rfB);
    void onRecorderSampled(int address, int rfA, int rfB);
    void onSignalDropped(int address, QChar antenna, int count);

signals:
    // Logging stopped on a write error; the text is for the user.
    void failed(const QString &message);

private:
    void writeStatus(const QString &event, const Receiver &status);
    // Time, event, address and the last known name.
    ShowLogRow rowFor(const QString &event, int address) const;

    const WallTime &m_wallTime;
    ShowLogWriter m_writer;
    QHash<int, QString> m_names; // last known name per address
};

} // namespace zun
