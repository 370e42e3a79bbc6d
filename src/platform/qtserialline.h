#pragma once

#include "platform/lineinput.h"
#include "platform/linesettings.h"
#include "platform/serialline.h"

#include <QSerialPort>

namespace zun {

class PortMap;

// The serial line on a real device through QSerialPort. Port numbers are
// turned into devices by the PortMap, which must outlive the line.
class QtSerialLine final : public SerialLine
{
public:
    explicit QtSerialLine(const PortMap &ports);
    ~QtSerialLine() override;

    bool portExists(int n) override;

    // Ignored while the port is open: the open port keeps its number.
    void selectPort(int n) override;
    int portNumber() const override { return m_portNumber; }
    bool open() override;
    void close() override;
    bool isOpen() const override;

    bool applySettings(const QString &settings) override;
    void setRequestToSend(bool on) override;
    void setTextMode() override;

    bool write(const QByteArray &text) override;
    int bytesWaiting() override;
    QByteArray readAll() override;
    void discardInput() override;
    void discardOutput() override;
    void discardInputAndOutput() override;
    void waitForInput(int millis) override;
    std::uint64_t discardedInput() const override { return m_input.discarded(); }
    void expectInput(int bytes) override
    {
        m_expected = bytes;
        m_sleptThisReply = false;
    }

private:
    void onError(QSerialPort::SerialPortError error);
    void markLost(const QString &reason);
    void closeIfLost();
    void pullInput();
    bool configurePort();

    const PortMap &m_ports;
    QSerialPort m_port;
    LineSettings m_settings;
    QString m_openPath; // resolved device of the open port
    int m_portNumber = 1;
    bool m_requestToSend = false;
    bool m_lost = false; // the device went away; close at the next safe point
    // Input read straight from the device, after whatever Qt's own notifier
    // had already buffered.
    LineInput m_input;
    int m_expected = 0;
    // Early enough that a sleep's timer slack never makes the reply wait.
    static constexpr qint64 kWakeMarginMicros = 150;
    bool m_sleptThisReply = false;
    // Reads known to return nothing are spared: the first look after a
    // command went out (no reply is that fast; the wait that follows finds
    // one that is), and a read straight after one that emptied the device.
    bool m_justWritten = false;
    bool m_justDrained = false;
};

} // namespace zun
