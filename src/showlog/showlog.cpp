#include "showlog/showlog.h"

#include "platform/walltime.h"
#include "receivers/levelreading.h"
#include "showlog/showlogline.h"

namespace zun {

ShowLog::ShowLog(const WallTime &wallTime, QObject *parent) : QObject(parent), m_wallTime(wallTime)
{
    connect(&m_writer, &ShowLogWriter::failed, this, &ShowLog::failed);
}

bool ShowLog::start(const QString &path, QString *error)
{
    return m_writer.open(path, showLogHeader(), error);
}

void ShowLog::stop()
{
    m_writer.close();
}

ShowLogRow ShowLog::rowFor(const QString &event, int address) const
{
    ShowLogRow row;
    row.time = WallTime::iso(m_wallTime.now());
    row.event = event;
    row.address = address;
    row.name = m_names.value(address);
    return row;
}

void ShowLog::writeStatus(const QString &event, const Receiver &status)
{
    m_names.insert(status.address, status.shownName());
    if (!isLogging())
        return;
    ShowLogRow row = rowFor(event, status.address);
    row.frequencyMHz = status.frequencyMHz();
    row.rfADbm = status.rfADbm();
    row.rfBDbm = status.rfBDbm();
    row.audio = status.audioPercent();
    if (status.batteryPercent >= 0)
        row.batteryPercent = status.batteryPercent;
    row.squelch = status.squelch;
    row.mute = status.mute;
    row.online = status.online;
    m_writer.append(showLogLine(row));
}

void ShowLog::onReceiverFound(const Receiver &status)
{
    m_names.insert(status.address, status.shownName());
}

void ShowLog::onReceiverChanged(const Receiver &status)
{
    m_names.insert(status.address, status.shownName());
}

void ShowLog::onLevelsRead(const Receiver &status)
{
    writeStatus(QStringLiteral("level"), status);
}

void ShowLog::onWentOffline(const Receiver &status)
{
    writeStatus(QStringLiteral("offline"), status);
}

void ShowLog::onCameBack(const Receiver &status)
{
    writeStatus(QStringLiteral("back"), status);
}

void ShowLog::onScanPointRead(int address, int, double frequencyMHz, int rfA, int rfB)
{
    if (!isLogging())
        return;
    ShowLogRow row = rowFor(QStringLiteral("scan"), address);
    row.frequencyMHz = frequencyMHz;
    row.rfADbm = levelDbm(rfA);
    row.rfBDbm = levelDbm(rfB);
    m_writer.append(showLogLine(row));
}

void ShowLog::onRecorderSampled(int address, int rfA, int rfB)
{
    if (!isLogging())
        return;
    ShowLogRow row = rowFor(QStringLiteral("recorder"), address);
    row.rfADbm = levelDbm(rfA);
    row.rfBDbm = levelDbm(rfB);
    m_writer.append(showLogLine(row));
}

void ShowLog::onSignalDropped(int address, QChar antenna, int count)
{
    if (!isLogging())
        return;
    ShowLogRow row = rowFor(QStringLiteral("drop"), address);
    row.antenna = antenna;
    row.drops = count;
    m_writer.append(showLogLine(row));
}

} // namespace zun
