#pragma once

#include "sim/simbus.h"

#include <QByteArray>
#include <QString>

#include <cstdint>
#include <cstdio>
#include <map>

namespace zun {

class Clock;

// Serves a bus on a pseudo-terminal in real time, so the real program can
// open its slave side as a serial port. The line speed is read from the
// slave's settings: after the program switches its speed, only receivers
// at the new speed understand it.
class SimPtyHost
{
public:
    SimPtyHost(SimBus &bus, Clock &clock, int baud);
    ~SimPtyHost();
    SimPtyHost(const SimPtyHost &) = delete;
    SimPtyHost &operator=(const SimPtyHost &) = delete;

    [[nodiscard]] bool open(QString &error);
    QByteArray slavePath() const { return m_slavePath; }
    // Every frame heard goes there, one line each with a time stamp.
    [[nodiscard]] bool setLogFile(const QString &path, bool withReplies);
    // Each reply reaches the port in one piece when its last character would
    // have, as from an adapter that hands over whole packets, instead of
    // character by character.
    void setWholeReplies(bool whole) { m_wholeReplies = whole; }

    // Serves until "quit" on stdin, SIGINT or SIGTERM; blocks in ppoll.
    // A closed stdin only ends the console, not the service.
    int run();

private:
    int lineBaud() const;
    void readMaster();
    enum class Console { Open, Closed, Quit };
    Console readConsole();
    void sendDue();
    void log(std::uint64_t micros, const char *mark, const QByteArray &frame);

    SimBus &m_bus;
    Clock &m_clock;
    int m_baud;
    int m_master = -1;
    int m_slave = -1;
    QByteArray m_slavePath;
    std::FILE *m_log = nullptr;
    QByteArray m_console;
    std::multimap<std::uint64_t, char> m_outgoing;
    bool m_wholeReplies = false;
};

} // namespace zun
