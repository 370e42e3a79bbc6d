#pragma once

#include <QByteArray>
#include <QString>

namespace zun {

class Clock;
class SerialLine;

// The single command transaction on the shared line. One blocking exchange at
// a time; nothing here processes UI events.
class Link
{
public:
    // baudrate, when given, times the wait for a quiet line after a disturbed reply.
    Link(SerialLine &line, Clock &clock, const int &retry, const int *baudrate = nullptr);

    // Sends the whole frame (carriage return included) and waits for a reply
    // that starts with "$" and the frame's two address characters. Address
    // "00" is a broadcast: nothing is read and the result is always true.
    [[nodiscard]] bool sendCommand(const QString &command, int replyLength, QString &reply,
                                   int timeoutMillis);

    // Waits at least millis milliseconds without yielding to the UI.
    void delay(int millis);

    // Attempts the last addressed exchange made (1 + retries used).
    int lastAttempts() const { return m_lastAttempts; }

    SerialLine &line() { return m_line; }
    Clock &clock() { return m_clock; }

private:
    [[nodiscard]] bool exchange(const QByteArray &frame, const QString &address, int replyLength,
                                QString &reply, int timeoutMillis);

    // After a disturbed reply: the line must be quiet before the next frame.
    void noteDisturbance(bool accepted, const QString &reply, const QString &address, int replyLength);
    void waitForQuietLine();

    SerialLine &m_line;
    Clock &m_clock;
    const int &m_retry;
    const int *m_baudrate;
    int m_lastAttempts = 0;
    bool m_disturbed = false;
};

// "%"/"#" + two hex digits of the address + body + carriage return.
[[nodiscard]] QString frame(QChar prefix, int address, const QString &body);

} // namespace zun
