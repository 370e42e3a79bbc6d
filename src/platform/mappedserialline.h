#pragma once

#include "platform/netserialline.h"
#include "platform/qtserialline.h"

namespace zun {

// The program's serial line: each port number leads, by its mapping, to a
// local device or to a serial server on the network, and the rest of the
// program cannot tell which.
class MappedSerialLine final : public SerialLine
{
public:
    explicit MappedSerialLine(const PortMap &ports);

    bool portExists(int n) override;
    void selectPort(int n) override;
    int portNumber() const override { return m_active->portNumber(); }
    bool open() override;
    void close() override { m_active->close(); }
    bool isOpen() const override { return m_active->isOpen(); }

    bool applySettings(const QString &settings) override;
    void setRequestToSend(bool on) override;
    void setTextMode() override { m_active->setTextMode(); }

    bool write(const QByteArray &text) override { return m_active->write(text); }
    int bytesWaiting() override { return m_active->bytesWaiting(); }
    QByteArray readAll() override { return m_active->readAll(); }
    void discardInput() override { m_active->discardInput(); }
    void discardOutput() override { m_active->discardOutput(); }
    void discardInputAndOutput() override { m_active->discardInputAndOutput(); }
    void waitForInput(int millis) override { m_active->waitForInput(millis); }
    void waitForInputMicros(std::uint64_t micros) override { m_active->waitForInputMicros(micros); }
    void expectInput(int bytes) override { m_active->expectInput(bytes); }
    std::uint64_t discardedInput() const override { return m_active->discardedInput(); }
    QString takeNotice() override { return m_network.takeNotice(); }

private:
    SerialLine &lineFor(int n);

    const PortMap &m_ports;
    QtSerialLine m_device;
    NetSerialLine m_network;
    SerialLine *m_active;
};

} // namespace zun
